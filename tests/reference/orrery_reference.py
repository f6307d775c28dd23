"""Orrery's arithmetic and readers a second time, in plain Python, to compare the program with.

Written for clarity, not speed, and kept apart from the program's code on purpose: both must come to the same answer
from the same files. Every single-precision step is rounded on its own.
"""

from __future__ import annotations

import colorsys
import ctypes
import math
import re
import struct
import xml.parsers.expat
from dataclasses import dataclass, field
from datetime import datetime, timedelta, timezone
from fractions import Fraction
from pathlib import Path
from typing import Any
from zoneinfo import ZoneInfo

NO_MAXIMUM = -2147483648.0
LARGEST_ROW_COUNT = 2**32 - 1


class Refused(Exception):
    """The program must end with a message instead of an answer."""


# --- single precision ------------------------------------------------------------------------------------------------


def f32(value: float) -> float:
    """The nearest single, ties to even; exact for sums, products and quotients of two singles taken in double."""
    return ctypes.c_float(value).value


def f32_bits(value: float) -> int:
    return struct.unpack("<I", struct.pack("<f", value))[0]


def f32_from_text(text: str) -> float:
    """The single nearest to a decimal text. Through double alone it would be rounded twice where the double falls
    halfway between two singles: there the exact value decides."""
    double = float(text)
    single = f32(double)
    if double == 0 or double == single or math.isnan(double):
        return single
    if math.isinf(single):
        edge = 2.0**128 - 2.0**103
        below = abs(double) == edge and abs(Fraction(text)) < Fraction(edge)
        return math.copysign(f32(2.0**128 - 2.0**104), double) if below else single
    mirrored = 2 * double - single
    if f32(mirrored) != mirrored:
        return single
    beyond = Fraction(text) - Fraction(double)
    return mirrored if (beyond > 0) == (mirrored > double) and beyond != 0 else single


def divide(a: float, b: float) -> float:
    if b != 0:
        return f32(a / b)
    if a == 0 or math.isnan(a):
        return math.nan
    return math.copysign(math.inf, a) * math.copysign(1.0, b)


NUMBER = re.compile(r"[+-]?(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:[eE][+-]?[0-9]+)?")


def float_value(text: str) -> float:
    """The leading number of a setup's text, 0 when there is none."""
    match = NUMBER.match(text.lstrip(" \t\n\v\f\r"))
    return f32_from_text(match.group()) if match else 0.0


def positive_count(value: float) -> int:
    return math.trunc(value) if math.isfinite(value) and value > 0 else 0


# --- XML -------------------------------------------------------------------------------------------------------------


@dataclass
class Element:
    name: str
    attributes: dict[str, str]
    children: list["Element"] = field(default_factory=list)
    pieces: list[str] = field(default_factory=list)

    @property
    def text(self) -> str:
        return "".join(self.pieces)

    def named(self, name: str) -> list["Element"]:
        return [child for child in self.children if child.name == name]


def parse_xml(data: bytes, encoding: str | None = None) -> Element | None:
    """The root element, or None when the bytes are not well-formed. An element's text holds that of all below it."""
    top = Element("", {})
    path = [top]
    parser = xml.parsers.expat.ParserCreate(encoding)
    parser.buffer_text = True

    def start(name: str, attributes: dict[str, str]) -> None:
        path[-1].children.append(Element(name, attributes))
        path.append(path[-1].children[-1])

    def characters(text: str) -> None:
        for element in path:
            element.pieces.append(text)

    parser.StartElementHandler = start
    parser.EndElementHandler = lambda name: path.pop()
    parser.CharacterDataHandler = characters
    try:
        parser.Parse(data, True)
    except (xml.parsers.expat.ExpatError, LookupError, ValueError):
        return None
    return top.children[0]


def parse_setup_xml(data: bytes) -> Element | None:
    """A byte order mark or a declared encoding holds; otherwise UTF-8 when valid, and Mac OS Roman when not."""
    marked = data.startswith((b"\xef\xbb\xbf", b"\xfe\xff", b"\xff\xfe"))
    if marked or re.match(rb"<\?xml[^>]*\sencoding\s*=", data):
        return parse_xml(data)
    try:
        text = data.decode("utf-8")
    except UnicodeDecodeError:
        text = data.decode("mac_roman")
    return parse_xml(text.encode("utf-8"), "utf-8")


# --- the setup -------------------------------------------------------------------------------------------------------

REFERENCE_DATE = datetime(2001, 1, 1, tzinfo=timezone.utc)
DATE = re.compile(r"(\d{4})-(\d\d)-(\d\d) (\d\d):(\d\d):(\d\d) ([+-])(\d\d)(\d\d)", re.ASCII)
REQUIRED = {"ModelPath": "modelPath", "Dimensions": "dimensions", "RunLength": "runLength", "ReportStep": "reportStep"}
ENTRY_FIELDS = {
    "Output": ("outputs", {"PortPath": "portPath", "OutputPathName": "outputPath"}),
    "Initialization": (
        "initializations",
        {"PortPath": "portPath", "Coordinates": "coordinates", "Value": "value"},
    ),
    "Steppers": ("steppers", {"PortPath": "portPath", "Start": "start", "Step": "step", "Stop": "stop"}),
}


def parse_date(text: str) -> datetime | None:
    match = DATE.fullmatch(text)
    if not match:
        return None
    sign = -1 if match[7] == "-" else 1
    try:
        offset = timezone(sign * timedelta(hours=int(match[8]), minutes=int(match[9])))
        return datetime(*(int(match[i]) for i in range(1, 7)), tzinfo=offset).astimezone(timezone.utc)
    except (ValueError, OverflowError):
        return None


def date_text(date: datetime) -> str:
    return date.strftime("%Y-%m-%d %H:%M:%S +0000")


def steps_from_dt(text: str) -> str:
    return "%f" % divide(1.0, float_value(text))


def read_entry(element: Element, fields: dict[str, str]) -> dict[str, str]:
    entry = {key: element.named(name)[-1].text for name, key in fields.items() if element.named(name)}
    parts = element.named("PartName")
    if parts and element.name != "Steppers":
        entry["portPath"] = f"{parts[-1].text}/{element.named('PortName')[-1].text}"
    return entry


def read_setup(data: bytes) -> dict[str, Any]:
    """The setup dictionary; `startDay` is a datetime, everything else text or a list of entries."""
    root = parse_setup_xml(data)
    setup: dict[str, Any] = {"GCD": "0", "startDay": REFERENCE_DATE}
    setup |= {key: [] for key, _ in ENTRY_FIELDS.values()}
    if root is None:
        return setup
    missing = [name for name in REQUIRED if not root.named(name)]
    if missing:
        raise Refused(f"lacks {missing}")
    for name, key in REQUIRED.items():
        setup[key] = root.named(name)[0].text
    single = {name: root.named(name)[0].text for name in ("GCD", "StartDay", "StepsPerDay", "Dt")
              if len(root.named(name)) == 1}
    setup["GCD"] = single.get("GCD", "0")
    if "StartDay" in single:
        date = parse_date(single["StartDay"])
        del setup["startDay"]
        setup |= {"startDay": date} if date else {}
    if "StepsPerDay" in single:
        setup["stepsPerDay"] = single["StepsPerDay"]
    elif "Dt" in single:
        setup["stepsPerDay"] = steps_from_dt(single["Dt"])
    for name, (key, fields) in ENTRY_FIELDS.items():
        setup[key] = [read_entry(element, fields) for element in root.named(name)]
    return setup


def show_setup(setup: dict[str, Any]) -> dict[str, Any]:
    return {key: date_text(value) if isinstance(value, datetime) else value for key, value in setup.items()}


def rewritten(setup: dict[str, Any]) -> dict[str, Any]:
    """What a setup is after it was written and read again; a character outside Mac OS Roman cannot be written."""
    result: dict[str, Any] = {key: setup.get(key, "") for key in (*REQUIRED.values(), "GCD", "stepsPerDay")}
    result |= {"startDay": setup["startDay"]} if "startDay" in setup else {}
    for key, fields in ENTRY_FIELDS.values():
        result[key] = [{name: entry.get(name, "") for name in fields.values()} for entry in setup[key]]
    values = [*(v for v in result.values() if isinstance(v, str)),
              *(v for key, _ in ENTRY_FIELDS.values() for entry in result[key] for v in entry.values())]
    try:
        "".join(values).encode("mac_roman")
    except UnicodeEncodeError as error:
        raise Refused("not in Mac OS Roman") from error
    return result


# --- the model -------------------------------------------------------------------------------------------------------

CLASSES = {"KSEXPRESSION", "KSTVDD", "KS2DTVDD", "KSHTL", "KSLEVEL", "KSINPUT", "KSOUTPUT", "KSLOOKUP", "KSFILE",
           "KSINPUTSPLITTER", "KSWEATHER", "KSRANDOM"}


@dataclass(eq=False)
class Node:
    record: dict[str, str]
    order: int = 0
    is_group: bool = False
    targets: dict[str, list[str]] = field(default_factory=dict)
    children: list["Node"] = field(default_factory=list)
    parent: "Node | None" = None

    def attach(self, child: "Node") -> None:
        above: Node | None = self
        while above is not None:
            if above is child:
                raise Refused(f"{child.record['id']} would become its own ancestor")
            above = above.parent
        if child.parent:
            child.parent.children.remove(child)
        child.parent = self
        self.children.append(child)

    def path(self) -> str:
        return (self.parent.path() + "/" if self.parent else "") + self.record["name"]

    def as_json(self) -> dict[str, Any]:
        return {"record": self.record, "children": [child.as_json() for child in self.children]}


def read_node(element: Element, order: int) -> Node:
    record = {key: element.attributes[name] for key, name in (("class", "type"), ("id", "id"))
              if name in element.attributes}
    kind = record.get("class")
    if kind not in CLASSES:
        raise Refused(f"Couldn't find class for {kind}")
    for attribute in element.named("attribute"):
        record[attribute.attributes["name"]] = attribute.text
    record.setdefault("name", record["class"])
    node = Node(record, order)
    for relation in element.named("relationship"):
        idrefs = relation.attributes.get("idrefs")
        node.targets[relation.attributes["name"]] = [] if idrefs is None else idrefs.split(" ")
    return node


def read_model(data: bytes) -> list[Node]:
    """The top-level nodes, in record order."""
    root = parse_xml(data)
    if root is None:
        raise Refused("not well-formed")
    objects = root.named("object") if root.name == "database" else []
    nodes = [read_node(element, order) for order, element in enumerate(objects)
             if element.attributes.get("type") != "KSTEMPLATE"]
    by_id = {node.record["id"]: node for node in nodes}
    roots = [node.record["id"] for node, kind in
             ((node, objects[node.order].attributes["type"]) for node in nodes)
             if kind == "KSLEVEL" and not node.targets.get("parent")]
    if not roots:
        raise Refused("No root")
    top: list[Node] = []
    for node in nodes:
        if node.record["class"] in ("KSINPUT", "KSOUTPUT"):
            continue
        if node.targets.get("parent", [])[:1] == roots[-1:]:
            top.append(node)
        if node.record["class"] == "KSLEVEL":
            attach_all(node, node.targets.get("children", []), by_id)
        groups = [Node({"name": name}, is_group=True) for name in ("inputs", "outputs")]
        for group in groups:
            node.attach(group)
        for group in groups:
            attach_all(group, node.targets.get(group.record["name"], []), by_id)
        groups[1].children.sort(key=lambda port: ("varid" in port.record, port.record.get("varid", ""), port.order))
    return top


def attach_all(owner: Node, targets: list[str], by_id: dict[str, Node]) -> None:
    for target in targets:
        if target not in by_id:
            raise Refused("Failure to find child node")
        owner.attach(by_id[target])


# --- the sweep -------------------------------------------------------------------------------------------------------


@dataclass
class SweepVariable:
    name: str
    start: float
    stop: float
    step: float
    constant: float
    stride: int
    count: int
    function: int = 0

    def as_json(self) -> dict[str, Any]:
        return {"name": self.name, "start": self.start, "stop": self.stop, "step": self.step,
                "constant": self.constant, "stride": self.stride, "stridesPerCycle": self.count,
                "function": self.function}

    def held_index(self) -> int:
        index = divide(f32(self.constant - self.start), self.step)
        if math.isnan(index) or index < 0:
            return 0
        return self.count - 1 if index >= self.count else math.trunc(index)


def first_day(setup: dict[str, Any], zone: str) -> float:
    date = setup.get("startDay")
    return float(date.astimezone(ZoneInfo(zone)).timetuple().tm_yday) if date else 1.0


def sweep(setup: dict[str, Any], zone: str) -> tuple[list[SweepVariable], int]:
    """The sweep variables, the setup's steppers and then "day", and the number of result rows."""
    report_days = divide(*(float_value(setup.get(key, "")) for key in ("reportStep", "stepsPerDay")))
    days = float_value(setup.get("runLength", "")) or 1.0
    first = first_day(setup, zone)
    variables = [SweepVariable("day", first, f32(f32(days + first) - 1), report_days, f32(f32(0.5 * days) + first), 1,
                               positive_count(divide(days, report_days)))]
    rows = variables[0].count
    for entry in reversed(setup["steppers"]):
        start, stop, step = (float_value(entry.get(key, "")) for key in ("start", "stop", "step"))
        quotient = divide(f32(stop - start), step)
        count = positive_count(math.trunc(quotient) + 1.0) if math.isfinite(quotient) else 0
        middle = f32(f32(start + stop) * 0.5)
        variables.insert(0, SweepVariable(entry.get("portPath", ""), start, stop, step, middle, rows, count))
        rows *= count
    if rows > LARGEST_ROW_COUNT or any(max(v.stride, v.count) > LARGEST_ROW_COUNT for v in variables):
        raise Refused(f"{rows} rows")
    return variables, rows


# --- the responses and the result table ------------------------------------------------------------------------------


@dataclass
class Response:
    name: str
    id: str
    included: bool = False
    scale: float = 1.0
    hue: float = 0.0

    def leaf(self) -> str:
        return self.name.split("/")[-1]

    def rgb(self) -> tuple[float, float, float]:
        return colorsys.hsv_to_rgb(self.hue, 1.0, 1.0)


def reads_as_true(text: str) -> bool:
    return re.match(r"\s*[+-]?0*[YyTt1-9]", text) is not None


def collect_recorders(node: Node, recorders: list[Response]) -> None:
    for child in node.children:
        if not child.is_group:
            collect_recorders(child, recorders)
        elif child.record["name"] == "outputs":
            recorders += [Response(port.path().replace("/outputs/", "/"), port.record["id"])
                          for port in child.children if reads_as_true(port.record.get("recordp", ""))]


def recorders_of(model: list[Node]) -> list[Response]:
    recorders: list[Response] = []
    for node in model:
        collect_recorders(node, recorders)
    return recorders


def response_variables(model: list[Node], table: bytes, leading: int) -> tuple[list[str], list[Response]]:
    """The header's response labels, and the recorders that they name in their order."""
    recorders = recorders_of(model)
    header = table[: table.find(b"\n") + 1 or len(table)][:9999]
    if not header:
        return [], []  # an empty table has no labels
    labels = header[:-1].decode("mac_roman").split("\t")
    if len(labels) < leading + len(recorders):
        raise Refused("too few labels")
    labels = labels[leading : leading + len(recorders)]
    by_leaf = {recorder.leaf(): recorder for recorder in recorders}
    responses = [by_leaf[label] for label in labels if label in by_leaf]
    hue = 0.0
    for response in responses:
        response.hue = hue
        hue = f32(hue + f32(1.0 / len(responses)))
    return labels, responses


class RowScanner:
    """Reads the cells behind the leading fields of one row."""

    def __init__(self, text: str, whole: bool) -> None:
        self.text = text
        self.at = 0
        self.whole = whole  # the file goes on: a number at the very end is not cut off

    def skip(self) -> None:
        while self.at < len(self.text) and self.text[self.at] in "\t, \r":
            self.at += 1

    def number(self) -> float | None:
        self.skip()
        match = NUMBER.match(self.text, self.at)
        if not match:
            return None
        self.at = match.end()
        cut = not self.whole and re.fullmatch(r"([eE][+-]?)?", self.text[self.at :])
        return 0.0 if cut else f32_from_text(match.group())

    def cell(self) -> float:
        self.skip()
        passed = re.compile(r"[^0-9.-]*").match(self.text, self.at)
        self.at = passed.end()
        if "{" not in passed.group():
            value = self.number()
            return 0.0 if value is None else value
        total = 0.0
        while (value := self.number()) is not None:
            total = f32(total + value)
        return total


TOKEN = re.compile(rb"[ \t\n\v\f\r]*[^ \t\n\v\f\r]+")


def read_rows(table: bytes, leading: int, rows: int, columns: int) -> tuple[list[float], list[float]]:
    """The cells, row-major, and the maximum of every column. Cells that the table does not hold are 0."""
    data = [0.0] * (rows * columns)
    at = table.find(b"\n") + 1 or len(table)
    for row in range(rows):
        for _ in range(leading):
            token = TOKEN.match(table, at)
            at = token.end() if token else -1
            if at < 0:
                break
        if at < 0:
            break
        end = table.find(b"\n", at) + 1 or len(table)
        line = table[at:end].decode("mac_roman")
        at = end
        scanner = RowScanner(line, line.endswith("\n") or row == rows - 1)
        data[row * columns : (row + 1) * columns] = [scanner.cell() for _ in range(columns)]
    maxima = [max([NO_MAXIMUM, *(v for v in data[column::columns] if not math.isnan(v))]) for column in range(columns)]
    return data, maxima


@dataclass
class Results:
    variables: list[SweepVariable]
    rows: int
    labels: list[str]
    responses: list[Response]
    data: list[float]
    maxima: list[float]


def results(setup_file: Path, table_file: Path, zone: str) -> Results:
    setup = read_setup(setup_file.read_bytes())
    variables, rows = sweep(setup, zone)
    model_file = setup_file.parent / setup.get("modelPath", "")
    if not model_file.is_file():
        raise Refused("no model file")
    model = read_model(model_file.read_bytes())
    table = table_file.read_bytes()
    leading = len(variables) + 1
    labels, responses = response_variables(model, table, leading)
    return Results(variables, rows, labels, responses, *read_rows(table, leading, rows, len(responses)))


# --- the plot --------------------------------------------------------------------------------------------------------


def row_choice(variables: list[SweepVariable]) -> list[int]:
    chosen = [0]
    for variable in variables:
        indexes = range(variable.count) if variable.function else [variable.held_index()]
        chosen = [row + index * variable.stride for row in chosen for index in indexes]
    return sorted(chosen)


def overall_maximum(found: Results) -> float:
    """What is drawn at the top. Values that are not finite take no part."""
    columns = [j for j, response in enumerate(found.responses) if response.included]
    values = [v for j in columns for v in found.data[j :: len(found.responses)] if math.isfinite(v)]
    largest = max(values, default=NO_MAXIMUM)
    return largest if largest > 0 else max(map(abs, values), default=0.0) or 1.0


def value_at(found: Results, rows: list[int], point: int, column: int) -> float:
    """A response's value at one grid point; 0 where a grid without rows has none."""
    return found.data[rows[point] * len(found.responses) + column] if point < len(rows) else 0.0


Vector = tuple[float, float, float]


def minus(a: Vector, b: Vector) -> Vector:
    return (f32(a[0] - b[0]), f32(a[1] - b[1]), f32(a[2] - b[2]))


def normal(a: Vector, b: Vector, c: Vector) -> Vector:
    u, v = minus(a, b), minus(b, c)
    cross = tuple(f32(f32(u[i] * v[j]) - f32(u[j] * v[i])) for i, j in ((1, 2), (2, 0), (0, 1)))
    length = math.sqrt(sum(part * part for part in cross))
    return (0.0, 1.0, 0.0) if length == 0 else tuple(f32(part / length) for part in cross)


def line_vertices(found: Results, rows: list[int], edges: int) -> list[float]:
    half, gain = f32(edges * 0.5), 2.0 / overall_maximum(found)
    vertices: list[float] = []
    for column, response in enumerate(found.responses):
        scale = f32(response.scale * gain)
        for i in range(edges if response.included else 0):
            y = f32(f32(value_at(found, rows, i, column) * scale) - 1)
            vertices += [f32(divide(i, half) - 1), y, 0.0]
    return vertices


def surface_vertices(found: Results, rows: list[int], x_edges: int, z_edges: int) -> list[float]:
    half_x, half_z = f32((x_edges - 1) * 0.5), f32((z_edges - 1) * 0.5)
    gain = 1.0 / overall_maximum(found)
    vertices: list[float] = []
    for column, response in enumerate(found.responses):
        if not response.included:
            continue
        scale = f32(response.scale * gain)

        def point(i: int, k: int) -> Vector:
            height = f32(value_at(found, rows, i * z_edges + k, column) * scale)
            return (f32(divide(i, half_x) - 1), height, f32(divide(k, half_z) - 1))

        for i in range(x_edges - 1):
            for k in range(z_edges - 1):
                p1, p2, p3, p4 = point(i, k), point(i, k + 1), point(i + 1, k + 1), point(i + 1, k)
                for triangle in ((p1, p2, p3), (p1, p3, p4)):
                    for corner in triangle:
                        vertices += [*normal(*triangle), *corner]
    return vertices


def plot(found: Results) -> dict[str, Any] | None:
    """The plot of the roles, holds, includes and scales as they stand; None when nothing is drawn."""
    x_edges = z_edges = x_quads = z_quads = dimensions = 0
    labels = []
    for variable in (v for v in found.variables if v.function in (1, 2)):
        labels.append(variable.name)
        if x_quads != 0:
            dimensions, z_edges, z_quads = 3, variable.count, variable.count - 1
        else:
            dimensions, x_edges, x_quads = 2, variable.count, variable.count - 1
    surfaces = [response for response in found.responses if response.included]
    if dimensions == 0 or not surfaces:
        return None
    rows = row_choice(found.variables) if found.rows else []
    if dimensions == 2:
        per_surface, vertices = x_edges, line_vertices(found, rows, x_edges)
    else:
        per_surface = max(x_quads, 0) * max(z_quads, 0) * 6
        vertices = surface_vertices(found, rows, x_edges, z_edges)
    return {"dimensions": dimensions, "labels": labels, "indices": rows,
            "ranges": [[i * per_surface, per_surface] for i in range(len(surfaces))],
            "colors": [[*response.rgb(), 0.9] for response in surfaces], "vertices": vertices}

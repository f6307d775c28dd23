"""Random setups, models, result tables and plot choices, weighted towards the edges where readers go wrong."""

from __future__ import annotations

import math
import random
from dataclasses import dataclass
from pathlib import Path
from xml.sax.saxutils import escape, quoteattr

import orrery_reference as reference

ODD_NUMBERS = [".5", "1e1", " 3", "abc", "", "-2", "0", "-0", "1e39", "-1e39", "1e-46", "5x", "+4", "0x10", "1e", "3.",
               ".", "-", "- 3", "inf", "nan", "\t7", "1_0", "1,5", "\n2", "0.7", "16777217", "0.1", "1e10",
               "4294967295", "65536", "8.589973e9", "0.33333333333333333333", "1.00000005960464477540", "1e+2",
               "2e-1", "--1"]
ODD_TEXTS = ["", "a & b < c", "  blanks  ", "x]]>y", "é", "Größe/Ω", "\"q\"", "a\tb", "line\nbreak", "Crop/biomass"]
DATES = ["2001-01-01 00:00:00 +0000", "2000-12-31 23:59:59 -0800", "2024-02-29 12:00:00 +0530",
         "1999-07-04 05:06:07 +1300", "2023-03-12 09:59:59 +0000", "2050-11-06 08:30:00 +0000",
         "1969-12-31 23:00:00 -0100", "2001-13-01 00:00:00 +0000", "2001-1-1 00:00:00 +0000", "", "today",
         "2001-01-01 00:00:00", " 2001-01-01 00:00:00 +0000", "2000-02-30 00:00:00 +0000", "1935-06-01 00:00:00 +0000"]
ZONES = ["UTC", "America/Los_Angeles", "Pacific/Auckland", "Pacific/Kiritimati", "Asia/Kolkata", "Europe/Berlin"]


RECORDED = ["1", "yes", "True", "0", "no", "", " 1", "+01", "00y", "-t", "\t\n1", "+-1", "n1", "0.5", "Y", "0 1"]


class Generator:
    def __init__(self, rng: random.Random) -> None:
        self.rng = rng
        self.chance = lambda p: rng.random() < p
        self.pick = rng.choice

    # --- setups

    def number(self, odd: float) -> str:
        if self.chance(odd):
            return self.pick(ODD_NUMBERS)
        return self.pick([str(self.rng.randint(0, 12)), f"{self.rng.uniform(-5, 20):.{self.rng.randint(1, 9)}g}"])

    def content(self, text: str) -> str:
        """One of the forms in which XML holds a text."""
        form = self.rng.random()
        if form < 0.1 and "]]>" not in text:
            return f"<![CDATA[{text}]]>"
        if form < 0.15:
            return f"<i>{escape(text)}</i>"
        if form < 0.25:
            return "".join(f"&#{ord(c)};" for c in text)
        return escape(text[:1]) + "<!-- no text -->" + escape(text[1:]) if form < 0.3 else escape(text)

    def element(self, name: str, text: str) -> str:
        return f"<{name}>{self.content(text)}</{name}>" if text or self.chance(0.5) else f"<{name}/>"

    def some(self, name: str, text: str, usual: float = 0.9) -> list[str]:
        """Mostly one element, at times none, two, or a nested one that does not count."""
        if self.chance(usual):
            return [self.element(name, text)]
        other = self.element(name, text + "2")
        return self.pick([[], [self.element(name, text), other], [other, other], [f"<Extra>{other}</Extra>"]])

    def entry(self, name: str, fields: list[tuple[str, str]]) -> str:
        inner = [piece for key, text in fields for piece in self.some(key, text, 0.85)]
        if name != "Initialization" or self.chance(0.5):
            if self.chance(0.15):
                inner += [self.element("PartName", self.pick(["Leaf", "Soil"])) for _ in range(self.pick([1, 1, 2]))]
                inner.append(self.element("PortName", self.pick(ODD_TEXTS)))
        self.rng.shuffle(inner)
        return f"<{name}>{''.join(inner)}</{name}>"

    def stepper(self, odd: float) -> str:
        start = self.rng.uniform(-3, 3)
        step = self.pick([0.1, 0.25, 0.3, 0.7, 1, 2, -0.5, 1e-3 * self.rng.random() + 0.1])
        stop = start + step * self.rng.randint(0, 5) + self.pick([0, 0, 0.05, -0.01])
        digits = self.rng.randint(1, 9)
        texts = [f"{value:.{digits}g}" if not self.chance(odd) else self.number(1) for value in (start, step, stop)]
        fields = [("PortPath", f"/Field/Crop/{self.pick(['a', 'b', 'c & d', 'é'])}")]
        fields += list(zip(("Start", "Step", "Stop"), texts))
        if odd:
            return self.entry("Steppers", fields)
        return "<Steppers>" + "".join(self.element(*f) for f in fields) + "</Steppers>"

    def setup(self, model_path: str, odd: float) -> bytes:
        usual, required = (0.93, 0.97) if odd else (1.0, 1.0)
        typed = lambda *plain: self.pick([*plain, self.number(odd) if odd else plain[0]])
        steps = self.some("StepsPerDay", typed("1", "2", "10"), usual)
        if odd and self.chance(0.3):
            steps = self.some("Dt", self.pick(["0.1", "0.25", "0.3", "0", "-0", "x", "1e39", "1e-45", "7", "1e-8"]))
        pieces = [*self.some("ModelPath", model_path, required), *steps,
                  *self.some("StartDay", self.pick(DATES), 0.85), *self.some("GCD", self.number(odd), 0.8),
                  *self.some("RunLength", typed("5", "1", "7.5", "12"), required),
                  *self.some("ReportStep", typed("1", "2", "0.7"), required),
                  *self.some("Dimensions", self.pick(["{ 1, 1 }", "{1,1}", "", "{ 3, 2 }"]), required)]
        for _ in range(self.rng.randint(0, 2) if odd else 0):
            pieces.append(self.entry("Output", [("PortPath", self.pick(ODD_TEXTS)), ("OutputPathName", "out é.txt")]))
            pieces.append(self.entry("Initialization", [("PortPath", "/F/in"), ("Coordinates", "{ 0, 0 }"),
                                                        ("Value", self.number(odd))]))
        pieces += [self.stepper(odd) for _ in range(self.pick([0, 1, 1, 2, 2, 3]))]
        if self.chance(0.3):
            self.rng.shuffle(pieces)
        name = self.pick(["Simulation", "Simulation", "Other"])
        return self.encoded(f"<{name}>" + self.pick(["", "\n  "]).join(pieces) + f"</{name}>", odd)

    def encoded(self, text: str, odd: float) -> bytes:
        if odd and self.chance(0.05):
            text = self.pick([text[: self.rng.randrange(len(text))], "", text + "<", text.replace("</", "<", 1)])
        if odd and self.chance(0.03):
            text = text.replace("Crop", "Crop中")
        forms = [("", "utf-8"), ("", "utf-8"), ("", "mac_roman"), ("\ufeff", "utf-8"), ("\ufeff", "utf-16"),
                 ('<?xml version="1.0" encoding="UTF-8"?>', "utf-8"), ('<?xml version="1.0"?>\n', "mac_roman"),
                 ('<?xml version="1.0" encoding="macintosh"?>', "mac_roman"),
                 ('<?xml version="1.0" encoding="ISO-8859-1"?>', "latin-1")]
        prefix, encoding = self.pick(forms)
        if encoding == "utf-16":
            return b"\xff\xfe" + text.encode("utf-16-le")
        return (prefix + text).encode(encoding, "xmlcharrefreplace")

    # --- models

    def attributes(self, pairs: list[tuple[str, str]]) -> str:
        return "".join(f'<attribute name={quoteattr(key)} type="x">{self.content(text)}</attribute>'
                       for key, text in pairs)

    def model(self, odd: float) -> bytes:
        """Levels, parts and ports, consistent but for a rare slip."""
        rng, objects = self.rng, []
        ids = iter(f"z{n}" for n in rng.sample(range(100, 999), 200))
        root = next(ids)
        children: dict[str, list[str]] = {root: []}
        for depth in range(rng.randint(1, 3) if odd else 1):
            level = next(ids)
            owner = self.pick(list(children))
            children[owner].append(level)
            children[level] = []
            objects.append((level, "KSLEVEL", owner))
        for _ in range(rng.randint(1, 4)):
            part, owner = next(ids), self.pick(list(children))
            children[owner].append(part)
            objects.append((part, self.pick(sorted(reference.CLASSES - {"KSLEVEL", "KSINPUT", "KSOUTPUT"})), owner))
        texts = []
        for identifier, kind, owner in [*objects, (root, "KSLEVEL", "")]:
            texts += self.object_with_ports(ids, identifier, kind, owner, children.get(identifier, []), odd)
        if self.chance(0.3):
            texts.append(f'<object type="KSTEMPLATE" id="{next(ids)}"><attribute name="name">T</attribute></object>')
        if self.chance(0.8):
            rng.shuffle(texts)
        if self.chance(odd * 0.4):
            texts = self.slip(texts, children)
        doctype = self.pick(["", '<?xml version="1.0" encoding="UTF-8"?>\n', '<!DOCTYPE database SYSTEM "model.dtd">'])
        return f"{doctype}<database><databaseInfo/>{'' .join(texts)}</database>".encode()

    def object_with_ports(self, ids, identifier, kind, owner, children, odd) -> list[str]:
        ports = {"inputs": [next(ids) for _ in range(self.rng.randint(0, 2))],
                 "outputs": [next(ids) for _ in range(self.rng.randint(0, 4))]}
        relations = [("inputs", ports["inputs"]), ("outputs", ports["outputs"]), ("children", children)]
        if owner:
            relations.append(("parent", [owner]))
        self.rng.shuffle(relations)
        inner = "".join(f'<relationship name="{name}" type="0/0"' + (f' idrefs="{" ".join(targets)}"/>' if targets
                        else "/>") for name, targets in relations)
        names = ["Crop", "Leaf", "Soil", "outputs", *(["inputs", "é/ü", ""] if odd else [])]
        name = [("name", self.pick(names))] if self.chance(0.9) else []
        inner += self.attributes([*name, *([("name", "Later")] if self.chance(0.05) else []), ("note", "a & b")])
        texts = [f'<object type="{kind}" id="{identifier}">{inner}</object>']
        for group, port in ((group, port) for group, members in ports.items() for port in members):
            name = self.pick(["biomass", "area", "yield", "rain", "a/b", "Ω"])
            pairs = [("name", name)] if self.chance(0.95) else []
            if self.chance(0.8):
                pairs.append(("varid", self.pick(["1", "2", "9", "10", "", "b", "B", "é", "01", " 1"])))
            if self.chance(0.85):
                pairs.append(("recordp", self.pick(RECORDED)))
            self.rng.shuffle(pairs)
            kind = "KSINPUT" if group == "inputs" else "KSOUTPUT"
            texts.append(f'<object type="{kind}" id="{port}">{self.attributes(pairs)}</object>')
        return texts

    def slip(self, texts: list[str], children: dict[str, list[str]]) -> list[str]:
        """One inconsistency: a class or object that is missing, two owners, a circle, a second root."""
        levels = list(children)
        extra = {"class": '<object type="KSLevel" id="q1"/>',
                 "missing": '<object type="KSLOOKUP" id="q1"><relationship name="inputs" idrefs="z100  z1"/></object>',
                 "root": '<object type="KSLEVEL" id="q1"><attribute name="name">Second</attribute></object>',
                 "emptyParent": '<object type="KSLEVEL" id="q1"><relationship name="parent" idrefs=""/></object>',
                 "owner": f'<object type="KSLEVEL" id="q1"><relationship name="parent" idrefs="{levels[0]}"/>'
                          f'<relationship name="children" idrefs="{self.pick(levels)} {self.pick(levels)}"/></object>',
                 "self": '<object type="KSLEVEL" id="q1"><relationship name="children" idrefs="q1"/></object>',
                 "twice": texts[0].replace("<attribute", '<attribute name="twice">1</attribute><attribute', 1),
                 "lost": None}
        what = self.pick(list(extra))
        position = self.rng.randint(0, len(texts))
        return texts[1:] if what == "lost" else texts[:position] + [extra[what]] + texts[position:]

    # --- result tables

    def value(self, odd: float) -> str:
        if self.chance(odd):
            return self.pick(["1e39", "-1e39", "1e-40", "1.4e-45", "7e-46", "nan", "inf", "-", ".", "x", "+5", "1.2.3",
                              "0x10", "5-3", "1e", "2e+", "{1, 2, 3.5}", "{ 1e39 -1e39 }", "{}", "{a 1}", "{-0}", "-0",
                              "{1 x 2}", "word", "\0", "{1\u00a02}", "é", "1e5", "-.5", "5.", "\"3\"", "{1,{2,3}}",
                              "}4", "3.4028235677973366e38", "3.4028235677973365e38", "1.000000059604644775390625",
                              "1.00000005960464477539062500001", "", "1 000", "{1", "2}", "\v6", "1e-99999999"])
        return self.pick([f"{self.rng.uniform(-10, 100):.7g}", str(self.rng.randint(-3, 9)),
                          f"{self.rng.gauss(0, 1):.17g}", f"{self.rng.gauss(0, 1):.3e}"])

    def table(self, leading: int, rows: int, recorders: list[str]) -> bytes:
        rng = self.rng
        odd = self.pick([0, 0, 0.02, 0.1, 0.4])
        labels = list(recorders)
        rng.shuffle(labels)
        for _ in range(self.pick([0, 0, 0, 1, 2])):
            if labels:
                labels[rng.randrange(len(labels))] = self.pick(["unknown", labels[0], "", "Ω"])
        if self.chance(0.05):
            labels = labels[1:] if self.chance(0.5) else labels + ["surplus"]
        head = "\t".join([f"h{n}" for n in range(leading - (1 if self.chance(0.02) else 0))] + labels)
        if self.chance(0.08):
            head = "x" * (9998 - len(head) + rng.randint(-4, 4)) + head  # cut in or beside the last label
        end = self.pick(["\n", "\n", "\n", "\r\n", " \n"])
        sign = self.pick([1, 1, 1, -1, 0])
        lines = [head + (end if self.chance(0.2) else "\n")]
        present = rows if self.chance(0.65) else rng.randint(0, rows + 2)
        for row in range(present):
            cells = [self.value(odd) for _ in range(len(recorders) + (rng.randint(-2, 1) if self.chance(odd) else 0))]
            if sign < 1 and not odd:
                cells = ["0" if sign == 0 else "-" + cell.lstrip("-") for cell in cells]
            gap = self.pick(["\t", "\t", ",", ", ", " ", "\t\t"])
            front = self.pick(["\t", " "]).join(self.pick([str(row), "x,y", "{1}", "é"]) for _ in range(leading))
            blank = self.pick(["", "", "", " ", "\n", "\r\n\n"]) if self.chance(odd) else ""
            between = self.pick(["\t", " ", "\t", "", ","][: 5 if odd else 3])
            lines.append(blank + front + between + gap.join(cells) + end)
        data = "".join(lines).encode("mac_roman", "replace")
        if self.chance(0.25):
            data = data[: rng.randrange(len(data) + 1)] if self.chance(0.5) else data.rstrip(b"\r\n")
            data += self.pick([b"", b"e", b"E-", b".", b"\0"])
        return data

    # --- plot choices

    def plot_choices(self, found: reference.Results) -> list[str]:
        """Options for the tool; the same choices are made in `found`."""
        rng, arguments = self.rng, []
        axes = rng.sample(range(len(found.variables)), min(len(found.variables), self.pick([0, 1, 1, 2, 2, 2])))
        for role, index in zip(self.pick([(1, 2), (2, 1)]), axes):
            found.variables[index].function = role
            arguments += [f"--axis{role}", self.variable_name(found, index)]
        for index, variable in enumerate(found.variables):
            if self.chance(0.4):
                second = variable.start + variable.step
                beside = f"{second if math.isfinite(second) else 0:.9g}"
                text = self.pick([f"{rng.uniform(-5, 15):.6g}", beside, "-1e30", "1e30"])
                variable.constant = reference.f32_from_text(text)
                arguments += ["--hold", f"{self.variable_name(found, index)}={text}"]
        for index, response in enumerate(found.responses):
            if self.chance(0.6):
                response.included = True
                arguments += ["--include", f"#{index}"]
            if self.chance(0.3):
                text = self.pick(["2", "0.5", "-1", "0", "1e-3", "3.3"])
                response.scale = reference.f32_from_text(text)
                arguments += ["--scale", f"#{index}={text}"]
        return arguments

    def variable_name(self, found: reference.Results, index: int) -> str:
        name = found.variables[index].name
        unique = [variable.name for variable in found.variables].count(name) == 1
        return name if unique and name.isascii() and name and self.chance(0.5) else f"#{index}"


@dataclass
class Case:
    """The files of one case, in a folder of its own."""

    folder: Path
    zone: str
    generator: Generator
    setup: Path
    table: Path

    @staticmethod
    def make(folder: Path, seed: str) -> "Case":
        generator = Generator(random.Random(seed))
        folder.mkdir(parents=True)
        odd = generator.pick([0, 0, 0.15])
        model = folder / "model.xml"
        model.write_bytes(generator.model(1 if generator.chance(0.4) else 0))
        case = Case(folder, generator.pick(ZONES), generator, folder / "case.xml", folder / "table.txt")
        path = generator.pick(["model.xml", str(model)])
        for _ in range(20):
            case.setup.write_bytes(generator.setup(path, odd))
            if case.write_table(model):
                return case
        raise RuntimeError(f"no small case from seed {seed}")

    def write_table(self, model: Path) -> bool:
        """Writes a table that suits the setup and the model; False when the setup's grid is too large for a test."""
        variables, rows, recorders = [], 1, ["biomass"]
        try:
            variables, rows = reference.sweep(reference.read_setup(self.setup.read_bytes()), self.zone)
            recorders = [r.leaf() for r in reference.recorders_of(reference.read_model(model.read_bytes()))]
        except reference.Refused:
            pass
        # An axis may be long though the grid has no rows, when another variable has no values.
        longest = sorted((variable.count for variable in variables), reverse=True)[:2]
        small = rows <= 400 and math.prod(longest) <= 1000 and max(longest, default=0) <= 1000
        self.table.write_bytes(self.generator.table(len(variables) + 1, rows if small else 1, recorders))
        return small

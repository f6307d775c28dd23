"""Compares orrery-batch with the reference on random cases: differential.py --tool PATH --cases N --seed S

Each disagreement is printed and its case stays in a folder below --keep. Exits 1 on any.
"""

from __future__ import annotations

import argparse
import json
import math
import os
import shutil
import subprocess
import sys
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any, Callable

import orrery_reference as reference
from case_generator import Case

VERTEX_TOLERANCE = 2e-6
HUGE = 1e12  # where the length of a normal may leave single precision


class Number(str):
    """A number of the answer in its own digits, so that it is rounded once, to single precision."""


class Near(float):
    """A float that may differ by the tolerance of a vertex."""


class Anything:
    """A value that is not settled."""


def differences(expected: Any, actual: Any, where: str = "") -> list[str]:
    """What differs, at most a few lines."""
    if isinstance(expected, Anything):
        return []
    if isinstance(expected, dict) and isinstance(actual, dict):
        found = []
        if expected.keys() != actual.keys():
            found.append(f"{where}: keys {sorted(expected)} against {sorted(actual)}")
        for key in expected.keys() & actual.keys():
            found += differences(expected[key], actual[key], f"{where}.{key}")
        return found[:5]
    if isinstance(expected, (list, tuple)) and isinstance(actual, list):
        if len(expected) != len(actual):
            return [f"{where}: {len(expected)} entries against {len(actual)}"]
        found = []
        for index, pair in enumerate(zip(expected, actual)):
            found += differences(*pair, f"{where}[{index}]")
            if len(found) > 3:
                break
        return found
    return [] if same_value(expected, actual) else [f"{where}: expected {expected!r}, got {actual!r}"]


def same_value(expected: Any, actual: Any) -> bool:
    if isinstance(expected, float):
        if not math.isfinite(expected):
            return actual is None
        if not isinstance(actual, Number):
            return False
        value = reference.f32_from_text(actual)
        if isinstance(expected, Near):
            return abs(value - expected) <= VERTEX_TOLERANCE * max(1.0, abs(expected))
        return reference.f32_bits(value) == reference.f32_bits(expected)
    if isinstance(expected, int) and not isinstance(expected, bool):
        return isinstance(actual, Number) and actual == str(expected)
    return type(expected) is type(actual) and expected == actual


def near_vertices(drawn: dict[str, Any]) -> list[Any]:
    """The vertices as what the tool must come near to; normals are open where a corner lies too far out."""
    vertices = [Near(value) for value in drawn["vertices"]]
    if drawn["dimensions"] == 2:
        return vertices
    for start in range(0, len(vertices), 18):
        heights = [vertices[start + corner + 4] for corner in (0, 6, 12)]
        if not all(abs(height) < HUGE for height in heights):
            for corner in (0, 6, 12):
                vertices[start + corner : start + corner + 3] = [Anything()] * 3
    return vertices


@dataclass
class Checker:
    tool: str
    case: Case
    faults: list[str] = field(default_factory=list)
    counts: Counter[str] = field(default_factory=Counter)

    def check(self, arguments: list[str], expect: Callable[[], Any]) -> Any:
        """Runs the tool once and compares it with the expected answer or refusal."""
        try:
            expected = expect()
        except reference.Refused as reason:
            expected = reason
        command = [self.tool, *arguments]
        done = subprocess.run(command, capture_output=True, timeout=60,
                              env={**os.environ, "TZ": self.case.zone})
        refused = isinstance(expected, reference.Refused)
        self.counts[arguments[0]] += 1
        self.counts["refused"] += refused
        if done.returncode != int(refused):
            found = [f"exit {done.returncode}, expected {int(refused)} ({expected if refused else 'an answer'})"]
        elif refused:
            found = [] if done.stderr.strip() and not done.stdout.strip() else ["a refusal needs a message alone"]
        else:
            found = differences(expected, json.loads(done.stdout, parse_float=Number, parse_int=Number))
        if found:
            message = done.stderr.decode("utf-8", "replace").strip()
            self.faults += [f"TZ={self.case.zone} {' '.join(command)}", *(f"    {line}" for line in found)]
            self.faults += [f"    it said: {message}"] if message else []
        return expected

    def run(self) -> "Checker":
        case, setup = self.case, str(self.case.setup)
        read = lambda: setup_for_tool(case.setup)
        results = lambda: read() and reference.results(case.setup, case.table, case.zone)
        self.check(["show", setup], lambda: reference.show_setup(read()))
        self.check(["sweep", setup], lambda: self.sweep_answer(read()))
        self.check(["model", str(case.folder / "model.xml")], self.model_answer)
        self.check_rewrite(read)
        found = self.check(["results", setup, "--table", str(case.table)], lambda: results_answer(results()))
        for _ in range(3 if isinstance(found, dict) else 0):
            chosen = results()
            options = case.generator.plot_choices(chosen)
            self.check(["plot", setup, "--table", str(case.table), *options, "--json", "-"],
                       lambda: plot_answer(chosen))
        return self

    def check_rewrite(self, read: Callable[[], dict[str, Any]]) -> None:
        copy = self.case.folder / "copy.xml"
        expected: list[Any] = []
        try:
            expected.append(reference.show_setup(reference.rewritten(read())))
        except reference.Refused:
            return
        subprocess.run([self.tool, "rewrite", str(self.case.setup), str(copy)], capture_output=True, timeout=60)
        if not copy.exists():
            self.faults.append(f"{self.tool} rewrite {self.case.setup} {copy}\n    wrote nothing")
            return
        self.check(["show", str(copy)], lambda: expected[0])
        written = reference.show_setup(reference.read_setup(copy.read_bytes()))
        self.faults += [f"rewritten {copy}: {line}" for line in differences(expected[0], written)]

    def sweep_answer(self, setup: dict[str, Any]) -> dict[str, Any]:
        variables, rows = reference.sweep(setup, self.case.zone)
        return {"nRowsOfData": rows, "independentVariables": [variable.as_json() for variable in variables]}

    def model_answer(self) -> list[Any]:
        return [node.as_json() for node in reference.read_model((self.case.folder / "model.xml").read_bytes())]


def setup_for_tool(path: Path) -> dict[str, Any]:
    """The tool answers nothing for bytes that do not parse, where a window opens an empty setup."""
    if reference.parse_setup_xml(path.read_bytes()) is None:
        raise reference.Refused("not well-formed")
    return reference.read_setup(path.read_bytes())


def results_answer(found: reference.Results) -> dict[str, Any]:
    responses = [{"name": response.name, "id": response.id, "includep": response.included, "scale": response.scale,
                  "color": [Near(part) for part in (*response.rgb(), 1.0)]} for response in found.responses]
    return {"responseVariableLabels": found.labels, "dependentVariables": responses, "nRowsOfData": found.rows,
            "yMax": found.maxima, "simulationData": found.data}


def plot_answer(found: reference.Results) -> dict[str, Any]:
    drawn = reference.plot(found)
    if drawn is None:
        open_ones = dict.fromkeys(("dimensions", "labels", "indices", "colors"), Anything())
        return {**open_ones, "ranges": [], "vertices": []}
    drawn["vertices"] = near_vertices(drawn)
    drawn["colors"] = [[Near(part) for part in color] for color in drawn["colors"]]
    return drawn


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True)
    parser.add_argument("--cases", type=int, default=300)
    parser.add_argument("--seed", default="1")
    parser.add_argument("--keep", type=Path, default=Path("differential-cases"))
    parser.add_argument("--only", type=int, help="one case's number, to look at it again")
    options = parser.parse_args()
    shutil.rmtree(options.keep, ignore_errors=True)
    numbers = range(options.cases) if options.only is None else [options.only]

    def one(number: int) -> Checker:
        case = Case.make((options.keep / str(number)).absolute(), f"{options.seed}/{number}")
        checker = Checker(options.tool, case).run()
        if not checker.faults and options.only is None:
            shutil.rmtree(case.folder)
        return checker

    failed, counts = 0, Counter()
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for checker in pool.map(one, numbers):
            counts.update(checker.counts)
            failed += bool(checker.faults)
            print("".join(f"{line}\n" for line in checker.faults), end="")
    tally = ", ".join(f"{count} {name}" for name, count in sorted(counts.items()))
    print(f"{len(numbers)} cases, {failed} disagree (seed {options.seed}: {tally})")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

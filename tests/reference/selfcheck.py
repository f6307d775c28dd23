"""The reference against worked examples, so that it is trusted for a reason."""

import math
import tempfile
import unittest
from pathlib import Path

import orrery_reference as reference

SETTINGS = "<ModelPath>{model}</ModelPath><Dimensions/><RunLength>{days}</RunLength><ReportStep>{report}</ReportStep>"


def setup_xml(days="100", report="10", more="<StepsPerDay>10</StepsPerDay>", model="m.xml", steppers=()) -> bytes:
    lists = "".join(f"<Steppers><PortPath>{name}</PortPath><Start>{start}</Start><Step>{step}</Step><Stop>{stop}</Stop>"
                    "</Steppers>" for name, start, step, stop in steppers)
    return f"<S>{SETTINGS.format(model=model, days=days, report=report)}{more}{lists}</S>".encode()


def swept(**what):
    return reference.sweep(reference.read_setup(setup_xml(**what)), "UTC")


class SinglePrecision(unittest.TestCase):
    def test_text_is_rounded_once(self):
        for text, bits in (("1.000000059604644775390625", 0x3F800000), ("1.00000005960464477539062500001", 0x3F800001),
                           ("340282356779733661637539395458142568447", 0x7F7FFFFF),
                           ("-340282356779733661637539395458142568448", 0xFF800000), ("7.006492321624085e-46", 0),
                           ("7.0064923216240853546186479164495806564013097093825788587853e-46", 0), ("1e-45", 1),
                           ("7.1e-46", 1), ("-0", 0x80000000), ("1e-99999999", 0), ("16777217", 0x4B800000)):
            self.assertEqual(reference.f32_bits(reference.f32_from_text(text)), bits, text)

    def test_lenient_conversion(self):
        for text, value in ((" 3", 3), (".5x", 0.5), ("1e", 1), ("abc", 0), ("", 0), ("-", 0), ("0x10", 0), ("inf", 0)):
            self.assertEqual(reference.float_value(text), value, text)


class Sweep(unittest.TestCase):
    def test_two_steppers_and_day(self):
        variables, rows = swept(steppers=[("A", 0, 1, 2), ("B", 10, 10, 40)])
        seen = [(v.name, v.start, v.stop, v.step, v.constant, v.stride, v.count) for v in variables]
        self.assertEqual(seen, [("A", 0, 2, 1, 1, 400, 3), ("B", 10, 40, 10, 25, 100, 4),
                                ("day", 1, 100, 1, 51, 1, 100)])
        self.assertEqual(rows, 1200)

    def test_counts(self):
        for start, step, stop, count in ((0, 0.1, 1, 11), (0, 0.1, 0.7, 8), (0, 0.3, 1, 4), (5, 1, 5, 1), (0, 0, 1, 0),
                                         (1, 0.1, 0, 0), (1, -0.5, 0, 3)):
            self.assertEqual(swept(steppers=[("A", start, step, stop)])[0][0].count, count, (start, step, stop))
        for days, report, count, stop in (("0", "10", 1, 1), ("1", "100", 0, 1), ("5", "0", 0, 5), ("x", "1", 10, 1)):
            day = swept(days=days, report=report)[0][0]
            self.assertEqual((day.count, day.stop), (count, stop), (days, report))

    def test_first_day_follows_the_zone(self):
        setup = reference.read_setup(setup_xml())
        days = [reference.first_day(setup, zone) for zone in ("UTC", "America/Los_Angeles", "Pacific/Auckland")]
        self.assertEqual(days, [1, 366, 1])
        self.assertEqual(reference.first_day({}, "UTC"), 1)

    def test_steps_from_dt(self):
        for text, steps in (("0.1", "10.000000"), ("0.3", "3.333333"), ("0", "inf"), ("x", "inf"), ("-0", "-inf")):
            setup = reference.read_setup(setup_xml(more=f"<Dt>{text}</Dt>"))
            self.assertEqual(setup["stepsPerDay"], steps)

    def test_too_many_rows_are_refused(self):
        with self.assertRaises(reference.Refused):
            swept(steppers=[("A", 0, 1, 65535), ("B", 0, 1, 65535)])


class Rows(unittest.TestCase):
    def test_cells_of_one_row(self):
        for text, cells in (("{1, 2, 3.5}\t7", [6.5, 7]), ("-0.5 1", [-0.5, 1]), ("1.5,2.5\r", [1.5, 2.5]),
                            ("nan 4", [4, 0]), ("- 3", [0, 0]), ("{} 5 6", [11, 0]), ("{a 1}", [1, 0]),
                            ("5-3", [5, -3]), ("{1 +5} 2", [6, 2]), ("1e 2", [1, 2])):
            data, _ = reference.read_rows(f"h\n0 0\t{text}\n".encode(), 2, 1, 2)
            self.assertEqual(data, cells, text)

    def test_ends(self):
        for table, rows, data in ((b"h\n0 7", 1, [7]), (b"h\n0 7", 2, [0, 0]), (b"h\n0 7e-", 2, [0, 0]),
                                  (b"h\n0 7 ", 2, [7, 0]), (b"h", 1, [0]),
                                  (b"h\n\n0 7\r\n\n0 8\n", 2, [7, 8]), (b"h\n0 1e39\n", 1, [math.inf])):
            self.assertEqual(reference.read_rows(table, 1, rows, 1)[0], data, table)
        self.assertEqual(reference.read_rows(b"h\n0 -1e30\n", 1, 1, 1)[1], [reference.NO_MAXIMUM])


def object_xml(kind: str, identifier: str, relations: dict[str, str], **attributes: str) -> str:
    values = "".join(f'<attribute name="{key}">{value}</attribute>' for key, value in attributes.items())
    links = "".join(f'<relationship name="{key}" idrefs="{ids}"/>' for key, ids in relations.items())
    return f'<object type="{kind}" id="{identifier}">{values}{links}</object>'


class ModelAndPlot(unittest.TestCase):
    def setUp(self):
        ports = [object_xml("KSOUTPUT", f"o{n}", {}, name=f"r{n}", varid=v, recordp="1")
                 for n, v in enumerate(("10", "2", "9"))]
        self.model = ("<database>" + object_xml("KSLEVEL", "R", {"children": "P"}, name="Field")
                      + object_xml("KSTVDD", "P", {"parent": "R", "outputs": "o1 o2 o0"}, name="Crop")
                      + "".join(ports) + "</database>").encode()

    def results(self, rows: str, **setup) -> reference.Results:
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "m.xml").write_bytes(self.model)
            (Path(folder) / "s.xml").write_bytes(setup_xml(report="10", **setup))
            leading = "\t".join("h" for _ in range(2 + len(setup.get("steppers", ()))))
            (Path(folder) / "t.txt").write_text(f"{leading}\tr2\tr0\tr1\n{rows}")
            return reference.results(Path(folder) / "s.xml", Path(folder) / "t.txt", "UTC")

    def test_tree_and_responses(self):
        outputs = reference.read_model(self.model)[0].children[1]
        self.assertEqual([port.record["varid"] for port in outputs.children], ["10", "2", "9"])
        found = self.results("")
        self.assertEqual([response.name for response in found.responses], [f"Field/Crop/r{n}" for n in (2, 0, 1)])
        self.assertEqual([tuple(map(round, r.rgb())) for r in found.responses], [(1, 0, 0), (0, 1, 0), (0, 0, 1)])

    def test_line(self):
        found = self.results("".join(f"0 0 9 9 {n}\n" for n in range(5)), days="5")
        found.variables[0].function, found.responses[2].included = 2, True
        vertices = reference.plot(found)["vertices"]
        for value, expected in zip(vertices[::3], (-1, -0.6, -0.2, 0.2, 0.6)):
            self.assertAlmostEqual(value, expected, places=6)
        self.assertEqual(vertices[1::3], [-1, -0.5, 0, 0.5, 1])

    def test_surface_and_choice(self):
        found = self.results("0 0 0 4 4 4\n" * 12, days="4", steppers=[("A", 0, 1, 2)])
        found.variables[0].function, found.variables[1].function, found.responses[0].included = 2, 1, True
        drawn = reference.plot(found)
        self.assertEqual((drawn["dimensions"], drawn["ranges"], len(drawn["vertices"])), (3, [[0, 36]], 216))
        self.assertEqual(drawn["vertices"][:6], [0, 1, 0, -1, 1, -1])
        found.variables[0].function, found.variables[0].constant = 0, 99
        self.assertEqual(reference.row_choice(found.variables), [8, 9, 10, 11])


if __name__ == "__main__":
    unittest.main()

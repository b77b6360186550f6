"""benchmarks/summary.py: medians of runs, the worst group of a row, both kinds of ratio, both files."""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SUMMARY = ROOT / "benchmarks" / "summary.py"


def summarise(*runs):
    """The table's lines and the rows of the JSON file."""
    with tempfile.TemporaryDirectory() as folder:
        files = []
        for number, run in enumerate(runs):
            files.append(pathlib.Path(folder, f"{number}.json"))
            files[-1].write_text(json.dumps(run), encoding="utf-8")
        table, markdown = pathlib.Path(folder, "table.json"), pathlib.Path(folder, "table.md")
        command = [sys.executable, SUMMARY, *files, "--json", table, "--markdown", markdown]
        text = subprocess.run(command, capture_output=True, text=True, check=True).stdout
        assert text == markdown.read_text(encoding="utf-8")
        return text.splitlines(), json.loads(table.read_text(encoding="utf-8"))["rows"]


def row(rows, operation, masks):
    return next(r for r in rows if r["operation"] == operation and r["masks"] == masks)


class Summary(unittest.TestCase):
    SPIRAL = ("flood fill", "spiral, against OpenCV")

    def test_a_ratio_is_the_peers_median_time_over_ours(self):
        _, rows = summarise({"FloodFill8Way/768x576/spiral": {"qel": [9, 10, 30], "opencv": [1, 40, 50]}})
        self.assertEqual(row(rows, *self.SPIRAL)["worst"], 4)
        self.assertTrue(row(rows, *self.SPIRAL)["reached"])

    def test_each_group_counts_with_the_median_of_the_runs_and_the_worst_group_is_shown(self):
        def run(small, large):
            return {"FloodFill8Way/768x576/spiral": {"qel": [10], "opencv": [small]},
                    "FloodFill8Way/1920x1080/spiral": {"qel": [10], "opencv": [large]}}
        _, rows = summarise(run(60, 21), run(70, 20), run(80, 90))
        figures = row(rows, *self.SPIRAL)
        self.assertEqual((figures["worst"], figures["least"], figures["most"]), (2.1, 2, 9))
        self.assertEqual(figures["at"], "FloodFill8Way/1920x1080/spiral")
        self.assertAlmostEqual(figures["median"], (7 + 2.1) / 2)
        self.assertFalse(figures["reached"])

    def test_the_best_of_several_peers_counts(self):
        _, rows = summarise({"Dilate8Way/768x576/motion": {
            "qel": [2], "opencv": [50], "leptonica": [60], "leptonica-dwa": [40], "memcpy": [1]}})
        self.assertEqual(row(rows, "dilate, erode", "576p, against the best peer")["worst"], 20)

    def test_a_cost_is_our_time_over_the_yardsticks_and_small_is_good(self):
        _, rows = summarise({"Union/768x576/motion": {"qel": [11], "memcpy": [10]},
                             "Difference/768x576/motion": {"qel": [12], "memcpy": [10]}})
        figures = row(rows, "Union, Difference, Intersection", "any, times memcpy")
        self.assertEqual((figures["worst"], figures["reached"]), (1.2, False))

    def test_a_first_call_is_measured_against_a_steady_one(self):
        _, rows = summarise({"Connect8Way/1920x1080/demo-raw-100": {"qel": [10], "qel-first-call": [40]}})
        self.assertEqual(row(rows, "first call on a fresh object", "1080p, times a steady call")["worst"], 4)

    def test_what_was_not_measured_says_so(self):
        lines, rows = summarise({"FloodFill8Way/768x576/spiral": {"qel": [10]}})
        self.assertNotIn("worst", row(rows, *self.SPIRAL))
        self.assertIn("| flood fill | spiral, against OpenCV |  | |  | >= 2.5 | >= 4 | not measured |", lines)

    def test_the_table_tells_what_is_short(self):
        lines, _ = summarise({"FloodFill8Way/768x576/spiral": {"qel": [10], "opencv": [20]}})
        self.assertIn("| flood fill | spiral, against OpenCV | 2.00 | 2.00 to 2.00 | 2.00 | >= 2.5 | >= 4 | short |",
                      lines)


if __name__ == "__main__":
    unittest.main()

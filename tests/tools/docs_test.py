"""tools/docs fails for headers that leave something without a text or say something wrong."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

HEADER = """#pragma once
namespace qel {{
/// A thing.
class QEL_ALGORITHM_EXPORT Thing {{
public:
    Thing();
    int GetSize() const;
    Thing& operator=(Thing const& other);
    {member}
    int size = 0;
}};
{function}
}}  // namespace qel
"""


def make(member="", function=""):
    """The exit code and the problems of a tree with one header."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "docs").mkdir()
        (folder / "include").mkdir()
        (folder / "docs" / "Doxyfile").write_bytes((ROOT / "docs" / "Doxyfile").read_bytes())
        (folder / "docs" / "reference.dox").write_text("/// All.\nnamespace qel {}\n", encoding="utf-8")
        (folder / "include" / "thing.hpp").write_text(HEADER.format(member=member, function=function), encoding="utf-8")
        run = subprocess.run([sys.executable, ROOT / "tools" / "docs", folder], capture_output=True, text=True, check=False)
        return run.returncode, run.stdout


class Docs(unittest.TestCase):
    def test_what_speaks_for_itself_needs_no_text(self):
        self.assertEqual(make()[0], 0, make()[1])

    def test_a_member_function_without_a_text_is_named(self):
        code, text = make(member="void Work(int hours);")
        self.assertEqual(code, 1)
        self.assertIn("include/thing.hpp:9: ", text)
        self.assertIn("Work(int hours) (function) of class qel::Thing is not documented", text)

    def test_a_function_a_class_and_an_enumeration_without_a_text_are_named(self):
        for function, expected in (("void Work();", "Work() (function) of namespace qel is not documented"),
                                   ("class Other {\npublic:\n    /// Works.\n    void Work();\n};", "Compound qel::Other is not documented"),
                                   ("enum class Way { Up };", "Way (enumeration) of namespace qel is not documented"),
                                   ("inline constexpr int Many = 3;", "Many (variable) of namespace qel is not documented")):
            with self.subTest(function):
                code, text = make(function=function)
                self.assertEqual(code, 1)
                self.assertIn(expected, text)

    def test_a_text_that_names_another_argument_is_refused(self):
        code, text = make(function="/// Works.\n/// @param days how long\nvoid Work(int hours);")
        self.assertEqual(code, 1)
        self.assertIn("argument 'days'", text)


if __name__ == "__main__":
    unittest.main()

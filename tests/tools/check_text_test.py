"""tools/check_text accepts the project's files and names each kind of offence in files made to offend."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
CHECK = ROOT / "tools" / "check_text"


def check(root):
    result = subprocess.run([sys.executable, CHECK, root], capture_output=True, text=True, check=False)
    return result.returncode, result.stdout


def check_files(files):
    """Runs the check on a repository of the given files, {path: text}."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["git", "init", "-q", folder], check=True)
        for name, text in files.items():
            file = pathlib.Path(folder, name)
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_bytes(text.encode("utf-8") if isinstance(text, str) else text)
        return check(folder)


class CheckText(unittest.TestCase):
    def test_the_project_is_in_order(self):
        self.assertEqual(check(ROOT), (0, "characters, spelling, names and links are in order\n"))

    def test_names_each_offence_with_its_place(self):
        cases = [
            ("not ASCII", {"a.hpp": "int a;\n// caf\u00e9\n"}, "a.hpp:2: '\u00e9' is not ASCII"),
            ("a tab", {"a.cpp": "\tint a;\n"}, "a.cpp:1: a tab"),
            ("blanks", {"a.cpp": "int a; \n"}, "a.cpp:1: blanks at the end of the line"),
            ("no end", {"a.cpp": "int a;"}, "a.cpp: no end of line after the last one"),
            ("no text", {"a.txt": b"\xff\n"},
             "a.txt: not UTF-8 text; if it is data, tools/check_text has to leave it out"),
            ("American", {"a.md": "The Color of it.\n"}, "a.md:1: 'Color' is not British spelling"),
            ("a name", {"docs/MyPage.md": "\n"}, "docs/MyPage.md: the name is not snake_case"),
            ("a link", {"docs/a.md": "See [b](b.md).\n"}, "docs/a.md:1: the link to b.md leads nowhere"),
            ("a picture", {"a.md": "![b](b.jpg)\n"}, "a.md:1: the link to b.jpg leads nowhere"),
            ("a heading", {"a.md": "[b](b.md#c)\n", "b.md": "# B\n"}, "a.md:1: b.md has no heading #c"),
        ]
        for name, files, expected in cases:
            with self.subTest(name):
                self.assertEqual(check_files(files), (1, expected + "\n"))

    def test_lets_pass_what_is_right(self):
        files = {
            "a.md": "# How it is\n\n[b](docs/b.md#two-words), [here](#how-it-is), <https://nowhere.example/Color>, `color`\n",
            "docs/b.md": "## Two words\n\n```sh\n# color\n```\n".replace("# color", "# colour"),
            "src/a_b.cpp": "auto x = option.color(gray_level);\n",
            "fuzz/corpus/x/0": b"\xff\t ",
            "CMakeLists.txt": "",
        }
        self.assertEqual(check_files(files)[0], 0, check_files(files)[1])


if __name__ == "__main__":
    unittest.main()

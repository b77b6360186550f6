#!/usr/bin/env python3
"""tools/abi tells every change that a program built earlier would feel, and no other; --bless records it."""
import contextlib
import importlib.machinery
import importlib.util
import io
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
loader = importlib.machinery.SourceFileLoader("abi", str(ROOT / "tools/abi"))
abi = importlib.util.module_from_spec(importlib.util.spec_from_loader("abi", loader))
loader.exec_module(abi)

HEADER = """#include <memory>
#include <string>
#include <vector>
#define EXPORT __attribute__((visibility("default")))
namespace qel {
enum class Kind { Small, Large };
struct Item { int first; std::string name; };
struct Inner { int value; };
struct Outer { std::shared_ptr<Inner> inner; };
class EXPORT Shape {
public:
    Shape();
    virtual ~Shape();
    virtual int Area() const;
private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
EXPORT int Count(std::vector<Item> const& items, Kind kind);
EXPORT int Value(Outer const& outer);
}
"""
SOURCE = """#include "shapes.hpp"
#include <map>
namespace qel {
struct Shape::Impl { int secret = 1; };
Shape::Shape() : impl_(std::make_unique<Impl>()) {}
Shape::~Shape() = default;
int Shape::Area() const { return impl_->secret; }
int Count(std::vector<Item> const& items, Kind kind) { return static_cast<int>(items.size()) + static_cast<int>(kind); }
int Value(Outer const& outer) { return outer.inner->value; }
int Helper() { std::map<int, std::string> map{{1, "one"}}; return map.size(); }
}
"""


class Abi(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.baseline = abi.Baseline(self.folder / "abi")

    def build(self, header, source):
        # A folder of its own each time: where a library was built must not matter.
        place = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        (place / "include").mkdir()
        (place / "include/shapes.hpp").write_text(header, encoding="ascii")
        (place / "shapes.cpp").write_text(source, encoding="ascii")
        library = place / "libshapes.so"
        subprocess.run(["g++", "-std=c++20", "-g", "-O0", "-fPIC", "-shared", "-fvisibility=hidden",
                        "-fvisibility-inlines-hidden", "-I", place / "include", place / "shapes.cpp", "-o", library],
                       check=True)
        return {"shapes": (library, library)}, [place / "include"]

    def guard(self, header=HEADER, source=SOURCE, bless=False):
        said = io.StringIO()
        with contextlib.redirect_stdout(said):
            code = abi.guard(self.baseline, *self.build(header, source), bless)
        return code, said.getvalue()

    def test_a_library_that_was_never_recorded_fails_with_the_command_that_records_it(self):
        code, said = self.guard()
        self.assertEqual(code, 1)
        self.assertIn("libshapes: is not recorded yet", said)
        self.assertIn("tools/abi --bless", said)

    def test_what_is_recorded_holds_for_a_library_built_again_elsewhere(self):
        self.assertEqual(self.guard(bless=True), (0, "libshapes: recorded\n1 libraries are recorded as they are\n"))
        self.assertEqual(self.guard(), (0, "1 libraries have the ABI that is recorded\n"))
        self.assertEqual(self.guard(bless=True), (0, "1 libraries are recorded as they are\n"))

    def test_the_list_holds_our_symbols_alone_in_plain_text(self):
        self.guard(bless=True)
        self.assertEqual((self.folder / "abi/shapes.symbols").read_text(encoding="ascii").splitlines(), [
            "qel::Count(std::vector<qel::Item, std::allocator<qel::Item> > const&, qel::Kind)",
            "qel::Shape::Area() const", "qel::Shape::Shape()", "qel::Shape::~Shape()",
            "qel::Value(qel::Outer const&)", "typeinfo for qel::Shape", "typeinfo name for qel::Shape",
            "vtable for qel::Shape"])

    def test_changes_that_nobody_outside_feels_are_none(self):
        self.guard(bless=True)
        self.assertEqual(self.guard(source=SOURCE.replace("int secret = 1;", "long more[4]; int secret = 1;"))[0], 0)
        self.assertEqual(self.guard(source=SOURCE.replace("int Helper()", "int OtherHelper()"))[0], 0)
        # The compiler puts functions and tables of the standard library's headers into ours.
        parse = "int Parse() { char const text[] = \"12\"; int value = 0; std::from_chars(text, text + 2, value); return value; }"
        source = "#include <charconv>\n" + SOURCE.replace("int Helper()", f"{parse}\nint Helper()")
        self.assertEqual(self.guard(source=source)[0], 0)
        self.assertEqual(self.guard(header=HEADER.replace("namespace qel {", "// Text.\n\nnamespace qel {", 1))[0], 0)

    def test_each_change_that_somebody_feels_is_told(self):
        self.guard(bless=True)
        changes = {
            "another member of a type behind a vector": ("int first; std::string name;", "int first, second; std::string name;"),
            "another order of members": ("int first; std::string name;", "std::string name; int first;"),
            "another member of a type behind a shared pointer": ("{ int value; }", "{ int value; double more; }"),
            "another value of an enumerator": ("Small, Large", "Small = 1, Large"),
            "another virtual function in front": ("virtual int Area", "virtual int First() const { return 0; }\n    virtual int Area"),
            "another type of a parameter": ("int Value(Outer const&", "long Value(Outer const&"),
        }
        for name, (before, after) in changes.items():
            with self.subTest(name):
                source = SOURCE.replace("int Value(", "long Value(") if "parameter" in name else SOURCE
                code, said = self.guard(HEADER.replace(before, after), source)
                self.assertEqual(code, 1)
                self.assertIn("libshapes: ", said)
                self.assertIn("tools/abi --bless", said)

    def test_symbols_that_come_and_go_are_listed_until_they_are_recorded(self):
        self.guard(bless=True)
        header = HEADER.replace("EXPORT int Value(Outer const& outer);", "EXPORT int Fresh();")
        source = SOURCE.replace("int Value(Outer const& outer) { return outer.inner->value; }", "int Fresh() { return 1; }")
        code, said = self.guard(header, source)
        self.assertEqual(code, 1)
        self.assertIn("  - qel::Value(qel::Outer const&)\n  + qel::Fresh()\n", said)
        self.assertEqual(self.guard(header, source, bless=True)[0], 0)
        self.assertEqual(self.guard(header, source)[0], 0)

    def test_recording_forgets_a_library_that_is_no_more(self):
        self.baseline.folder.mkdir()
        (self.baseline.folder / "gone.symbols").write_text("", encoding="ascii")
        self.guard(bless=True)
        self.assertEqual({file.name for file in self.baseline.folder.iterdir()}, {"shapes.symbols", "shapes.abi.xz"})


if __name__ == "__main__":
    unittest.main()

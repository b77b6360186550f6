"""The README's program, built by the README's CMakeLists.txt against the installed library, writes what the README says.

usage: readme_test.py README CXX FLAGS PREFIX
"""
import pathlib
import subprocess
import sys
import tempfile

from snippets import snippets


def only(blocks, language):
    found = [block.text for block in blocks if block.language == language]
    if len(found) != 1:
        sys.exit(f"the README has {len(found)} blocks of '{language}', not one")
    return found[0]


def main():
    readme, compiler, flags, prefix = sys.argv[1:]
    blocks = snippets(pathlib.Path(readme))
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "main.cpp").write_text(only(blocks, "cpp"), encoding="utf-8")
        (folder / "CMakeLists.txt").write_text(only(blocks, "cmake"), encoding="utf-8")
        for command in (["cmake", "-B", "build", f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_CXX_COMPILER={compiler}",
                         f"-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror {flags}"],
                        ["cmake", "--build", "build"]):
            subprocess.run(command, cwd=folder, check=True)
        output = subprocess.run([folder / "build" / "my_program"], check=True, stdout=subprocess.PIPE, text=True).stdout
    expected = only(blocks, "text")
    if output != expected:
        sys.exit(f"the README's program wrote\n{output}and not\n{expected}")
    lines = len(only(blocks, "cpp").splitlines())
    if lines > 20:
        sys.exit(f"the README's program has {lines} lines, more than fit into the first screen")


if __name__ == "__main__":
    main()

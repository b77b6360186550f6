"""tools/install_packages asks for what a list names and the machine lacks."""
import os
import pathlib
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent.parent.parent / "tools" / "install_packages"
# A machine that has the package "there" and nothing else, and says what it is told to do.
COMMANDS = {
    "dpkg-query": '#!/bin/sh\n[ "$4" = there ] && printf "install ok installed"\nexit 0\n',
    "apt-get": '#!/bin/sh\necho "apt-get $*"\n',
    "sudo": '#!/bin/sh\nexec "$@"\n',
}


def install(text):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for command, script in COMMANDS.items():
            (folder / command).write_text(script, encoding="ascii")
            (folder / command).chmod(0o755)
        (folder / "list").write_text(text, encoding="ascii")
        done = subprocess.run([SCRIPT, folder / "list"], capture_output=True, text=True, check=True,
                              env={**os.environ, "PATH": f"{folder}:{os.environ['PATH']}"})
        return done.stdout.splitlines()[2:]


class InstallPackages(unittest.TestCase):
    def test_asks_for_what_is_missing(self):
        self.assertEqual(install("there  # has it\nmissing\nalso missing\n"), [
            "missing: also missing", "apt-get update -q",
            "apt-get install -qy --no-install-recommends also missing"])

    def test_asks_for_nothing_when_all_is_there(self):
        self.assertEqual(install("there\n"), ["all of them are installed"])

    def test_leaves_a_package_out_whose_command_is_there(self):
        self.assertEqual(install("shell(sh)\nother(no_such_command)\n"), [
            "missing: other", "apt-get update -q", "apt-get install -qy --no-install-recommends other"])


if __name__ == "__main__":
    unittest.main()

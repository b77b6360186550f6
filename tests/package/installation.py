"""What the tests of installed copies share: where things are, and running commands."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
# Set by the CMakeLists.txt beside.
BUILD = pathlib.Path(os.environ["QEL_BUILD"])
PREFIX = pathlib.Path(os.environ["QEL_PREFIX"])
LIBRARY_FOLDER = os.environ["QEL_LIBRARY_FOLDER"]
VERSION = os.environ["QEL_VERSION"]
MAJOR = VERSION.split(".")[0]
CXX = [*os.environ["QEL_CXX"].split(), "-std=c++20", *os.environ["QEL_CXX_FLAGS"].split()]
LIBRARIES = ["algorithm", "configuration", "hash", "inference", "logging", "media", "object", "property", "serialize",
             "system", "type"]
MASKS = SOURCE / "examples/masks_and_blobs/main.cpp"
MASKS_OUTPUT = (SOURCE / "tests/examples/expected/masks_and_blobs.txt").read_text(encoding="ascii")


def run(*command, environment=None, expect=0, folder=None):
    """Runs a command to its end and returns what it writes; fails, with all of it, when it ends otherwise."""
    done = subprocess.run([str(word) for word in command], env={**os.environ, **(environment or {})}, cwd=folder,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != expect:
        raise AssertionError(f"{' '.join(map(str, command))} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def build_with_pkg_config(source, program, folder, library="qel_algorithm"):
    """Compiles and links one source with what pkg-config says of a library whose .pc file lies in folder."""
    environment = {"PKG_CONFIG_PATH": str(folder)}
    flags = run("pkg-config", "--cflags", "--libs", library, environment=environment).split()
    run(*CXX, source, "-o", program, *flags)


class InstallationTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        # As the system names it: what is compared with the answers of programs must be free of links.
        self.folder = pathlib.Path(folder.name).resolve()


def main():
    unittest.main(verbosity=2, argv=[sys.argv[0]])

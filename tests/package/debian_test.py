#!/usr/bin/env python3
"""The Debian packages: made, looked through, installed into a folder, used there, upgraded and removed.

Nothing of the machine is changed: dpkg is told of a root of its own, whose list of packages holds what ours depend on
as the machine has it.
"""
import json
import os
import pathlib
import re
import shutil
import struct
import zlib

from installation import (BUILD, CXX, LIBRARY_FOLDER, MAJOR, MASKS, MASKS_OUTPUT, SOURCE, VERSION, InstallationTest,
                          build_with_pkg_config, main, run)

PACKAGES = BUILD / "tests/package/debian"
LIBRARY_PACKAGE = f"libqel{MAJOR}"
NAMES = [LIBRARY_PACKAGE, "libqel-dev", "qel", "qel-plugins"]
DEBIAN_VERSION = f"{VERSION}-1"


def setUpModule():
    shutil.rmtree(PACKAGES, ignore_errors=True)
    run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", PACKAGES)


def package(name):
    found = list(PACKAGES.glob(f"{name}_{DEBIAN_VERSION}_*.deb"))
    assert len(found) == 1, found
    return found[0]


def field(file, name):
    return run("dpkg-deb", "--field", file, name).strip()


def depends(file):
    """{package: its version as demanded}, the first of alternatives."""
    firsts = [part.split("|")[0].strip() for part in field(file, "Depends").split(",")]
    return {first.split()[0]: first.partition(" ")[2] for first in firsts if first}


def repack(file, version, folder):
    """The package once more, as of another version; its development files have lost a header."""
    run("dpkg-deb", "--raw-extract", file, folder / file.stem)
    control = folder / file.stem / "DEBIAN/control"
    control.write_text(control.read_text(encoding="utf-8").replace(DEBIAN_VERSION, version), encoding="utf-8")
    (folder / file.stem / "usr/include/qel/hash/murmur_three_32.hpp").unlink(missing_ok=True)
    target = folder / file.name.replace(DEBIAN_VERSION, version)
    run("dpkg-deb", "--root-owner-group", "-Znone", "--build", folder / file.stem, target)
    return target


class Root:
    """A folder with a list of packages of its own."""

    def __init__(self, folder):
        self.folder = folder
        self.libraries = folder / "usr" / LIBRARY_FOLDER
        database = folder / "var/lib/dpkg"
        for name in ("info", "updates", "triggers"):
            (database / name).mkdir(parents=True)
        needed = {name for file in NAMES for name in depends(package(file))} - set(NAMES)
        stanzas = []
        for stanza in pathlib.Path("/var/lib/dpkg/status").read_text(encoding="utf-8").split("\n\n"):
            fields = dict(re.findall(r"^(Package|Architecture|Multi-Arch|Provides): (.*)$", stanza, re.MULTILINE))
            provided = {part.split()[0] for part in fields.get("Provides", "").split(",") if part}
            if not needed & {fields.get("Package"), *provided}:
                continue
            # Without its maintainer scripts, of which the folder has none, a package has no conffiles either.
            stanzas.append(re.sub(r"^Conffiles:\n(?: .*\n?)*", "", stanza, flags=re.MULTILINE).strip())
            suffix = f":{fields['Architecture']}" if fields.get("Multi-Arch") == "same" else ""
            (database / "info" / f"{fields['Package']}{suffix}.list").write_text("", encoding="ascii")
        (database / "status").write_text("\n\n".join(stanzas) + "\n", encoding="utf-8")

    def dpkg(self, *arguments, expect=0):
        # Without a path-include, a machine may be set up to leave manual pages and documents out.
        return run(*([] if os.geteuid() == 0 else ["fakeroot"]), "dpkg", f"--root={self.folder}", "--log=/dev/null",
                   "--path-include=*", *arguments, expect=expect,
                   environment={"PATH": f"{os.environ['PATH']}:/usr/sbin:/sbin", "LC_ALL": "C"})

    def state(self, name):
        return run("dpkg-query", f"--admindir={self.folder}/var/lib/dpkg", "-W", "-f", "${Version} ${Status}", name)

    def files(self):
        return {str(path.relative_to(self.folder)) for path in self.folder.rglob("*")
                if (path.is_symlink() or not path.is_dir()) and not path.is_relative_to(self.folder / "var/lib/dpkg")}

    def run(self, program, *arguments):
        return run(program, *arguments, environment={"LD_LIBRARY_PATH": str(self.libraries)})


def write_picture(file):
    """A dark picture of 64 x 48 pixels, as PNG, with a bright square of 8 x 8 whose first pixel is (16, 24)."""
    rows = b"".join(b"\0" + bytes(255 if 16 <= x < 24 and 24 <= y < 32 else 0 for x in range(64)) for y in range(48))
    chunks = ((b"IHDR", struct.pack(">IIBBBBB", 64, 48, 8, 0, 0, 0, 0)), (b"IDAT", zlib.compress(rows)), (b"IEND", b""))
    file.write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(
        struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data)) for kind, data in chunks))


class Packages(InstallationTest):
    def test_are_four_and_depend_on_each_other_in_the_same_version(self):
        self.assertEqual(sorted(field(file, "Package") for file in PACKAGES.glob("*.deb")), sorted(NAMES))
        ours = {name: {other: demand for other, demand in depends(package(name)).items() if other in NAMES}
                for name in NAMES}
        same = f"(= {DEBIAN_VERSION})"
        self.assertEqual(ours, {LIBRARY_PACKAGE: {}, "qel-plugins": {LIBRARY_PACKAGE: same},
                                "libqel-dev": {LIBRARY_PACKAGE: same},
                                "qel": {LIBRARY_PACKAGE: same, "qel-plugins": same}})

    def test_name_the_packages_of_the_system_that_they_are_linked_with(self):
        self.assertIn("libc6", depends(package(LIBRARY_PACKAGE)))
        self.assertIn("libboost-filesystem1.81.0", depends(package(LIBRARY_PACKAGE)))
        self.assertIn("libgstreamer1.0-0", depends(package("qel")))
        self.assertNotIn("libgstreamer1.0-0", depends(package(LIBRARY_PACKAGE)))

    def test_hold_what_is_stripped_and_found_in_the_folders_of_the_system(self):
        for name in NAMES:
            run("dpkg-deb", "--extract", package(name), self.folder)
        binaries = [*self.folder.glob("usr/bin/*"), *(self.folder / "usr" / LIBRARY_FOLDER).glob("*.so*"),
                    *(self.folder / "usr" / LIBRARY_FOLDER / "qel").iterdir()]
        self.assertGreater(len(binaries), 14)
        for binary in binaries:
            self.assertNotIn("RUNPATH", run("readelf", "-d", binary))
            self.assertNotIn(".symtab", run("readelf", "-SW", binary))

    def test_have_no_scripts_and_let_the_loader_know_by_a_trigger(self):
        for name in NAMES:
            run("dpkg-deb", "--control", package(name), self.folder / name)
            allowed = {"control", "md5sums"} | ({"shlibs", "triggers"} if name == LIBRARY_PACKAGE else set())
            self.assertEqual({file.name for file in (self.folder / name).iterdir()}, allowed)
        self.assertIn(f"libqel_algorithm {MAJOR} {LIBRARY_PACKAGE} (>= {VERSION})\n",
                      (self.folder / LIBRARY_PACKAGE / "shlibs").read_text(encoding="utf-8"))
        self.assertIn("ldconfig", (self.folder / LIBRARY_PACKAGE / "triggers").read_text(encoding="utf-8"))

    def test_lintian_finds_nothing_that_is_not_explained(self):
        files = [package(name) for name in NAMES]
        self.assertEqual(run("lintian", "--allow-root", "--no-cfg", "--fail-on", "error,warning", *files), "")


class Life(InstallationTest):
    def setUp(self):
        super().setUp()
        self.root = Root(self.folder / "root")

    def test_a_package_is_not_set_up_without_those_it_depends_on(self):
        said = self.root.dpkg("--install", package("qel"), expect=1)
        self.assertIn(f"qel depends on {LIBRARY_PACKAGE}", said)
        self.assertIn("qel depends on qel-plugins", said)

    def test_packages_are_installed_upgraded_and_removed_without_a_trace(self):
        nothing = self.root.files()
        self.root.dpkg("--install", *(package(name) for name in NAMES))
        for name in NAMES:
            self.assertEqual(self.root.state(name), f"{DEBIAN_VERSION} install ok installed")
        installed = self.root.files()
        self.assertIn("usr/include/qel/hash/murmur_three_32.hpp", installed)
        self.assertIn("usr/share/man/man1/qel-run.1.gz", installed)

        later = f"{VERSION}-2"
        self.root.dpkg("--install", *(repack(package(name), later, self.folder) for name in NAMES))
        for name in NAMES:
            self.assertEqual(self.root.state(name), f"{later} install ok installed")
        self.assertEqual(installed - self.root.files(), {"usr/include/qel/hash/murmur_three_32.hpp"})
        listed = json.loads(self.root.run(self.root.folder / "usr/bin/qel", "algorithms", "--json"))["algorithms"]
        self.assertEqual({pathlib.Path(algorithm["file"]) for algorithm in listed},
                         set(self.root.libraries.glob("libqel_algorithm_*.so")))

        self.assertIn(LIBRARY_PACKAGE, self.root.dpkg("--remove", LIBRARY_PACKAGE, expect=1))
        self.root.dpkg("--purge", *NAMES)
        self.assertEqual(self.root.files(), nothing)


class Use(InstallationTest):
    def setUp(self):
        super().setUp()
        self.root = Root(self.folder / "root")
        self.root.dpkg("--install", *(package(name) for name in NAMES))

    def test_a_plugin_is_built_against_the_packages_put_beside_the_library_and_run(self):
        build = self.folder / "build"
        run("cmake", "-S", SOURCE / "examples/plugin", "-B", build, "-DCMAKE_BUILD_TYPE=Release",
            f"-DCMAKE_PREFIX_PATH={self.root.folder}/usr", f"-DCMAKE_CXX_COMPILER={CXX[0]}")
        run("cmake", "--build", build)
        run("cmake", "--install", build, "--prefix", self.root.folder / "usr")
        write_picture(self.folder / "spot.png")
        line = self.root.run(self.root.folder / "usr/bin/qel", "run", self.folder / "spot.png", "--quiet",
                             "--algorithm", "example.BrightSpots")
        found = [{key: thing[key] for key in ("x", "y", "w", "h", "area")} for thing in json.loads(line)["objects"]]
        self.assertEqual(found, [{"x": 16, "y": 24, "w": 8, "h": 8, "area": 64}])

    def test_a_program_is_built_with_pkg_config_alone_and_run(self):
        build_with_pkg_config(MASKS, self.folder / "masks", self.root.libraries / "pkgconfig")
        self.assertEqual(self.root.run(self.folder / "masks"), MASKS_OUTPUT)


if __name__ == "__main__":
    main()

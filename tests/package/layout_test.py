#!/usr/bin/env python3
"""The installed copy works wherever it is, through links, with CMake and with pkg-config alone."""
import json
import os
import re
import shutil
import subprocess

from installation import (BUILD, CXX, LIBRARIES, LIBRARY_FOLDER, MAJOR, MASKS, MASKS_OUTPUT, PREFIX, SOURCE,
                          VERSION, InstallationTest, build_with_pkg_config, main, run)


def copy(target):
    shutil.copytree(PREFIX, target, symlinks=True)
    return target


class Layout(InstallationTest):
    def test_each_library_has_its_soname_and_the_links_to_it(self):
        for library in LIBRARIES:
            name = PREFIX / LIBRARY_FOLDER / f"libqel_{library}.so"
            self.assertEqual(os.readlink(name), f"{name.name}.{MAJOR}")
            self.assertEqual(os.readlink(f"{name}.{MAJOR}"), f"{name.name}.{VERSION}")
            self.assertIn(f"soname: [{name.name}.{MAJOR}]", run("readelf", "-d", name))

    def test_no_file_that_users_read_or_build_with_names_a_place_of_this_machine(self):
        places = [str(place) for place in (PREFIX, BUILD, SOURCE)]
        files = [file for kind in ("*.cmake", "*.pc", "*.hpp", "man1/*.1") for file in PREFIX.rglob(kind)]
        self.assertGreater(len(files), 100)
        for file in files:
            text = file.read_text(encoding="utf-8")
            self.assertEqual([place for place in places if place in text], [], file)

    def test_the_page_of_the_server_is_installed_with_the_licences_of_what_it_is_made_of(self):
        page = PREFIX / "share/qel/page"
        text = (page / "index.html").read_text(encoding="utf-8")
        for file in re.findall(r'(?:src|href)="\./([^"]+)"', text):
            self.assertTrue((page / file).is_file(), file)
        self.assertIn("react-dom", (page / "licences.txt").read_text(encoding="utf-8"))

    def test_a_note_of_the_copyright_is_installed(self):
        self.assertIn("Copyright", (PREFIX / "share/doc/qel/copyright").read_text(encoding="utf-8"))


class Loader(InstallationTest):
    def plugins(self, program, environment=None):
        listed = json.loads(run(program, "algorithms", "--json", environment=environment))
        return sorted(algorithm["file"] for algorithm in listed["algorithms"])

    def expected(self, prefix):
        files = sorted(file.name for file in (PREFIX / LIBRARY_FOLDER).glob("libqel_algorithm_*.so"))
        self.assertIn("libqel_algorithm_motion.so", files)
        return [str(prefix / LIBRARY_FOLDER / name) for name in files]

    def test_finds_the_plugins_where_they_were_installed(self):
        self.assertEqual(self.plugins(PREFIX / "bin/qel"), self.expected(PREFIX.resolve()))

    def test_finds_the_plugins_of_a_copy_that_was_moved(self):
        moved = copy(self.folder / "moved here")
        self.assertEqual(self.plugins(moved / "bin/qel"), self.expected(moved))

    def test_finds_the_plugins_through_a_link_to_the_program(self):
        (self.folder / "qel").symlink_to(PREFIX / "bin/qel")
        self.assertEqual(self.plugins(self.folder / "qel"), self.expected(PREFIX.resolve()))

    def test_finds_the_plugins_through_a_link_to_the_folder(self):
        (self.folder / "link").symlink_to(PREFIX)
        self.assertEqual(self.plugins(self.folder / "link/bin/qel"), self.expected(PREFIX.resolve()))

    def test_finds_the_plugins_through_links_to_the_libraries(self):
        for library in LIBRARIES:
            name = f"libqel_{library}.so.{MAJOR}"
            (self.folder / name).symlink_to(PREFIX / LIBRARY_FOLDER / name)
        found = self.plugins(PREFIX / "bin/qel", environment={"LD_LIBRARY_PATH": str(self.folder)})
        self.assertEqual(found, self.expected(PREFIX.resolve()))


class PkgConfig(InstallationTest):
    def ask(self, *arguments):
        folder = PREFIX / LIBRARY_FOLDER / "pkgconfig"
        return run("pkg-config", *arguments, environment={"PKG_CONFIG_LIBDIR": str(folder)}).split()

    def test_each_library_has_a_file_with_its_version_and_what_it_requires(self):
        required = {
            "algorithm": {*LIBRARIES} - {"algorithm"},
            "configuration": {"object", "type"},
            "media": {"type"},
            "logging": {"type"},
            "object": {"hash", "type"},
            "property": {"configuration", "object"},
            "type": {"hash"},
        }
        for library in LIBRARIES:
            self.assertEqual(self.ask("--modversion", f"qel_{library}"), [VERSION])
            wanted = {f"qel_{name}" for name in required.get(library, {})}
            self.assertEqual(set(self.ask("--print-requires", f"qel_{library}")), wanted, library)
            self.assertIn(f"-lqel_{library}", self.ask("--libs", f"qel_{library}"))

    def test_is_enough_to_build_and_run_a_program_in_a_prefix_that_was_moved(self):
        moved = copy(self.folder / "moved")
        build_with_pkg_config(MASKS, self.folder / "masks", moved / LIBRARY_FOLDER / "pkgconfig")
        output = run(self.folder / "masks", environment={"LD_LIBRARY_PATH": str(moved / LIBRARY_FOLDER)})
        self.assertEqual(output, MASKS_OUTPUT)


class CMakePackage(InstallationTest):
    def configure(self, *lines):
        """What cmake says of a project with these lines, on one line."""
        text = ["cmake_minimum_required(VERSION 3.25)", "project(user LANGUAGES CXX)", *lines]
        (self.folder / "CMakeLists.txt").write_text("\n".join(text) + "\n", encoding="utf-8")
        done = subprocess.run(["cmake", "-S", self.folder, "-B", self.folder / "build", f"-DCMAKE_PREFIX_PATH={PREFIX}",
                               f"-DCMAKE_CXX_COMPILER={CXX[0]}"], capture_output=True, text=True, check=False)
        return " ".join((done.stdout + done.stderr).split())

    def test_gives_a_target_for_each_component(self):
        names = " ".join(LIBRARIES)
        said = self.configure(f"find_package(qel 1 CONFIG REQUIRED COMPONENTS {names})",
                              f"foreach(name {names})", "  if(NOT TARGET qel::${name} OR NOT qel_${name}_FOUND)",
                              '    message(FATAL_ERROR "no ${name}")', "  endif()", "endforeach()")
        self.assertIn("Configuring done", said)

    def test_refuses_what_it_does_not_have_and_says_what_it_has(self):
        said = self.configure(
            "find_package(qel 1 CONFIG QUIET COMPONENTS algorithm nonsense)",
            'message(STATUS "<${qel_FOUND}> ${qel_NOT_FOUND_MESSAGE}")',
            "find_package(qel 2 CONFIG QUIET)", 'message(STATUS "version 2: <${qel_FOUND}>")',
            "find_package(qel 1 CONFIG REQUIRED COMPONENTS hash OPTIONAL_COMPONENTS nonsense)",
            'message(STATUS "optional: <${qel_FOUND}> <${qel_hash_FOUND}> <${qel_nonsense_FOUND}>")')
        self.assertIn(f'<0> qel {VERSION} has no component "nonsense"; its components are algorithm, configuration, '
                      "hash, inference, logging, media, object, property, serialize, system, type.", said)
        self.assertIn("version 2: <0>", said)
        self.assertIn("optional: <1> <TRUE> <>", said)

    def test_says_what_is_wrong_with_a_plugin(self):
        wrong = {
            "qel_add_plugin(a-b SOURCES a.cpp)":
                'the name "a-b" may hold letters, digits and underscores only',
            "qel_add_plugin(mine a.cpp b.cpp SOURCES c.cpp)":
                '(mine): "a.cpp b.cpp" stands behind neither SOURCES nor LIBS',
            "qel_add_plugin(mine)": "(mine): SOURCES is missing",
        }
        for line, message in wrong.items():
            self.assertIn(f"qel_add_plugin{'' if message.startswith('(') else ': '}{message}",
                          self.configure("find_package(qel 1 CONFIG REQUIRED)", line))


if __name__ == "__main__":
    main()

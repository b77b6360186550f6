#!/usr/bin/env python3
"""Every command and every option of the program has its place in the installed manual pages."""
import re

from installation import PREFIX, InstallationTest, main, run

PROGRAM = PREFIX / "bin/qel"
PAGES = PREFIX / "share/man/man1"


def commands(command=()):
    """The words of every command, from what --help lists, with that text."""
    said = run(PROGRAM, *command, "--help")
    yield command, said
    below = re.search(r"^Subcommands:\n((?:  .*\n?)*)", said, re.MULTILINE)
    for name in re.findall(r"^  (\S+)", below.group(1), re.MULTILINE) if below else []:
        yield from commands((*command, name))


def shown(page):
    """The page as it is shown, without hyphenation."""
    return re.sub(r"\s+", " ", run("groff", "-man", "-Tascii", "-P-cbou", "-rHY=0", "-rLL=1000n", "-ww", page))


class ManPages(InstallationTest):
    def test_there_is_a_page_for_each_command_and_no_other(self):
        wanted = {"-".join(["qel", *command]) + ".1" for command, _ in commands()}
        self.assertGreater(len(wanted), 4)
        self.assertEqual({page.name for page in PAGES.iterdir()}, wanted)

    def test_each_page_holds_every_option_and_description(self):
        for command, said in commands():
            page = shown(PAGES / ("-".join(["qel", *command]) + ".1"))
            for option in re.findall(r"(?<![\w-])--?[a-z][\w-]*", said):
                self.assertIn(option, page, command)
            for does in re.findall(r"^  \S.*?\s{2,}(\S.*)$", said, re.MULTILINE):
                self.assertIn(re.sub(r"\s+", " ", does), page, command)
            self.assertIn(" EXIT STATUS ", page)

    def test_groff_has_nothing_to_complain_of(self):
        for page in PAGES.iterdir():
            self.assertEqual(run("groff", "-man", "-Tutf8", "-ww", "-z", page), "")


if __name__ == "__main__":
    main()

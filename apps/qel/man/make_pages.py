#!/usr/bin/env python3
"""Writes the manual pages of the program: qel.1 and one page a sub-command, from what --help says.

usage: make_pages.py PROGRAM FOLDER

The FOLDER is made anew. What --help does not say (environment, exit status) stands in COMMON.
"""
import pathlib
import re
import shutil
import subprocess
import sys

COMMON = r"""
.SH EXIT STATUS
.TP
.B 0
done
.TP
.B 1
failed: something cannot be opened, read or written, is damaged, or has no answer
.TP
.B 2
wrong use: an unknown option, algorithm or property, or a value that is not taken
.TP
.BR 130 ", " 143
ended by SIGINT (Ctrl-C) or SIGTERM
.SH ENVIRONMENT
.TP
.B QEL_LOG
what is logged to the standard error output: a level (debug, information, notice, warning, error, critical, off) or
rules such as \(lqwarning, qel.algorithm=debug\(rq; without it, warnings and worse
.TP
.B GST_DEBUG
what GStreamer, which reads the videos, says of its own work: 0 to 9
"""

HEADING = re.compile(r"^(\S.*):$")
ITEM = re.compile(r"^  (\S.*?)(?:\s{2,}(\S.*))?$")


def ask(program, *arguments):
    return subprocess.run([program, *arguments], check=True, capture_output=True, text=True).stdout


def escape(text):
    """Text that groff prints as it is."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("^", "\\(ha").replace("~", "\\(ti")
    return "\n".join("\\&" + line if line.startswith((".", "\\(aq")) else line for line in text.splitlines())


class Help:
    """The parts of one text of --help: description, usage, sections of items, and the blocks of the footer."""

    def __init__(self, text):
        self.usage, self.items, self.footer = "", {}, []
        description = []
        for block in re.split(r"\n\s*\n", text.strip("\n")):
            lines = block.splitlines()
            heading = HEADING.match(lines[0])
            if heading and heading.group(1) != "Examples" and not self.footer and len(lines) > 1:
                self.items[heading.group(1)] = self.read_items(lines[1:])
            elif self.usage:
                self.footer.append(lines)
            else:
                for line in lines:
                    found = re.match(r"Usage: (.*)", line)
                    if found:
                        self.usage = found.group(1)
                    else:
                        description.append(line)
        self.description = " ".join(description)

    @staticmethod
    def read_items(lines):
        """Pairs of what is typed and what it does; a line indented further goes on with what is above it."""
        items = []
        for line in lines:
            found = ITEM.match(line)
            if found:
                items.append([found.group(1), found.group(2) or ""])
            else:
                items[-1][1] = f"{items[-1][1]} {line.strip()}".strip()
        return items

    def commands(self):
        return [name for name, _ in self.items.get("Subcommands", [])]


def page(command, shown, version, others):
    """The page of one command, given as its words."""
    name = "-".join(command)
    lines = [f'.TH {escape(name.upper())} 1 "" "{escape(version)}" "User Commands"', ".SH NAME",
             f"{escape(name)} \\- {escape(shown.description[:1].lower() + shown.description[1:].rstrip('.'))}",
             ".SH SYNOPSIS", f".B {escape(' '.join(command))}", escape(shown.usage.removeprefix(" ".join(command)).strip()),
             ".SH DESCRIPTION", escape(shown.description.rstrip(".") + ".")]
    for heading, items in shown.items.items():
        lines.append(f".SH {escape({'Positionals': 'Arguments', 'Subcommands': 'Commands'}.get(heading, heading).upper())}")
        for typed, does in items:
            lines += [".TP", f".B {escape(typed)}", escape(does)]
    for block in shown.footer:
        heading = HEADING.match(block[0])
        if heading:
            lines += [f".SH {escape(heading.group(1).upper())}", ".EX", *(escape(line) for line in block[1:]), ".EE"]
    notes = [block for block in shown.footer if not HEADING.match(block[0])]
    for block in notes:
        lines += [".SH NOTES" if block is notes[0] else ".PP", escape("\n".join(block))]
    lines.append(COMMON.strip("\n"))
    if others:
        lines += [".SH SEE ALSO", ",\n".join(f".BR {escape(other)} (1)" for other in others).replace("(1),", "(1),")]
    return "\n".join(line for line in lines if line) + "\n"


def collect(program, command):
    """The command and all that are below it, each with its help."""
    shown = Help(ask(program, *command[1:], "--help"))
    yield command, shown
    for name in shown.commands():
        yield from collect(program, [*command, name])


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    version = ask(program, "--version").strip()
    commands = list(collect(program, ["qel"]))
    names = ["-".join(command) for command, _ in commands]
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for (command, shown), name in zip(commands, names):
        others = [other for other in names if other != name]
        (folder / f"{name}.1").write_text(page(command, shown, version, others), encoding="ascii")


if __name__ == "__main__":
    main()

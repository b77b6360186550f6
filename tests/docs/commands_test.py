"""The commands that the documentation shows are ones that the shell reads and the program takes.

usage: commands_test.py ROOT QEL

Each block of sh is read by bash (-n). Of each command `qel ...` in it, and of each `qel ...` in the text, the sub-command
and the options must be known to the program's --help.
"""
import functools
import pathlib
import re
import subprocess
import sys

from snippets import snippets

COMMAND = re.compile(r"(?<![\w./-])(?:\S*/bin/)?qel\s+([a-z][\w-]*)((?:[^\n|;&#`]|\\\n)*)")
OPTION = re.compile(r"(?<!\S)(--?[a-z][\w-]*)")


@functools.cache
def options(program, command):
    """The options of a sub-command; none for one that does not exist."""
    run = subprocess.run([program, command, "--help"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                         check=False)
    return set(re.findall(r"--?[a-z][\w-]*", run.stdout)) if run.returncode == 0 else set()


def problems(page, program):
    blocks = [block for block in snippets(page) if block.language == "sh"]
    for block in blocks:
        read = subprocess.run(["bash", "-n"], input=block.text, text=True, stderr=subprocess.PIPE, check=False)
        if read.returncode != 0:
            yield f"{page}:{block.line}: {read.stderr.strip()}"
    quoted = re.findall(r"`((?:\S*/bin/)?qel [^`]*)`", page.read_text(encoding="utf-8"))
    for text in [block.text for block in blocks] + quoted:
        for command, arguments in COMMAND.findall(text):
            known = options(program, command)
            if not known:
                yield f"{page}: there is no command 'qel {command}'"
            for option in OPTION.findall(arguments):
                if known and option not in known:
                    yield f"{page}: 'qel {command}' has no option {option}"


def main():
    root, program = pathlib.Path(sys.argv[1]), sys.argv[2]
    pages = [*root.glob("*.md"), *root.glob("docs/*.md"), *root.glob("examples/**/*.md")]
    found = [problem for page in sorted(pages) for problem in problems(page, program)]
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

"""The fenced blocks of a Markdown page."""
import pathlib
import re
import typing


class Snippet(typing.NamedTuple):
    language: str
    text: str
    line: int


FENCE = re.compile(r"^( *)```(\S*)[^\n]*\n(.*?)^\1```$", re.MULTILINE | re.DOTALL)


def snippets(page: pathlib.Path) -> list[Snippet]:
    """All blocks in their order; those that stand in a list are taken back to the margin."""
    text = page.read_text(encoding="utf-8")
    return [Snippet(found[2], re.sub(rf"^{found[1]}", "", found[3], flags=re.MULTILINE),
                    text.count("\n", 0, found.start()) + 1)
            for found in FENCE.finditer(text)]

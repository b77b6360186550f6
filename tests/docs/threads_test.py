#!/usr/bin/env python3
"""Every public header that defines a class says which threads may use it.

usage: threads_test.py ROOT
"""
import pathlib
import re
import sys

CLASS = re.compile(r"^class (\[\[nodiscard\]\] )?(QEL_\w+ )?\w+( final)?( : .*)?( \{.*)?$", re.MULTILINE)


def main() -> int:
    root = pathlib.Path(sys.argv[1])
    headers = sorted(root.glob("include/**/*.hpp")) + sorted(root.glob("platform/*/include/**/*.hpp"))
    if len(headers) < 80:
        print(f"{root}: only {len(headers)} public headers found")
        return 1
    silent = [header for header in headers
              if CLASS.search(header.read_text()) and not re.search("thread", header.read_text(), re.IGNORECASE)]
    for header in silent:
        print(f"{header.relative_to(root)}: defines a class, but does not say which threads may use it")
    return 1 if silent else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Keeps the program on a page of the documentation true.

usage: tools/snippet.py source PAGE              prints the program of the page
       tools/snippet.py check PAGE PROGRAM       runs PROGRAM and compares what it prints with the page

The program is the block marked `cpp` that has a main function; a page has one at most. What it prints is
the next block marked `text`.
"""

import difflib
import re
import subprocess
import sys
from pathlib import Path

BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def program_and_output(page):
    text = Path(page).read_text()
    blocks = [(match.group(1), match.group(2), text.count("\n", 0, match.start()) + 2)
              for match in BLOCK.finditer(text)]
    programs = [i for i, (kind, body, _) in enumerate(blocks) if kind == "cpp" and "int main(" in body]
    if len(programs) != 1:
        raise SystemExit(f"{page}: {len(programs)} programs, and there should be one")
    outputs = [body for kind, body, _ in blocks[programs[0] + 1:] if kind == "text"]
    if not outputs:
        raise SystemExit(f"{page}: the page doesn't say what its program prints")
    _, body, line = blocks[programs[0]]
    return body, line, outputs[0]


def main():
    command, page, *rest = sys.argv[1:]
    body, line, expected = program_and_output(page)
    if command == "source":
        print(f'#line {line} "{page}"\n{body}', end="")
        return 0

    done = subprocess.run(rest, stdout=subprocess.PIPE, universal_newlines=True, check=False)
    if done.returncode != 0:
        print(f"{page}: its program ends with {done.returncode}")
        return 1
    if done.stdout != expected:
        print("".join(difflib.unified_diff(expected.splitlines(True), done.stdout.splitlines(True),
                                           page, "what its program prints")), end="")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())

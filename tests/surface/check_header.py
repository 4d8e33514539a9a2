#!/usr/bin/env python3
"""Checks that a public header can be included alone, as often as one likes.

usage: check_header.py COMPILER HEADER INCLUDE_DIR...

The header is guarded by its name in capitals, compiles when it is the first that is included, and once more behind
itself, without a warning.

Exit: 0 all holds, 1 something does not, 2 wrong usage.
"""

import subprocess
import sys
from pathlib import Path


def problems(compiler, header, includes):
    text = header.read_text()
    guard = header.stem.upper() + "_H"
    lines = [line for line in text.splitlines() if line.strip()]
    if lines[:2] != ["#ifndef " + guard, "#define " + guard] or lines[-1] != "#endif":
        yield "%s: is not guarded by %s as a whole" % (header, guard)

    command = [compiler, "-std=c++17", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion",
               "-Wold-style-cast", "-Wnon-virtual-dtor", "-Woverloaded-virtual", "-Werror", "-x", "c++", "-"]
    for include in includes:
        command += ["-I", include]
    source = '#include "%s"\n' % header.name
    result = subprocess.run(command, input=source + source, stderr=subprocess.PIPE, text=True, check=False)
    if result.returncode != 0:
        yield "%s does not compile by itself:\n%s" % (header, result.stderr)


def main(arguments):
    if len(arguments) < 3:
        print(__doc__, file=sys.stderr)
        return 2
    found = list(problems(arguments[0], Path(arguments[1]), arguments[2:]))
    for problem in found:
        print(problem)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

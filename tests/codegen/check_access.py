#!/usr/bin/env python3
"""Checks what an access to an array costs in the machine code of a client.

usage: check_access.py [--self-test] COMPILER INCLUDE_DIR

Compiles small functions at -O2, reads their assembly, and follows the way that is taken while no handler is
installed. On it the handler is loaded once, one conditional jump is made, the size is not read, so the index
is not compared, and nothing is called. The whole function names the handler once: a second load would show up
off that way. With --self-test the same questions are put to checks that are wrong on purpose, each of which must
be found out.

Exit: 0 all holds, 1 something does not, 2 wrong usage, 77 skipped, since the platform is not x86-64.
"""

import platform
import re
import subprocess
import sys

FUNCTIONS = """
#include "ozarray.h"
#include "ozstring.h"
extern "C" int read_element(OzArray<int> const& array, std::uint64_t index) { return array[index]; }
extern "C" void write_element(OzArray<int>& array, std::uint64_t index) { array[index] = 5; }
extern "C" char read_character(OzString const& text, int index) { return text[index]; }
"""

NAMES = ("read_element", "write_element", "read_character")

# Checks that do too much without a handler, and what must be said about each.
WRONG_CHECKS = {
    "the condition comes first": (
        "do { if (!(condition) && dkb_assertion_handler) dkb_assertion_handler(__FILE__, __LINE__); } while (false)",
        "reads the size"),
    "the condition is evaluated for its value": (
        "do { bool volatile holds = (condition); OzAssertionHandler const h = dkb_assertion_handler;"
        " if (h && !holds) h(__FILE__, __LINE__); } while (false)",
        "reads the size"),
    "the handler is loaded again for the call": (
        "do { OzAssertionHandler volatile* const h = &dkb_assertion_handler;"
        " if (*h && !(condition)) (*h)(__FILE__, __LINE__); } while (false)",
        "names the handler 2 times"),
    "the check asks twice": (
        "do { OzAssertionHandler volatile* const h = &dkb_assertion_handler;"
        " if (*h) if (!(condition)) (*h)(__FILE__, __LINE__); if (*h) (*h)(__FILE__, 0); } while (false)",
        "jumps 2 times"),
    "a function is called": (
        "do { extern void check(bool); check(true); } while (false)",
        "calls"),
    "nothing is checked": ("do { } while (false)", "names the handler 0 times"),
}

SIZE_FIELD = re.compile(r"\b32\(%r(di|bx|bp|si)\)")  # of an array that is the first argument


def assembly(compiler, include_dir, check=None):
    """The assembly of FUNCTIONS, with another body of OZ_ASSERT if `check` is given."""
    source = FUNCTIONS
    if check:
        source = ('#include "ozassert.h"\n#undef OZ_ASSERT\n#define OZ_ASSERT(condition) %s\n' % check) + source
    # Without position independence a variable has one name in the assembly, and no table of addresses is read.
    command = [compiler, "-std=c++17", "-O2", "-fno-pie", "-fno-stack-protector", "-fcf-protection=none",
               "-fno-asynchronous-unwind-tables", "-I", include_dir, "-x", "c++", "-S", "-o", "-", "-"]
    return subprocess.run(command, input=source, stdout=subprocess.PIPE, text=True, check=True).stdout


def body(text, name):
    """The lines of a function, labels included and comments left out."""
    lines = []
    inside = False
    for line in text.splitlines():
        line = re.sub(r"\s*#.*", "", line).strip()
        if line == name + ":":
            inside = True
        elif inside and line.startswith(".size\t" + name):
            return lines
        elif inside and line and (line.endswith(":") or not line.startswith(".")):
            lines.append(line)
    raise ValueError("no function %s in the assembly" % name)


def way_without_handler(lines):
    """The instructions that run while the handler is null, in their order."""
    labels = {line[:-1]: i for i, line in enumerate(lines) if line.endswith(":")}
    way = []
    i = 0
    while i < len(lines) and len(way) < 200:
        line = lines[i]
        i += 1
        if line.endswith(":"):
            continue
        way.append(line)
        operation = line.split()[0]
        if operation.startswith("ret"):
            return way
        if operation == "jmp":
            target = line.split()[1]
            if target not in labels:
                return way  # a call at the end
            i = labels[target]
        elif operation in ("je", "jz"):  # null compares equal to 0
            i = labels[line.split()[1]]
    raise ValueError("no way through:\n" + "\n".join(lines))


def complaints(lines):
    """What is wrong with a function, in words."""
    found = []
    way = way_without_handler(lines)
    named = sum("dkb_assertion_handler" in line for line in lines)
    if named != 1:
        found.append("names the handler %d times" % named)
    loads = sum("dkb_assertion_handler" in line for line in way)
    if loads != 1:
        found.append("loads the handler %d times without a handler" % loads)
    jumps = sum(re.match(r"j(?!mp)", line) is not None for line in way)
    if jumps != 1:
        found.append("jumps %d times without a handler" % jumps)
    if any(SIZE_FIELD.search(line) for line in way):
        found.append("reads the size without a handler")
    if any(line.startswith("call") or line.startswith("jmp\t_") for line in way):
        found.append("calls without a handler")
    return found


def check(compiler, include_dir):
    text = assembly(compiler, include_dir)
    failed = False
    for name in NAMES:
        lines = body(text, name)
        for complaint in complaints(lines):
            failed = True
            print("%s %s:\n    %s" % (name, complaint, "\n    ".join(lines)))
    return 1 if failed else 0


def self_test(compiler, include_dir):
    failed = False
    for what, (wrong, expected) in WRONG_CHECKS.items():
        text = assembly(compiler, include_dir, wrong)
        for name in NAMES:
            found = complaints(body(text, name))
            if not any(complaint.startswith(expected) for complaint in found):
                failed = True
                print("%s, where %s: expected \"%s\", found %s\n    %s"
                      % (name, what, expected, found, "\n    ".join(body(text, name))))
    return 1 if failed else 0


def main(arguments):
    run = check
    if arguments[:1] == ["--self-test"]:
        run = self_test
        arguments = arguments[1:]
    if len(arguments) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    if platform.machine() not in ("x86_64", "AMD64"):
        print("skipped: reads the assembly of x86-64, and this is " + platform.machine())
        return 77
    return run(*arguments)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

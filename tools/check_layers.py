#!/usr/bin/env python3
"""Checks from the include lines that every file keeps to its place in the tree.

usage: tools/check_layers.py [ROOT]     the root of the source tree [the one this script lies in]

  ProtectedInterfaces/, src/   only files of the own layer and of lower ones, as tools/layers.txt says,
                               and the standard library; a public header never a private one
  LumSysTS/                    only each other, the standard library and the platform
  examples/                    only public headers, their own, the standard library and the
                               platform, and the command line parser
  oz.h                         every public header that is no part of another one

Only the include lines themselves are read: what a header brings with it is that header's affair.
"""

import fnmatch
import re
import sys
from pathlib import Path

STANDARD = set("""
algorithm any array atomic bitset charconv chrono codecvt complex condition_variable deque exception
execution filesystem forward_list fstream functional future initializer_list iomanip ios iosfwd iostream
istream iterator limits list locale map memory memory_resource mutex new numeric optional ostream queue
random ratio regex scoped_allocator set shared_mutex sstream stack stdexcept streambuf string string_view
strstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility
valarray variant vector
cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef cstdint
cstdio cstdlib cstring ctime cuchar cwchar cwctype
""".split())

# What the operating system adds to it.
PLATFORM = ("unistd.h", "fcntl.h", "pthread.h", "sched.h", "errno.h", "signal.h", "time.h", "sys/*.h")

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


class Table:
    """tools/layers.txt: which file is in which layer, and which layer may include which."""

    def __init__(self, path):
        self.rank = {}  # layer -> height
        self.beside = set()  # layers at the top that stand side by side
        self.patterns = {}  # pattern -> layer
        self.allowed = []  # (patterns of the includer, patterns of the included)
        self.umbrella = None
        for number, line in enumerate(path.read_text().splitlines(), 1):
            line = line.partition("#")[0].strip()
            if line and not self.read_line(line):
                raise SystemExit(f"{path}:{number}: not understood: {line}")

    def read_line(self, line):
        head, _, tail = line.partition(":")
        kind, *names = head.split()
        if kind in ("layer", "beside") and len(names) == 1 and tail.split():
            if kind == "beside":
                self.beside.add(names[0])
            self.rank[names[0]] = len(self.rank)
            for pattern in tail.split():
                if pattern in self.patterns:
                    return False
                self.patterns[pattern] = names[0]
            return True
        if kind == "allow" and names and tail.split():
            self.allowed.append((names, tail.split()))
            return True
        if kind == "umbrella" and len(names) == 1:
            self.umbrella = names[0]
            return True
        return False

    def layer(self, stem):
        fitting = [pattern for pattern in self.patterns if fnmatch.fnmatchcase(stem, pattern)]
        return self.patterns[max(fitting, key=len)] if fitting else None

    def may_include(self, stem, other):
        mine, theirs = self.layer(stem), self.layer(other)
        if mine == theirs:
            return True
        if any(fits(stem, left) and fits(other, right) for left, right in self.allowed):
            return True
        if mine in self.beside and theirs in self.beside:
            return False
        return self.rank[theirs] < self.rank[mine]


def fits(name, patterns):
    return any(fnmatch.fnmatchcase(name, pattern) for pattern in patterns)


class Check:
    def __init__(self, root):
        self.root = root
        self.table = Table(root / "tools" / "layers.txt")
        self.violations = []
        self.files = 0
        self.public = self.headers("ProtectedInterfaces")
        self.private = self.headers("src")
        self.platform = self.headers("LumSysTS")

    def headers(self, folder):
        return {path.name for path in (self.root / folder).glob("*.h")}

    def sources(self, folder):
        found = (self.root / folder).rglob("*")
        return sorted(path for path in found if path.suffix in (".h", ".cpp", ".hpp"))

    def includes(self, path):
        self.files += 1
        for number, line in enumerate(path.read_text(errors="replace").splitlines(), 1):
            match = INCLUDE.match(line)
            if match:
                yield number, match.group(1), match.group(2)

    def complain(self, path, number, text):
        self.violations.append(f"{path.relative_to(self.root)}:{number}: {text}")

    def check_library(self, folder):
        for path in self.sources(folder):
            stem = path.stem
            is_umbrella = stem == self.table.umbrella
            if not is_umbrella and self.table.layer(stem) is None:
                self.complain(path, 1, f"{stem} is in no layer: enter it in tools/layers.txt")
                continue
            for number, _, name in self.includes(path):
                if name in STANDARD:
                    continue
                if name not in self.public | self.private | self.platform:
                    self.complain(path, number, f"{name} is neither ours nor the standard library's")
                elif name in self.private and folder == "ProtectedInterfaces":
                    self.complain(path, number, f"a public header includes the private {name}")
                elif Path(name).stem == self.table.umbrella:
                    self.complain(path, number, f"{name} is for clients: include what is used")
                elif is_umbrella:
                    continue
                elif self.table.layer(Path(name).stem) is None:
                    self.complain(path, number, f"{name} is in no layer: enter it in tools/layers.txt")
                elif not self.table.may_include(stem, Path(name).stem):
                    self.complain(path, number, f"{self.table.layer(stem)} must not include {name} of "
                                  f"{self.table.layer(Path(name).stem)}")

    def check_platform(self):
        for path in self.sources("LumSysTS"):
            if self.table.layer(path.stem) is None:
                self.complain(path, 1, f"{path.stem} is in no layer: enter it in tools/layers.txt")
            for number, _, name in self.includes(path):
                if name not in self.platform and name not in STANDARD and not fits(name, PLATFORM):
                    self.complain(path, number, f"the platform library stands alone, without {name}")

    def check_examples(self):
        for path in self.sources("examples"):
            if "tests" in path.relative_to(self.root).parts:
                continue
            for number, bracket, name in self.includes(path):
                known = name in self.public | self.platform or name in STANDARD
                if known or fits(name, PLATFORM) or fits(name, ["CLI/*"]):
                    continue
                own = (path.parent / name).resolve()
                if bracket == '"' and own.is_file() and self.root / "examples" in own.parents:
                    continue
                self.complain(path, number, f"an example uses public headers only, not {name}")

    def check_umbrella(self):
        if self.table.umbrella is None:
            return
        umbrella = self.root / "ProtectedInterfaces" / f"{self.table.umbrella}.h"
        if not umbrella.is_file():
            return
        included = {name for _, _, name in self.includes(umbrella)}
        whole = {name for name in self.public if not name.endswith(("_i.h", "_t.h"))}
        for name in sorted(whole - included - {umbrella.name}):
            self.complain(umbrella, 1, f"doesn't include {name}")

    def check_picture(self):
        picture = self.root / "docs" / "layers.dot"
        if not picture.is_file():
            return
        drawn = set(re.findall(r"\w+", picture.read_text()))
        for layer in self.table.rank:
            if layer not in drawn:
                self.complain(picture, 1, f"doesn't show the layer {layer}")

    def run(self):
        self.check_library("ProtectedInterfaces")
        self.check_library("src")
        self.check_platform()
        self.check_examples()
        self.check_umbrella()
        self.check_picture()
        return self.violations


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent.parent
    check = Check(root.resolve())
    violations = check.run()
    for violation in violations:
        print(violation)
    if violations:
        return 1
    print(f"{check.files} files keep to their layers")
    return 0


if __name__ == "__main__":
    sys.exit(main())

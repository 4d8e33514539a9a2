#!/usr/bin/env python3
"""Checks the binary interface of the public classes: the order of their virtual functions, the places of their data
members, their bases and their sizes.

usage: check_layout.py COMPILER TABLE INCLUDE_DIR...
       check_layout.py --complete TABLE TEST HEADER_DIR...
       check_layout.py --self-test COMPILER

Asks the compiler for the debug information of the classes that TABLE names, and compares. TABLE says what clients
that were built earlier rely upon, so a difference is an error in the classes; how it is written is told at its
beginning. With --complete no compiler is asked: each class that the headers export must be in TABLE, and be named in
the source TEST, as must each function and variable. With --self-test small classes are held against tables that are
wrong on purpose, and each difference must be found.

Exit: 0 all as the table says, 1 something is not, 2 wrong usage, 77 skipped, since the platform is not x86-64 or a
tool is missing.
"""

import platform
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

# How debug information spells them, beside how the table does.
SPELLINGS = (("std::__cxx11::", "std::"), ("std::size_t", "unsigned long"), ("std::uint64_t", "unsigned long"),
             ("std::int64_t", "long"), ("long unsigned int", "unsigned long"), ("long int", "long"),
             ("short int", "short"), ("_IO_FILE", "FILE"))


class Expected:
    """What the table says about one class."""

    def __init__(self, name, line):
        self.name = name
        self.line = line
        self.bases = []  # (name, offset)
        self.size = None
        self.slots = []  # new ones, in order; a destructor has two entries
        self.fields = []  # (name, offset or None, type or None)
        self.more = False  # whether other fields may follow


class Found:
    """What the compiler says about one class."""

    def __init__(self):
        self.bases = []
        self.size = None
        self.virtuals = []  # (slot, text)
        self.has_virtual_destructor = False
        self.fields = []


def squeezed(text):
    """A spelling in which blanks make no difference and each type has one name."""
    for old, new in SPELLINGS:
        text = re.sub(r"(?<![\w:])" + re.escape(old) + r"(?!\w)", new, text)
    text = re.sub(r"(?<=[<,(]) *const ([\w:]+)", r"\1 const", text)
    words = re.sub(r"\s+", " ", text.strip())
    return re.sub(r"(?<!\w) | (?!\w)", "", words)


def read_table(text):
    classes = []
    for number, raw in enumerate(text.splitlines(), 1):
        line = raw.split("#", 1)[0].rstrip()
        if not line:
            continue
        words = line.split(None, 1)
        if words[0] == "class":
            classes.append(Expected(words[1].strip(), number))
        elif not classes or not line.startswith(" "):
            raise SystemExit("line %d of the table: %s" % (number, raw))
        elif words[0] == "base":
            name, offset = words[1].rsplit(None, 1)
            classes[-1].bases.append((name, int(offset)))
        elif words[0] == "size":
            classes[-1].size = int(words[1])
        elif words[0] == "slot":
            classes[-1].slots.append(words[1].strip())
        elif words[0] == "field":
            try:
                offset, name, kind = words[1].split(None, 2)
            except ValueError:
                raise SystemExit("line %d of the table: a field has an offset, a name and a type: %s" % (number, raw))
            classes[-1].fields.append((name, None if offset == "-" else int(offset), None if kind == "-" else kind))
        elif line.strip() == "more":
            classes[-1].more = True
        else:
            raise SystemExit("line %d of the table: %s" % (number, raw))
    return classes


def debug_information(compiler, classes, includes, prelude):
    """The text of readelf for a file that uses each class."""
    source = prelude + "".join("static_assert(sizeof(%s) > 0); extern %s* const use_%d; %s* const use_%d = nullptr;\n"
                               % (c.name, c.name, i, c.name, i) for i, c in enumerate(classes))
    with tempfile.TemporaryDirectory() as folder:
        target = str(Path(folder) / "classes.o")
        command = [compiler, "-std=c++17", "-O0", "-g", "-gdwarf-4", "-x", "c++", "-c", "-o", target, "-"]
        version = subprocess.run([compiler, "--version"], stdout=subprocess.PIPE, text=True, check=True).stdout
        # Each compiler leaves classes out whose virtual functions are defined elsewhere, unless it is told not to.
        command += ["-fstandalone-debug"] if "clang" in version else ["-femit-class-debug-always"]
        for include in includes:
            command += ["-I", include]
        subprocess.run(command, input=source, text=True, check=True)
        dump = subprocess.run(["readelf", "-W", "--debug-dump=info", target],
                              stdout=subprocess.PIPE, text=True, check=True).stdout
    return dump


class Entry:
    """An entry of the debug information, with those below it."""

    def __init__(self, tag):
        self.tag = tag
        self.scope = None  # the namespace or class around it
        self.attributes = {}
        self.children = []

    def name(self):
        return self.attributes.get("DW_AT_name", "")

    def number(self, attribute):
        found = re.search(r"\d+$", self.attributes.get(attribute, "").strip())
        return int(found.group()) if found else None


ENTRY = re.compile(r"^ <(\w+)><(\w+)>: Abbrev Number: (\d+)(?: \((\w+)\))?")
ATTRIBUTE = re.compile(r"^ +<\w+> +(DW_AT_\w+) *: ?(.*)")


def value_of(text):
    """The value of an attribute without how it is stored."""
    text = text.rstrip()
    text = re.sub(r"^\((?:indirect (?:line )?string|alt indirect string), offset: 0x\w+\): ", "", text)
    text = re.sub(r"^\((?:strp|line_strp|strx\d?)\) \((?:offset|indexed string): 0x\w+\): ", "", text)
    forms = r"string|data\d|udata|sdata|ref\d|flag|flag_present|exprloc|implicit_const|addr|sec_offset"
    return re.sub(r"^\((?:%s)\) ?" % forms, "", text)


def parse(dump):
    """All entries by their place, and the list of those that are classes."""
    entries = {}
    classes = []
    path = []
    entry = None
    for line in dump.splitlines():
        found = ENTRY.match(line)
        if found:
            depth, place = int(found.group(1), 16), int(found.group(2), 16)
            if found.group(3) == "0":
                entry = None
                continue
            entry = Entry(found.group(4))
            entries[place] = entry
            del path[depth:]
            if path:
                path[-1].children.append(entry)
                entry.scope = path[-1]
            path.append(entry)
            if entry.tag in ("DW_TAG_class_type", "DW_TAG_structure_type"):
                classes.append(entry)
            continue
        found = ATTRIBUTE.match(line)
        if found and entry is not None:
            entry.attributes[found.group(1)] = value_of(found.group(2))
    return entries, classes


def referred(entries, entry):
    found = re.search(r"<0x(\w+)>", entry.attributes.get("DW_AT_type", ""))
    target = entries.get(int(found.group(1), 16)) if found else None
    while target is not None and target.tag == "DW_TAG_typedef":
        target = referred(entries, target)
    return target


def type_text(entries, entry):
    """A type as source text; of a typedef, what it stands for."""
    if entry is None:
        return "void"
    kind = entry.tag
    target = referred(entries, entry)
    if kind == "DW_TAG_pointer_type":
        if target is not None and target.tag == "DW_TAG_subroutine_type":
            arguments = [type_text(entries, referred(entries, child)) for child in target.children
                         if child.tag == "DW_TAG_formal_parameter"]
            return "%s(*)(%s)" % (type_text(entries, referred(entries, target)), ", ".join(arguments))
        return type_text(entries, target) + "*"
    if kind == "DW_TAG_reference_type":
        return type_text(entries, target) + "&"
    if kind == "DW_TAG_const_type":
        return type_text(entries, target) + " const"
    if kind == "DW_TAG_array_type":
        bound = entry.children[0]
        count = bound.number("DW_AT_count")
        if count is None:
            count = bound.number("DW_AT_upper_bound") + 1
        return "%s[%d]" % (type_text(entries, target), count)
    scopes = []
    scope = entry.scope
    while scope is not None and scope.tag in ("DW_TAG_namespace", "DW_TAG_class_type", "DW_TAG_structure_type"):
        if scope.name() != "__cxx11":
            scopes.insert(0, scope.name())
        scope = scope.scope
    return "::".join(scopes + [entry.name()])


def spelled_out(names):
    """Linkage names as source text."""
    if not names:
        return {}
    # The destructor of debug information has a name of no function, which not every tool reads.
    text = subprocess.run(["c++filt"], input="\n".join(names), stdout=subprocess.PIPE, text=True, check=True).stdout
    return dict(zip(names, text.split("\n")))


def layouts(dump, wanted):
    """What the dump says about the classes of these names, by squeezed name."""
    entries, classes = parse(dump)
    by_name = {}
    for entry in classes:
        name = squeezed(entry.name())
        if name in wanted and "DW_AT_byte_size" in entry.attributes and "DW_AT_declaration" not in entry.attributes:
            by_name.setdefault(name, entry)
    functions = [child.attributes["DW_AT_linkage_name"] for entry in by_name.values() for child in entry.children
                 if child.tag == "DW_TAG_subprogram" and "DW_AT_linkage_name" in child.attributes]
    texts = spelled_out(functions)

    result = {}
    for name, entry in by_name.items():
        found = result[name] = Found()
        found.size = entry.number("DW_AT_byte_size")
        for child in entry.children:
            if child.tag == "DW_TAG_inheritance":
                base = referred(entries, child)
                found.bases.append((base.name(), child.number("DW_AT_data_member_location")))
            elif child.tag == "DW_TAG_member" and "DW_AT_data_member_location" in child.attributes:
                if not child.name().startswith("_vptr"):
                    found.fields.append((child.name(), child.number("DW_AT_data_member_location"),
                                         type_text(entries, referred(entries, child))))
            elif child.tag == "DW_TAG_subprogram" and child.name().startswith("~"):
                # Where its two entries are is not said; it shows in the places of the others.
                found.has_virtual_destructor = "DW_AT_virtuality" in child.attributes
            elif child.tag == "DW_TAG_subprogram" and "DW_AT_vtable_elem_location" in child.attributes:
                slot = int(re.search(r"DW_OP_constu: (\d+)", child.attributes["DW_AT_vtable_elem_location"]).group(1))
                whole = texts[child.attributes["DW_AT_linkage_name"]]
                found.virtuals.append((slot, whole[whole.index("::" + child.name() + "(") + 2:]))
        found.fields.sort(key=lambda field: field[1])
    return result


def first_free_slot(name, expected, found):
    """How many entries the table of a class has that it does not add itself: those of its first base. None if one of
    the bases is not in the table."""
    bases = found[name].bases
    primary = squeezed(bases[0][0]) if bases else None
    if primary is None:
        return 0
    below = first_free_slot(primary, expected, found) if primary in expected and primary in found else None
    return None if below is None else below + sum(2 if slot == "destructor" else 1 for slot in expected[primary].slots)


def differences(classes, found):
    """What is not as the table says, in words."""
    expected = {squeezed(c.name): c for c in classes}
    if len(expected) != len(classes):
        yield "the table names a class twice"
    for c in classes:
        name = squeezed(c.name)
        where = "%s (line %d)" % (c.name, c.line)
        if name not in found:
            yield "%s: no such class" % where
            continue
        f = found[name]

        bases = [(squeezed(base), offset) for base, offset in c.bases]
        bases_found = [(squeezed(base), offset) for base, offset in f.bases]
        if bases != bases_found:
            yield "%s: bases should be %s and are %s" % (where, bases, bases_found)
            continue
        if c.size is not None and c.size != f.size:
            yield "%s: size should be %d and is %d" % (where, c.size, f.size)

        start = first_free_slot(name, expected, found)
        if start is None:
            yield "%s: one of its bases is not in the table" % where
            continue
        slots = {}
        place = start
        for slot in c.slots:
            if slot != "destructor":
                slots[place] = squeezed(slot)
            elif not f.has_virtual_destructor:
                yield "%s: no virtual destructor" % where
            place += 2 if slot == "destructor" else 1
        slots_found = {slot: squeezed(text) for slot, text in f.virtuals if slot >= start}
        for slot in sorted(set(slots) | set(slots_found)):
            if slots.get(slot) != slots_found.get(slot):
                yield "%s: slot %d should be %s and is %s" % (where, slot, slots.get(slot), slots_found.get(slot))

        names = [field[0] for field in c.fields]
        names_found = [field[0] for field in f.fields]
        if c.more:
            names_found = names_found[:len(names)]
        if names != names_found:
            yield "%s: fields should be %s and are %s" % (where, names, names_found)
            continue
        for (field, offset, kind), (_, offset_found, kind_found) in zip(c.fields, f.fields):
            if offset is not None and offset != offset_found:
                yield "%s: field %s should be at %d and is at %d" % (where, field, offset, offset_found)
            if kind is None:
                continue
            kind, kind_found = squeezed(kind), squeezed(kind_found)
            if kind != kind_found:
                yield "%s: field %s should be of type %s and is %s" % (where, field, kind, kind_found)


def check(compiler, table, includes, prelude='#include "oz.h"\n'):
    classes = read_table(table)
    dump = debug_information(compiler, classes, includes, prelude)
    found = layouts(dump, {squeezed(c.name) for c in classes})
    return list(differences(classes, found))


OWN_CLASSES = """
template <class T> struct Pair { T first; T second; virtual ~Pair() = default; };
class A { public: virtual ~A(); virtual int f(int) const; virtual int f(int); private: enum Kind { ONE }; Kind c; };
class B { public: virtual void g(Pair<int> const&, char const* const) = 0; virtual ~B(); double d; };
class C : public A, public B
{ public: void g(Pair<int> const&, char const* const) override; typedef int (*F)(char const&); F e; };
struct E { char one; char two[2]; char three; };
"""

OWN_TABLE = """
class Pair<int>
  size 16
  slot destructor
  field 8 first int
  field 12 second int
class A
  size 16
  slot destructor
  slot f(int) const
  slot f(int)
  field 8 c A::Kind
class B
  size 16
  slot g(Pair<int> const&, char const*)
  slot destructor
  field 8 d double
class C
  base A 0
  base B 16
  size 40
  slot g(Pair<int> const&, char const*)
  field 32 e int(*)(char const&)
class E
  size 4
  field - one -
  field 1 two char[2]
  more
"""

# A change of the table, and what must be said about it.
WRONG = (
    ("  size 40", "  size 48", "size should be 48 and is 40"),
    ("  field 8 c A", "  field 9 c A", "field c should be at 9 and is at 8"),
    ("c A::Kind", "c int", "field c should be of type int and is A::Kind"),
    ("e int(*)(char const&)", "e int(*)(char&)", "field e should be of type int(*)(char&) and is int(*)(char const&)"),
    ("two char[2]", "two char[3]", "field two should be of type char[3] and is char[2]"),
    ("  field 8 first int\n  field 12 second", "  field 8 second int\n  field 12 first", "fields should be"),
    ("  field 8 d double\n", "", "fields should be [] and are ['d']"),
    ("  slot f(int) const\n  slot f(int)\n", "  slot f(int)\n  slot f(int) const\n", "slot 2 should be f(int)"),
    ("  slot f(int)\n", "", "slot 3 should be None and is f(int)"),
    ("  slot f(int)\n", "  slot f(long)\n", "slot 3 should be f(long)"),
    ("  slot g(Pair<int> const&, char const*)\n  slot destructor\n",
     "  slot destructor\n  slot g(Pair<int> const&, char const*)\n",
     "slot 2 should be g"),
    ("  slot f(int) const\n", "  slot destructor\n  slot f(int) const\n", "slot 2 should be None"),
    ("  base A 0\n  base B 16\n", "  base B 0\n  base A 16\n", "bases should be"),
    ("  base B 16", "  base B 24", "bases should be"),
    ("  more\n", "", "E (line 24): fields should be"),
    ("  field 1 two", "  field 1 three", "E (line 24): fields should be"),
    ("class B\n", "class D\n", "D (line 13): no such class"),
    ("class A\n", "class D\n", "C (line 18): one of its bases is not in the table"),
)


def self_test(compiler):
    problems = check(compiler, OWN_TABLE, [], OWN_CLASSES)
    failed = [("the table that is right", problems)] if problems else []
    dump = debug_information(compiler, read_table(OWN_TABLE), [], OWN_CLASSES)
    for old, new, complaint in WRONG:
        assert OWN_TABLE.count(old) >= 1, old
        classes = read_table(OWN_TABLE.replace(old, new, 1))
        found = layouts(dump, {squeezed(c.name) for c in classes})
        said = list(differences(classes, found))
        if not any(complaint in line for line in said):
            failed.append(("where %r became %r: expected %r" % (old, new, complaint), said))
    names = exported(OWN_HEADER)
    if names != (["A", "Pair", "B"], ["hook", "the_one", "plain_", "list"]):
        failed.append(("what a header exports", names))
    for what, said in failed:
        print("%s, found %s" % (what, said))
    return 1 if failed else 0


EXPORTED = re.compile(r"^(?!template)(?:extern )?(?:\"C\" )?(class |struct |)(?:OZ|LUM)_EXPORT (.*)", re.MULTILINE)


def exported(text):
    """The classes that a header exports, and the functions and variables."""
    classes = []
    others = []
    for kind, rest in EXPORTED.findall(re.sub(r"^#.*", "", text, flags=re.MULTILINE)):
        if kind:
            classes.append(re.match(r"\w+", rest).group())
        elif "(*" in rest:
            others.append(re.search(r"\(\*(\w+)\)", rest).group(1))
        else:
            others.append(re.search(r"(operator\W+|\w+) *[(;]", rest).group(1))
    return classes, others


def left_out(table, test, folders):
    """What the headers in these folders export and the table or the test does not name."""
    in_table = {re.sub(r"<.*", "", c.name) for c in read_table(table)}
    for folder in folders:
        for header in sorted(Path(folder).glob("*.h")):
            classes, others = exported(header.read_text())
            for name in classes:
                if name not in in_table:
                    yield "%s: %s is not in the table" % (header.name, name)
            for name in classes + others:
                if not re.search(r"(?<!\w)" + re.escape(name) + r"(?!\w)", test):
                    yield "%s: %s is not in the test" % (header.name, name)


OWN_HEADER = """
#define OZ_EXPORT
class OZ_EXPORT A
template <class T>
class OZ_EXPORT Pair
struct OZ_EXPORT B
class C
extern OZ_EXPORT void (*hook)(int, char*);
extern OZ_EXPORT A& the_one;
extern "C" OZ_EXPORT double plain_();
OZ_EXPORT std::vector<A> list(int first,
"""


def check_complete(arguments):
    table, test, *folders = arguments
    found = list(left_out(Path(table).read_text(), Path(test).read_text(), folders))
    for line in found:
        print(line)
    return 1 if found else 0


def main(arguments):
    if arguments[:1] == ["--complete"] and len(arguments) > 3:
        return check_complete(arguments[1:])
    wants_self_test = arguments[:1] == ["--self-test"]
    if wants_self_test:
        arguments = arguments[1:]
    if len(arguments) < (1 if wants_self_test else 2):
        print(__doc__, file=sys.stderr)
        return 2
    missing = [tool for tool in ("readelf", "c++filt") if shutil.which(tool) is None]
    if platform.machine() not in ("x86_64", "AMD64") or missing:
        print("skipped: reads the debug information of x86-64 by readelf and c++filt")
        return 77
    if wants_self_test:
        return self_test(arguments[0])
    problems = check(arguments[0], Path(arguments[1]).read_text(), arguments[2:])
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

#!/usr/bin/env python3
"""Draws the example drawings in examples/data/.

usage: tools/draw_examples.py [FOLDER]     where to draw [examples/data]

The drawings are small and each shows something that real drawings have: the plate nearly everything at
once, the others one thing each. Tests compare what oz-contours makes of them to the byte, so a change
here changes results there.
"""

import pathlib
import sys


class Drawing:
    """A DXF file in the making: groups of a code and a value."""

    def __init__(self, header=(), line_end="\n", encoding="ascii", handles=0x20):
        self.groups = []
        self.line_end = line_end
        self.encoding = encoding
        self.next_handle = handles
        if header:
            self.add((0, "SECTION"), (2, "HEADER"))
            for name, code, value in header:
                self.add((9, name), (code, value))
            self.add((0, "ENDSEC"))
        self.add((0, "SECTION"), (2, "ENTITIES"))

    def add(self, *groups):
        self.groups.extend(groups)

    def entity(self, kind, layer, *groups):
        self.add((0, kind))
        if self.next_handle:
            self.add((5, "%X" % self.next_handle))
            self.next_handle += 1
        self.add((8, layer), *groups)

    def line(self, layer, x1, y1, x2, y2):
        self.entity("LINE", layer, (10, x1), (20, y1), (11, x2), (21, y2))

    def circle(self, layer, x, y, radius):
        self.entity("CIRCLE", layer, (10, x), (20, y), (40, radius))

    def arc(self, layer, x, y, radius, start, end, *more):
        self.entity("ARC", layer, (10, x), (20, y), (40, radius), (50, start), (51, end), *more)

    def light_polyline(self, layer, closed, *vertices):
        groups = [(90, len(vertices)), (70, 1 if closed else 0)]
        for x, y, bulge in vertices:
            groups += [(10, x), (20, y)] + ([(42, bulge)] if bulge else [])
        self.entity("LWPOLYLINE", layer, *groups)

    def polyline(self, layer, closed, *vertices):
        self.entity("POLYLINE", layer, (66, 1), (70, 1 if closed else 0))
        for x, y, bulge in vertices:
            self.entity("VERTEX", layer, (10, x), (20, y), *([(42, bulge)] if bulge else []))
        self.entity("SEQEND", layer)

    def text(self, layer, x, y, text):
        self.entity("TEXT", layer, (10, x), (20, y), (40, 4), (1, text))

    def write(self, path):
        self.add((0, "ENDSEC"), (0, "EOF"))
        lines = ["%3d%s%s%s" % (code, self.line_end, value, self.line_end) for code, value in self.groups]
        path.write_bytes("".join(lines).encode(self.encoding))


def plate():
    """A plate as a workshop gets it: pieces in any order and direction, a line that is there twice, an
    opening that was not quite closed, and text that is not to be cut."""
    d = Drawing([("$INSUNITS", 70, 4)])
    # The outline, 200 by 120 with corners of radius 15. Its right side ends 0.002 short of the corner.
    d.line("CUT", 15, 0, 185, 0)
    d.arc("CUT", 15, 105, 15, 90, 180)
    d.line("CUT", 200, 105, 200, 15.002)
    d.arc("CUT", 185, 15, 15, 270, 0)
    d.line("CUT", 185, 120, 15, 120)
    d.arc("CUT", 15, 15, 15, 180, 270)
    d.line("CUT", 0, 15, 0, 105)
    d.arc("CUT", 185, 105, 15, 0, 90)
    # The upper side once more, drawn the other way.
    d.line("CUT", 15, 120, 185, 120)
    # A slot of four pieces, and one in one piece.
    d.line("CUT", 40, 84, 80, 84)
    d.arc("CUT", 80, 90, 6, 270, 90)
    d.line("CUT", 40, 96, 80, 96)
    d.arc("CUT", 40, 90, 6, 90, 270)
    d.light_polyline("CUT", True, (120, 84, 0), (160, 84, 1), (160, 96, 0), (120, 96, 1))
    # Holes for screws, and one of two half circles.
    for x, y in ((15, 15), (185, 15), (185, 105), (15, 105)):
        d.circle("HOLES", x, y, 4)
    d.arc("HOLES", 100, 90, 8, 0, 180)
    d.arc("HOLES", 100, 90, 8, 180, 360)
    # A D: a chord and three quarters of a circle.
    d.line("CUT", 60, 32, 60, 48)
    d.arc("CUT", 52, 40, 11.313708498984761, 45, 315)
    # A rectangular opening whose last side stops 0.037 before its corner.
    d.line("CUT", 120, 25, 160, 25)
    d.line("CUT", 160, 25, 160, 55)
    d.line("CUT", 160, 55, 120, 55)
    d.line("CUT", 120, 55, 120, 25.037)
    # A mark on a layer of its own, and what is only to be read.
    d.light_polyline("ENGRAVE", True, (95, 30, 0), (105, 30, 0), (100, 40, 0))
    d.text("NOTES", 70, 60, "PLATE 200 x 120")
    d.text("NOTES", 70, 66, "t = 4")
    return d


def bulges():
    """A keyhole in one polyline, and a crescent: arcs that turn left and right, more and less than half
    a circle."""
    d = Drawing([("$INSUNITS", 70, 4)])
    d.light_polyline("0", True, (-3, 0, 0), (3, 0, 0), (3, 16, 3), (-3, 16, 0))
    d.light_polyline("0", True, (30, 0, 1), (30, 20, -0.5))
    return d


def old_polyline():
    """No header, no handles, and polylines with their vertices as entities."""
    d = Drawing(handles=0)
    d.polyline("0", True, (0, 0, 0), (40, 0, 1), (40, 20, 0), (0, 20, 0))
    d.polyline("0", False, (60, 0, 0), (80, 0, 0.4142135623730951), (90, 10, 0))
    return d


def mirrored():
    """A slot whose round ends were mirrored: their coordinates are those of a plane that is looked at from
    behind."""
    d = Drawing([("$INSUNITS", 70, 4)])
    behind = ((210, 0), (220, 0), (230, -1))
    d.line("0", 10, 5, 50, 5)
    d.line("0", 10, -5, 50, -5)
    d.arc("0", -50, 0, 5, 90, 270, *behind)
    d.arc("0", -10, 0, 5, 270, 90, *behind)
    return d


def branches():
    """Two squares that share a corner, and a line that ends where others meet."""
    d = Drawing([("$INSUNITS", 70, 4)])
    d.line("0", 0, 0, 10, 0)
    d.line("0", 10, 0, 10, 10)
    d.line("0", 10, 10, 0, 10)
    d.line("0", 0, 10, 0, 0)
    d.line("0", 10, 10, 20, 10)
    d.line("0", 20, 10, 20, 20)
    d.line("0", 20, 20, 10, 20)
    d.line("0", 10, 20, 10, 10)
    d.line("0", 0, 0, -5, -5)
    return d


def inch():
    """A washer plate in inches."""
    d = Drawing([("$INSUNITS", 70, 1)])
    d.light_polyline("CUT", True, (0, 0, 0), (2, 0, 0), (2, 1, 0), (0, 1, 0))
    d.circle("CUT", 1, 0.5, 0.25)
    return d


def names():
    """Lines that end in CR LF, and names of layers in an 8-bit code page."""
    d = Drawing([("$DWGCODEPAGE", 3, "ANSI_1252"), ("$INSUNITS", 70, 4)], line_end="\r\n", encoding="cp1252")
    d.circle("Au\u00dfen", 0, 0, 20)
    d.circle("B\u00fcgel, \u20ac", 0, 0, 10)
    d.circle("\\U+00D8 5", 0, 0, 2.5)
    return d


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "examples/data")
    for draw in (plate, bulges, old_polyline, mirrored, branches, inch, names):
        draw().write(folder / (draw.__name__ + ".dxf"))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""The layer check finds each kind of violation, and nothing in a tree that keeps the rules."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOLS = Path(__file__).resolve().parents[2] / "tools"

GOOD_TREE = {
    "LumSysTS/lummutex.h": "#include <pthread.h>\n",
    "LumSysTS/lummutex.cpp": '#include "lummutex.h"\n#include <sys/types.h>\n#include <atomic>\n',
    "ProtectedInterfaces/ozassert.h": "",
    "ProtectedInterfaces/ozarray.h": '#include "ozassert.h"\n#include <cstdint>\n#include "ozarray_i.h"\n',
    "ProtectedInterfaces/ozarray_i.h": '#include "ozarray.h"\n',
    "ProtectedInterfaces/ozmutex.h": '#include "lummutex.h"\n',
    "ProtectedInterfaces/ozobject.h": '#include "ozarray.h"\n',
    "ProtectedInterfaces/ozstandardattribs.h": '#include "ozobject.h"\n',
    "ProtectedInterfaces/ozobjdependency.h": '#include "ozarray.h"\n',
    "ProtectedInterfaces/oz.h": '#include "ozassert.h"\n#include "ozarray.h"\n#include "ozmutex.h"\n'
                                '#include "ozobject.h"\n#include "ozstandardattribs.h"\n'
                                '#include "ozobjdependency.h"\n',
    "src/ozobjdependency_p.h": '#include "ozobjdependency.h"\n',
    "src/ozobjdependency.cpp": '#include "ozobjdependency_p.h"\n',
    "src/ozobjdependency_debug.cpp": '#include "ozstandardattribs.h"\n#include "ozobjdependency_p.h"\n',
    "examples/contours/drawing.h": "#include <ozarray.h>\n",
    "examples/contours/main.cpp": '#include "drawing.h"\n#include <CLI/CLI.hpp>\n#include <unistd.h>\n',
}


class CheckLayers(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = Path(self.folder.name)
        self.write("tools/layers.txt", (TOOLS / "layers.txt").read_text())
        for name, text in GOOD_TREE.items():
            self.write(name, text)

    def tearDown(self):
        self.folder.cleanup()

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def run_check(self):
        command = [sys.executable, str(TOOLS / "check_layers.py"), str(self.root)]
        done = subprocess.run(command, stdout=subprocess.PIPE, universal_newlines=True, check=False)
        return done.returncode, done.stdout.splitlines()

    def expect(self, *violations):
        self.assertEqual(self.run_check(), (1, list(violations)))

    def test_a_tree_that_keeps_the_rules_passes(self):
        self.assertEqual(self.run_check(), (0, ["16 files keep to their layers"]))

    def test_a_lower_layer_must_not_include_a_higher_one(self):
        self.write("ProtectedInterfaces/ozassert.h", "\n #  include  <ozarray.h>\n")
        self.expect("ProtectedInterfaces/ozassert.h:2: assertions must not include ozarray.h of arrays")

    def test_layers_at_the_top_must_not_include_each_other(self):
        self.write("src/ozobjdependency.cpp", '#include "ozobject.h"\n')
        self.expect("src/ozobjdependency.cpp:1: dependency_graph must not include ozobject.h of object_model")

    def test_an_exception_holds_for_its_own_files_only(self):
        self.write("src/ozobjdependency_p.h", '#include "ozstandardattribs.h"\n')
        self.expect("src/ozobjdependency_p.h:1: dependency_graph must not include ozstandardattribs.h of object_model")

    def test_a_layer_below_the_lock_must_not_include_the_platform(self):
        self.write("ProtectedInterfaces/ozarray_i.h", '#include "lummutex.h"\n')
        self.expect("ProtectedInterfaces/ozarray_i.h:1: arrays must not include lummutex.h of platform")

    def test_a_public_header_must_not_include_a_private_one(self):
        self.write("ProtectedInterfaces/ozobjdependency.h", '#include "ozobjdependency_p.h"\n')
        self.expect("ProtectedInterfaces/ozobjdependency.h:1: a public header includes the private ozobjdependency_p.h")

    def test_a_file_without_a_layer_is_refused(self):
        self.write("src/ozsurprise.cpp", "")
        self.expect("src/ozsurprise.cpp:1: ozsurprise is in no layer: enter it in tools/layers.txt")

    def test_the_library_uses_nothing_but_the_standard_library(self):
        self.write("src/ozobjdependency.cpp", "#include <unistd.h>\n")
        self.expect("src/ozobjdependency.cpp:1: unistd.h is neither ours nor the standard library's")

    def test_the_library_does_not_include_the_umbrella(self):
        self.write("src/ozobjdependency.cpp", '#include "oz.h"\n')
        self.expect("src/ozobjdependency.cpp:1: oz.h is for clients: include what is used")

    def test_the_umbrella_includes_every_public_header(self):
        self.write("ProtectedInterfaces/ozjournal.h", "")
        self.expect("ProtectedInterfaces/oz.h:1: doesn't include ozjournal.h")

    def test_the_platform_library_stands_alone(self):
        self.write("LumSysTS/lummutex.h", '#include "ozassert.h"\n')
        self.expect("LumSysTS/lummutex.h:1: the platform library stands alone, without ozassert.h")

    def test_an_example_must_not_include_a_private_header(self):
        self.write("examples/contours/main.cpp", '#include "ozobjdependency_p.h"\n')
        self.expect("examples/contours/main.cpp:1: an example uses public headers only, not ozobjdependency_p.h")

    def test_an_example_must_not_reach_into_the_sources(self):
        self.write("examples/contours/main.cpp", '#include "../../src/ozobjdependency_p.h"\n')
        self.expect("examples/contours/main.cpp:1: an example uses public headers only, not ../../src/ozobjdependency_p.h")

    def test_the_picture_shows_every_layer(self):
        text = " ".join(line.split()[1].rstrip(":") for line in (TOOLS / "layers.txt").read_text().splitlines()
                        if line.startswith(("layer ", "beside ")))
        self.write("docs/layers.dot", text)
        self.assertEqual(self.run_check()[0], 0)

        self.write("docs/layers.dot", text.replace("geometry", ""))
        self.expect("docs/layers.dot:1: doesn't show the layer geometry")

    def test_a_line_of_the_table_that_makes_no_sense_is_refused(self):
        self.write("tools/layers.txt", "layer\n")
        self.assertNotEqual(self.run_check()[0], 0)


if __name__ == "__main__":
    unittest.main()

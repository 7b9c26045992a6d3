#!/usr/bin/env python3
"""Each check of tools/ passes a good tree and fails a bad one for the reason it names."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"


class ChecksTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)

    def write(self, files):
        for name, text in files.items():
            path = self.root / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)

    def track(self, files):
        self.write(files)
        for arguments in (["init", "-q"], ["add", "-A"]):
            subprocess.run(["git"] + arguments, cwd=self.root, check=True)

    def expect(self, reason, program, *arguments):
        """Runs a check; it passes when `reason` is None, else fails and says `reason`."""
        command = [str(TOOLS / program)] + [str(a) for a in arguments]
        if program.endswith(".py"):
            command.insert(0, sys.executable)
        run = subprocess.run(command, capture_output=True, text=True)
        output = run.stdout + run.stderr
        self.assertEqual(run.returncode, 1 if reason == "" or reason else 0, output)
        self.assertIn(reason or "", output)

    # A tree that keeps the layers, and what spoils it.
    LAYERS = "foundation:\nnetwork: foundation values\nvalues: foundation network\nbridge: network\n"
    GOOD = {
        "src/foundation/object.h": "#include <memory>\nclass KVN_object {\n};\n",
        "src/network/node.h":
            '#include "foundation/object.h"\nclass KVN_node : public KVN_object {\n};\n',
        "src/network/node.cpp": '#include "network/node.h"\n#include "values/value.h"\n',
        "src/values/value.h": "class KVN_value;\n",
        "src/values/cost.h":
            '#include "network/node.h"\nclass KVN_cost final : public KVN_node {\n};\n',
        "src/bridge/entry.cpp": '#include <jni.h>\n#include "network/node.h"\n',
    }
    BAD = [
        ("upward include", "src/foundation/up.h", '#include "network/node.h"\n',
         "up.h:1: foundation may not include network"),
        ("layer skipped in the declaration", "src/bridge/o.cpp", '#include "foundation/object.h"\n',
         "bridge may not include foundation"),
        ("relative path", "src/network/r.cpp", '#include "../foundation/object.h"\n',
         "is no file seen from src"),
        ("name without its folder", "src/network/r.cpp", '#include "node.h"\n',
         "is no file seen from src"),
        ("folder without a component", "src/decision/d.h", "", "decision declares no component"),
        ("foreign header", "src/network/j.cpp", "#include <jni.h>\n", "is for bridge only"),
        ("unknown library", "src/network/b.cpp", "#include <boost/any.hpp>\n", "may depend on"),
        ("headers in a circle", "src/values/value.h",
         '#include "values/other.h"\n', "values/other.h -> values/value.h"),
        ("across without a base class", "src/values/field.h",
         '#include "network/node.h"\nclass KVN_field {\n  KVN_node node;\n};\n', "no base class"),
    ]

    def check_layers(self, reason):
        self.write({"layers.txt": self.LAYERS})
        self.expect(reason, "check_layers.py", self.root / "layers.txt", self.root / "src")

    def test_layers(self):
        self.write(self.GOOD)
        self.check_layers(None)
        self.write({"src/values/other.h": ""})
        for name, path, text, reason in self.BAD:
            with self.subTest(name):
                kept = self.GOOD.get(path)
                self.write({path: text, "src/values/other.h": '#include "values/value.h"\n'})
                self.check_layers(reason)
                (self.root / path).unlink()
                self.write({path: kept} if kept else {})

    def test_layers_reason_across(self):
        self.write(self.GOOD)
        self.write({"src/values/field.h": '#include "network/node.h"  // across: held by value\n'})
        self.check_layers(None)

    def test_layers_folders_in_a_circle(self):
        self.write(self.GOOD)
        self.write({"layers.txt": self.LAYERS.replace("foundation:", "foundation: bridge")})
        self.expect("MAY_INCLUDE goes round", "check_layers.py", self.root / "layers.txt",
                    self.root / "src")

    def test_sizes(self):
        self.track({"src/a.cpp": "\n" * 601, "src/b.h": "\n" * 600, "data.txt": "\n" * 9999})
        self.expect("src/a.cpp: 601 lines, at most 600", "check_sizes.py", self.root)
        self.write({"tools/check_sizes.allow": "src/a.cpp 650 one flat switch\n"})
        self.expect(None, "check_sizes.py", self.root)
        self.write({"tools/check_sizes.allow": "src/a.cpp 650\n"})
        self.expect("wanted: <file>", "check_sizes.py", self.root)
        self.write({"tools/check_sizes.allow": "src/a.cpp 650 x\nsrc/b.h 700 y\n"})
        self.expect("src/b.h needs no line any more", "check_sizes.py", self.root)

    def test_format(self):
        style = (TOOLS.parent / ".clang-format").read_text()
        self.track({".clang-format": style, "a.cpp": "int  main( ) {return 0;}\n", "b.h": ""})
        run = subprocess.run([TOOLS / "check_format.sh", self.root], capture_output=True, text=True)
        self.assertNotIn(run.returncode, (0, 2), run.stderr)
        self.assertIn("a.cpp:1", run.stderr)
        self.write({"a.cpp": "int main() { return 0; }\n"})
        self.expect(None, "check_format.sh", self.root)
        (self.root / "b.h").unlink()  # deleted, not yet committed
        self.expect(None, "check_format.sh", self.root)

    def test_words(self):
        # Put together here, so that this file passes the check itself.
        bad = ["see Part" + " 7.2", "as the" + " Specification says", "in sp" + "ec.md",
               "parts" + " 10.1 and 2.3"]
        good = ["parts of a special kind", "a special part 7", "version 7.2"]
        self.track({"a.cpp": "\n".join("// " + text for text in good) + "\n"})
        self.expect(None, "check_words.sh", self.root)
        for text in bad:
            with self.subTest(text):
                self.write({"a.cpp": "// " + text + "\n"})
                self.expect("a.cpp:1:", "check_words.sh", self.root)


if __name__ == "__main__":
    unittest.main()

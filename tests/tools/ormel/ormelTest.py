#!/usr/bin/env python3
"""The tool as a process: exit codes, what goes to which stream, and what is left on the disk.

usage: ormelTest.py ORMEL EXAMPLES
"""
import json
import os
import pathlib
import pty
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

ORMEL, EXAMPLES = sys.argv[1], pathlib.Path(sys.argv[2])
CLINIC = EXAMPLES / "chest-clinic.kvn"

NODE = """node %s { TYPE = %s; PARENTS = (%s);
 DEFINITION = { NAMESTATES = (a, b); PROBABILITIES = (%s); }; };
"""


def net(*nodes):
    return "net N { HEADER = { ID = N; };\n" + "".join(nodes) + "};\n"


GOOD = net(NODE % ("A", "CPT", "", "0.25, 0.75"), NODE % ("B", "CPT", "A", "1, 0, 0.5, 0.5"))
LONG_DIGITS = net(NODE % ("A", "CPT", "", "0.123456789, 0.876543211"))
GATE = net(NODE % ("A", "CPT", "", "0.25, 0.75"),
           "node G { TYPE = DEMORGAN; PARENTS = (); DEFINITION = { }; };\n")
UNKNOWN_WORD = net(NODE % ("A", "CPT", "", "0.25, 0.75"), "FOO = 3;\n")
NOT_ONE = net(NODE % ("A", "CPT", "", "0.25, 0.25"), NODE % ("B", "CPT", "", "0.5, 0.25"))
NO_TYPE = net(NODE % ("A", "CPT", "", "0.25, 0.75"), "node B { PARENTS = (); };\n")
# 2000 * 2000 * 2000 * 2 cells: the third arc would ask for more than an integer can count.
MANY = ", ".join("s%d" % i for i in range(2000))
HUGE_TABLE = net(*("node P%d { TYPE = LIST; DEFINITION = { NAMECHOICES = (%s); }; };\n" % (i, MANY)
                   for i in range(3)), "node C { TYPE = CPT; PARENTS = (P0, P1, P2); };\n")


class OrmelTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, text):
        path = self.folder / name
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def run_tool(self, *arguments):
        run = subprocess.run([ORMEL] + [str(a) for a in arguments], capture_output=True, timeout=120)
        self.assertNotIn(b"Sanitizer", run.stderr)
        return run

    def expect(self, code, *arguments, out="", err=""):
        """Runs the tool; `out` and `err` are texts that the streams must hold, None for nothing."""
        run = self.run_tool(*arguments)
        stdout, stderr = run.stdout.decode(), run.stderr.decode()
        shown = "%s\n%s%s" % (arguments, stdout, stderr)
        self.assertEqual(run.returncode, code, shown)
        for text, wanted in ((stdout, out), (stderr, err)):
            if wanted is None:
                self.assertEqual(text, "", shown)
            else:
                self.assertIn(wanted, text, shown)
        return stdout

    # The command line.

    def test_help_and_version(self):
        self.expect(0, "--version", out="ormel ", err=None)
        for arguments in (["--help"], ["info", "--help"], ["convert", "--help"]):
            text = self.expect(0, *arguments, err=None)
            for part in ("Examples:", "Exit codes:", "kvn", "70"):
                self.assertIn(part, text)

    def test_the_readme_shows_what_the_tool_prints(self):
        readme = (EXAMPLES.parent / "README.md").read_text()
        blocks = re.findall(r"^    \$ ormel (.*)\n((?:    .*\n|\n(?=    ))*)", readme, re.M)
        shown = [b for b in blocks if " examples/" in b[0] or b[0].startswith("eval ")]
        self.assertGreaterEqual(len(shown), 6)
        for command, text in shown:
            with self.subTest(command):
                run = subprocess.run([ORMEL] + shlex.split(command), cwd=EXAMPLES.parent,
                                     capture_output=True, text=True, check=True)
                wanted = [line[4:] for line in text.splitlines()]
                cut = -1 if wanted[-1].strip() == "..." else None
                self.assertEqual(run.stdout.splitlines()[:len(wanted)][:cut], wanted[:cut])
                self.assertTrue(cut or len(run.stdout.splitlines()) == len(wanted))

    def test_bad_usage(self):
        for arguments in ([], ["bogus"], ["info"], ["convert", CLINIC], ["info", CLINIC, "more"],
                          ["info", "--from", "pdf", CLINIC], ["info", "--output", "xml", CLINIC],
                          ["info", "--to", "kvn", CLINIC], ["info", "check", CLINIC]):
            with self.subTest(arguments):
                run = self.run_tool(*arguments)
                self.assertEqual((run.returncode, run.stdout), (2, b""), run.stderr)
                self.assertNotEqual(run.stderr, b"")

    def test_options_stand_before_or_after_the_command(self):
        one = self.expect(0, "--output", "json", "info", CLINIC, err=None)
        self.assertEqual(one, self.expect(0, "info", CLINIC, "--output", "json", err=None))

    # Formats.

    def test_formats_that_are_not_there(self):
        text = self.write("network.txt", GOOD)
        ergo = self.write("network.unknown", GOOD)
        for arguments in (["info", text], ["check", ergo], ["convert", CLINIC, self.folder / "x"]):
            with self.subTest(arguments):
                self.expect(1, *arguments, out=None, err="Unknown File Format (code -2). This build")
        self.expect(0, "info", "--from", "kvn", text, out="nodes          2\n", err=None)

    # info.

    def test_info_shows_the_same_fields_in_both_forms(self):
        summary = json.loads(self.expect(0, "info", "--output", "json", CLINIC, err=None))
        self.assertEqual(list(summary), ["file", "format", "identifier", "name", "nodes",
                                         "nodesByKind", "arcs", "costArcs", "largestTable",
                                         "numbers", "submodels", "properties"])
        self.assertEqual((summary["nodes"], summary["arcs"], summary["numbers"]), (8, 8, 36))
        table = self.expect(0, "info", CLINIC, err=None)
        labels = [line.split("  ")[0] for line in table.splitlines() if not line.startswith(" ")]
        self.assertEqual([label.replace(" ", "").lower() for label in labels],
                         [key.lower() for key in summary])

    def test_info_makes_room_for_long_keys(self):
        path = self.write("n.kvn", 'net N { USER_PROPERTIES = { KVN_CLUSTERING_EFFORT = "1"; }; };')
        self.expect(0, "info", path, out="\n  KVN_CLUSTERING_EFFORT  1\n", err=None)

    def test_text_of_a_file_cannot_break_the_output(self):
        bad = self.write("n.kvn", b'net N { HEADER = { ID = N; NAME = "a\\n\x1b[2J\xe9"; }; };\n')
        self.expect(0, "info", bad, out="a\\n\\x1B[2J\u00e9\n", err=None)
        summary = json.loads(self.expect(0, "info", "--output", "json", bad, err=None))
        self.assertEqual(summary["name"], "a\n\x1b[2J\u00e9")

    # check.

    def test_check(self):
        cases = [
            # name, content, exit code, lines that must be there
            ("good", GOOD, 0, [": no errors, 2 nodes"]),
            ("unknown word", UNKNOWN_WORD, 3, [":4: error: 'FOO' : Unknown Net Statement",
                                               ": 1 error, 1 node"]),
            ("sums", NOT_ONE, 3, ["Node [A] is not consistent", "Node [B] is not consistent"]),
            ("no type", NO_TYPE, 3, ["Node [B] is left out: the file gives it no type"]),
            ("foreign", "# heading\n", 0, ["note: loads as an empty network: its first word is '#'"]),
            ("empty", "", 0, ["note: loads as an empty network: it holds no word"]),
            ("empty network", "net X { };", 0, [": no errors, no nodes"]),
            ("cut", GOOD[:60], 3, ["error:"]),
            ("huge table", HUGE_TABLE, 5,
             ["Couldn't add arc from node [P2] to node [C]: the table would have 1.6e+10 numbers"
              " (too large for memory)"]),
            ("odd byte", GOOD.replace("0.25", "\x01"), 3, ["UNKNOWN CHARACTER"]),
        ]
        for name, content, code, lines in cases:
            with self.subTest(name):
                path = self.write("case.kvn", content)
                text = self.expect(code, "check", path, err=None)
                for line in lines:
                    self.assertIn(line, text)
                report = json.loads(self.expect(code, "check", "--output", "json", path, err=None))
                self.assertEqual(len(report["diagnostics"]), len(text.splitlines()) - 1)

    def test_what_a_foreign_or_newer_file_has_besides(self):
        node = ("<nodes><cpt id='A'>%s<state id='a'/><state id='b'/>"
                "<probabilities>0.5 0.5</probabilities></cpt></nodes>")
        xkvn = "<ormel version='1.0' id='%s'>\n" + node + "%s</ormel>"
        view = "<extensions><vusta version='1.0' name='v'></vusta></extensions>"
        named = ("<BIF VERSION='0.3'><NETWORK><NAME>n</NAME><VARIABLE><NAME>light-on</NAME>"
                 "</VARIABLE></NETWORK></BIF>")
        cases = [
            # file, content, what `check` tells, what `convert --strict` to xkvn ends with
            ("case.xkvn", xkvn % ("N", "<odd/>", ""), ":2: warning: Ignored unknown element 'odd'",
             "has content that nothing here keeps"),
            ("case.xkvn", xkvn % ("N", "<odd/>", ""), "note: File contains unknown elements", ""),
            ("case.xkvn", xkvn % ("N", "", view), "note: the content of its 'extensions'",
             "cannot carry the network whole"),
            ("case.xml03", named, "note: 1 node has another identifier than in the file",
             "cannot carry the network whole"),
        ]
        for name, content, told, refused in cases:
            with self.subTest(told):
                path = self.write(name, content)
                self.assertIn(": no errors, 1 node", self.expect(0, "check", path, out=told))
                self.expect(3, "convert", "--strict", path, self.folder / "o.xkvn", err=refused)

    def test_convert_writes_no_file_that_nobody_can_read(self):
        path = self.write("in.xkvn", "<ormel version='1.0' id='@a b'></ormel>")
        out = self.folder / "out.kvn"
        self.expect(3, "convert", path, out, err="nobody could read the file; ")
        self.assertFalse(out.exists())
        self.expect(0, "convert", "--force", path, out, err="identifier '@a b'")

    def test_check_tells_line_and_code(self):
        path = self.write("case.kvn", UNKNOWN_WORD)
        report = json.loads(self.expect(3, "check", "--output", "json", path, err=None))
        self.assertEqual(report["diagnostics"], [
            {"severity": "error", "line": 4, "code": -127,
             "text": "ERROR: 'FOO' : Unknown Net Statement"}])

    def test_check_foresees_a_conversion(self):
        path = self.write("case.kvn", LONG_DIGITS)
        text = self.expect(0, "check", "--to", "kvn", path, out="1 node, 1 loss in kvn\n")
        self.assertIn("loss: node A: digits: the format rounds the numbers; the largest change is "
                      "1e-09\n", text)

    def test_unreadable(self):
        for path, why in ((self.folder / "none.kvn", "No such file"), (self.folder, "directory"),
                          (self.folder / "no" / "folder.kvn", "No such file")):
            for command in (["info"], ["check"]):
                with self.subTest(path):
                    self.expect(3, *command, "--from", "kvn", path, out=None, err=why)

    # convert.

    def convert(self, content, *options):
        source = self.write("in.kvn", content)
        target = self.folder / "out.kvn"
        target.write_text("old")
        run = self.run_tool("convert", *options, source, target)
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()), ["in.kvn", "out.kvn"])
        return run.returncode, run.stdout.decode(), run.stderr.decode(), target.read_text()

    def test_convert_reaches_its_own_form_at_once(self):
        code, out, err, first = self.convert(GOOD)
        self.assertEqual((code, out, err), (0, "", ""))
        self.assertEqual(self.convert(first)[3], first)

    def test_convert_in_place(self):
        path = self.write("both.kvn", GOOD)
        self.expect(0, "convert", path, path, out=None, err=None)
        self.expect(0, "check", path, out="no errors, 2 nodes")

    def test_convert_tells_losses(self):
        loss = "ormel: loss: node G: numbers: the format has no statement for those of DEMORGAN\n"
        code, out, err, written = self.convert(GATE)
        self.assertEqual((code, out, err), (0, "", loss))
        self.assertIn("TYPE = DEMORGAN;", written)
        code, out, err, written = self.convert(GATE, "--quiet")
        self.assertEqual((code, out, err), (0, "", ""))
        code, out, err, written = self.convert(GATE, "--output", "json")
        self.assertEqual((code, err), (0, loss))
        self.assertEqual([(l["node"], l["what"]) for l in json.loads(out)], [("G", "numbers")])
        self.assertEqual(json.loads(self.convert(GOOD, "--output", "json")[1]), [])

    def test_convert_strict_refuses_a_loss(self):
        for content in (GATE, "no network", UNKNOWN_WORD):
            with self.subTest(content[:20]):
                code, _, err, written = self.convert(content, "--strict", "--quiet")
                self.assertEqual((code, written), (3, "old"))
                self.assertEqual(err.splitlines()[-1].split(": ")[1], "error")
        self.assertEqual(self.convert(GOOD, "--strict")[0], 0)

    def test_convert_refuses_a_file_with_errors_unless_forced(self):
        code, _, err, written = self.convert(UNKNOWN_WORD)
        self.assertEqual((code, written), (3, "old"))
        self.assertIn("Unknown Net Statement", err)
        self.assertIn("--force", err)
        code, _, err, written = self.convert(UNKNOWN_WORD, "--force")
        self.assertEqual(code, 0)
        self.assertIn("node A", written)
        # Numbers that don't sum to 1 have been read: nothing is lost.
        self.assertEqual(self.convert(NOT_ONE)[0], 0)

    def test_unwritable(self):
        shut = self.folder / "shut"
        shut.mkdir()
        os.symlink(self.folder / "loop.kvn", self.folder / "loop.kvn")
        for target, why in ((self.folder / "none" / "x.kvn", "No such file"),
                            (shut, "directory"), ("/dev/full", "no more data"),
                            (self.folder / "loop.kvn", "symbolic links")):
            with self.subTest(target):
                self.expect(1, "convert", "--to", "kvn", CLINIC, target, out=None, err=why)
        self.assertEqual(list(shut.iterdir()), [])

    # Streams.

    def test_output_that_nobody_takes(self):
        read, write = os.pipe()
        os.close(read)
        with open("/dev/full", "w") as full, os.fdopen(write, "w") as shut:
            for stream in (full, shut):
                run = subprocess.run([ORMEL, "info", str(CLINIC)], stdout=stream,
                                     stderr=subprocess.PIPE)
                self.assertEqual(run.returncode, 1, run.stderr)

    def test_colours_only_on_a_terminal(self):
        path = self.write("case.kvn", UNKNOWN_WORD)
        self.assertNotIn(b"\x1b", self.run_tool("check", path).stdout)
        for refused, wanted in (("", True), ("1", False)):
            master, slave = pty.openpty()
            environment = dict(os.environ, TERM="xterm", NO_COLOR=refused)
            subprocess.run([ORMEL, "check", str(path)], stdout=slave, stderr=slave, env=environment)
            os.close(slave)
            shown = os.read(master, 65536)
            os.close(master)
            self.assertEqual(b"\x1b[1;31merror" in shown, wanted, shown)

    def test_the_locale_changes_no_number(self):
        for name in ("de_DE.UTF-8", "C.UTF-8"):
            run = subprocess.run([ORMEL, "convert", str(CLINIC), str(self.folder / "out.kvn")],
                                 env=dict(os.environ, LC_ALL=name))
            self.assertEqual(run.returncode, 0)
            self.assertEqual((self.folder / "out.kvn").read_bytes(), CLINIC.read_bytes())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])

"""velk symbols."""

import csv
import io
import json

from service import DEMO, GOOD, ITEM_NOT_GOOD, PORT, SILENT, USAGE, ServiceTest, main
from troubles import Troubles


class Symbols(ServiceTest):
    def test_the_file_is_fetched_once_and_again_when_asked_for(self):
        line = self.line()
        first = self.run_velk(self.words("symbols", line.link))
        self.assert_ends(first, GOOD)
        self.assertIn("fetched the symbol file", first.stderr)
        self.assertRegex(first.stdout, r"PLC_PRG\.Counter +DINT +M +\d+ +4")
        again = self.run_velk(self.words("symbols", line.link))
        self.assert_ends(again, GOOD)
        self.assertNotIn("fetched", again.stderr)
        self.assertEqual(again.stdout, first.stdout)
        anew = self.run_velk(self.words("symbols", line.link, "--fetch"))
        self.assert_ends(anew, GOOD)
        self.assertIn("fetched the symbol file", anew.stderr)

    def test_what_is_stored_needs_no_line(self):
        line = self.line()
        self.assert_ends(self.run_velk(self.words("symbols", line.link)), GOOD)
        line.pull_out()
        done = self.run_velk(self.words("symbols", line.link, "--stored", "-q"))
        self.assert_ends(done, GOOD)
        self.assertIn("PLC_PRG.Counter", done.stdout)
        self.assertEqual(done.stderr, "")

    def test_formats_and_patterns(self):
        line = self.line()
        document = json.loads(self.run_velk(self.words("symbols", line.link, "--json", "plc_prg.s*")).stdout)
        self.assertEqual(document["project"], 0x12345678)
        names = {each["name"] for each in document["variables"]}
        self.assertEqual(names, {"PLC_PRG.Speed", "PLC_PRG.Serial", "PLC_PRG.Stations", "PLC_PRG.Speeds"})
        rows = list(csv.DictReader(io.StringIO(self.run_velk(self.words("symbols", line.link, "--csv")).stdout)))
        self.assertIn({"name": "Valve", "type": "BYTE", "area": "Q", "offset": "0", "size": "1"}, rows)
        tree = self.run_velk(self.words("symbols", line.link, "--tree", "PLC_PRG.Pump*")).stdout
        self.assertIn("└─ PLC_PRG\n   └─ Pump", tree)

    def test_a_pattern_that_finds_nothing(self):
        line = self.line()
        done = self.run_velk(self.words("symbols", line.link, "-q", "Nothing*"))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertEqual(done.stderr, "velk: Nothing*: no variable of the PLC program matches the pattern\n")

    def test_a_misspelt_name(self):
        line = self.line()
        done = self.run_velk(self.words("symbols", line.link, "-q", "PLC_PRG.Cuonter", "PLC_PRG.Speed"))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertIn("velk: PLC_PRG.Cuonter: the PLC program has no such variable; did you mean PLC_PRG.Counter",
                      done.stderr)
        self.assertIn("PLC_PRG.Speed", done.stdout, "what is there is listed all the same")

    def test_wrong_usage(self):
        self.assert_ends(self.run_velk(["symbols"]), USAGE)
        self.assert_ends(self.run_velk(self.words("symbols", "/dev/null", "--tree", "--json")), USAGE)
        self.assert_ends(self.run_velk(self.words("symbols", "/dev/null", "--stored", "--fetch")), USAGE)

    def test_missing_port(self):
        done = self.run_velk(self.words("symbols", self.folder / "nowhere"))
        self.assert_ends(done, PORT)
        self.assertIn("there is no serial port", done.stderr)

    def test_silent_line(self):
        dead = self.dead_port()
        done = self.run_velk(self.words("symbols", dead.port, "--timeout", 100))
        self.assert_ends(done, SILENT)
        self.assertIn("Nothing was received", done.stderr)

    def test_interrupted_while_it_waits(self):
        dead = self.dead_port()
        process = self.start_velk(self.words("symbols", dead.port, "--timeout", 20000))
        self.wait_for_request(dead)
        self.interrupt(process)


class SymbolsTroubles(Troubles, ServiceTest):
    def say(self, port, *more):
        return self.words("symbols", port, *more)

    def test_an_upload_that_is_interrupted_leaves_no_half_file(self):
        line = self.line(flags=["--baud", 2400])
        child = self.type_velk(self.say(line.link, "--baud", 2400, "--storage", self.folder / "kept"))
        child.expect("bytes")
        self.assert_interrupted(child)
        line.pull_out()
        done = self.run_velk(self.say(line.link, "--storage", self.folder / "kept", "--stored"))
        self.assertNotEqual(done.returncode, GOOD)

    def test_a_port_that_is_not_there_leaves_no_folder(self):
        for port in (self.folder / "nowhere", "nowhere"):
            self.assert_ends(self.run_velk(self.say(port, "--storage", self.folder / "kept")), PORT)
            self.assert_ends(self.run_velk(self.say(port)), PORT)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_progress_only_on_a_terminal(self):
        line = self.line()
        child = self.type_velk(self.say(line.link))
        self.assert_exit(child, GOOD)
        self.assertIn("\r\x1b[K", child.before)
        done = self.run_velk(self.say(line.link, "--fetch"))
        self.assertNotIn("\r", done.stderr)

    def test_a_program_that_was_replaced_is_fetched_again(self):
        line = self.line(flags=["--replace-program", f"1s:{DEMO / 'program-2.toml'}"])
        before = self.run_velk(self.say(line.link))
        self.assert_ends(before, GOOD)
        line.wait_until_said("program changed")
        after = self.run_velk(self.say(line.link))
        self.assert_ends(after, GOOD)
        self.assertIn("PLC_PRG.Trim", before.stdout)
        self.assertNotIn("PLC_PRG.Trim", after.stdout)
        self.assertIn("PLC_PRG.Forgotten", after.stdout)


if __name__ == "__main__":
    main()

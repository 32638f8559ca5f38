"""velk check."""

import json
import os
import re

from service import GOOD, INTERRUPTED, PORT, REFUSED, SILENT, USAGE, ServiceTest, main
from troubles import Troubles

STEPS = ["the port opens", "bytes come back", "the link check is answered", "the login is accepted",
         "the symbol file is there", "a variable is read"]


class Check(ServiceTest):
    def assert_steps(self, done, good):
        """The first @p good steps went well, the next one failed, the others were not reached."""
        lines = [line for line in done.stdout.splitlines() if line.startswith(tuple(STEPS))]
        words = [line[len(step):].split()[0] for line, step in zip(lines, STEPS)]
        wanted = ["good"] * good + (["FAILED"] + ["not"] * (5 - good) if good < 6 else [])
        self.assertEqual(words, wanted, done.stdout)

    def assert_three_causes(self, done):
        for number in ("  1. ", "  2. ", "  3. "):
            self.assertIn(number, done.stdout)

    def test_a_good_line(self):
        line = self.line()
        done = self.run_velk(self.words("check", line.link))
        self.assert_ends(done, GOOD)
        self.assert_steps(done, 6)
        self.assertIn("fetched in", done.stdout)
        self.assertIn("PLC_PRG.Running = true", done.stdout)

    def test_silent_line(self):
        dead = self.dead_port()
        done = self.run_velk(self.words("check", dead.port, "--timeout", 100))
        self.assert_ends(done, SILENT)
        self.assert_steps(done, 1)
        self.assertIn("sent  AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D 05", done.stdout)
        self.assertIn("got   nothing within 100 ms", done.stdout)
        self.assert_three_causes(done)

    def test_garbage_as_from_a_wrong_baud_rate(self):
        dead = self.dead_port()
        process = self.start_velk(self.words("check", dead.port))
        self.wait_for_request(dead)
        os.write(dead.master, b"\xf8\x00\x3c\x81")
        output, complaints = process.communicate(timeout=60)
        self.assertEqual(process.returncode, REFUSED, output + complaints)
        self.assertIn("got   F8 00 3C 81", output)
        self.assertIn("1. the line speed", output)

    def test_an_adapter_that_hears_itself(self):
        dead = self.dead_port()
        process = self.start_velk(self.words("check", dead.port))
        os.write(dead.master, self.wait_for_request(dead))
        output, complaints = process.communicate(timeout=60)
        self.assertEqual(process.returncode, REFUSED, output + complaints)
        self.assertIn("hears itself", output)

    def test_the_other_framing(self):
        line = self.line()
        done = self.run_velk(["check", "--port", str(line.link), "--framing", "routed", "--block-size", "1024"])
        self.assert_ends(done, REFUSED)
        self.assertIn("framing must be bare", done.stdout)

    def test_refused_login(self):
        line = self.line(more='fault = [{ kind = "status_word", service = "login" }]')
        done = self.run_velk(self.words("check", line.link))
        self.assert_ends(done, REFUSED)
        self.assert_steps(done, 3)
        self.assert_three_causes(done)

    def test_missing_port(self):
        done = self.run_velk(self.words("check", self.folder / "nowhere"))
        self.assert_ends(done, PORT)
        self.assert_steps(done, 0)
        self.assert_three_causes(done)

    def document(self, words, code):
        """What --json prints, which is one object and nothing else."""
        done = self.run_velk([*words, "--json"])
        self.assert_ends(done, code)
        return json.loads(done.stdout)

    def assert_outcomes(self, document, *wanted):
        self.assertEqual([step["text"] for step in document["steps"]], STEPS)
        self.assertEqual([step["outcome"] for step in document["steps"]], [*wanted])

    def test_a_good_line_for_programs(self):
        line = self.line()
        document = self.document(self.words("check", line.link), GOOD)
        self.assert_outcomes(document, *["ok"] * 6)
        names = [step["name"] for step in document["steps"]]
        self.assertEqual(names, ["port", "bytes", "link_check", "login", "symbol_file", "read"])
        self.assertEqual(document["port"], str(line.link))
        self.assertEqual(document["settings"]["baud"], 19200)
        self.assertIsNone(document["failed"])
        self.assertEqual(document["causes"], [])
        self.assertFalse(document["program"]["stored"])
        self.assertGreater(document["program"]["pieces"], 0)
        self.assertIn(f"{document['program']['variables']} variables", document["steps"][4]["found"])
        self.assertEqual(document["steps"][5]["found"], "PLC_PRG.Running = true")
        for step in document["steps"][1:]:
            self.assertTrue(step["sent"].startswith("AA AA "), step)
            self.assertTrue(step["received"], step)
            self.assertEqual(len(step["meaning"]), len(step["received"]), step)
        times = [step["time"] for step in document["steps"]]
        self.assertEqual(times, sorted(times))
        again = self.document(self.words("check", line.link), GOOD)
        self.assertTrue(again["program"]["stored"])
        self.assertEqual(again["program"]["project"], document["program"]["project"])

    def test_a_silent_line_for_programs(self):
        dead = self.dead_port()
        document = self.document(self.words("check", dead.port, "--timeout", 100), SILENT)
        self.assert_outcomes(document, "ok", "failed", *["not reached"] * 4)
        self.assertEqual(document["failed"], "bytes")
        step = document["steps"][1]
        self.assertEqual(step["sent"], "AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D 05")
        self.assertEqual((step["received"], step["timed_out"]), ([], True))
        self.assertEqual(step["reason"], "Timeout on Acknowledge")
        self.assertNotIn("time", document["steps"][2])
        self.assertEqual(len(document["causes"]), 3)
        self.assertIsNone(document["program"])

    def test_other_failures_for_programs(self):
        line = self.line(more='fault = [{ kind = "status_word", service = "login" }]')
        document = self.document(self.words("check", line.link), REFUSED)
        self.assert_outcomes(document, "ok", "ok", "ok", "failed", "not reached", "not reached")
        self.assertIn("refused", " ".join(document["steps"][3]["meaning"]))
        document = self.document(self.words("check", self.folder / "nowhere"), PORT)
        self.assert_outcomes(document, "failed", *["not reached"] * 5)
        self.assertIn("there is no serial port", document["steps"][0]["reason"])
        self.assertNotIn("sent", document["steps"][0])

    def test_scan_for_programs(self):
        line = self.line(model="Intel")
        words = ["check", "--scan", "--port", str(line.link), "--block-size", "1024"]
        document = self.document(words, GOOD)
        self.assertEqual(document["found"], {"baud": 19200, "parity": "none", "framing": "bare",
                                             "byte_order": "little"})
        self.assertEqual({**document["attempts"][-1], **document["found"]}, document["attempts"][-1])
        self.assertEqual(document["attempts"][-1]["outcome"], "answered")
        self.assertNotIn("answered", [each["outcome"] for each in document["attempts"][:-1]])
        document = self.document([*words[:3], self.dead_port().port, "--timeout", "100"], SILENT)
        self.assertIsNone(document["found"])
        outcomes = {each["outcome"] for each in document["attempts"] if each["parity"] == "none"}
        self.assertEqual(outcomes, {"silent"})  # a pseudo-terminal may not be able to do the other parities

    def test_an_upload_is_shown_in_the_line_of_its_step(self):
        """On a narrow terminal: each line takes the place of the one before, and none wraps."""
        columns = 50
        line = self.line()
        child = self.type_velk(self.words("check", line.link), columns=columns)
        self.assert_exit(child, GOOD)
        text = re.sub("\x1b\\[[0-9;]*m", "", child.before)
        lines = [row.split("\r\x1b[K") for row in text[text.index(STEPS[0]):].split("\r\n")]
        self.assertEqual([row[-1][:len(step)] for row, step in zip(lines, STEPS)], STEPS, text)
        self.assertEqual(len(lines), len(STEPS) + 1, text)
        redrawn = lines[4][:-1]
        self.assertTrue(redrawn, text)
        for each in redrawn:
            self.assertTrue(each.startswith("the symbol file is there   fetching"), text)
            self.assertLess(len(each), columns)

    def test_a_storage_that_cannot_be_had_is_not_the_ports_fault(self):
        (self.folder / "file").touch()
        done = self.run_velk(self.words("check", self.line().link, "--storage", self.folder / "file" / "below"))
        self.assert_ends(done, USAGE)
        self.assertEqual(done.stdout, "")
        self.assertIn("cannot be made", done.stderr)

    def test_wrong_usage(self):
        self.assert_ends(self.run_velk(["check"]), USAGE)

    def test_interrupted_while_it_waits(self):
        dead = self.dead_port()
        child = self.type_velk(self.words("check", dead.port, "--timeout", 20000))
        child.expect("the port opens")
        self.wait_for_request(dead)
        child.sendintr()
        self.assert_exit(child, INTERRUPTED)

    def test_scan_finds_framing_and_byte_order(self):
        line = self.line(model="Intel")
        done = self.run_velk(["check", "--scan", "--port", str(line.link), "--block-size", "1024"])
        self.assert_ends(done, GOOD)
        self.assertIn('framing = "bare"', done.stdout)
        self.assertIn('byte_order = "little"', done.stdout)

    def test_what_scan_prints_is_a_project_file(self):
        line = self.line()
        scanned = self.run_velk(["check", "--scan", "-q", "--port", str(line.link), "--block-size", "1024"])
        self.assert_ends(scanned, GOOD)
        (self.folder / "velk.toml").write_text(scanned.stdout)
        self.assert_ends(self.run_velk(["check", "--block-size", "1024"]), GOOD)

    def test_scan_of_a_silent_line(self):
        dead = self.dead_port()
        done = self.run_velk(["check", "--scan", "--port", dead.port, "--timeout", "100"])
        self.assert_ends(done, SILENT)
        self.assertEqual(done.stdout, "")


class CheckTroubles(Troubles, ServiceTest):
    def say(self, port, *more):
        return [each for each in self.words("check", port, *more) if each not in ("--repeat", "1")]

    def test_the_right_speed_beside_the_wrong_one(self):
        line = self.line(flags=["--baud", 9600])
        done = self.run_velk(self.quick(line.link, "--baud", 19200))
        self.assertIn("2. the line speed or the parity is not 19200 bit/s", done.stdout)

    def test_quiet_says_nothing_beside_the_data(self):
        done = self.run_velk(self.say(self.line().link, "-q"))
        self.assert_ends(done, GOOD)
        self.assertEqual(done.stderr, "")

    def test_colours_only_when_they_are_wanted(self):
        line = self.line()
        child = self.type_velk(self.say(line.link))
        self.assert_exit(child, GOOD)
        self.assertIn("\x1b[32mgood", child.before)
        self.environment["NO_COLOR"] = "1"
        child = self.type_velk(self.say(line.link))
        self.assert_exit(child, GOOD)
        self.assertNotRegex(child.before, "\x1b\\[[0-9;]*m")
        self.assertIn("good", child.before)


class ScanTroubles(Troubles, ServiceTest):
    wrong_speed = GOOD  # that is what it is for
    refused = GOOD  # it is the line that is found

    def say(self, port, *more):
        return ["check", "--scan", "--port", str(port), "--block-size", "1024", *map(str, more)]

    def quick(self, port, *more):
        return self.say(port, "--timeout", 100, *more)

    def test_trouble_garbage(self):
        """All settings are tried, and none is answered."""
        dead = self.dead_port()
        process = self.start_velk(self.quick(dead.port))
        self.wait_for_request(dead)
        os.write(dead.master, b"\xf8\x00\x3c\x81")
        output, complaints = process.communicate(timeout=60)
        self.assertEqual(process.returncode, REFUSED, output + complaints)
        self.assertIn("bytes came back with these", complaints)
        self.assertEqual(output, "")

    test_trouble_silent_line = None  # above

    def test_trouble_line_at_another_speed(self):
        line = self.line(flags=["--baud", 9600])
        done = self.run_velk(self.say(line.link, "--timeout", 200, "--repeat", 5))
        self.assert_ends(done, GOOD)
        self.assertIn("baud = 9600", done.stdout)


if __name__ == "__main__":
    main()

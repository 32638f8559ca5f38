"""velk watch."""

import csv
import json
import re

from service import DEMO, GOOD, INTERRUPTED, ITEM_NOT_GOOD, PORT, SILENT, USAGE, ServiceTest, main
from troubles import Troubles

TWO = """framing = "ABB_RS232_AC"

[[station]]
name = "living"
routing_levels = 1
coupler1 = 1
program = { project_id = 1, variable = [{ name = "X", type = "INT", value = 5 }] }

[[station]]
name = "dead"
routing_levels = 1
coupler1 = 2
fault = [{ kind = "silent" }]
program = { project_id = 2, variable = [{ name = "X", type = "INT", value = 6 }] }
"""
TWO_PROJECT = """[line]
port = "{}"
baud = 115200
framing = "routed"

[defaults]
timeout_ms = 200
repeat = 1

[[station]]
node = 1
name = "living"
byte_order = "little"
routing_levels = 1
coupler1 = 1

[[station]]
node = 2
name = "dead"
byte_order = "little"
routing_levels = 1
coupler1 = 2
"""


class Watch(ServiceTest):
    def test_plain_lines_and_figures(self):
        line = self.line()
        done = self.run_velk(self.words("watch", line.link, "PLC_PRG.Counter", "--count", 2, "--every", "1ms"))
        self.assert_ends(done, GOOD)
        self.assertEqual([each.split()[1:] for each in done.stdout.splitlines()],
                         [["PLC_PRG.Counter", "1234567", "good"]] * 2)
        self.assertRegex(done.stderr.splitlines()[-1], r"\d+ frames asked, \d+ answered, 0 failed")

    def test_json_lines_and_a_table_for_spreadsheets(self):
        line = self.line()
        done = self.run_velk(self.words("watch", line.link, "Horn", "--json", "--csv", "horn.csv", "--count", 2,
                                        "--every", "1ms"))
        self.assert_ends(done, GOOD)
        rounds = [json.loads(each) for each in done.stdout.splitlines()]
        self.assertEqual([each["round"] for each in rounds], [1, 2])
        self.assertEqual([each["items"][0]["value"] for each in rounds], [False, False])
        with open(self.folder / "horn.csv", newline="", encoding="utf-8") as file:
            rows = list(csv.DictReader(file))
        self.assertEqual([(row["name"], row["value"]) for row in rows], [("Horn", "false")] * 2)

    def test_a_live_table_redraws_in_place_until_ctrl_c(self):
        line = self.line()
        child = self.type_velk(self.words("watch", line.link, "PLC_PRG.Counter", "--every", "10ms"))
        child.expect("round 1, ")
        child.expect(r"PLC_PRG\.Counter +DINT +1234567 +good")
        child.expect_exact("\x1b[5A")
        child.expect("round 2, ")
        child.sendintr()
        child.expect("frames asked")
        self.assert_exit(child, INTERRUPTED)

    def test_a_missing_variable(self):
        line = self.line()
        done = self.run_velk(self.words("watch", line.link, "Nope", "Horn", "--count", 1))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertIn("Nope - missing", done.stdout)
        self.assertIn("Horn false good", done.stdout)

    def test_an_adapter_that_is_pulled_out_and_comes_back(self):
        line = self.line()
        child = self.type_velk(self.words("watch", line.link, "PLC_PRG.Counter", "--every", "10ms"))
        child.expect("round 3, ")
        line.pull_out()
        child.expect("waiting for the port to come back|trying again")
        line.plug_in()
        child.expect("the port is back")
        child.expect(r"PLC_PRG\.Counter +DINT +1234567 +good")
        child.sendintr()
        child.expect("frames asked")
        self.assert_exit(child, INTERRUPTED)

    def test_interrupted_while_the_adapter_is_away(self):
        line = self.line()
        child = self.type_velk(self.words("watch", line.link, "Horn", "--every", "10ms"))
        child.expect("round 2, ")
        line.pull_out()
        child.expect("trying again")
        child.sendintr()
        self.assert_exit(child, INTERRUPTED)

    def test_wrong_usage(self):
        for flag, value in (("--every", "often"), ("--every", "0ms"), ("--count", "some"), ("--count", "-1")):
            done = self.run_velk(self.words("watch", "/dev/null", "X", f"{flag}={value}"))
            self.assert_ends(done, USAGE)
            self.assertIn(flag, done.stderr)
            self.assertEqual(done.stdout, "")

    def test_missing_port(self):
        self.assert_ends(self.run_velk(self.words("watch", self.folder / "nowhere", "X")), PORT)

    def test_silent_line(self):
        dead = self.dead_port()
        done = self.run_velk(self.words("watch", dead.port, "X:int", "--timeout", 100, "--repeat", 1, "--count", 1))
        self.assert_ends(done, SILENT)
        self.assertIn("X - failed", done.stdout)


class WatchOfALine(ServiceTest):
    """What happens to a line while it is watched."""

    def rounds(self, process, wanted):
        """JSON rounds until one is as wanted: all of them."""
        seen = []
        for text in process.stdout:
            seen.append(json.loads(text))
            if wanted(seen[-1]):
                return seen
        self.fail(f"it ended: {seen[-3:]} {process.stderr.read()}")

    def value(self, a_round, place=0):
        item = a_round["items"][place]
        return item["value"] if item["status"] == "good" else item["status"]

    def start(self, line, *more):
        return self.start_velk(self.words("watch", line.link, "--json", "--every", "20ms",
                                          "--timeout", 200, "--repeat", 1, *more))

    def test_a_program_that_is_replaced(self):
        line = self.line(flags=["--replace-program", f"2s:{DEMO / 'program-2.toml'}"])
        process = self.start(line, "PLC_PRG.Counter", "PLC_PRG.Trim", "PLC_PRG.Forgotten", "PLC_PRG.Mode")
        first = self.rounds(process, lambda each: True)[0]
        self.assertEqual([self.value(first, place) for place in range(4)], [1234567, [0, 0, 0, 0], "missing", 3])
        after = self.rounds(process, lambda each: self.value(each) == 7)
        self.assertLess(len([each for each in after if self.value(each) == "failed"]), 3)
        last = self.rounds(process, lambda each: self.value(each, 2) != "missing")[-1]
        self.assertEqual([self.value(last, place) for place in range(4)], [7, "missing", 42, 3])
        _, complaints = self.interrupt(process)
        self.assertIn("frames asked", complaints.splitlines()[-1])

    def test_a_variable_that_has_another_type_in_the_new_program(self):
        one, other = self.folder / "one.toml", self.folder / "other.toml"
        one.write_text('project_id = 1\nvariable = [{ name = "X", type = "INT", value = 5 }]\n')
        other.write_text('project_id = 2\nvariable = [{ name = "X", type = "REAL", value = 2.5 }]\n')
        line = self.line(program=one, flags=["--replace-program", f"2s:{other}"])
        process = self.start(line, "X")
        seen = self.rounds(process, lambda each: self.value(each) == 2.5)
        self.assertEqual(self.value(seen[0]), 5)
        self.assertLessEqual({self.value(each) for each in seen}, {5, 2.5, "failed"}, "never in the wrong type")
        self.interrupt(process)

    def test_a_plc_that_restarts(self):
        line = self.line(flags=["--restart", "1s"])
        process = self.start(line, "PLC_PRG.Counter")
        seen = self.rounds(process, lambda each: self.value(each) == "failed")
        self.assertEqual(self.value(seen[0]), 1234567)
        self.rounds(process, lambda each: self.value(each) == 1234567)
        _, complaints = self.interrupt(process)
        # A restart between two exchanges is a login that is gone, one within an exchange is silence.
        self.assertRegex(complaints, "Command not acknowledged by PLC|Timeout on")

    def test_a_plc_that_is_silent_from_the_beginning(self):
        line = self.line(flags=["--silent", "2s@0s"])
        process = self.start(line, "PLC_PRG.Counter", "PLC_PRG.Nope")
        seen = self.rounds(process, lambda each: self.value(each) == 1234567)
        self.assertEqual(self.value(seen[0]), "failed")
        self.assertEqual(self.value(seen[-1], 1), "missing")
        self.interrupt(process)

    def test_a_plc_that_is_gone_for_a_while(self):
        line = self.line(flags=["--silent", "1s@1s/once"])
        process = self.start(line, "PLC_PRG.Counter")
        self.rounds(process, lambda each: self.value(each) == 1234567)
        self.rounds(process, lambda each: self.value(each) == "failed")
        self.rounds(process, lambda each: self.value(each) == 1234567)
        _, complaints = self.interrupt(process)
        self.assertRegex(complaints.splitlines()[-1], r", [1-9]\d* failed \([1-9]\d* x Timeout on Acknowledge")

    def test_a_dead_station_beside_a_living_one(self):
        (self.folder / "two.toml").write_text(TWO, encoding="utf-8")
        line = self.play(self.folder / "two.toml")
        (self.folder / "velk.toml").write_text(TWO_PROJECT.format(line.link), encoding="utf-8")
        process = self.start_velk(["watch", "--json", "--every", "20ms", "living:X", "dead:X:short"])
        seen = self.rounds(process, lambda each: each["round"] == 30)
        _, complaints = self.interrupt(process)
        self.assertEqual({self.value(each) for each in seen}, {5}, "the living one answers in each round")
        self.assertEqual({self.value(each, 1) for each in seen}, {"failed"})
        asked = re.search(r"answered, (\d+) failed \(\1 x Timeout on Acknowledge", complaints)
        self.assertTrue(asked and 2 <= int(asked.group(1)) <= 15, "the dead one is asked in few of the rounds")

    def test_interrupted_on_a_terminal(self):
        line = self.line()
        child = self.type_velk(self.words("watch", line.link, "Horn", "--every", "10ms"))
        child.expect("round 2, ")
        self.assert_interrupted(child)
        self.assertIn("frames asked", child.before)

    def test_interrupted_in_a_long_pause(self):
        line = self.line()
        child = self.type_velk(self.words("watch", line.link, "Horn", "--every", "10min"))
        child.expect("round 1, ")
        self.assert_interrupted(child)

    def test_figures(self):
        line = self.line(flags=["--baud", 19200])
        done = self.run_velk(self.words("watch", line.link, "-q", "Horn", "--count", 3, "--every", "1ms"))
        self.assert_ends(done, GOOD)
        lines = done.stderr.splitlines()
        self.assertEqual(len(lines), 1, lines)
        found = re.fullmatch(r"(\d+) frames asked, (\d+) answered, 0 failed; answer time median ([\d.]+) ms, 95 % "
                             r"within ([\d.]+) ms, worst ([\d.]+) ms; line in use (\d+) % of the time", lines[0])
        self.assertTrue(found, lines)
        asked, answered, *times, used = map(float, found.groups())
        self.assertGreater(asked, 9)
        self.assertEqual(asked, answered)
        self.assertEqual(times, sorted(times))
        self.assertTrue(0 < used <= 105, used)

    def test_no_answer_times_of_nobody(self):
        dead = self.dead_port()
        done = self.run_velk(self.words("watch", dead.port, "X:int", "--timeout", 100, "--repeat", 1, "--count", 1))
        self.assertIn("0 answered, 1 failed", done.stderr)
        self.assertIn("no answer times", done.stderr)

    def test_colours_only_when_they_are_wanted(self):
        line = self.line()
        self.environment["NO_COLOR"] = "1"
        child = self.type_velk(self.words("watch", line.link, "Horn", "Nope", "--every", "10ms", "--count", 2))
        self.assert_exit(child, ITEM_NOT_GOOD)
        self.assertNotRegex(child.before, "\x1b\\[[0-9;]*m")
        del self.environment["NO_COLOR"]
        child = self.type_velk(self.words("watch", line.link, "Horn", "Nope", "--every", "10ms", "--count", 2))
        self.assert_exit(child, ITEM_NOT_GOOD)
        self.assertIn("\x1b[31m", child.before)

    def test_a_file_of_values_grows_from_run_to_run(self):
        line = self.line()
        for _ in range(2):
            self.assert_ends(self.run_velk(self.words("watch", line.link, "Horn", "--csv", "horn.csv", "--count", 1)),
                             GOOD)
        text = (self.folder / "horn.csv").read_text(encoding="utf-8")
        self.assertEqual((text.count("time,station"), len(text.splitlines())), (1, 3))
        done = self.run_velk(self.words("watch", line.link, "Horn", "--csv", "no/folder.csv", "--count", 1))
        self.assert_ends(done, USAGE)
        self.assertIn("no/folder.csv", done.stderr)


class WatchTroubles(Troubles, ServiceTest):
    def say(self, port, *more):
        return self.words("watch", port, "--count", 1, *more, "PLC_PRG.Counter")


if __name__ == "__main__":
    main()

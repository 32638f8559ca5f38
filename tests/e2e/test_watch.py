"""velk watch."""

import csv
import json
import re
import shlex
import time

from service import (DEMO, GOOD, INTERRUPTED, ITEM_NOT_GOOD, PATIENCE, PORT, PROGRAM, SILENT, USAGE, ServiceTest, main,
                     pexpect)
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
        self.assertEqual([(row["name"], row["value"], row["reason"]) for row in rows], [("Horn", "false", "")] * 2)

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
        done = self.run_velk(self.words("watch", line.link, "Horm", "Horn", "--csv", "horn.csv", "--count", 2, "-q",
                                        "--every", "1ms"))
        self.assert_ends(done, ITEM_NOT_GOOD)
        reason = "the PLC program has no such variable; did you mean Horn?"
        self.assertEqual(done.stdout.count(f"Horm - missing: {reason}\n"), 2)
        self.assertEqual(done.stdout.count("Horn false good\n"), 2)
        *complaints, figures = done.stderr.splitlines()
        self.assertEqual(complaints, [f"velk: Horm: {reason}"], "once")
        self.assertIn("0 failed, 2 values not good (2 x missing); ", figures)
        with open(self.folder / "horn.csv", newline="", encoding="utf-8") as file:
            self.assertEqual([row["reason"] for row in csv.DictReader(file)], [reason, ""] * 2)

    def test_a_bad_value_and_one_that_cannot_be_converted(self):
        line = self.line(flags=["--bad-quality", "PLC_PRG.Mode"])
        # 1234567 has digits that are no decimal ones.
        done = self.run_velk(self.words("watch", line.link, "PLC_PRG.Mode", "PLC_PRG.Counter:unsignedInt(bcd)", "Horn",
                                        "--count", 1))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertRegex(done.stdout, r"PLC_PRG\.Mode - failed: One of the values has bad quality\n")
        self.assertRegex(done.stdout, r"PLC_PRG\.Counter\S* - failed: \w.+\n")
        self.assertRegex(done.stderr, r" 0 failed, 2 values not good \(.*1 x One of the values has bad quality.*\); ")

    def test_values_that_were_bad_are_asked_apart_in_the_rounds_that_follow(self):
        bad = {3, 20, 41}
        line = self.line(program=self.numbers(44), flags=[word for i in bad for word in ("--bad-quality", f"V{i:02}")])

        def frames_asked(rounds):
            done = self.run_velk(self.words("watch", line.link, "V*", "--repeat", 1, "--json", "--count", rounds,
                                            "--every", "1ms"))
            self.assert_ends(done, ITEM_NOT_GOOD)
            for each in done.stdout.splitlines():
                self.assertEqual([item["value"] for item in json.loads(each)["items"]],
                                 [None if i in bad else i for i in range(44)])
            return int(re.search(r"(\d+) frames asked", done.stderr)[1])

        frames_asked(1)  # fetches the symbols
        a_list = 3 + 3  # frames of the link check, and of the list itself
        self.assertEqual(frames_asked(3) - frames_asked(1), 2 * (1 + 3) * a_list, "one for the good ones, and each bad")

    def test_reasons_stand_below_the_table(self):
        line = self.line(flags=["--bad-quality", "PLC_PRG.Mode"])
        child = self.type_velk(self.words("watch", line.link, "PLC_PRG.Mode", "Horm", "--every", "10ms"))
        child.expect("velk:.* Horm: the PLC program has no such variable; did you mean Horn")
        child.expect(r"round \d+, 2 of 2 not good, .* 0 failures")
        child.expect(r"PLC_PRG\.Mode +BYTE +- +FAILED +-")
        child.expect(r"Horm +- +MISSING +-")
        child.expect(r"PLC_PRG\.Mode: One of the values has bad quality")
        child.expect("Horm: the PLC program has no such variable")
        self.assert_interrupted(child)

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
        for flag, value in (("--every", "often"), ("--every", "0ms"), ("--count", "some"), ("--count", "-1"),
                            ("--count", "0"), ("--count", "1x"), ("--count", "99999999999999999999")):
            done = self.run_velk(self.words("watch", "/dev/null", "X", f"{flag}={value}"))
            self.assert_ends(done, USAGE)
            self.assertIn(flag, done.stderr)
            self.assertLess(len(done.stderr), 150)
            self.assertEqual(done.stdout, "")

    def test_missing_port(self):
        self.assert_ends(self.run_velk(self.words("watch", self.folder / "nowhere", "X")), PORT)

    def test_silent_line(self):
        dead = self.dead_port()
        done = self.run_velk(self.words("watch", dead.port, "X:int", "--timeout", 100, "--repeat", 1, "--count", 1))
        self.assert_ends(done, SILENT)
        self.assertIn("X - failed: Timeout on Acknowledge\n", done.stdout)

    def test_a_terminal_that_knows_lines_only(self):
        line = self.line()
        self.environment["TERM"] = "dumb"
        child = self.type_velk(self.words("watch", line.link, "Horn", "--every", "10ms", "--count", 2))
        self.assert_exit(child, GOOD)
        self.assertEqual(child.before.count("Horn false good\r\n"), 2)
        self.assertNotIn("\x1b", child.before)


class WatchOnTerminals(ServiceTest):
    """What is to be seen on terminals of all sizes."""

    def wide(self):
        """A program with a value that is wider than a terminal."""
        file = self.folder / "wide.toml"
        file.write_text('project_id = 1\nvariable = [\n'
                        '    { name = "Wide", type = "ARRAY [0..59] OF INT" },\n'
                        '    { name = "X", type = "INT", value = 5 },\n]\n')
        return file

    def test_status_and_age_of_a_wide_value(self):
        self.environment["NO_COLOR"] = "1"
        line = self.line(program=self.wide(), flags=["--silent", "60s@2s/once"])
        child = self.type_velk(self.words("watch", line.link, "Wide", "--every", "10ms", "--timeout", 200,
                                          "--repeat", 1), columns=80)
        child.expect(r"\nWide +ARRAY \[0\.\.59\] OF INT +\[0, 0[ ,0]+\.\.\. +good +\d\.\d s")
        child.expect(r"\nWide +ARRAY \[0\.\.59\] OF INT +\(\[0, 0[ ,0]+\.\.\. +FAILED +\d\.\d s")
        self.assert_interrupted(child)

    def test_every_line_fits(self):
        line = self.line(program=self.wide())
        for columns, rows in ((80, 24), (40, 24), (20, 5)):
            child = self.type_velk(self.words("watch", line.link, "-q", "Wide", "X", "Nope", "--every", "10ms",
                                              "--count", 2), columns=columns, rows=rows)
            self.assert_exit(child, ITEM_NOT_GOOD)
            table = re.sub("\x1b\\[[0-9;]*[A-Za-z]", "", child.before[child.before.index("round 1, "):])
            lines = table[:table.index(" frames asked")].splitlines()[:-1]
            self.assertGreater(len(lines), 4)
            self.assertLessEqual(max(map(len, lines)), columns, lines)
            self.assertTrue(any(re.match(r"X .*\b5\b", each) for each in lines), lines)

    def test_a_window_that_changes_its_size(self):
        line = self.line()
        child = self.type_velk(self.words("watch", line.link, "Horn", "--every", "10ms"))
        child.expect("round 2, ")
        self.assertNotIn("\x1b[2J", child.before)
        child.setwinsize(10, 50)
        child.expect_exact("\x1b[H\x1b[2Jround ")
        child.expect("Horn")
        self.assert_interrupted(child)

    def test_a_window_that_changes_its_size_between_rounds(self):
        line = self.line()
        child = self.type_velk(self.words("watch", line.link, "Horn", "--every", "10min"))
        child.expect("round 1, ")
        child.setwinsize(10, 50)
        child.expect_exact("\x1b[H\x1b[2Jround 1, ")
        self.assert_interrupted(child)

    def test_stopped_and_continued_by_a_shell(self):
        line = self.line()
        shell = pexpect.spawn("bash", ["--norc", "--noprofile", "-i"], cwd=str(self.folder), encoding="utf-8",
                              env={**self.environment, "PS1": "shell> "}, timeout=PATIENCE, dimensions=(24, 100))
        self.addCleanup(shell.close, True)
        shell.expect_exact("shell> ")
        shell.sendline(shlex.join([PROGRAM, *self.words("watch", line.link, "Horn", "--every", "10ms")]))
        shell.expect("round 3, ")
        shell.send("\x1a")
        shell.expect("Stopped")
        shell.expect_exact("shell> ")
        time.sleep(4)
        shell.sendline("fg")
        shell.expect_exact("\x1b[H\x1b[2Jround ")
        shell.expect(r"\d+, (\d+) ms")
        self.assertLess(int(shell.match.group(1)), 4000, "the time in which it was stopped is not the line's")
        shell.sendintr()
        shell.expect(r"worst ([\d.]+) ms")
        self.assertLess(float(shell.match.group(1)), 4000)
        shell.expect_exact("shell> ")


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

    def test_a_new_programs_file_leaves_the_table_in_its_place(self):
        line = self.line(flags=["--replace-program", f"2s:{DEMO / 'program-2.toml'}"])
        child = self.type_velk(self.words("watch", line.link, "PLC_PRG.Counter", "--every", "50ms"))
        child.expect("round 1, ")
        child.expect(r"PLC_PRG\.Counter +DINT +7 ")
        self.assertIn("fetching", child.before)
        self.assertNotIn("fetched", child.before, "a line that stays would push the table from its place")
        self.assert_interrupted(child)

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
        asked = [each for each in seen if len(each["items"]) == 2]
        self.assertEqual({self.value(each, 1) for each in asked}, {"failed"})
        self.assertTrue(2 <= len(asked) <= 15, "the dead one is asked in few of the rounds")
        counted = re.search(r"answered, (\d+) failed \(\1 x Timeout on Acknowledge", complaints)
        self.assertTrue(counted, complaints)
        self.assertIn(int(counted.group(1)) - len(asked), (0, 1), "it may be asked once more before the end")

    def test_a_dead_station_is_told_of_when_it_was_asked(self):
        dead = self.dead_port()
        begun = time.monotonic()
        done = self.run_velk(self.words("watch", dead.port, "X:int", "Y:int", "--timeout", 100, "--repeat", 1,
                                        "--count", 3, "--every", "10ms", "-q"))
        self.assertGreater(time.monotonic() - begun, 1.5, "pauses of half a second and of one")
        self.assert_ends(done, SILENT)
        rows = [each.split()[:2] for each in done.stdout.splitlines()]
        self.assertEqual([name for _, name in rows], ["X", "Y"] * 3)
        self.assertEqual(len({at for at, name in rows if name == "X"}), 3)
        self.assertEqual([at for at, _ in rows], sorted(at for at, _ in rows))
        self.assertIn(" 3 failed (3 x Timeout on Acknowledge)", done.stderr)

    def test_all_stations_fail_while_the_port_is_away(self):
        (self.folder / "two.toml").write_text(TWO.replace('fault = [{ kind = "silent" }]', ""), encoding="utf-8")
        line = self.play(self.folder / "two.toml")
        (self.folder / "velk.toml").write_text(TWO_PROJECT.format(line.link), encoding="utf-8")
        child = self.type_velk(["watch", "living:X", "dead:X", "--every", "20ms"])
        child.expect("round 3, ")
        line.pull_out()
        child.expect(r"living +X +INT +\(5\) +FAILED")
        child.expect(r"dead +X +INT +\(6\) +FAILED")
        line.plug_in()
        child.expect("the port is back")
        child.expect(r"living +X +INT +5 +good")
        child.expect(r"dead +X +INT +6 +good")
        self.assert_interrupted(child)

    def test_rounds_while_the_port_is_away(self):
        line = self.line()
        process = self.start(line, "Horn", "-q", "--csv", "horn.csv")
        self.rounds(process, lambda each: self.value(each) is False)
        line.pull_out()
        away = self.rounds(process, lambda each: "there is no serial port" in each["items"][0].get("reason", ""))
        self.assertEqual(self.value(away[-1]), "failed")
        again = self.rounds(process, lambda each: True)
        self.assertEqual(again[0]["round"], away[-1]["round"] + 1)
        line.plug_in()
        self.rounds(process, lambda each: self.value(each) is False)
        _, complaints = self.interrupt(process)
        self.assertIn("the port is back\n", complaints)
        with open(self.folder / "horn.csv", newline="", encoding="utf-8") as file:
            self.assertIn("there is no serial port", " ".join(row["reason"] for row in csv.DictReader(file)))

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
        self.assertIn("cannot write no/folder.csv: No such file or directory", done.stderr)


class WatchTroubles(Troubles, ServiceTest):
    def say(self, port, *more):
        return self.words("watch", port, "--count", 1, *more, "PLC_PRG.Counter")


if __name__ == "__main__":
    main()

"""velk plc."""

import json
import os
import pty
import select
import signal
import subprocess
import time
import tty

from service import (DEMO, GOOD, ITEM_NOT_GOOD, PATIENCE, PORT, PROGRAM, REFUSED, SILENT, USAGE, ServiceTest, main)

LINK_CHECK = bytes.fromhex("AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D 05")
ACKNOWLEDGE = bytes.fromhex("55 55 00 0A 00 01")
PROGRAM_1 = DEMO / "program-1.toml"


class PlcTest(ServiceTest):
    def setUp(self):
        super().setUp()
        self.description = self.folder / "line.toml"
        self.description.write_text(f'framing = "Serial_RS232"\n[[station]]\nmodel = "Motorola"\n'
                                    f'block_size = 1024\nprogram = "{PROGRAM_1}"\n')

    def read(self, line, *more, names=("PLC_PRG.Counter",), framing="bare", order="big", block=1024, repeat=1):
        return self.run_velk(["read", "--port", line.link, "--framing", framing, "--byte-order", order, "--timeout",
                              "300", "--repeat", repeat, "--block-size", block, *more, *names])

    def assert_counter(self, done):
        self.assert_ends(done, GOOD)
        self.assertIn("1234567", done.stdout)

    def events(self, line):
        return [json.loads(each) for each in line.said().splitlines()]


class Plc(PlcTest):
    def test_it_links_its_terminal_and_takes_the_link_away(self):
        link = self.folder / "plc"
        child = self.type_velk(["plc", str(DEMO / "line.toml"), "--link", str(link)])
        child.expect("/dev/pts/[0-9]+")
        done = self.run_velk(self.words("read", link, "PLC_PRG.Counter"))
        self.assert_ends(done, GOOD)
        self.assertIn("1234567", done.stdout)
        self.assert_interrupted(child)
        self.assertFalse(os.path.lexists(link))

    def test_a_termination_takes_the_link_away(self):
        line = self.play(self.description)
        line.process.terminate()
        line.process.wait(PATIENCE)
        self.assertFalse(os.path.lexists(line.link))

    def test_a_link_that_was_left_behind_is_replaced_and_anything_else_stays(self):
        os.symlink("/dev/pts/nobody", self.folder / "old")
        line = self.folder / "old"
        self.assert_ends(self.run_velk(["plc", PROGRAM_1, "--link", line, "--for", "10ms"]), GOOD)
        self.assertFalse(os.path.lexists(line))
        line.write_text("precious")
        done = self.run_velk(["plc", PROGRAM_1, "--link", line, "--for", "10ms"])
        self.assert_ends(done, USAGE)
        self.assertIn(str(line), done.stderr)
        self.assertEqual(line.read_text(), "precious")

    def test_it_ends_by_itself_when_it_is_told_so(self):
        begun = time.monotonic()
        self.assert_ends(self.run_velk(["plc", DEMO / "line.toml", "--for", "1s"]), GOOD)
        self.assertGreaterEqual(time.monotonic() - begun, 1)

    def test_a_description_that_is_wrong(self):
        file = self.folder / "wrong.toml"
        file.write_text('framing = "Smoke"\n')
        done = self.run_velk(["plc", file])
        self.assert_ends(done, USAGE)
        self.assertIn("wrong.toml:1", done.stderr)

    def test_a_project_file_is_no_description(self):
        self.assert_ends(self.run_velk(["init", "--port", "/dev/ttyS7"]), GOOD)
        done = self.run_velk(["plc", "velk.toml"])
        self.assert_ends(done, USAGE)
        self.assertIn("velk.toml: this is a project file", done.stderr)

    def test_the_kinds_of_faults_are_told(self):
        done = self.run_velk(["plc", PROGRAM_1, "--fault", 'kind = "foo"'])
        self.assert_ends(done, USAGE)
        self.assertIn("'kind' is 'foo'; it must be silent, ack_missing, ", done.stderr)

    def test_a_description_that_is_not_there(self):
        self.assert_ends(self.run_velk(["plc", "nowhere.toml"]), USAGE)

    def test_wrong_values_of_flags(self):
        for flag, values in {"--drop": ("some", "101%", "-1"), "--flip": ("some", "2"),
                             "--silent": ("5s", "5s@", "now@5s", "5s@60s/twice"), "--bad-quality": ("Nope",),
                             "--replace-program": ("soon", "1s:", "1s:nowhere.toml"), "--restart": ("soon",),
                             "--fault": ("nonsense", 'kind = "odd"', 'kind = "silent", colour = 1'),
                             "--only": ("nobody",), "--seed": ("luck",), "--for": ("ever",),
                             "--baud": ("fast", "9600.5", "49", "4000001"), "--parity": ("strange",),
                             "--stopbits": ("3",), "--mode": ("RS-1",), "--framing": ("smoke",),
                             "--byte-order": ("middle",), "--block-size": ("127", "1461")}.items():
            for value in values:
                with self.subTest(flag=flag, value=value):
                    done = self.run_velk(["plc", DEMO / "line.toml", f"{flag}={value}", "--link", self.folder / "x"])
                    self.assert_ends(done, USAGE)
                    self.assertIn(flag, done.stderr)
                    self.assertEqual(done.stdout, "")
        self.assertFalse(os.path.lexists(self.folder / "x"))

    def test_wrong_usage(self):
        self.assert_ends(self.run_velk(["plc"]), USAGE)
        self.assert_ends(self.run_velk(["plc", PROGRAM_1, "another"]), USAGE)
        done = self.run_velk(["plc", PROGRAM_1, "--link", "/no/such/folder/x"])
        self.assert_ends(done, USAGE)
        self.assertIn("/no/such/folder/x", done.stderr)

    def test_a_port_that_is_not_there_or_none(self):
        for port in ("nowhere", "/dev/null"):
            done = self.run_velk(["plc", PROGRAM_1, "--port", port])
            self.assert_ends(done, PORT)
            self.assertIn(port, done.stderr)

    def test_a_reader_that_goes_away_does_not_leave_the_link_behind(self):
        link = self.folder / "plc"
        process = self.start_velk(["plc", str(PROGRAM_1), "--link", str(link)])
        self.assertIn("/dev/pts/", process.stdout.readline())
        process.stdout.close()
        self.run_velk(["read", "--port", link, "--framing", "bare", "--byte-order", "big", "--timeout", "300",
                       "--repeat", "1", "X:int"])
        self.assertEqual(process.wait(PATIENCE), ITEM_NOT_GOOD)
        self.assertIn("standard output cannot be written", process.stderr.read())
        self.assertFalse(os.path.lexists(link))
        process.stdout = open(os.devnull, encoding="utf-8")  # for the end of the test

    def test_what_it_prints_and_where(self):
        done = self.run_velk(["plc", DEMO / "line.toml", "--for", "10ms"])
        self.assertRegex(done.stdout, r"\A/dev/pts/\d+\n +\d+\.\d+  end: 0 exchanges, .*; 0 complaints\n\Z")
        self.assertIn("station press: big-endian, blocks of 1024 bytes, 26 variables, project 12345678", done.stderr)
        self.assertIn("End it with Ctrl-C", done.stderr)
        done = self.run_velk(["plc", DEMO / "line.toml", "--for", "10ms", "-q"])
        self.assertRegex(done.stdout, r"\A/dev/pts/\d+\n\Z")
        self.assertEqual(done.stderr, "")

    def test_what_it_has_been_asked(self):
        line = self.play(self.description)
        self.assert_counter(self.read(line))
        line.pull_out()
        for text in ("logged in", "file opened", "list read: 1 item read: PLC_PRG.Counter", "end: "):
            self.assertIn(text, line.said())
        self.assertNotIn("exchange done", line.said())
        self.assertNotIn("!", line.said())

    def test_every_exchange_when_asked_to_be_verbose(self):
        line = self.play(self.description, ["-v"])
        self.assert_counter(self.read(line))
        line.pull_out()
        self.assertIn("exchange done", line.said())

    def test_quiet_prints_the_port_only(self):
        line = self.play(self.description, ["-q"])
        self.assert_counter(self.read(line))
        line.process.terminate()
        line.process.wait(PATIENCE)
        self.assertEqual(line.process.stderr.read(), b"")
        self.assertRegex(line.said(), r"\A/dev/pts/\d+\n\Z")

    def test_lines_for_programs(self):
        line = self.play(self.description, ["--json"])
        self.assert_counter(self.read(line))
        line.pull_out()
        events = self.events(line)
        self.assertEqual(events[0]["event"], "port")
        self.assertIn("list read", [each["event"] for each in events])
        self.assertEqual((events[-1]["event"], events[-1]["complaints"]), ("end", 0))
        self.assertGreaterEqual(events[-1]["counts"]["list read"], 1)

    def test_no_colours_when_they_are_not_wanted(self):
        child = self.type_velk(["plc", str(PROGRAM_1), "--for", "10ms"])
        self.assert_exit(child, GOOD)
        self.assertIn("\x1b[", child.before)
        self.environment["NO_COLOR"] = "1"
        child = self.type_velk(["plc", str(PROGRAM_1), "--for", "10ms"])
        self.assert_exit(child, GOOD)
        self.assertNotIn("\x1b[", child.before)


class PlcLine(PlcTest):
    """Speed, framing, byte order, blocks, and a port of another program."""

    def test_a_port_that_another_program_has_made(self):
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        tty.setraw(slave)
        port = os.ttyname(slave)
        process = self.start_velk(["plc", str(PROGRAM_1), "--framing", "bare", "--port", port,
                                   "--link", str(self.folder / "x")])
        self.assertEqual(process.stdout.readline().strip(), port)
        os.close(slave)
        os.write(master, LINK_CHECK)
        self.assertTrue(select.select([master], [], [], PATIENCE)[0])
        answer = b""
        while len(answer) < len(ACKNOWLEDGE):
            answer += os.read(master, 64)
        self.assertEqual(answer, ACKNOWLEDGE)
        self.assertEqual(os.readlink(self.folder / "x"), port)
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=PATIENCE)
        self.assertEqual(process.returncode, 130)

    def test_a_port_that_is_pulled_out(self):
        master, slave = pty.openpty()
        tty.setraw(slave)
        process = self.start_velk(["plc", str(PROGRAM_1), "--port", os.ttyname(slave), "--link",
                                   str(self.folder / "x")])
        process.stdout.readline()
        os.close(slave)
        os.close(master)
        _, complaints = process.communicate(timeout=PATIENCE)
        self.assertEqual(process.returncode, PORT, complaints)
        self.assertIn("has gone away", complaints)
        self.assertFalse(os.path.lexists(self.folder / "x"))

    def test_bytes_take_their_time(self):
        """2,033 bytes of symbols take more than 2 s at 9600 bit/s, and hardly any without a pace."""
        line = self.play(self.description, ["--baud", 9600])
        begun = time.monotonic()
        self.assert_ends(self.run_velk(self.words("symbols", line.link, "--baud", 9600, "--repeat", 10)), GOOD)
        self.assertGreater(time.monotonic() - begun, 2)

    def test_a_panel_at_another_speed_is_not_understood(self):
        line = self.play(self.description, ["--baud", 9600, "--json"])
        self.assert_ends(self.read(line, "--baud", 19200), SILENT)
        line.pull_out()
        self.assertGreater(self.events(line)[-1]["complaints"], 0)

    def test_a_panel_without_a_speed_of_its_own_finds_the_right_one(self):
        line = self.play(self.description, ["--baud", 9600])
        self.assert_counter(self.read(line, "--baud", 9600, repeat=10))

    def test_a_parity_that_a_pseudo_terminal_does_not_have(self):
        """The C library calls it a fault from the second time on."""
        line = self.play(self.description, ["--parity", "even"])
        for _ in range(3):
            self.assert_counter(self.read(line, "--parity", "even", repeat=10))

    def test_a_parity_at_a_port_that_another_program_has_made(self):
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        self.addCleanup(os.close, slave)
        for _ in range(3):
            done = self.run_velk(["plc", PROGRAM_1, "--port", os.ttyname(slave), "--parity", "even", "--for", "1ms"])
            self.assert_ends(done, GOOD)

    def test_another_byte_order(self):
        line = self.play(self.description, ["--byte-order", "little"])
        self.assert_counter(self.read(line, order="little"))
        self.assertNotEqual(self.read(line, order="big").returncode, GOOD)

    def test_another_framing(self):
        line = self.play(self.description, ["--framing", "routed"])
        self.assert_counter(self.read(line, framing="routed"))
        self.assertNotEqual(self.read(line, framing="bare").returncode, GOOD)

    def test_another_block_size(self):
        """The symbol file comes in pieces that fit."""
        for size in (128, 1024):
            line = self.play(self.description, ["--block-size", size, "--json"], name=f"plc{size}")
            self.assert_counter(self.read(line, "--storage", self.folder / str(size), block=size))
            line.pull_out()
            self.assertIn(f"blocks of {size} bytes", self.run_velk(
                ["plc", PROGRAM_1, "--block-size", size, "--for", "1ms"]).stderr)


class PlcMisbehaviour(PlcTest):
    def test_dropped_frames(self):
        line = self.play(self.description, ["--drop", "100%"])
        self.assert_ends(self.read(line), SILENT)
        line = self.play(self.description, ["--drop", "0"], name="good")
        self.assert_counter(self.read(line))

    def test_flipped_bits(self):
        line = self.play(self.description, ["--flip", "1.0"])
        self.assertIn(self.read(line).returncode, (SILENT, REFUSED))
        line = self.play(self.description, ["--flip", "0%"], name="good")
        self.assert_counter(self.read(line))

    def test_chances_are_those_of_the_seed(self):
        """The same conversation with the same seed fails in the same place."""
        def heard(seed):
            line = self.play(self.description, ["--flip", "50%", "--seed", seed], name=f"seed{seed}-{len(self.heard)}")
            done = self.run_velk(["trace", "-o", "t.jsonl", "--", "read", "--port", line.link, "--framing", "bare",
                                  "--byte-order", "big", "--block-size", "1024", "--timeout", "300", "--repeat", "1",
                                  "X:int"])
            line.pull_out()
            events = [json.loads(each) for each in (self.folder / "t.jsonl").read_text().splitlines()]
            self.heard.append((done.returncode, [each.get("bytes") for each in events if each["event"] == "frame"]))
            return self.heard[-1]

        self.heard = []
        first = heard(1)
        self.assertEqual(heard(1), first)
        self.assertTrue(any(heard(seed) != first for seed in (2, 3, 4)))

    def assert_later(self, line, code):
        """Reading ends so after a while."""
        deadline = time.monotonic() + PATIENCE
        done = self.read(line)
        while done.returncode != code and time.monotonic() < deadline:
            done = self.read(line)
        self.assert_ends(done, code)

    def test_silent_for_good(self):
        line = self.play(self.description, ["--silent", "always"])
        self.assert_ends(self.read(line), SILENT)

    def test_silent_at_first(self):
        line = self.play(self.description, ["--silent", "2s@0s"])
        self.assert_ends(self.read(line), SILENT)
        self.assert_later(line, GOOD)

    def test_silent_once_later(self):
        line = self.play(self.description, ["--silent", "1000s@3s/once"])
        self.assert_counter(self.read(line))
        self.assert_later(line, SILENT)

    def test_refused_login(self):
        line = self.play(self.description, ["--refuse-login"])
        self.assert_ends(self.read(line), REFUSED)

    def test_bad_quality_of_one_variable_or_two(self):
        line = self.play(self.description, ["--bad-quality", "PLC_PRG.Counter", "--bad-quality", "PLC_PRG.Level"])
        done = self.read(line, "-q", "--json", names=["PLC_PRG.Counter", "PLC_PRG.Mode", "PLC_PRG.Level"])
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertEqual([each["status"] for each in json.loads(done.stdout)], ["failed", "good", "failed"])

    def project(self, line):
        done = self.run_velk(["symbols", "--port", line.link, "--framing", "bare", "--byte-order", "big", "-q",
                              "--block-size", "1024", "--json"])
        self.assert_ends(done, GOOD)
        document = json.loads(done.stdout)
        return document["project"], {each["name"] for each in document["variables"]}

    def test_the_same_program_under_another_identifier(self):
        line = self.play(self.description, ["--replace-program", "2s"])
        project, names = self.project(line)
        self.assertEqual(project, 0x12345678)
        line.wait_until_said("program changed")
        self.assertEqual(self.project(line), (0x12345679, names))

    def test_other_programs_one_after_the_other(self):
        line = self.play(self.description, ["--replace-program", f"100ms:{DEMO / 'program-2.toml'}", "--replace-program",
                                     f"200ms:{self.variables()}"])
        line.wait_until_said(str(0x00C0FFEE))
        project, names = self.project(line)
        self.assertEqual(project, 0x00C0FFEE)
        self.assertIn("Neighbour", names)
        self.assertEqual(line.said().count("program changed"), 2)

    def test_a_restart(self):
        line = self.play(self.description, ["--restart", "100ms", "--restart", "200ms"])
        line.wait_until_said("plc  restarted", 2)
        self.assert_counter(self.read(line))
        line.pull_out()
        self.assertIn("2 x restarted", line.said())

    def test_rules_as_in_a_description(self):
        line = self.play(self.description, ["--fault", 'kind = "status_word", service = "login"', "--fault",
                                     'kind = "late", delay_ms = 5'])
        done = self.read(line)
        self.assert_ends(done, REFUSED)
        self.assertIn("2 fault rules", self.run_velk(["plc", PROGRAM_1, "--for", "1ms", "--fault", 'kind = "silent"',
                                                      "--fault", 'kind = "late", delay_ms = 5']).stderr)

    def test_only_one_station(self):
        done = self.run_velk(["plc", DEMO.parent.parent / "examples" / "plant" / "line.toml", "--for", "1ms", "--only",
                              "OVEN", "--fault", 'kind = "silent"'])
        self.assert_ends(done, GOOD)
        faulty = [line.split(":")[0].strip() for line in done.stderr.splitlines() if "fault rule" in line]
        self.assertEqual(faulty, ["station oven", "station conveyor"], "the last one has a rule of its own")


if __name__ == "__main__":
    main()

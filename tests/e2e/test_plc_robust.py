"""velk plc when it is used wrongly, or left alone."""

import fcntl
import json
import os
import signal
import subprocess
import time

from service import DEMO, GOOD, INTERRUPTED, ITEM_NOT_GOOD, PATIENCE, PROGRAM, USAGE, Line, ServiceTest, main

AT_ONCE = 10  # seconds; it takes half of one, a busy machine longer


class StuckReader(ServiceTest):
    """Standard output is a pipe of 4 KiB that nobody reads."""

    def setUp(self):
        super().setUp()
        self.link = self.folder / "plc"
        self.reading, self.writing = os.pipe()
        self.addCleanup(os.close, self.reading)
        fcntl.fcntl(self.writing, fcntl.F_SETPIPE_SZ, 4096)

    def fill(self):
        """Not one event more goes in."""
        os.write(self.writing, b"x" * 4096)

    def play(self, *more):
        process = subprocess.Popen([PROGRAM, "plc", str(DEMO / "line.toml"), "--link", str(self.link), "--json", "-v",
                                    *more], cwd=self.folder, stdin=subprocess.DEVNULL, stdout=self.writing,
                                   stderr=subprocess.PIPE, text=True)
        os.close(self.writing)

        def end():
            if process.poll() is None:
                process.kill()
            process.communicate()

        self.addCleanup(end)
        deadline = time.monotonic() + PATIENCE
        while not self.link.is_symlink():
            self.assertIsNone(process.poll())
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.02)
        return process

    def read_often(self):
        for _ in range(3):
            self.assert_ends(self.run_velk(self.words("read", self.link, "PLC_PRG.Counter")), GOOD)

    def assert_over(self, process, code):
        _, complaints = process.communicate(timeout=AT_ONCE)
        self.assertEqual(process.returncode, code, complaints)
        self.assertFalse(os.path.lexists(self.link))
        return complaints

    def assert_ended_by(self, ask):
        self.fill()
        process = self.play()
        self.read_often()
        process.send_signal(ask)
        self.assertIn("Standard output was not read", self.assert_over(process, INTERRUPTED))

    def test_does_not_stop_the_plc_nor_an_interrupt(self):
        self.assert_ended_by(signal.SIGINT)

    def test_does_not_stop_the_plc_nor_a_termination(self):
        self.assert_ended_by(signal.SIGTERM)

    def test_does_not_stop_the_end_that_was_planned(self):
        self.fill()
        process = self.play("--for", "200ms")
        self.assert_over(process, GOOD)

    def test_that_reads_on_gets_everything(self):
        process = self.play()
        self.read_often()
        process.send_signal(signal.SIGINT)
        with os.fdopen(os.dup(self.reading)) as pipe:
            events = [json.loads(line) for line in pipe]
        self.assert_over(process, INTERRUPTED)
        self.assertEqual(events[0]["event"], "port")
        self.assertEqual(events[-1]["event"], "end")
        times = [event["time"] for event in events[1:]]
        self.assertEqual(times, sorted(times))
        names = [event["event"] for event in events[1:-1]]
        self.assertGreaterEqual(names.count("list read"), 3)
        self.assertEqual(events[-1]["counts"], {name: names.count(name) for name in names})

    def test_that_goes_away_ends_it(self):
        process = self.play()
        silent = os.open(os.devnull, os.O_RDONLY)
        os.dup2(silent, self.reading)
        os.close(silent)
        self.run_velk(self.words("read", self.link, "PLC_PRG.Counter"))
        self.assertIn("Broken pipe", self.assert_over(process, ITEM_NOT_GOOD))


class StuckReaderOfNotes(ServiceTest):
    """Standard error is a full pipe that nobody reads."""

    def test_does_not_stop_the_plc(self):
        reading, writing = os.pipe()
        self.addCleanup(os.close, reading)
        os.write(writing, b"x" * fcntl.fcntl(writing, fcntl.F_SETPIPE_SZ, 4096))
        link = self.folder / "plc"
        process = subprocess.Popen([PROGRAM, "plc", str(DEMO / "line.toml"), "--link", str(link)], cwd=self.folder,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=writing)
        os.close(writing)
        self.addCleanup(lambda: process.poll() is None and process.kill())
        deadline = time.monotonic() + PATIENCE
        while not link.is_symlink():
            self.assertIsNone(process.poll())
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.02)
        self.assert_ends(self.run_velk(self.words("read", link, "PLC_PRG.Counter", "--timeout", 1000)), GOOD)
        os.read(reading, 4096)  # whoever reads on gets everything
        self.assertIn(b"Playing on", os.read(reading, 4096))
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(AT_ONCE), INTERRUPTED)
        self.assertFalse(os.path.lexists(link))


class ProgramAlone(ServiceTest):
    def test_is_read_without_any_flag_but_the_port(self):
        line = Line(DEMO / "program-1.toml", self.folder / "plc")
        self.addCleanup(line.pull_out)
        done = self.run_velk(["read", "-p", "./plc", "PLC_PRG.Counter"])
        self.assert_ends(done, GOOD)
        self.assertIn("1234567", done.stdout)

    def test_is_told_where_it_can_be_read(self):
        done = self.run_velk(["plc", DEMO / "program-1.toml", "--link", "here", "--for", "10ms"])
        self.assert_ends(done, GOOD)
        self.assertIn("Playing on ./here.", done.stderr)


class WrongUse(ServiceTest):
    def assert_refused(self, words, complaint):
        done = self.run_velk(["plc", *words])
        self.assert_ends(done, USAGE)
        self.assertIn(complaint, done.stderr)

    def test_a_line_speed_that_cannot_be(self):
        self.assert_refused([DEMO / "line.toml", "--baud", "-5"], "--baud: -5 is not a line speed")
        self.assert_refused([DEMO / "line.toml", "--baud", "12345", "--port", "/dev/null"], "--baud: a serial line")

    def test_a_link_that_somebody_needs(self):
        line = Line(DEMO / "line.toml", self.folder / "plc")
        self.addCleanup(line.pull_out)
        self.assert_refused([DEMO / "line.toml", "--link", "plc"], "which is in use")
        self.assert_ends(self.run_velk(self.words("read", line.link, "PLC_PRG.Counter")), GOOD)

    def test_a_description_without_an_end(self):
        self.assert_refused(["/dev/zero"], "/dev/zero: it is a device, not a file")
        self.assert_refused([DEMO / "line.toml", "--replace-program", "1s:/dev/zero"], "/dev/zero: it is a device")

    def test_a_rule_for_a_variable_that_is_not_there(self):
        self.assert_refused([DEMO / "line.toml", "--fault", "kind='bad_quality', variable='nix'"],
                            "--fault: there is no variable nix")


if __name__ == "__main__":
    main()

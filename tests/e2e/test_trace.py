"""velk trace, and --trace of the other commands."""

import json
import os
import subprocess

from service import GOOD, INTERRUPTED, ITEM_NOT_GOOD, USAGE, ServiceTest, main, require
from troubles import Troubles


class Trace(ServiceTest):
    def setUp(self):
        super().setUp()
        self.link = self.folder / "plc"

    def read(self, *more):
        return self.words("read", self.link, "-q", *more, "PLC_PRG.Counter")

    def test_frames_on_standard_error_and_values_on_standard_output(self):
        self.line()
        done = self.run_velk(["trace", "--", *self.read()])
        self.assert_ends(done, GOOD)
        self.assertRegex(done.stdout, r"PLC_PRG\.Counter +DINT +1234567 +good")
        self.assertNotIn("->", done.stdout)
        self.assertRegex(done.stderr, r"\d\.\d{6} -> block 1, the last, 9 bytes, checksum 52 right, big-endian\n"
                                      r" +AA AA 00 09 00 01 52 01 42 E0 20 26 29 00 00 5D\n +05\n"
                                      r" +request: link check, 9 bytes")
        for text in ("<- acknowledge of block 1", "-> turnaround", "<- closing acknowledge", "request: login",
                     '"DOWNLOAD.SDB"', "request: read", "project 12345678", "quality 1"):
            self.assertIn(text, done.stderr)
        self.assertNotIn("!!", done.stderr)

    def test_files_of_each_format(self):
        self.line()
        for name in ("t.txt", "t.jsonl", "t.pcapng"):
            done = self.run_velk(["trace", "-o", name, "--", *self.read()])
            self.assert_ends(done, GOOD)
            self.assertEqual(done.stderr, "")
        self.assertIn("-> turnaround", (self.folder / "t.txt").read_text(encoding="utf-8"))
        events = [json.loads(line) for line in (self.folder / "t.jsonl").read_text(encoding="utf-8").splitlines()]
        self.assertTrue(all("time" in each for each in events), events)
        self.assertGreater(sum(each["event"] == "frame" for each in events), 10)
        self.assertEqual((self.folder / "t.pcapng").read_bytes()[:4], b"\x0a\x0d\x0d\x0a")

    def test_a_flag_of_the_commands_does_the_same(self):
        self.line()
        done = self.run_velk(self.read("--trace", "here.log", "--trace-format", "jsonl"))
        self.assert_ends(done, GOOD)
        first = (self.folder / "here.log").read_text(encoding="utf-8").splitlines()[0]
        self.assertIsInstance(json.loads(first), dict)
        self.assertEqual(done.stderr, "")

    def test_a_packet_analyser_opens_the_file(self):
        require("capinfos")
        self.line()
        self.assert_ends(self.run_velk(["trace", "-o", "t.pcapng", "--", *self.read()]), GOOD)
        self.assert_ends(self.run_velk(["trace", "-o", "t.jsonl", "--", *self.read()]), GOOD)
        done = subprocess.run(["capinfos", "-c", "-M", self.folder / "t.pcapng"], capture_output=True, text=True,
                              check=True)
        self.assertRegex(done.stdout, r"Number of packets: +[1-9]\d+")

    def test_a_silent_line(self):
        dead = self.dead_port()
        done = self.run_velk(["trace", "--", *self.words("read", dead.port, "-q", "--timeout", 100, "--repeat", 1,
                                                         "X")])
        self.assertIn("!! nothing received within the time-out", done.stderr)
        self.assertIn("request: link check", done.stderr)

    def test_garbage_is_shown_as_no_frame(self):
        dead = self.dead_port()
        process = self.start_velk(["trace", "--", *self.words("read", dead.port, "-q", "--timeout", 500, "--repeat", 1,
                                                              "X")])
        self.wait_for_request(dead)
        os.write(dead.master, b"\xf8\x00\x3c\x81")
        _, complaints = process.communicate(timeout=60)
        self.assertIn("F8 00 3C 81", complaints)
        self.assertIn("no frame", complaints)

    def test_a_pulled_adapter_is_in_the_trace(self):
        dead = self.dead_port()
        process = self.start_velk(["trace", "-o", "t.jsonl", "--",
                                   *self.words("read", dead.port, "-q", "--timeout", 20000, "X")])
        self.wait_for_request(dead)
        dead.pull_out()
        process.communicate(timeout=60)
        events = [json.loads(line) for line in (self.folder / "t.jsonl").read_text(encoding="utf-8").splitlines()]
        self.assertNotIn(events[-1]["event"], ("frame", "start"), events[-1])

    def test_what_an_interrupted_command_leaves_is_whole(self):
        dead = self.dead_port()
        process = self.start_velk(["trace", "-o", "t.jsonl", "--",
                                   *self.words("read", dead.port, "-q", "--timeout", 20000, "X")])
        self.wait_for_request(dead)
        self.interrupt(process)
        lines = (self.folder / "t.jsonl").read_text(encoding="utf-8").splitlines()
        self.assertIn("frame", [json.loads(line)["event"] for line in lines])

    def test_a_missing_variable_keeps_its_code(self):
        self.line()
        done = self.run_velk(["trace", "-o", "t.txt", "--", *self.words("read", self.link, "Nope")])
        self.assert_ends(done, ITEM_NOT_GOOD)

    def test_a_command_without_a_line_leaves_no_trace(self):
        for command in (["ports"], ["config", "--help"]):
            done = self.run_velk(["trace", "-o", "t.txt", "--", *command])
            self.assert_ends(done, GOOD)
            self.assertIn("there is no trace: no line was used", done.stderr)
        self.assertFalse((self.folder / "t.txt").exists())

    def test_wrong_usage(self):
        read = self.words("read", "/dev/null", "X")
        for words, reason in ((["trace"], "missing"), (["trace", "--format", "x", "--", *read], "--format"),
                              (["trace", "-o", "t.doc", "--", *read], "t.doc"),
                              (["trace", "--format", "pcapng", "--", *read], "give a file name"),
                              (["trace", "-o", "no/folder.txt", "--", *read], "no/folder.txt"),
                              (["trace", "--", "reed"], "reed"),
                              ([*read, "--trace-format", "text"], "--trace")):
            done = self.run_velk(words)
            self.assert_ends(done, USAGE)
            self.assertIn(reason, done.stderr)
            self.assertEqual(done.stdout, "")


class TraceTroubles(Troubles, ServiceTest):
    def say(self, port, *more):
        return ["trace", "--", *self.words("read", port, *more, "PLC_PRG.Counter")]


if __name__ == "__main__":
    main()

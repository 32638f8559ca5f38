"""The troubles that every command on a line has to tell apart, each with its exit code."""

import os
import subprocess

from service import GOOD, INTERRUPTED, PORT, REFUSED, SILENT, USAGE, PROGRAM


class Troubles:
    """Mixed into a test of one command; say() gives its words."""

    wrong_speed = SILENT  # the PLC hears garbage and says nothing
    refused = REFUSED
    text = ""  # what is typed into the command

    def say(self, port, *more):
        raise NotImplementedError

    def quick(self, port, *more):
        return self.say(port, "--timeout", 100, "--repeat", 1, *more)

    def begin(self, port):
        """Starts the command with patience, and returns when its first request has been sent."""
        process = subprocess.Popen([PROGRAM, *self.say(port, "--timeout", 20000, "--repeat", 1)], cwd=self.folder,
                                   env=self.environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        process.stdin.write(self.text)
        process.stdin.flush()

        def end():
            if process.poll() is None:
                process.kill()
            process.communicate()

        self.addCleanup(end)
        return process

    def assert_data_only(self, done):
        """Complaints are no data."""
        self.assertNotIn("velk: ", done.stdout)

    def test_trouble_flag_that_is_not_known(self):
        done = self.run_velk(self.quick("/dev/null", "--nonsense"), self.text)
        self.assert_ends(done, USAGE)
        self.assertIn("--nonsense", done.stderr)
        self.assertEqual(done.stdout, "")

    def test_trouble_wrong_speed_of_the_port(self):
        done = self.run_velk(self.quick(self.folder / "nowhere", "--baud", "12"), self.text)
        self.assert_ends(done, USAGE)
        self.assertIn("12", done.stderr)

    def test_trouble_missing_port(self):
        done = self.run_velk(self.quick(self.folder / "nowhere"), self.text)
        self.assert_ends(done, PORT)
        self.assertIn("there is no serial port", done.stdout + done.stderr)
        self.assert_data_only(done)

    def test_trouble_silent_line(self):
        done = self.run_velk(self.quick(self.dead_port().port), self.text)
        self.assert_ends(done, SILENT)
        self.assert_data_only(done)

    def test_trouble_line_at_another_speed(self):
        line = self.line(flags=["--baud", 9600])
        done = self.run_velk(self.quick(line.link, "--baud", 19200), self.text)
        self.assert_ends(done, self.wrong_speed)
        self.assertRegex(line.said(), "! [a-z ]+: ", "the PLC has heard bytes that are no frame")

    def test_trouble_garbage(self):
        dead = self.dead_port()
        process = self.begin(dead.port)
        self.wait_for_request(dead)
        os.write(dead.master, b"\xf8\x00\x3c\x81")
        output, complaints = process.communicate(timeout=60)
        self.assertEqual(process.returncode, REFUSED, output + complaints)

    def test_trouble_refused_login(self):
        line = self.line(flags=["--refuse-login"])
        done = self.run_velk(self.say(line.link), self.text)
        self.assert_ends(done, self.refused)
        if self.refused != GOOD:
            self.assertIn("refused the login", done.stdout + done.stderr)
            self.assertNotIn("the driver gave no reason", done.stdout + done.stderr)
            self.assertNotIn("line speed", done.stderr, "whoever refuses has understood")

    def test_trouble_adapter_that_is_pulled_out_in_an_exchange(self):
        dead = self.dead_port()
        process = self.begin(dead.port)
        self.wait_for_request(dead)
        os.write(dead.master, b"\x55\x55")
        dead.pull_out()
        output, complaints = process.communicate(timeout=60)
        self.assertEqual(process.returncode, PORT, output + complaints)

    def test_trouble_ctrl_c_in_an_exchange(self):
        dead = self.dead_port()
        child = self.type_velk([*map(str, self.say(dead.port, "--timeout", 20000))])
        if self.text:
            child.send(self.text.replace("\n", "\r"))
        self.wait_for_request(dead)
        self.assert_interrupted(child)

    def test_trouble_ctrl_c_leaves_the_port_to_others(self):
        dead = self.dead_port()
        process = self.begin(dead.port)
        self.wait_for_request(dead)
        self.interrupt(process)
        again = self.begin(dead.port)
        self.wait_for_request(dead)
        self.interrupt(again)
        self.assertLessEqual({each.name for each in self.folder.iterdir()}, {"state"}, "nothing is left behind")

"""What the end-to-end tests share: the program `velk`, simulated PLCs on pseudo-terminals, and a folder for each test.

The environment says where: VELK_PROGRAM is `velk`, VELK_DEMO is the folder with the descriptions of the demonstration.
"""

import os
import pty
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import termios
import time
import tty
import unittest
from pathlib import Path

try:
    import pexpect
except ImportError:
    sys.exit("python3-pexpect is missing: scripts/install-dependencies test installs it")

PROGRAM = os.environ["VELK_PROGRAM"]
DEMO = Path(os.environ["VELK_DEMO"])

GOOD, ITEM_NOT_GOOD, USAGE, PORT, SILENT, REFUSED, INTERRUPTED = 0, 1, 2, 3, 4, 5, 130
VARIABLES = """project_id = 0x00C0FFEE
variable = [
    { name = "Number", type = "INT", value = 7 },
    { name = "Fixed", type = "INT", value = 12, behaviour = { kind = "constant", every_ms = 1 } },
    { name = "Flag", type = "BOOL" },
    { name = "Lamp", type = "BIT", area = "Q", offset = 13 },
    { name = "Neighbour", type = "BIT", area = "Q", offset = 12, value = true },
    { name = "Text", type = "STRING(10)", value = "old" },
    { name = "List", type = "ARRAY [0..3] OF INT", value = [1, 2, 3, 4] },
    { name = "Share", type = "REAL", value = 0.5 },
    { name = "Small", type = "USINT", value = 3 },
    { name = "Word", type = "WORD", value = 0xFFFF },
]
"""
PATIENCE = 60  # seconds; a busy machine is slow


def require(program):
    """Fails when a program that a test needs is missing: a test that is left out would not be noticed."""
    if shutil.which(program) is None:
        raise AssertionError(f"{program} is missing: scripts/install-dependencies test installs it")


class Line:
    """A simulated line at a symbolic link that stays the same when the pseudo-terminal changes."""

    def __init__(self, description, link, flags=()):
        self.description = description
        self.link = link
        self.flags = [*map(str, flags)]
        self.output = Path(f"{link}.out")
        self.process = None
        self.plug_in()

    def plug_in(self):
        with open(self.output, "ab") as output:
            self.process = subprocess.Popen([PROGRAM, "plc", str(self.description), "--link", str(self.link),
                                             *self.flags],
                                            stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.PIPE)
        deadline = time.monotonic() + PATIENCE
        while not self.link.is_symlink():
            if self.process.poll() is not None:
                raise RuntimeError(self.process.stderr.read().decode())
            if time.monotonic() > deadline:
                raise RuntimeError("the simulated line did not start")
            time.sleep(0.02)

    def said(self):
        """What it has printed on standard output so far."""
        return self.output.read_text(encoding="utf-8")

    def wait_until_said(self, text, times=1):
        deadline = time.monotonic() + PATIENCE
        while self.said().count(text) < times:
            if time.monotonic() > deadline:
                raise AssertionError(f"{text!r} is not {times} times in:\n{self.said()}")
            time.sleep(0.02)

    def pull_out(self):
        if self.process is not None:
            self.process.terminate()
            self.process.wait(PATIENCE)
            self.process.stderr.close()
            self.process = None


class Dead:
    """A port where no PLC answers; what is sent can be examined and answered by hand."""

    def __init__(self):
        self.master, self.slave = pty.openpty()
        tty.setraw(self.slave)
        self.port = os.ttyname(self.slave)

    def pull_out(self):
        if self.master >= 0:
            os.close(self.master)
            os.close(self.slave)
            self.master = -1


class ServiceTest(unittest.TestCase):
    """A test with its own folder, in which the program runs."""

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="velk-e2e-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.environment = {**os.environ, "XDG_STATE_HOME": str(self.folder / "state"), "TERM": "xterm",
                            "LC_ALL": "C.UTF-8"}
        self.environment.pop("NO_COLOR", None)

    def line(self, framing="Serial_RS232", model="Motorola", more="", flags=(), program=None, name="plc"):
        """A line with one station that runs the program of the demonstration; @p more is of the station.

        It has no pace of its own: a busy machine cannot tear its frames.
        """
        file = self.folder / "line.toml"
        file.write_text(f"""framing = "{framing}"
[[station]]
name = "press"
model = "{model}"
block_size = 1024
file_piece_size = 512
program = "{program or DEMO / "program-1.toml"}"
{more}
""")
        return self.play(file, flags, name)

    def play(self, description, flags=(), name="plc"):
        """The line of a description, with flags of `velk plc`."""
        line = Line(description, self.folder / name, flags)
        self.addCleanup(line.pull_out)
        return line

    def dead_port(self):
        dead = Dead()
        self.addCleanup(dead.pull_out)
        return dead

    def words(self, command, port, *more):
        """The words of a command on the line of the demonstration."""
        return [command, "--port", str(port), "--framing", "bare", "--byte-order", "big", "--block-size", "1024",
                *map(str, more)]

    def run_velk(self, words, text=None):
        """Runs the program with pipes and @p text on its standard input."""
        return subprocess.run([PROGRAM, *map(str, words)], cwd=self.folder, env=self.environment, input=text or "",
                              timeout=PATIENCE, capture_output=True, text=True, check=False)

    def assert_ends(self, done, code):
        self.assertEqual(done.returncode, code, f"{done.args}\n{done.stdout}\n{done.stderr}")

    def start_velk(self, words):
        """Starts the program with pipes for a test that speaks to it while it runs."""
        process = subprocess.Popen([PROGRAM, *words], cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

        def end():
            if process.poll() is None:
                process.kill()
            process.communicate()

        self.addCleanup(end)
        return process

    def type_velk(self, words, columns=100, rows=24):
        """Starts the program on a terminal."""
        child = pexpect.spawn(PROGRAM, words, cwd=str(self.folder), env=self.environment, timeout=PATIENCE,
                              dimensions=(rows, columns), encoding="utf-8")
        child.delaybeforesend = None
        self.addCleanup(child.close, True)
        return child

    def assert_exit(self, child, code):
        child.expect(pexpect.EOF)
        child.wait()
        self.assertEqual((child.exitstatus, child.signalstatus), (code, None), child.before)

    def wait_for_request(self, dead):
        """Waits until the program waits for an answer on a dead port."""
        self.assertTrue(select.select([dead.master], [], [], PATIENCE)[0], "nothing was sent")
        return os.read(dead.master, 4096)

    def interrupt(self, process):
        """Ctrl-C for a program with pipes."""
        process.send_signal(signal.SIGINT)
        output, complaints = process.communicate(timeout=PATIENCE)
        self.assertEqual(process.returncode, INTERRUPTED, output + complaints)
        return output, complaints

    def assert_interrupted(self, child):
        """Ctrl-C ends a program on a terminal soon, and leaves the terminal as it was."""
        begun = time.monotonic()
        child.sendintr()
        self.assert_exit(child, INTERRUPTED)
        self.assertLess(time.monotonic() - begun, 3, "it ends within a second, on a machine that is not busy")
        self.assert_restored(child)

    def assert_restored(self, child):
        """The terminal gives lines and echoes, ends programs with Ctrl-C, and shows the cursor."""
        modes = termios.tcgetattr(child.child_fd)
        for place, flag in ((1, termios.OPOST), (3, termios.ICANON), (3, termios.ECHO), (3, termios.ISIG)):
            self.assertTrue(modes[place] & flag, modes)
        self.assertLessEqual(child.before.count("\x1b[?25l"), child.before.count("\x1b[?25h"))

    def numbers(self, count):
        """A program with the variables V00, V01 ... that have their number as their value."""
        file = self.folder / "numbers.toml"
        rows = "".join(f'    {{ name = "V{i:02}", type = "INT", value = {i} }},\n' for i in range(count))
        file.write_text(f"project_id = 0x00C0FFEE\nvariable = [\n{rows}]\n")
        return file

    def variables(self):
        """A separate program for tests that write, with one variable of each kind."""
        file = self.folder / "variables.toml"
        file.write_text(VARIABLES)
        return file


def main():
    unittest.main(verbosity=2)

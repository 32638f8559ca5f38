"""velk console."""

import os
import signal
import termios

from service import GOOD, INTERRUPTED, ITEM_NOT_GOOD, PORT, REFUSED, USAGE, ServiceTest, main
from troubles import Troubles

PROMPT = "velk> "
READ = "read 0?PLC_PRG.Counter?M?0?int\r"


class Console(ServiceTest):
    def type_console(self, line):
        child = self.type_velk(self.words("console", line.link, "-q"))
        child.expect(PROMPT)
        return child

    def test_commands_are_completed_and_remembered(self):
        line = self.line()
        child = self.type_console(line)
        child.send("laste\t\r")
        child.expect("lasterror")
        child.expect(PROMPT)
        child.send("info\r")
        child.expect("Protocol: VELK")
        child.expect(PROMPT)
        child.send("exit\r")
        self.assert_exit(child, GOOD)

        again = self.type_console(line)
        again.send("\x1b[A\x1b[A")
        again.expect("info")
        again.send("\r")
        again.expect("Protocol: VELK")
        again.expect(PROMPT)
        again.sendeof()
        self.assert_exit(again, GOOD)

    def test_a_value_through_the_module(self):
        line = self.line()
        child = self.type_console(line)
        child.send(READ)
        child.expect("87d61200")
        child.expect(PROMPT)
        child.sendeof()
        self.assert_exit(child, GOOD)

    def test_interrupted_at_the_prompt(self):
        child = self.type_console(self.line())
        child.sendintr()
        self.assert_exit(child, INTERRUPTED)

    def test_interrupted_in_a_command(self):
        dead = self.dead_port()
        child = self.type_velk(self.words("console", dead.port, "-q", "--timeout", 20000))
        child.expect(PROMPT)
        child.send("read 0?X?M?0?int\r")
        self.wait_for_request(dead)
        child.sendintr()
        self.assert_exit(child, INTERRUPTED)

    def test_a_port_that_was_away_is_opened_again(self):
        line = self.line()
        child = self.type_console(line)
        child.send(READ)
        child.expect("87d61200")
        child.expect(PROMPT)
        line.pull_out()
        child.send(READ)
        child.expect("has gone away .hang-up.; the next read or write opens it again")
        child.expect(PROMPT)
        child.send(READ)
        child.expect("there is no serial port")
        child.expect(PROMPT)
        child.send("lasterror\r")  # asks nobody
        child.expect(PROMPT)
        line.plug_in()
        child.send(READ)
        child.expect("87d61200")
        child.expect(PROMPT)
        child.sendeof()
        self.assert_exit(child, PORT)

    def test_stopped_and_going_on(self):
        """As with Ctrl-Z and fg: the shell has changed the terminal's settings in between."""
        child = self.type_console(self.line())
        child.send("inf")
        child.expect("inf")
        os.kill(child.pid, signal.SIGSTOP)
        os.waitpid(child.pid, os.WUNTRACED)
        modes = termios.tcgetattr(child.child_fd)
        modes[3] |= termios.ICANON | termios.ECHO
        termios.tcsetattr(child.child_fd, termios.TCSADRAIN, modes)
        os.kill(child.pid, signal.SIGCONT)
        child.expect(PROMPT + "inf")
        modes = termios.tcgetattr(child.child_fd)
        self.assertFalse(modes[3] & (termios.ICANON | termios.ECHO), modes)
        child.send("o\r")
        child.expect("Protocol: VELK")
        child.expect(PROMPT)
        child.send("exit\r")
        self.assert_exit(child, GOOD)
        self.assert_restored(child)

    def test_commands_from_a_file(self):
        line = self.line()
        done = self.run_velk(self.words("console", line.link, "-q"), "info\n\nlasterror")
        self.assert_ends(done, GOOD)
        self.assertIn("Protocol: VELK", done.stdout)
        self.assertNotIn(PROMPT, done.stdout)

    def test_an_unknown_command_is_told_and_the_next_one_runs(self):
        line = self.line()
        done = self.run_velk(self.words("console", line.link, "-q"), "nonsense\ninfo\n")
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertIn("no command 'nonsense'", done.stderr)
        self.assertIn("Protocol: VELK", done.stdout)

    def test_wrong_usage(self):
        self.assert_ends(self.run_velk(["console", "--nonsense"]), USAGE)

    def test_missing_port(self):
        self.assert_ends(self.run_velk(self.words("console", self.folder / "nowhere")), PORT)


class ConsoleTroubles(Troubles, ServiceTest):
    text = "read 0?PLC_PRG.Counter?M?0?int\n"

    def say(self, port, *more):
        return self.words("console", port, *more)

    def test_trouble_ctrl_c_in_an_exchange(self):
        dead = self.dead_port()
        child = self.type_velk(self.say(dead.port, "--timeout", 20000))
        child.expect(PROMPT)
        child.send("read 0?X?M?0?int\r")
        self.wait_for_request(dead)
        self.assert_interrupted(child)

    def test_a_write_and_what_is_wrong_with_others(self):
        line = self.line()
        done = self.run_velk(self.say(line.link, "-q"), "write 0?PLC_PRG.Counter?M?0?int 2a000000\n" + self.text)
        self.assert_ends(done, GOOD)
        self.assertEqual(done.stdout, "written ok\n2a000000\n")
        done = self.run_velk(self.say(line.link, "-q"), "write 0?PLC_PRG.Counter?M?0?int 2a\nread\n")
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertIn("error: incorrect length", done.stdout)

    def test_a_refused_login_is_told(self):
        line = self.line(flags=["--refuse-login"])
        child = self.type_velk(self.say(line.link, "-q"))
        child.expect(PROMPT)
        child.send("read 0?X?M?0?int\r")
        child.expect("refused the login")
        child.expect(PROMPT)
        child.send("exit\r")
        self.assert_exit(child, REFUSED)
        self.assert_restored(child)


if __name__ == "__main__":
    main()

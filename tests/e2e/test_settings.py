"""What velk takes its settings from: project files that cannot be read, new ones, and what is said about them."""

import resource
import signal
import subprocess
import termios

from service import GOOD, INTERRUPTED, PATIENCE, PROGRAM, USAGE, ServiceTest, main


class ProjectFiles(ServiceTest):
    def test_why_a_file_cannot_be_read(self):
        (self.folder / "large.toml").touch()
        with open(self.folder / "large.toml", "r+b") as large:
            large.truncate(16 * 1024 * 1024 + 1)
        for file, reason in (("none.toml", "No such file or directory"), (".", "it is a directory"),
                             ("/dev/zero", "it is a device"), ("large.toml", "it is larger than 16 MiB")):
            done = self.run_velk(["config", "check", file])
            self.assert_ends(done, USAGE)
            self.assertTrue(done.stderr.startswith(f"{file}: the project file cannot be read: {reason}"), done.stderr)
            self.assertEqual(done.stdout, "")

    def test_nothing_but_the_file_is_needed(self):
        del self.environment["XDG_STATE_HOME"]
        self.environment.pop("HOME", None)
        file = self.folder / "press.toml"
        file.write_text('[line]\nport = "/dev/ttyUSB0"\n[[tag]]\nname = "Counter"\n')
        done = self.run_velk(["config", "check", file])
        self.assert_ends(done, GOOD)
        self.assertEqual(done.stdout, f"{file}: good; 1 station, 1 tag\n")
        done = self.run_velk(["config", "show", "-f", file])
        self.assert_ends(done, GOOD)
        self.assertIn("0?Counter?M?0?", done.stdout)
        done = self.run_velk(["read", "-f", file, "Counter"])
        self.assert_ends(done, USAGE)
        self.assertIn("there is no home directory for the symbol files: give --storage", done.stderr)

    def test_file_as_a_word_or_as_a_flag(self):
        file = self.folder / "press.toml"
        file.write_text('[line]\nport = "/dev/ttyUSB0"\n')
        for words in ([file], ["-f", file], ["--file", file]):
            done = self.run_velk(["config", "check", *words])
            self.assert_ends(done, GOOD)
            self.assertTrue(done.stdout.startswith(f"{file}: good"), done.stdout)
            self.assertEqual(done.stderr, "")
        self.assert_ends(self.run_velk(["config", "check", file, "-f", file]), USAGE)

    def test_complaints_go_to_standard_error(self):
        file = self.folder / "velk.toml"
        for text, complaint in (("[line]\nbauds = 5\n", "velk.toml:2:1: there is no 'bauds'"),
                                ('[[tag]]\nname = "a"\ntype = "short"\narea = "QB"\n', "velk.toml: tag a: ")):
            file.write_text(text)
            done = self.run_velk(["config", "check"])
            self.assert_ends(done, USAGE)
            self.assertTrue(done.stderr.startswith(complaint), done.stderr)
            self.assertEqual(done.stdout, "")

    def test_a_folder_for_symbol_files_that_cannot_be_had(self):
        (self.folder / "file").touch()
        line = self.line()
        done = self.run_velk(["read", "--port", line.link, "--storage", self.folder / "file" / "inside", "X"])
        self.assert_ends(done, USAGE)
        self.assertIn("cannot be made: Not a directory; give another folder for the symbol files with --storage",
                      done.stderr)

    def test_a_thousand_tags_with_a_symbol_file(self):
        line = self.line()
        file = self.folder / "velk.toml"
        file.write_text(f"""[line]
port = "{line.link}"
framing = "bare"
[defaults]
block_size = 1024
[storage]
directory = "symbols"
""" + "".join(f'[[tag]]\nname = "tag{i}"\nvariable = "PLC_PRG.Counter"\n' for i in range(1000)))
        self.assert_ends(self.run_velk(["symbols"]), GOOD)
        done = self.run_velk(["config", "show"])
        self.assert_ends(done, GOOD)
        self.assertEqual(done.stdout.count("0?PLC_PRG.Counter?M?0?"), 1000, done.stdout[:2000])
        self.assertNotIn("the type comes from", done.stdout)
        self.assert_ends(self.run_velk(["config", "check"]), GOOD)


class Commands(ServiceTest):
    def test_a_command_that_is_not_there(self):
        for words in (["reed"], ["help", "reed"]):
            done = self.run_velk(words)
            self.assert_ends(done, USAGE)
            self.assertIn("there is no command 'reed'; did you mean read?", done.stderr)
            self.assertEqual(done.stdout, "")


class NewProjectFile(ServiceTest):
    """velk init."""

    def init_on_a_full_disk(self, *more):
        def limit_files():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))

        return subprocess.run([PROGRAM, "init", "--port", "/dev/ttyUSB0", *more], cwd=self.folder,
                              env=self.environment, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=PATIENCE, check=False, preexec_fn=limit_files)

    def names(self):
        return sorted(each.name for each in self.folder.iterdir())

    def test_as_a_whole_or_not_at_all(self):
        done = self.init_on_a_full_disk()
        self.assert_ends(done, USAGE)
        self.assertIn("velk.toml cannot be written: File too large", done.stderr)
        self.assertEqual(self.names(), [])
        self.assert_ends(self.run_velk(["init", "--port", "/dev/ttyUSB0"]), GOOD)
        old = (self.folder / "velk.toml").read_text()
        self.assert_ends(self.init_on_a_full_disk("--baud", "9600", "--force"), USAGE)
        self.assertEqual((self.folder / "velk.toml").read_text(), old)
        self.assertEqual(self.names(), ["velk.toml"])

    def test_replaces_only_by_force(self):
        file = self.folder / "velk.toml"
        file.write_text("# mine\n")
        done = self.run_velk(["init", "--port", "/dev/ttyUSB0"])
        self.assert_ends(done, USAGE)
        self.assertIn("velk.toml exists already; give --force to overwrite it", done.stderr)
        self.assertEqual(file.read_text(), "# mine\n")
        self.assert_ends(self.run_velk(["init", "--port", "/dev/ttyUSB0", "--force"]), GOOD)
        self.assertIn('port = "/dev/ttyUSB0"', file.read_text())
        self.assertEqual(self.names(), ["velk.toml"])

    def test_flags_are_in_the_file(self):
        self.assert_ends(self.run_velk(["init", "--port", "/dev/ttyUSB0", "--storage", "symbols", "--stopbits", "2",
                                        "--routing-levels", "2", "--coupler1", "6", "--channel1", "19", "--address1",
                                        "10.0.0.1", "--coupler2", "5", "--name", "x  # y"]), GOOD)
        text = (self.folder / "velk.toml").read_text()
        for line in ("[storage]", 'directory = "symbols"', "routing_levels = 2 ", "coupler1 = 6 ", "channel1 = 19 ",
                     'address1 = "10.0.0.1" ', "coupler2 = 5 ", "channel2 = 0 ", 'address2 = "0.0.0.0" ',
                     "stopbits = 2 ", 'framing = "routed" '):
            self.assertIn("\n" + line, text)
        self.assertIn("velk read 'x  # y:PLC_PRG.Counter'\n", text)
        done = self.run_velk(["config", "show"])
        self.assert_ends(done, GOOD)
        for setting in ("Node0::RoutingLevels=2", "Node0::CouplerLV1=6", "Node0::ChannelLV1=19",
                        "Node0::AddressLV1=10.0.0.1", "Node0::CouplerLV2=5", "stopbits=2", "protType=ABB_RS232_AC"):
            self.assertIn(setting, done.stdout)

    def test_the_storage_is_where_it_was_meant_to_be(self):
        (self.folder / "machine").mkdir()
        for storage, file, written in (("symbols", "velk.toml", "symbols"),
                                       ("machine/symbols", "machine/velk.toml", "symbols"),
                                       ("symbols", "machine/far.toml", str(self.folder / "symbols")),
                                       ("/srv/symbols", "absolute.toml", "/srv/symbols"),
                                       ("~/symbols", "tilde.toml", "./~/symbols")):
            self.assert_ends(self.run_velk(["init", "--port", "com1", "--storage", storage, "-f", file]), GOOD)
            self.assertIn(f'\ndirectory = "{written}"\n', (self.folder / file).read_text())

    def test_names_that_cannot_be_written(self):
        for flag, value in (("--name", "a\nb"), ("--name", "12"), ("--port", "a\nb"), ("--storage", "a\nb"),
                            ("--storage", "")):
            done = self.run_velk(["init", "--port", "com1", flag, value] if flag != "--port" else
                                 ["init", flag, value])
            self.assert_ends(done, USAGE)
            self.assertNotIn("velk.toml", done.stderr)
        self.assertEqual(self.names(), [])

    def test_couplers_that_have_no_effect_are_refused(self):
        for words in (["--coupler1", "3"], ["--routing-levels", "1", "--address2", "10.0.0.1"],
                      ["--routing-levels", "1", "--framing", "bare"], ["--routing-levels", "3"],
                      ["--routing-levels", "1", "--address1", "10.0.0"]):
            self.assert_ends(self.run_velk(["init", "--port", "com1", *words]), USAGE)
        self.assertEqual(self.names(), [])

    def test_what_is_left_out_is_asked_with_the_drivers_own_settings(self):
        child = self.type_velk(["init", "--port", "com1"])
        for question, answer in (("Line speed in bit/s [19200]", "9600"), ("or mark) [none]", "even"),
                                 ("Stop bits [1]", "2"), ("[RS-232]", ""), ("(bare or routed) [routed]", ""),
                                 ("Levels of couplers on the route [0]", "1"), ("Coupler of level 1 [0]", "7"),
                                 ("it must be 0 to 6", "6"), ("Channel of the coupler of level 1 [0]", "3"),
                                 ("Address behind the coupler of level 1 [0.0.0.0]", "10.0.0"),
                                 ("is not an address such as 192.168.0.1", "10.0.0.1"), ("(big or little) [big]", ""),
                                 ("Bytes of a block [128]", ""), ("wait for an answer [10000]", ""),
                                 ("Node number of the PLC [0]", "4"), ("Name of the PLC", "press")):
            child.expect_exact(question)
            child.sendline(answer)
        self.assert_exit(child, GOOD)
        done = self.run_velk(["config", "show"])
        for setting in ("baudrate=9600", "parity=even", "stopbits=2", "protType=ABB_RS232_AC",
                        "Node4::RoutingLevels=1", "Node4::CouplerLV1=6", "Node4::ChannelLV1=3",
                        "Node4::AddressLV1=10.0.0.1"):
            self.assertIn(setting, done.stdout)

    def test_without_couplers_nothing_is_asked_about_them(self):
        child = self.type_velk(["init", "--port", "com1", "--baud", "9600", "--parity", "none", "--stopbits", "1",
                                "--mode", "RS-232"])
        child.expect_exact("(bare or routed) [routed]")
        child.sendline("bare")
        child.expect_exact("Byte order")
        self.assertNotIn("oupler", child.before)

    def ask_the_last_question(self):
        child = self.type_velk(["init", "--port", "com1", "--baud", "9600", "--parity", "none", "--stopbits", "1",
                                "--mode", "RS-232", "--framing", "bare", "--byte-order", "big", "--block-size", "128",
                                "--timeout", "500", "--node", "1"])
        self.settings = termios.tcgetattr(child.child_fd)
        child.expect_exact("Name of the PLC")
        return child

    def assert_nothing_was_written(self, child):
        self.assertEqual(termios.tcgetattr(child.child_fd), self.settings)
        self.assertEqual(self.names(), [])

    def test_nothing_is_written_when_the_answers_end(self):
        for keys in ("\x04", "pre\x04\x04"):  # also in the middle of a line
            child = self.ask_the_last_question()
            child.send(keys)
            child.expect_exact("the answers ended; nothing was written")
            self.assert_exit(child, USAGE)
            self.assert_nothing_was_written(child)

    def test_nothing_is_written_after_ctrl_c(self):
        child = self.ask_the_last_question()
        child.send("pre\x03")
        self.assert_exit(child, INTERRUPTED)
        self.assert_nothing_was_written(child)

    def test_the_help_is_about_the_new_file(self):
        done = self.run_velk(["init", "--help"])
        self.assertIn("Project file to write", done.stdout)
        self.assertNotIn("its name in the project file", done.stdout)
        self.assertNotIn("when there is one", done.stdout)


if __name__ == "__main__":
    main()

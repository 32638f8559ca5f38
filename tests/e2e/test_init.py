"""velk init."""

from service import GOOD, USAGE, ServiceTest, main


class Init(ServiceTest):
    def setUp(self):
        super().setUp()
        self.file = self.folder / "velk.toml"

    def answer(self, child, question, *answers):
        """Wrong answers, and one that is taken."""
        child.expect_exact(question)
        for wrong in answers[:-1]:
            child.sendline(wrong)
            child.expect_exact(question)
        child.sendline(answers[-1])

    def shown(self):
        done = self.run_velk(["config", "show"])
        self.assert_ends(done, GOOD)
        return done.stdout

    def test_answers_with_wrong_ones_between(self):
        child = self.type_velk(["init"])
        self.answer(child, "Serial port", "tty S7", "/dev/ttyS7")
        self.answer(child, "Line speed", "fast", "12", "9600")
        self.answer(child, "Parity", "strange", "EVEN")
        self.answer(child, "Stop bits", "3", "2")
        self.answer(child, "Mode", "RS-232")
        self.answer(child, "Framing", "both", "routed")
        self.answer(child, "Levels of couplers", "3", "1")
        self.answer(child, "Coupler of level 1", "7", "2")
        self.answer(child, "Channel of the coupler of level 1", "20", "3")
        self.answer(child, "Address behind the coupler of level 1", "10.0.0", "10.0.0.1")
        self.answer(child, "Byte order", "middle", "little")
        self.answer(child, "Bytes of a block", "127", "1461", "512")
        self.answer(child, "Milliseconds", "99", "soon", "250")
        self.answer(child, "Node number", "257", "-1", "7")
        self.answer(child, "Name of the PLC", "press")
        child.expect("velk.toml is written")
        self.assert_exit(child, GOOD)
        self.assert_restored(child)
        text = self.file.read_text(encoding="utf-8")
        for line in ('port = "/dev/ttyS7"', "baud = 9600", 'parity = "even"', 'framing = "routed"',
                     'byte_order = "little"', "block_size = 512", "timeout_ms = 250", "node = 7", 'name = "press"', "stopbits = 2",
                     "routing_levels = 1", "coupler1 = 2", "channel1 = 3", 'address1 = "10.0.0.1"'):
            self.assertIn(line, text)
        self.assert_ends(self.run_velk(["config", "check"]), GOOD)
        self.assertIn("/dev/ttyS7", self.shown())

    def test_empty_answers_take_what_is_usual(self):
        child = self.type_velk(["init", "--port", "/dev/ttyS7"])
        for question in ("Line speed", "Parity", "Stop bits", "Mode", "Framing", "Levels of couplers", "Byte order",
                         "Bytes of a block", "Milliseconds", "Node number", "Name of the PLC"):
            self.answer(child, question, "")
        self.assert_exit(child, GOOD)
        self.assertIn("baud = 19200", self.file.read_text(encoding="utf-8"))
        self.assert_ends(self.run_velk(["config", "check"]), GOOD)

    def test_flags_leave_out_their_questions(self):
        child = self.type_velk(["init", "--port", "/dev/ttyS7", "--baud", "9600", "--parity", "none",
                                "--stopbits", "1", "--mode", "RS-485", "--framing", "bare", "--byte-order", "big", "--block-size", "256",
                                "--timeout", "300", "--node", "3"])
        self.answer(child, "Name of the PLC", "oven")
        self.assert_exit(child, GOOD)
        self.assertNotIn("Line speed", child.before)
        self.assertIn("RS-485", self.file.read_text(encoding="utf-8"))

    def test_only_flags(self):
        done = self.run_velk(["init", "-q", "--port", "/dev/ttyS7", "--baud", "38400", "--byte-order", "little",
                              "--name", "oven", "--node", "2", "-f", "other.toml"])
        self.assert_ends(done, GOOD)
        self.assertEqual((done.stdout, done.stderr), ("", ""))
        self.assertFalse(self.file.exists())
        self.assert_ends(self.run_velk(["config", "check", "other.toml"]), GOOD)

    def test_what_it_writes_reads_a_line(self):
        line = self.line()
        self.assert_ends(self.run_velk(["init", "--port", line.link, "--framing", "bare", "--byte-order", "big",
                                        "--block-size", "1024", "--name", "press"]), GOOD)
        done = self.run_velk(["read", "press:PLC_PRG.Counter"])
        self.assert_ends(done, GOOD)
        self.assertIn("1234567", done.stdout)

    def test_a_file_that_is_there_stays_unless_forced(self):
        self.file.write_text("precious")
        done = self.run_velk(["init", "--port", "/dev/ttyS7"])
        self.assert_ends(done, USAGE)
        self.assertIn("--force", done.stderr)
        self.assertEqual(self.file.read_text(), "precious")
        child = self.type_velk(["init"])
        child.expect("--force")  # before the first question
        self.assert_exit(child, USAGE)
        self.assert_ends(self.run_velk(["init", "--port", "/dev/ttyS7", "--force"]), GOOD)
        self.assertIn("/dev/ttyS7", self.file.read_text(encoding="utf-8"))

    def test_ctrl_c_in_the_middle_writes_nothing(self):
        child = self.type_velk(["init"])
        self.answer(child, "Serial port", "/dev/ttyS7")
        self.answer(child, "Line speed", "9600")
        child.expect("Parity")
        self.assert_interrupted(child)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_ctrl_c_leaves_a_file_that_was_to_be_written_over(self):
        self.file.write_text("precious")
        child = self.type_velk(["init", "--force"])
        child.expect("Serial port")
        self.assert_interrupted(child)
        self.assertEqual(self.file.read_text(), "precious")

    def test_the_end_of_the_answers_writes_nothing(self):
        child = self.type_velk(["init", "--port", "/dev/ttyS7"])
        child.expect("Line speed")
        child.sendeof()
        child.expect("nothing was written")
        self.assert_exit(child, USAGE)
        self.assertFalse(self.file.exists())

    def test_wrong_usage(self):
        for words, reason in ((["init"], "--port"), (["init", "--port", "x"], "no serial port is called 'x'"),
                              (["init", "--port", "/dev/ttyS7", "--name", "12"], "name of a station"), (["init", "--port", "/dev/ttyS7", "--baud", "12"], "12"),
                              (["init", "--port", "/dev/ttyS7", "--timeout", "99"], "--timeout"),
                              (["init", "--port", "/dev/ttyS7", "--name", "a:b"], "name"),
                              (["init", "--nonsense"], "--nonsense"),
                              (["init", "--port", "/dev/ttyS7", "-f", "no/such/folder.toml"], "no/such/folder.toml")):
            done = self.run_velk(words)
            self.assert_ends(done, USAGE)
            self.assertIn(reason, done.stderr)
        self.assertEqual(list(self.folder.iterdir()), [])


if __name__ == "__main__":
    main()

"""The line of progress that redraws itself, on terminals of all kinds."""

from service import GOOD, ServiceTest, main

NEW_LINE = "\r\x1b[K"


class StatusLine(ServiceTest):
    def scan(self, **size):
        dead = self.dead_port()
        return self.type_velk(["check", "--scan", "-p", dead.port, "--timeout", "100"], **size)

    def statuses(self, child, wanted):
        """So many texts that stood in the line, one after the other."""
        seen = []
        while len(seen) < wanted:
            child.expect_exact(NEW_LINE)
            seen.append(child.before.splitlines()[-1])
        return seen

    def test_is_cut_to_a_narrow_terminal(self):
        child = self.scan(columns=20)
        for number, text in enumerate(self.statuses(child, 4), 1):
            self.assertRegex(text, rf"^{number} of \d+: ")
            self.assertEqual(len(text), 17, "room for the echo of Ctrl-C, and the last column free")
        self.assert_interrupted(child)

    def test_is_gone_when_the_program_ends(self):
        child = self.scan()
        child.expect(r"2 of \d+: ")
        self.assert_interrupted(child)
        self.assertTrue(child.before.endswith(NEW_LINE), child.before)

    def test_is_not_there_on_a_terminal_that_knows_lines_only(self):
        self.environment["TERM"] = "dumb"
        line = self.line()
        child = self.type_velk(["check", "--scan", "-p", str(line.link), "--block-size", "1024"], columns=40)
        self.assert_exit(child, GOOD)
        self.assertNotIn("\x1b", child.before)
        self.assertNotRegex(child.before, r"\d+ of \d+: ")


if __name__ == "__main__":
    main()

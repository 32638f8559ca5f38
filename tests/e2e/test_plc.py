"""velk plc."""

import os

from service import DEMO, GOOD, INTERRUPTED, USAGE, ServiceTest, main


class Plc(ServiceTest):
    def test_it_links_its_terminal_and_takes_the_link_away(self):
        link = self.folder / "plc"
        child = self.type_velk(["plc", str(DEMO / "line.toml"), "--link", str(link)])
        child.expect("/dev/pts/[0-9]+")
        done = self.run_velk(self.words("read", link, "PLC_PRG.Counter"))
        self.assert_ends(done, GOOD)
        self.assertIn("1234567", done.stdout)
        child.sendintr()
        self.assert_exit(child, INTERRUPTED)
        self.assertFalse(os.path.lexists(link))

    def test_it_ends_by_itself_when_it_is_told_so(self):
        self.assert_ends(self.run_velk(["plc", DEMO / "line.toml", "--for", "10ms"]), GOOD)

    def test_a_description_that_is_wrong(self):
        file = self.folder / "wrong.toml"
        file.write_text('framing = "Smoke"\n')
        done = self.run_velk(["plc", file])
        self.assert_ends(done, USAGE)
        self.assertIn("wrong.toml:1", done.stderr)

    def test_a_description_that_is_not_there(self):
        self.assert_ends(self.run_velk(["plc", "nowhere.toml"]), USAGE)

    def test_wrong_usage(self):
        self.assert_ends(self.run_velk(["plc"]), USAGE)


if __name__ == "__main__":
    main()

"""velk ports."""

import json

from service import GOOD, PORT, USAGE, ServiceTest, main


class Ports(ServiceTest):
    def test_list_for_people(self):
        done = self.run_velk(["ports"])
        self.assert_ends(done, GOOD)
        self.assertTrue("port" in done.stdout or "no serial port" in done.stderr, done.stdout + done.stderr)

    def test_list_for_programs(self):
        done = self.run_velk(["ports", "--json"])
        self.assert_ends(done, GOOD)
        for port in json.loads(done.stdout):
            self.assertTrue(port["port"].startswith("/dev/"), port)
            self.assertIn("usable", port)

    def test_a_port_by_its_name_alone(self):
        """A link in the current folder; it needs no slash in front."""
        self.line(name="here")
        done = self.run_velk(self.words("read", "here", "PLC_PRG.Running"))
        self.assert_ends(done, GOOD)
        self.assertIn("here: ", done.stderr)

    def test_a_name_that_is_no_port(self):
        done = self.run_velk(self.words("check", "nowhere"))
        self.assert_ends(done, PORT)
        self.assertIn("no serial port is called 'nowhere'", done.stdout)
        self.assertIn("1. the adapter is not plugged in, or got another name", done.stdout)

    def test_wrong_usage(self):
        self.assert_ends(self.run_velk(["ports", "--nonsense"]), USAGE)


if __name__ == "__main__":
    main()

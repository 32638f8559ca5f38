"""velk ports."""

import json

from service import GOOD, USAGE, ServiceTest, main


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

    def test_wrong_usage(self):
        self.assert_ends(self.run_velk(["ports", "--nonsense"]), USAGE)


if __name__ == "__main__":
    main()

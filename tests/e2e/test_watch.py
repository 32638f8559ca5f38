"""velk watch."""

import csv
import json

from service import GOOD, INTERRUPTED, ITEM_NOT_GOOD, PORT, SILENT, USAGE, ServiceTest, main


class Watch(ServiceTest):
    def test_plain_lines_and_figures(self):
        line = self.line()
        done = self.run_velk(self.words("watch", line.link, "PLC_PRG.Counter", "--count", 2, "--every", "1ms"))
        self.assert_ends(done, GOOD)
        self.assertEqual([each.split()[1:] for each in done.stdout.splitlines()],
                         [["PLC_PRG.Counter", "1234567", "good"]] * 2)
        self.assertRegex(done.stderr.splitlines()[-1], r"\d+ frames asked, \d+ answered, 0 failed")

    def test_json_lines_and_a_table_for_spreadsheets(self):
        line = self.line()
        done = self.run_velk(self.words("watch", line.link, "Horn", "--json", "--csv", "horn.csv", "--count", 2,
                                        "--every", "1ms"))
        self.assert_ends(done, GOOD)
        rounds = [json.loads(each) for each in done.stdout.splitlines()]
        self.assertEqual([each["round"] for each in rounds], [1, 2])
        self.assertEqual([each["items"][0]["value"] for each in rounds], [False, False])
        with open(self.folder / "horn.csv", newline="", encoding="utf-8") as file:
            rows = list(csv.DictReader(file))
        self.assertEqual([(row["name"], row["value"]) for row in rows], [("Horn", "false")] * 2)

    def test_a_live_table_redraws_in_place_until_ctrl_c(self):
        line = self.line()
        child = self.type_velk(self.words("watch", line.link, "PLC_PRG.Counter", "--every", "10ms"))
        child.expect("round 1, ")
        child.expect(r"PLC_PRG\.Counter +DINT +1234567 +good")
        child.expect_exact("\x1b[5A")
        child.expect("round 2, ")
        child.sendintr()
        child.expect("frames asked")
        self.assert_exit(child, INTERRUPTED)

    def test_a_missing_variable(self):
        line = self.line()
        done = self.run_velk(self.words("watch", line.link, "Nope", "Horn", "--count", 1))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertIn("Nope - missing", done.stdout)
        self.assertIn("Horn false good", done.stdout)

    def test_an_adapter_that_is_pulled_out_and_comes_back(self):
        line = self.line()
        child = self.type_velk(self.words("watch", line.link, "PLC_PRG.Counter", "--every", "10ms"))
        child.expect("round 3, ")
        line.pull_out()
        child.expect("waiting for the port to come back|trying again")
        line.plug_in()
        child.expect("the port is back")
        child.expect(r"PLC_PRG\.Counter +DINT +1234567 +good")
        child.sendintr()
        child.expect("frames asked")
        self.assert_exit(child, INTERRUPTED)

    def test_interrupted_while_the_adapter_is_away(self):
        line = self.line()
        child = self.type_velk(self.words("watch", line.link, "Horn", "--every", "10ms"))
        child.expect("round 2, ")
        line.pull_out()
        child.expect("trying again")
        child.sendintr()
        self.assert_exit(child, INTERRUPTED)

    def test_wrong_usage(self):
        self.assert_ends(self.run_velk(self.words("watch", "/dev/null", "X", "--every", "often")), USAGE)

    def test_missing_port(self):
        self.assert_ends(self.run_velk(self.words("watch", self.folder / "nowhere", "X")), PORT)

    def test_silent_line(self):
        dead = self.dead_port()
        done = self.run_velk(self.words("watch", dead.port, "X:int", "--timeout", 100, "--repeat", 1, "--count", 1))
        self.assert_ends(done, SILENT)
        self.assertIn("X - failed", done.stdout)


if __name__ == "__main__":
    main()

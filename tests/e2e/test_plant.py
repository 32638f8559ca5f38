"""The example of a plant: three stations on one line, and the project file that belongs to it."""

import json

from service import DEMO, GOOD, ITEM_NOT_GOOD, USAGE, ServiceTest, main

PLANT = DEMO.parent.parent / "examples" / "plant"

FAST = 4_000_000


class Plant(ServiceTest):
    @classmethod
    def setUpClass(cls):
        cls.project = (PLANT / "velk.toml").read_text(encoding="utf-8")

    def setUp(self):
        super().setUp()
        # At a speed at which a busy machine hardly tears a frame.
        self.plc = self.play(PLANT / "line.toml", ["--baud", FAST])
        self.write_project(FAST)

    def write_project(self, baud):
        text = self.project
        for old, new in (('port = "/tmp/plant"', f'port = "{self.plc.link}"'), ("baud = 38400", f"baud = {baud}")):
            self.assertEqual(text.count(old), 1)
            text = text.replace(old, new)
        (self.folder / "velk.toml").write_text(text, encoding="utf-8")

    def test_at_its_own_speed(self):
        self.plc.pull_out()
        self.plc = self.play(PLANT / "line.toml", name="plant")
        self.write_project(38400)
        done = self.run_velk(["symbols", "--node", "conveyor", "--repeat", "10"])
        self.assert_ends(done, GOOD)
        self.assertIn("PLC_PRG.Photocell", done.stdout)

    def test_the_project_file_is_good(self):
        done = self.run_velk(["config", "check"])
        self.assert_ends(done, GOOD)
        self.assertIn("3 stations, 4 tags", done.stdout)

    def test_all_tags(self):
        done = self.run_velk(["read", "-q", "--json"])
        self.assert_ends(done, GOOD)
        self.assertEqual(done.stderr, "")
        read = {each["name"]: each for each in json.loads(done.stdout)}
        self.assertEqual({name: each["station"] for name, each in read.items()},
                         {"speed": "press", "strokes": "press", "temperature": "oven", "pieces": "conveyor"})
        self.assertEqual({each["status"] for each in read.values()}, {"good"})
        self.assertGreaterEqual(read["strokes"]["value"], 1_000_000)
        self.assertTrue(20 <= read["temperature"]["value"] <= 181, read)
        self.assert_quiet()

    def test_variables_by_station(self):
        done = self.run_velk(["read", "PLC_PRG.Setpoint", "oven:PLC_PRG.Setpoint", "conveyor:PLC_PRG.Speed",
                              "oven:PLC_PRG.Zones", "3:PLC_PRG.Pieces"])
        self.assert_ends(done, GOOD)
        for row in (r"press +PLC_PRG\.Setpoint +INT +1200 +good", r"oven +\S*PLC_PRG\.Setpoint +REAL +180(\.0)? +good",
                    r"oven +\S*PLC_PRG\.Zones +ARRAY \[1\.\.3\] OF INT +\[178, 181, 179\] +good",
                    r"conveyor +\S*PLC_PRG\.Speed +INT +\d+ +good"):
            self.assertRegex(done.stdout, row)

    def test_a_missing_variable_of_one_station(self):
        done = self.run_velk(["read", "PLC_PRG.Setpoint", "oven:PLC_PRG.Strokes"])
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertRegex(done.stdout, r"oven +\S*PLC_PRG\.Strokes +- +missing")

    def test_an_unknown_station(self):
        done = self.run_velk(["read", "--node", "boiler", "X"])
        self.assert_ends(done, USAGE)
        self.assertIn("boiler", done.stderr)

    def test_symbols_by_station(self):
        for station, project, name in (("press", 0x50000001, "PLC_PRG.Strokes"),
                                       ("oven", 0x50000002, "PLC_PRG.Zones"),
                                       ("conveyor", 0x50000003, "PLC_PRG.Photocell")):
            done = self.run_velk(["symbols", "--node", station, "--json", "-q"])
            self.assert_ends(done, GOOD)
            document = json.loads(done.stdout)
            self.assertEqual(document["project"], project)
            self.assertIn(name, {each["name"] for each in document["variables"]})
        self.assertIn("PLC_PRG.Strokes", self.run_velk(["symbols"]).stdout, "the station of [defaults]")
        self.assert_quiet()

    def test_watch_all(self):
        done = self.run_velk(["watch", "--json", "--count", "3", "--every", "200ms"])
        self.assert_ends(done, GOOD)
        rounds = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual(len(rounds), 3)
        for each in rounds:
            self.assertEqual([item["status"] for item in each["items"]], ["good"] * 4)
        strokes = [each["items"][1]["value"] for each in rounds]
        self.assertEqual(strokes, sorted(strokes))
        self.assertRegex(done.stderr.splitlines()[-1], r"0 failed; .*; line in use \d+ % of the time")

    def test_what_is_written_to_one_station_moves_it_alone(self):
        done = self.run_velk(["write", "--yes", "oven:PLC_PRG.Setpoint=200.5"])
        self.assert_ends(done, GOOD)
        self.assertRegex(done.stdout, r"PLC_PRG\.Setpoint +REAL +180(\.0)? +200\.5 +200\.5 +took")
        done = self.run_velk(["read", "-q", "--json", "PLC_PRG.Setpoint"])
        self.assertEqual(json.loads(done.stdout)[0]["value"], 1200)

    def test_the_stations_that_are_written_to_are_named(self):
        child = self.type_velk(["write", "-q", "oven:PLC_PRG.Setpoint=5", "PLC_PRG.Setpoint=7"])
        child.expect(r"station +name +type +now +to write")
        child.expect(r"oven +PLC_PRG\.Setpoint +REAL +180(\.0)? +5")
        child.expect(r"press +PLC_PRG\.Setpoint +INT +1200 +7")
        child.expect(r"Write these 2 values to oven and press\? \[y/N\] ")
        child.sendline("y")
        child.expect(r"oven +PLC_PRG\.Setpoint +REAL +180(\.0)? +5 +5(\.0)? +took")
        child.expect(r"press +PLC_PRG\.Setpoint +INT +1200 +7 +7 +took")
        self.assert_exit(child, GOOD)

    def test_one_station_of_several_is_named_too(self):
        child = self.type_velk(["write", "-q", "PLC_PRG.Setpoint=7"])
        child.expect(r"press +PLC_PRG\.Setpoint +INT +1200 +7")
        child.expect(r"Write this value to press\? \[y/N\] ")
        child.sendline("n")
        self.assert_exit(child, ITEM_NOT_GOOD)

    def test_complaints_about_values_name_the_station(self):
        done = self.run_velk(["write", "-q", "-y", "oven:PLC_PRG.Setpoint=5", "PLC_PRG.Setpoint=99999"])
        self.assert_ends(done, USAGE)
        self.assertIn("velk: press:PLC_PRG.Setpoint: '99999' is out of range", done.stderr)
        done = self.run_velk(["write", "-q", "-y", "oven:PLC_PRG.Strokes=5"])
        self.assertIn("velk: oven:PLC_PRG.Strokes: the PLC program has no such variable", done.stderr)

    def test_what_a_key_switch_does_not_take(self):
        done = self.run_velk(["write", "--yes", "PLC_PRG.Mode=4"])
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertIn("not kept", done.stdout)

    def test_check_of_a_station_behind_two_couplers(self):
        done = self.run_velk(["check", "--node", "oven"])
        self.assert_ends(done, GOOD)
        self.assertIn("6 variables", done.stdout)

    def assert_quiet(self):
        """Nothing that the panel has done was wrong."""
        self.plc.pull_out()
        self.assertIn("; 0 complaints", self.plc.said())

    def test_each_description_is_played_alone_too(self):
        for name in ("press", "oven", "conveyor"):
            done = self.run_velk(["plc", PLANT / f"{name}.toml", "--for", "1ms"])
            self.assert_ends(done, GOOD)


if __name__ == "__main__":
    main()

"""velk config check and velk config show."""

from service import GOOD, USAGE, ServiceTest, main

PROJECT = """[line]
port = "/dev/ttyS7"
baud = 9600
framing = "routed"

[defaults]
timeout_ms = 300
station = "oven"

[[station]]
node = 1
name = "press"
byte_order = "big"

[[station]]
node = 2
name = "oven"
byte_order = "little"

[[tag]]
name = "speed"
station = "press"
variable = "PLC_PRG.Speed"
type = "short"

[[tag]]
name = "heat"
variable = "PLC_PRG.Temperature"
"""


class Config(ServiceTest):
    def write(self, text, name="velk.toml"):
        (self.folder / name).write_text(text, encoding="utf-8")

    def test_a_good_file(self):
        self.write(PROJECT)
        done = self.run_velk(["config", "check"])
        self.assert_ends(done, GOOD)
        self.assertEqual(done.stdout, "velk.toml: good; 2 stations, 2 tags\n")
        self.assertEqual(done.stderr, "")

    def test_what_it_stands_for(self):
        self.write(PROJECT, "plant.toml")
        done = self.run_velk(["config", "show", "plant.toml"])
        self.assert_ends(done, GOOD)
        self.assertIn("protType=ABB_RS232_AC", done.stdout)
        self.assertIn("/dev/ttyS7", done.stdout)
        self.assertRegex(done.stdout, r"speed +1\?PLC_PRG\.Speed\?M\?0\?short")
        self.assertRegex(done.stdout, r"heat +2\?PLC_PRG\.Temperature\?.*type comes from the PLC's symbol file")

    def test_every_mistake_with_line_and_column(self):
        self.write('[line]\nport = 5\nbaud = "fast"\nparity = "none"\ncolour = "red"\n\n[[station]]\nnode = 300\n')
        done = self.run_velk(["config", "check"])
        self.assert_ends(done, USAGE)
        self.assertEqual(done.stdout, "")
        lines = done.stderr.splitlines()
        self.assertEqual([line.split(" ")[0] for line in lines],
                         ["velk.toml:2:8:", "velk.toml:3:8:", "velk.toml:5:1:", "velk.toml:8:8:"])
        for line, word in zip(lines, ("port", "baud", "colour", "node")):
            self.assertIn(word, line)

    def test_a_word_that_is_no_port(self):
        self.write('[line]\nport = "usb serial"\n')
        done = self.run_velk(["config", "check"])
        self.assert_ends(done, USAGE)
        self.assertIn("velk.toml:2:8: no serial port is called 'usb serial'", done.stderr)
        for port in ("/dev/ttyUSB77", "/dev/serial/by-id/not-here-now", "com3", "./plc"):
            self.write(f'[line]\nport = "{port}"\n')
            self.assert_ends(self.run_velk(["config", "check"]), GOOD)

    def test_an_unknown_type_is_told_once(self):
        self.write('[[tag]]\nname = "a"\ntype = "strange"\nconversions = ["bcd"]\n')
        done = self.run_velk(["config", "check"])
        self.assert_ends(done, USAGE)
        self.assertEqual(done.stderr.count("strange"), 1, done.stderr)
        self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)

    def test_what_is_no_toml(self):
        self.write("[line\n")
        for command in ("check", "show"):
            done = self.run_velk(["config", command])
            self.assert_ends(done, USAGE)
            self.assertIn("velk.toml:1:", done.stderr)

    def test_a_tag_that_the_driver_does_not_take(self):
        self.write(PROJECT + '\n[[tag]]\nname = "odd"\nvariable = "X"\ntype = "strange"\n')
        done = self.run_velk(["config", "check"])
        self.assert_ends(done, USAGE)
        self.assertRegex(done.stderr, r"velk\.toml:\d+:8: 'strange' is not a data type")

    def test_a_tag_at_a_station_that_is_not_there(self):
        self.write(PROJECT.replace('station = "press"', 'station = "pres"'))
        done = self.run_velk(["config", "check"])
        self.assert_ends(done, USAGE)
        self.assertIn("pres", done.stderr)
        self.assertRegex(done.stderr, r"velk\.toml:\d+:\d+: ")

    def test_two_stations_with_one_name(self):
        self.write(PROJECT.replace('name = "oven"', 'name = "press"'))
        done = self.run_velk(["config", "check"])
        self.assert_ends(done, USAGE)
        self.assertRegex(done.stderr, r"velk\.toml:\d+:\d+: .*press")

    def test_commands_use_the_file_of_their_folder(self):
        self.write('[line]\nport = "/dev/ttyS7"\nbaud = "fast"\n')
        done = self.run_velk(["read", "X"])
        self.assert_ends(done, USAGE)
        self.assertIn("velk.toml:3:8:", done.stderr)

    def test_flags_go_before_the_file(self):
        line = self.line()
        self.write(f'[line]\nport = "{line.link}"\nframing = "routed"\n\n[[station]]\nnode = 0\n'
                   'byte_order = "big"\nblock_size = 1024\n\n[[tag]]\nname = "count"\nvariable = "PLC_PRG.Counter"\n')
        done = self.run_velk(["read", "--framing", "bare"])
        self.assert_ends(done, GOOD)
        self.assertRegex(done.stdout, r"count +DINT +1234567 +good")
        self.assertIn("bare framing", done.stderr)

    def test_after_the_symbols_are_fetched_the_type_is_known(self):
        line = self.line()
        self.write(f'[line]\nport = "{line.link}"\nframing = "bare"\n\n[[station]]\nnode = 0\nbyte_order = "big"\n'
                   'block_size = 1024\n\n[[tag]]\nname = "count"\nvariable = "PLC_PRG.Counter"\n')
        before = self.run_velk(["config", "show"])
        self.assertIn("the type comes from", before.stdout)
        self.assert_ends(self.run_velk(["symbols", "-q"]), GOOD)
        after = self.run_velk(["config", "show"])
        self.assertNotIn("the type comes from", after.stdout)
        self.assertRegex(after.stdout, r"count +0\?PLC_PRG\.Counter\?M\?0\?int")

    def test_wrong_usage(self):
        for words, reason in ((["config"], "missing"), (["config", "chekc"], "chekc"),
                              (["config", "check", "nowhere.toml"], "nowhere.toml"),
                              (["config", "show", "nowhere.toml"], "nowhere.toml"),
                              (["config", "check"], "velk.toml"),
                              (["config", "check", "a.toml", "b.toml"], "b.toml"),
                              (["read", "-f", "nowhere.toml", "X"], "nowhere.toml")):
            done = self.run_velk(words)
            self.assert_ends(done, USAGE)
            self.assertIn(reason, done.stderr)
            self.assertEqual(done.stdout, "")


if __name__ == "__main__":
    main()

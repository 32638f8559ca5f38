"""velk read."""

import csv
import io
import json
import os

from service import GOOD, ITEM_NOT_GOOD, PORT, REFUSED, SILENT, USAGE, ServiceTest, main
from troubles import Troubles


class Read(ServiceTest):
    def test_values_by_name_and_pattern(self):
        line = self.line()
        done = self.run_velk(self.words("read", line.link, "PLC_PRG.Counter", "PLC_PRG.Temp*", "EmergencyStop"))
        self.assert_ends(done, GOOD)
        self.assertRegex(done.stdout, r"PLC_PRG\.Counter +DINT +1234567 +good")
        self.assertRegex(done.stdout, r"PLC_PRG\.Temperature +REAL +36\.6 +good")
        self.assertRegex(done.stdout, r"EmergencyStop +BOOL +false +good")

    def test_values_for_programs(self):
        line = self.line()
        done = self.run_velk(self.words("read", line.link, "-q", "--json", "PLC_PRG.Recipe"))
        self.assert_ends(done, GOOD)
        self.assertIn("Chrome, 12 layers", json.dumps(json.loads(done.stdout)))
        self.assertEqual(done.stderr, "")

    def test_a_missing_variable_beside_a_good_one(self):
        line = self.line()
        done = self.run_velk(self.words("read", line.link, "PLC_PRG.Counter", "PLC_PRG.Countr"))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertIn("1234567", done.stdout)
        self.assertIn("did you mean PLC_PRG.Counter", done.stdout)

    def test_wrong_usage(self):
        self.assert_ends(self.run_velk(self.words("read", "/dev/null", "--baud", "123", "X")), USAGE)

    def test_missing_port(self):
        self.assert_ends(self.run_velk(self.words("read", self.folder / "nowhere", "X")), PORT)

    def test_silent_line(self):
        dead = self.dead_port()
        self.assert_ends(self.run_velk(self.words("read", dead.port, "--timeout", 100, "X")), SILENT)

    def test_garbage_as_from_a_wrong_baud_rate(self):
        dead = self.dead_port()
        process = self.start_velk(self.words("read", dead.port, "--repeat", 1, "X"))
        self.wait_for_request(dead)
        os.write(dead.master, b"\xf8\x00\x3c\x81")
        output, complaints = process.communicate(timeout=60)
        self.assertEqual(process.returncode, REFUSED, output + complaints)
        self.assertIn("line speed", complaints)

    def test_refused_login(self):
        line = self.line(more='fault = [{ kind = "status_word", service = "login" }]')
        self.assert_ends(self.run_velk(self.words("read", line.link, "X")), REFUSED)

    def test_interrupted_while_it_waits(self):
        dead = self.dead_port()
        process = self.start_velk(self.words("read", dead.port, "--timeout", 20000, "X"))
        self.wait_for_request(dead)
        self.interrupt(process)

    def test_adapter_that_is_pulled_out_while_it_waits(self):
        dead = self.dead_port()
        process = self.start_velk(self.words("read", dead.port, "--timeout", 20000, "X"))
        self.wait_for_request(dead)
        dead.pull_out()
        output, complaints = process.communicate(timeout=60)
        self.assertEqual(process.returncode, PORT, output + complaints)


class ReadTroubles(Troubles, ServiceTest):
    def say(self, port, *more):
        return self.words("read", port, *more, "PLC_PRG.Counter")

    def test_bad_quality_of_one_beside_a_good_one(self):
        line = self.line(flags=["--bad-quality", "PLC_PRG.Counter"])
        done = self.run_velk([*self.say(line.link), "PLC_PRG.Mode"])
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertRegex(done.stdout, r"PLC_PRG\.Counter +DINT +- +failed: .*bad quality")
        self.assertRegex(done.stdout, r"PLC_PRG\.Mode +BYTE +3 +good")

    def test_three_of_bad_quality_among_forty_four(self):
        bad = {3, 20, 41}
        line = self.line(program=self.numbers(44), flags=[word for i in bad for word in ("--bad-quality", f"V{i:02}")])
        done = self.run_velk(self.words("read", line.link, "-q", "--json", "V*"))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertEqual([each["value"] for each in json.loads(done.stdout)],
                         [None if i in bad else i for i in range(44)])

    def test_a_pattern_that_finds_nothing(self):
        done = self.run_velk([*self.say(self.line().link), "Nothing*"])
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertRegex(done.stdout, r"Nothing\* .* missing: no variable of the PLC program matches the pattern")

    def test_a_response_that_is_too_short_is_an_answer_that_is_wrong(self):
        line = self.line(flags=["--fault", "kind = 'reply_too_short', service = 'read_list'"])
        done = self.run_velk(self.words("read", line.link, "--repeat", 1, "PLC_PRG.Counter:int"))
        self.assert_ends(done, REFUSED)
        self.assertIn("Rx Buffer dimension exceeded", done.stdout)

    def test_a_value_that_no_response_holds_is_not_asked_for(self):
        done = self.run_velk(self.words("read", self.line().link, "PLC_PRG.Counter:int-30000", "PLC_PRG.Counter"))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertIn("failed: its 120000 bytes are more than the 74993 that fit one response", done.stdout)
        self.assertRegex(done.stdout, r"PLC_PRG\.Counter +DINT +1234567 +good")

    def test_a_value_that_just_fits_no_response_is_not_asked_for(self):
        done = self.run_velk(self.words("read", self.line().link, "PLC_PRG.Counter:unsignedByte-74994"))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertIn("failed: its 74994 bytes are more than the 74993 that fit one response", done.stdout)

    def test_another_type_than_that_of_the_program(self):
        done = self.run_velk(self.words("read", self.line().link, "-q", "--csv", "PLC_PRG.Counter:unsignedByte-4",
                                        "PLC_PRG.Counter:int(swap4)"))
        self.assert_ends(done, GOOD)
        values = [row["value"] for row in csv.DictReader(io.StringIO(done.stdout))]
        self.assertEqual(values, ["[0, 18, 214, 135]", str(int.from_bytes(b"\x87\xd6\x12\x00", "big", signed=True))])


if __name__ == "__main__":
    main()

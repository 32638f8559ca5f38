"""velk write."""

import json

from service import GOOD, ITEM_NOT_GOOD, USAGE, ServiceTest, main
from troubles import Troubles

QUESTION = r"Write this value to the PLC\? \[y/N\] "


class Write(ServiceTest):
    def setUp(self):
        super().setUp()
        self.plc = self.line(program=self.variables())

    def say(self, *more):
        return self.words("write", self.plc.link, *more)

    def assert_written(self, count):
        """So many lists have been written to the PLC."""
        self.plc.pull_out()
        self.assertIn(f"{count} list{'' if count == 1 else 's'} written", self.plc.said())

    def assert_nothing_written(self, done, reason, code=USAGE):
        self.assert_ends(done, code)
        self.assertIn(reason, done.stderr)
        self.assertIn("nothing was written", done.stderr)
        self.assertEqual(done.stdout, "")
        self.assert_written(0)

    def type_question(self):
        child = self.type_velk(self.say("Number=-5"))
        child.expect(r"name +type +now +to write")
        child.expect(r"Number +INT +7 +-5")
        child.expect(QUESTION)
        return child

    def test_yes(self):
        child = self.type_question()
        child.sendline("y")
        child.expect(r"Number +INT +7 +-5 +-5 +took")
        self.assert_exit(child, GOOD)
        self.assert_written(1)

    def test_no(self):
        child = self.type_question()
        child.sendline("n")
        child.expect("nothing was written")
        self.assert_exit(child, ITEM_NOT_GOOD)
        self.assert_written(0)

    def test_an_empty_answer_is_no(self):
        child = self.type_question()
        child.sendline("")
        child.expect("nothing was written")
        self.assert_exit(child, ITEM_NOT_GOOD)
        self.assert_written(0)

    def test_end_of_input_is_no(self):
        child = self.type_question()
        child.sendeof()
        child.expect("nothing was written")
        self.assert_exit(child, ITEM_NOT_GOOD)
        self.assert_written(0)

    def test_ctrl_c_at_the_question(self):
        child = self.type_question()
        self.assert_interrupted(child)
        self.assert_written(0)

    def test_several_values_in_one_question(self):
        child = self.type_velk(self.say("Number=1", "Flag=true"))
        child.expect(r"Write these 2 values to the PLC\? \[y/N\] ")
        child.sendline("YES")
        child.expect(r"Number +INT +7 +1 +1 +took")
        child.expect(r"Flag +BOOL +false +true +true +took")
        self.assert_exit(child, GOOD)
        self.assert_written(1)

    def test_without_a_terminal_it_needs_a_yes(self):
        done = self.run_velk(self.say("Number=1"), "y\n")
        self.assert_ends(done, USAGE)
        self.assertIn("--yes", done.stderr)
        self.assert_written(0)

    def test_bits_texts_and_arrays(self):
        done = self.run_velk(self.say("-q", "--yes", "--json", "Lamp:bit=1", "Text=neu", "List=[4, 3, -2, 1]",
                                      "Share=-0.25", "Flag=TRUE"))
        self.assert_ends(done, GOOD)
        self.assertEqual(done.stderr, "")
        found = {each["variable"]: (each["before"], each["written"], each["after"], each["took"])
                 for each in json.loads(done.stdout)}
        self.assertEqual(found, {"Lamp": (False, True, True, True), "Text": ("old", "neu", "neu", True),
                                 "List": ([1, 2, 3, 4], [4, 3, -2, 1], [4, 3, -2, 1], True),
                                 "Share": (0.5, -0.25, -0.25, True), "Flag": (False, True, True, True)})
        done = self.run_velk(self.words("read", self.plc.link, "-q", "--json", "Lamp:bit",
                                        "Neighbour:bit", "Text", "List"))
        self.assertEqual([each["value"] for each in json.loads(done.stdout)], [True, True, "neu", [4, 3, -2, 1]])

    def test_a_bit_leaves_its_neighbours_alone(self):
        self.assert_ends(self.run_velk(self.say("-y", "Lamp:bit=1")), GOOD)
        self.assert_ends(self.run_velk(self.say("-y", "Neighbour:bit=0")), GOOD)
        done = self.run_velk(self.words("read", self.plc.link, "-q", "--json", "Lamp:bit",
                                        "Neighbour:bit"))
        self.assertEqual([each["value"] for each in json.loads(done.stdout)], [True, False])

    def test_a_text_with_blanks_quotes_and_an_equals_sign(self):
        done = self.run_velk(self.say("-q", "-y", "--json", 'Text="a = \"b\""'))
        self.assert_ends(done, GOOD)
        self.assertEqual(json.loads(done.stdout)[0]["after"], 'a = "b"')

    def test_a_variable_that_does_not_take_it(self):
        done = self.run_velk(self.say("--yes", "Fixed=13"))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertRegex(done.stdout, r"Fixed +INT +12 +13 +12 +did not take")
        self.assert_written(1)

    def test_one_that_takes_it_beside_one_that_does_not(self):
        done = self.run_velk(self.say("--yes", "Number=13", "Fixed=13"))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertRegex(done.stdout, r"Number +INT +7 +13 +13 +took")
        self.assertRegex(done.stdout, r"Fixed +INT +12 +13 +12 +did not take")

    def test_beyond_the_range(self):
        self.assert_nothing_written(self.run_velk(self.say("-y", "Number=32768")), "-32768..32767")

    def test_below_the_range(self):
        self.assert_nothing_written(self.run_velk(self.say("-y", "Small=-1")), "0..255")

    def test_one_wrong_value_keeps_all_from_being_written(self):
        self.assert_nothing_written(self.run_velk(self.say("-y", "Flag=1", "Number=many")), "'many'")

    def test_no_boolean(self):
        self.assert_nothing_written(self.run_velk(self.say("-y", "Flag=2")), "not a boolean")

    def test_a_text_that_is_too_long(self):
        self.assert_nothing_written(self.run_velk(self.say("-y", "Text=12345678901")), "there is room for 10")

    def test_an_array_of_another_length(self):
        self.assert_nothing_written(self.run_velk(self.say("-y", "List=[1, 2, 3]")), "3 elements instead of 4")

    def test_an_element_beyond_its_range(self):
        self.assert_nothing_written(self.run_velk(self.say("-y", "List=[1, 2, 3, 40000]")), "40000")

    def test_a_missing_variable_keeps_all_from_being_written(self):
        done = self.run_velk(self.say("-y", "Number=1", "Numbr=2"))
        self.assert_nothing_written(done, "did you mean Number", ITEM_NOT_GOOD)

    def test_wrong_usage(self):
        for words, reason in ((["-y"], "missing"), (["-y", "Number"], "NAME=VALUE"), (["-y", "=1"], "NAME=VALUE"),
                              (["-y", "Num*=1"], "single variables"),
                              (["-y", "Number=1", "number=2"], "written twice")):
            done = self.run_velk(self.say(*words))
            self.assert_ends(done, USAGE)
            self.assertIn(reason, done.stderr)
        self.assert_written(0)


class WriteTroubles(Troubles, ServiceTest):
    def say(self, port, *more):
        return self.words("write", port, *more, "--yes", "PLC_PRG.Counter=1")

    def test_trouble_bad_quality(self):
        line = self.line(flags=["--bad-quality", "PLC_PRG.Counter"])
        done = self.run_velk(self.say(line.link))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertIn("bad quality", done.stderr)
        line.pull_out()
        self.assertIn("0 lists written", line.said())

    def test_trouble_refused_write(self):
        line = self.line(more='fault = [{ kind = "status_word", service = "write_list" }]')
        done = self.run_velk(self.say(line.link))
        self.assertNotEqual(done.returncode, GOOD)
        self.assertRegex(done.stdout, r"1234567 +1 +1234567 +failed: ")


if __name__ == "__main__":
    main()

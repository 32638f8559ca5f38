"""velk write."""

import json
import os
import shutil
import signal

from service import GOOD, INTERRUPTED, ITEM_NOT_GOOD, PORT, REFUSED, SILENT, USAGE, ServiceTest, main
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
        self.assertIn("nothing was written", child.before)
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
        found = {each["variable"]: (each["before"], each["to_write"], each["after"], each["took"])
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
        self.assertRegex(done.stdout, r"Fixed +INT +12 +13 +12 +not kept")
        self.assert_written(1)

    def test_one_that_takes_it_beside_one_that_does_not(self):
        done = self.run_velk(self.say("--yes", "Number=13", "Fixed=13"))
        self.assert_ends(done, ITEM_NOT_GOOD)
        self.assertRegex(done.stdout, r"Number +INT +7 +13 +13 +took")
        self.assertRegex(done.stdout, r"Fixed +INT +12 +13 +12 +not kept")

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

    def test_an_element_of_an_array(self):
        done = self.run_velk(self.say("-y", "List[1]=5"))
        self.assert_nothing_written(done, "the elements of an array can only be read with the whole array, List",
                                    ITEM_NOT_GOOD)

    def test_a_present_value_that_the_type_cannot_show(self):
        for number in (1234, 4321):  # 16#FFFF is no packed decimal, 1234 is
            child = self.type_velk(self.say("Word:unsignedShort(bcd)=%d" % number))
            if number == 1234:
                child.expect(r"Word: the present value cannot be shown as unsignedShort\(bcd\)")
                child.expect(r"Word +unsignedShort\(bcd\) +- +1234")
            else:
                child.expect(r"Word +unsignedShort\(bcd\) +1234 +4321")
            child.expect(QUESTION)
            child.sendline("y")
            child.expect(rf"Word +unsignedShort\(bcd\) +\S+ +{number} +{number} +took")
            self.assert_exit(child, GOOD)

    def test_a_present_value_that_the_type_cannot_show_is_null(self):
        done = self.run_velk(self.say("-q", "-y", "--json", "Number=8", "Word:unsignedShort(bcd)=99"))
        self.assert_ends(done, GOOD)
        self.assertEqual([(each["before"], each["after"], each["written"]) for each in json.loads(done.stdout)],
                         [(7, 8, True), (None, 99, True)])

    def test_a_value_that_cannot_be_converted(self):
        done = self.run_velk(self.say("-y", "Number=1", "Word:unsignedShort(bcd)=12345"))
        self.assert_nothing_written(done, "'12345' cannot be converted to unsignedShort(bcd)")

    def test_wrong_usage(self):
        for words, reason in ((["-y"], "missing"), (["-y", "Number"], "NAME=VALUE"), (["-y", "=1"], "NAME=VALUE"),
                              (["-y", "Num*=1"], "single variables"),
                              (["-y", "Number=1", "number=2"], "written twice")):
            done = self.run_velk(self.say(*words))
            self.assert_ends(done, USAGE)
            self.assertIn(reason, done.stderr)
        self.assert_written(0)


class LostOnTheWay(ServiceTest):
    """What is told of a value when the exchange does not come to its end."""

    def start_line(self, faults="", flags=()):
        self.plc = self.line(program=self.variables(), more=f"fault = [{faults}]" if faults else "", flags=flags)

    def ask(self, *more, answer="y"):
        """Types the command and an answer to its question."""
        child = self.type_velk(self.words("write", self.plc.link, "-q", *more, "Number=8"))
        child.expect(QUESTION)
        if answer:
            child.sendline(answer)
        return child

    def run_json(self, code, *more):
        done = self.run_velk(self.words("write", self.plc.link, "-q", "-y", "--json", *more, "Number=8"))
        self.assert_ends(done, code)
        each, = json.loads(done.stdout)
        return each, done.stderr

    def freeze(self):
        """The PLC hears nothing until the test is over."""
        process = self.plc.process
        process.send_signal(signal.SIGSTOP)
        self.addCleanup(os.kill, process.pid, signal.SIGCONT)  # runs before it is pulled out

    def read_number(self):
        done = self.run_velk(self.words("read", self.plc.link, "-q", "--json", "Number"))
        return json.loads(done.stdout)[0]["value"]

    def test_ctrl_c_behind_the_write(self):
        self.start_line('{ kind = "block_missing", service = "write_list" }')
        child = self.ask("--timeout", "20000")
        self.plc.wait_until_said("list written")
        self.assert_interrupted(child)
        self.assertRegex(child.before, r"Number +INT +7 +8 +- +not known whether it was written: read it\s*$")
        self.assertEqual(self.read_number(), 8)

    def test_ctrl_c_before_the_write(self):
        self.start_line('{ kind = "ack_missing", service = "link_check", nth = 3, count = 100 }')
        child = self.ask("--timeout", "20000")
        self.plc.wait_until_said("fault injected")
        self.assert_interrupted(child)
        self.assertRegex(child.before, r"Number +INT +7 +8 +- +not written\s*$")

    def test_ctrl_c_in_the_read_back(self):
        self.start_line('{ kind = "block_missing", service = "read_list", nth = 3, count = 100 }')
        child = self.ask("--timeout", "20000")
        self.plc.wait_until_said("list written")
        self.plc.wait_until_said("list read", 3)
        self.assert_interrupted(child)
        self.assertRegex(child.before, r"Number +INT +7 +8 +- +written, not read back\s*$")

    def test_ctrl_c_as_json(self):
        self.start_line('{ kind = "block_missing", service = "write_list" }')
        process = self.start_velk(self.words("write", self.plc.link, "-q", "-y", "--json", "--timeout", "20000",
                                             "Number=8"))
        self.plc.wait_until_said("list written")
        output, complaints = self.interrupt(process)
        self.assertEqual(complaints, "")
        each, = json.loads(output)
        self.assertEqual((each["to_write"], each["after"], each["written"], each["took"]), (8, None, None, False))

    def test_port_that_goes_away_behind_the_write(self):
        self.start_line('{ kind = "block_missing", service = "write_list" }')
        child = self.ask("--timeout", "20000")
        self.plc.wait_until_said("list written")
        self.plc.pull_out()
        child.expect(r"Number +INT +7 +8 +- +not known whether it was written: read it\s")
        child.expect("the serial port .* has gone away")
        self.assert_exit(child, PORT)

    def test_port_that_goes_away_at_the_question(self):
        self.start_line()
        child = self.ask(answer="")
        self.plc.pull_out()
        child.sendline("y")
        child.expect(r"Number +INT +7 +8 +- +not written\s")
        child.expect("the serial port .* has gone away")
        self.assert_exit(child, PORT)

    def test_port_that_goes_away_before_the_question(self):
        self.start_line('{ kind = "block_missing", service = "read_list" }')
        process = self.start_velk(self.words("write", self.plc.link, "-y", "--timeout", "20000", "Number=8"))
        self.plc.wait_until_said("list read")
        self.plc.pull_out()
        output, complaints = process.communicate(timeout=60)
        self.assertEqual((process.returncode, output), (PORT, ""))
        self.assertRegex(complaints, "has gone away.*: nothing was written")

    def test_an_answer_that_is_lost(self):
        for kind in ("block_missing", "closing_missing"):
            with self.subTest(kind):
                self.start_line('{ kind = "%s", service = "write_list" }' % kind)
                each, complaints = self.run_json(GOOD, "--timeout", "200")
                self.assertRegex(each["result"], r"^no answer \(Timeout on .*\), but the PLC has the value$")
                self.assertEqual((each["after"], each["written"], each["took"]), (8, True, True))
                self.assertEqual(complaints, "")
                self.plc.pull_out()

    def test_a_plc_that_falls_silent_at_the_question(self):
        self.start_line()
        child = self.ask("--timeout", "200", answer="")
        self.freeze()
        child.sendline("y")
        child.expect(r"name +type +before +to write +after +result")
        child.expect(r"Number +INT +7 +8 +- +not written: Timeout on Acknowledge")
        child.expect("velk:.* Timeout on Acknowledge. Bytes were received, then nothing more")
        self.assert_exit(child, SILENT)

    def test_a_write_that_is_refused(self):
        self.start_line('{ kind = "status_word", service = "write_list" }')
        each, complaints = self.run_json(REFUSED)
        self.assertRegex(each["result"], "^failed: Wrong reply length or ack in WriteData operation")
        self.assertEqual((each["after"], each["written"], each["took"]), (7, False, False))
        self.assertIn("The line works: likely the PLC has restarted", complaints)


class OtherProgram(ServiceTest):
    """The PLC's program is replaced while the question waits."""

    def setUp(self):
        super().setUp()
        self.other = self.folder / "other.toml"
        self.other.write_text('project_id = 5\nvariable = [{ name = "Number", type = "REAL", value = 1.5 }]\n')

    def test_replaced_while_the_question_waits(self):
        for words in (["Number=8"], ["Number:short=8"]):
            with self.subTest(words):
                plc = self.line(program=self.variables(), flags=["--replace-program", f"4s:{self.other}"])
                child = self.type_velk(self.words("write", plc.link, "-q", *words))
                child.expect(r"Number +\S+ +7 +8")
                child.expect(QUESTION)
                plc.wait_until_said("program changed")
                child.sendline("y")
                child.expect(r"Number +\S+ +7 +8 +- +not written: the PLC's program was replaced\s")
                child.expect("velk:.* the program of the PLC was replaced: run the command again")
                self.assert_exit(child, REFUSED)
                plc.pull_out()
                self.assertIn("0 lists written", plc.said())
                plc.output.unlink()
                shutil.rmtree(self.folder / "state")

    def test_symbols_that_change_while_the_question_waits(self):
        other = self.line(program=self.other)
        self.assert_ends(self.run_velk(self.words("read", other.link, "Number")), GOOD)
        other.pull_out()
        file, = (self.folder / "state").rglob("*.sdb")
        shutil.move(file, self.folder / "other.sdb")
        plc = self.line(program=self.variables())
        child = self.type_velk(self.words("write", plc.link, "-q", "Number=8"))
        child.expect(QUESTION)
        shutil.copy(self.folder / "other.sdb", file)
        child.sendline("y")
        child.expect("the program of the PLC was replaced: nothing was written; run the command again")
        self.assert_exit(child, ITEM_NOT_GOOD)


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

"""Who is calling: what becomes of the name and number in the first line of a call."""
import time

import sound
from program import RECORDING, ProgramTestCase, main
from sip_caller import Call

CONTACTS = """[1]
Name=Other Person
Phone=5550000
[2]
Name=John Book
Phone=
Mobile=5557777
"""


class Callers(ProgramTestCase):
    HOME = {"contacts": CONTACTS}

    def call_from(self, caller):
        """Name and number in the message's record, and the entries of this call in the log of calls."""
        logged = len(self.home.calls())
        with Call(self.program.port, caller) as call:
            call.answered()
            self.wait_for_log(RECORDING)
            call.voice.say(sound.voice(0.4))
            call.hang_up()
        _, record = self.new_message()
        return record["Name"], record["Number"], [entry[:2] for entry in self.home.calls()[logged:]]

    def test_a_caller_who_hides_is_unknown(self):
        name, number, logged = self.call_from('"Anonymous" <sip:anonymous@anonymous.invalid>')
        self.assertEqual((name, number), ("Unknown", "Unknown"))
        self.assertIn(["Unknown", "Unknown"], logged)

    def test_a_name_beyond_ascii_is_kept(self):
        name, number, logged = self.call_from('"J\u00fcrgen \u00d1and\u00fa \u65e5\u672c" <sip:%2B49301234@127.0.0.1>')
        self.assertEqual((name, number), ("J\u00fcrgen \u00d1and\u00fa \u65e5\u672c", "+49301234"))
        self.assertEqual(logged, [[name, number]])

    def test_a_quoted_name_loses_its_quotes_only(self):
        name, number, _ = self.call_from(r'"O\"Neil, Jr. [x]=y;z \\" <sip:5550199@127.0.0.1;user=phone>')
        self.assertEqual((name, number), ('O"Neil, Jr. [x]=y;z \\', "5550199"))

    def test_a_name_can_not_write_a_second_line(self):
        name, number, _ = self.call_from('"A%0D%0A[B]" <sip:555%0D%0AName=x@127.0.0.1>')
        self.assertNotIn("B", self.home.messages())
        self.assertNotIn("\n", number)
        self.assertTrue(name.startswith("A"))

    def test_a_contact_fills_the_gap_of_a_missing_name(self):
        name, number, logged = self.call_from("<sip:5557777@127.0.0.1>")
        self.assertEqual((name, number), ("John Book", "5557777"))
        self.assertEqual(logged, [["John Book", "5557777"]])

    def test_a_name_from_the_line_wins_over_the_contact(self):
        self.assertEqual(self.call_from('"Line Name" <sip:5557777@127.0.0.1>')[:2], ("Line Name", "5557777"))


class Digits(ProgramTestCase):
    def test_digits_by_signalling_are_heard_once_each(self):
        with Call(self.program.port) as call:
            call.answered()
            self.wait_for_log(RECORDING)
            for key in "5#":
                call.voice.press(key)
                self.wait_for_log(f"DTMF: {key}")
            time.sleep(0.3)  # a repeated end of an event would come now
            call.hang_up()
        self.new_message()
        told = [line.strip()[-1] for line in self.program.log[self.mark :] if "DTMF: " in line]
        self.assertEqual(told, ["5", "#"])

    def test_digits_in_the_sound_are_heard(self):
        with Call(self.program.port, events=False) as call:
            call.answered()
            self.wait_for_log(RECORDING)
            for key in "7*":
                call.voice.say(sound.keypad_tone(key))
                self.wait_for_log(f"DTMF: {key}")
            call.hang_up()
        self.new_message()


if __name__ == "__main__":
    main()

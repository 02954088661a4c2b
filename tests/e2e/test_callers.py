"""Who is calling: what becomes of the name and number in the first line of a call."""
import time

import sound
from program import RECORDING, ProgramTestCase
from sip_caller import Call, leave_message

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
        leave_message(self.program, sound.voice(0.4), caller)
        _, record = self.new_message()
        return record["Name"], record["Number"], [entry[:2] for entry in self.home.calls()[logged:]]

    def test_name_and_number_are_kept_as_they_came(self):
        for caller, *known in (
                ('"J\u00fcrgen \u00d1and\u00fa \u65e5\u672c" <sip:%2B49301234@127.0.0.1>',
                 "J\u00fcrgen \u00d1and\u00fa \u65e5\u672c", "+49301234"),
                (r'"O\"Neil, Jr. [x]=y;z \\" <sip:5550199@127.0.0.1;user=phone>', 'O"Neil, Jr. [x]=y;z \\', "5550199"),
                ("<sip:5557777@127.0.0.1>", "John Book", "5557777"),  # the contact fills the gap
                ('"Line Name" <sip:5557777@127.0.0.1>', "Line Name", "5557777")):
            with self.subTest(caller):
                name, number, logged = self.call_from(caller)
                self.assertEqual([name, number], known)
                self.assertEqual(logged, [known])

    def test_a_caller_who_hides_is_unknown(self):
        name, number, logged = self.call_from('"Anonymous" <sip:anonymous@anonymous.invalid>')
        self.assertEqual((name, number), ("Unknown", "Unknown"))
        self.assertIn(["Unknown", "Unknown"], logged)

    def test_a_name_can_not_write_a_second_line(self):
        name, number, _ = self.call_from('"A%0D%0A[B]" <sip:555%0D%0AName=x@127.0.0.1>')
        self.assertNotIn("B", self.home.messages())
        self.assertNotIn("\n", number)
        self.assertTrue(name.startswith("A"))


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

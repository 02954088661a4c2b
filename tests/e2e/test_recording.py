"""What the caller says is what the message holds, and what the greeting holds is what the caller hears."""
import time

import sound
from program import RECORDING, ProgramTestCase
from sip_caller import Call, leave_message

GREETING = sound.voice(1.5, seed=2)
SPEECH = sound.voice(9.4, seed=3)


class OnACleanNetwork(ProgramTestCase):
    # A silence limit that is far shorter than the speech: who never pauses is never cut off.
    HOME = {"greeting": GREETING, "settings": {"RecordingSilenceLength": 1500, "AutoAnswerRingCount": 3}}

    def test_a_call_from_the_first_ring_to_the_complete_entry(self):
        with Call(self.program.port) as call:
            call.wait_for(180)
            call.answered()
            self.wait_for_log("New call. Ringing: 3")
            self.wait_for_log(RECORDING)
            call.voice.say(SPEECH)
            said = time.monotonic()
            self.assertTrue(call.ended.wait(10), "silence did not end the call")
            self.assertGreater(call.ended_at - said, 1.3)
            self.assertLess(call.ended_at - said, 4.0)
            heard = call.voice.heard()
        name, record = self.new_message()

        sound.assert_arrived(GREETING, heard, 0.999)
        recorded = sound.read_wave(self.home.inbox / name)
        speech = sound.assert_arrived(SPEECH, recorded, 0.999)
        self.assertLess(abs(speech.level_db), 0.05, speech)

        self.assertRegex(name, r"^Msg\d{12}\d+\.wav$")
        self.assertEqual(list(record), ["Name", "Number", "Date", "Time", "Read", "Mode", "Device", "Size", "Length"])
        self.assertEqual((record["Name"], record["Number"]), ("Jane Sample", "5551234"))
        self.assertEqual((record["Read"], record["Mode"]), ("False", "Auto"))
        self.assertEqual(record["Device"], name[15:-4])
        self.assertEqual(int(record["Size"]), (self.home.inbox / name).stat().st_size)
        self.assertAlmostEqual(int(record["Length"]), len(recorded) * 1000 / sound.RATE, delta=1)
        stamp = time.strptime(record["Date"] + record["Time"], "%m/%d/%Y%H:%M:%S")
        self.assertAlmostEqual(time.mktime(stamp), time.mktime(time.strptime(name[3:15], "%d%m%y%H%M%S")), delta=1)

        caller, number, date, clock = self.home.calls()[-1]
        self.assertEqual((caller, number), ("Jane Sample", "5551234"))
        self.assertRegex(date, r"^\d\d/\d\d/\d\d$")
        self.assertRegex(clock, r"^(0[1-9]|1[0-2]):\d\d:\d\d [AP]M$")


class OnABadNetwork(ProgramTestCase):
    def test_what_is_lost_is_concealed_and_nothing_else_is_missing(self):
        lost = leave_message(self.program, SPEECH, after=0.5, loss=0.03, jitter=0.03).voice.lost
        name, _ = self.new_message()
        recorded = sound.read_wave(self.home.inbox / name)
        self.assertGreater(lost, 8)
        exact = sound.Comparison(SPEECH, recorded)
        self.assertLessEqual(exact.damaged, lost + 2, exact)
        # Concealed well, a lost frame errs by less than a quarter of its energy.
        audible = sound.Comparison(SPEECH, recorded, good_db=6.0)
        self.assertLessEqual(audible.damaged, 12, audible)

"""Calls that end before anything is recorded, and calls that are refused."""
import time

import sound
from program import RECORDING, ProgramTestCase, eventually
from sip_caller import Call


class WithAGreeting(ProgramTestCase):
    HOME = {"greeting": sound.voice(4, seed=2)}

    def test_hanging_up_in_the_greeting_leaves_no_message(self):
        with Call(self.program.port) as call:
            call.answered()
            eventually(lambda: len(call.voice.heard()) > sound.RATE // 2, "the greeting")
            call.hang_up()
        self.wait_for_log("Idle")
        time.sleep(0.5)  # a recording that starts by mistake would start by now
        self.assertEqual(len(self.home.messages()), self.before)
        self.assertEqual(len(list(self.home.inbox.glob("*.wav"))), self.before)
        self.assertEqual(self.home.calls()[-1][:2], ["Jane Sample", "5551234"])

    def test_a_second_call_is_refused_and_does_not_disturb_the_first(self):
        with Call(self.program.port) as first:
            first.answered()
            with Call(self.program.port, '"Second" <sip:5559999@127.0.0.1>') as second:
                second.wait_for(486)
            self.wait_for_log(RECORDING)
            speech = sound.voice(1, seed=5)
            first.voice.say(speech)
            time.sleep(0.3)
            first.hang_up()
        name, record = self.new_message()
        self.assertEqual(record["Number"], "5551234")
        sound.assert_arrived(speech, sound.read_wave(self.home.inbox / name))


class NobodyAnswers(ProgramTestCase):
    HOME = {"settings": {"AutoAnswerIncoming": 0}}

    def test_a_caller_who_gives_up_is_logged_and_leaves_no_message(self):
        with Call(self.program.port) as call:
            call.wait_for(180)
            self.wait_for_log("New call. Ringing: 3")
            call.cancel()
        self.wait_for_log("Idle")
        self.assertEqual([entry[:2] for entry in self.home.calls()], [["Jane Sample", "5551234"]])
        self.assertEqual(self.home.messages(), {})
        rings = sum("Ringing" in line for line in self.program.log)
        time.sleep(0.8)  # one more ring, were it still ringing
        self.assertEqual(sum("Ringing" in line for line in self.program.log), rings)
        with Call(self.program.port) as call:  # the line is free again
            call.wait_for(180)
            call.cancel()

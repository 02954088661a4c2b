"""Calls that the user takes: by keys, at a screen, through microphone and loudspeaker."""
import numpy as np

import sip_caller
import sound
from baresip import Baresip
from desk import SoundTestCase
from program import RECORDING, eventually

FAR = sound.voice(5, seed=11)
NEAR = sound.voice(5, seed=12)


class Conversation(SoundTestCase):
    def setUp(self):
        super().setUp()
        self.start(settings={"KeyTones": 0, "AutoAnswerRingCount": 9}, greeting=sound.voice(1, seed=2))

    def test_dial_talk_and_record(self):
        far = self.enterContext(Baresip(np.concatenate([sound.silence(9), FAR, sound.silence(30)]),
                                        "<sip:far@127.0.0.1>;regint=0;answermode=auto;audio_codecs=PCMU"))
        far.wait_for_calls()
        self.screen.window("Kelmio Standard")
        self.screen.key("alt+t", "Down", "Return")
        self.screen.window("Dialer")
        self.screen.type(f"sip:far@127.0.0.1:{far.port}")
        before = len(self.desk.heard())
        mark = self.program.mark()
        self.screen.key("Return")
        self.program.wait_for_log("Connected", mark)
        self.screen.key(*["shift+Tab"] * 5, "space")  # Record
        self.program.wait_for_log(RECORDING)
        self.desk.speak(NEAR)
        eventually(lambda: len(self.desk.heard()) - before > 15 * sound.RATE, "the far voice at the loudspeaker")
        mark = self.program.mark()
        self.screen.key("shift+Tab", "space")  # Drop: its neighbour can't be pressed any more
        self.program.wait_for_log("Line: Idle", mark)
        self.screen.key("Escape")
        self.screen.no_window("Dialer")
        [(name, record)] = self.home.complete_messages(1)
        self.assertEqual((record["Mode"], record["Name"]), ("Manual", "Unknown"))
        far.end()
        recorded = sound.read_wave(self.home.inbox / name)
        self.assert_same_voice(FAR, self.desk.heard()[before:], "far voice at the loudspeaker")
        self.assert_same_voice(NEAR, far.heard(), "near voice at the far end")
        self.assert_same_voice(FAR, recorded, "far voice in the recording")
        self.assert_same_voice(NEAR, recorded, "near voice in the recording")

    def test_the_machine_answers_with_the_microphone_closed(self):
        with sip_caller.Call(self.program.port) as call:
            call.answered()
            call.voice.say(sound.voice(3, seed=3))
            self.program.wait_for_log(RECORDING)
            self.assertEqual(self.desk.listeners(), 0)
            call.hang_up()
        self.home.complete_messages(1)

    def test_who_takes_a_call_speaks_on_it_to_its_end(self):
        with sip_caller.Call(self.program.port) as call:
            self.program.wait_for_log("Ring 1")
            self.screen.window("Kelmio Standard")
            self.screen.key("alt+a", "Return")  # Action, Answer
            call.answered()
            eventually(lambda: self.desk.listeners() == 1, "an open microphone")
            self.desk.speak(NEAR)
            call.hang_up()
            self.assert_same_voice(NEAR, call.voice.heard(), "near voice at the far end")
        eventually(lambda: self.desk.listeners() == 0, "a closed microphone")
        self.assertEqual(self.home.messages(), {}, "nobody asked for a recording")

    def assert_same_voice(self, said, heard, what):
        # The microphone's way leads through noise suppression and gain control, which keep the voice, not its wave.
        self.assertTrue(sound.same_voice(said, heard, 0.5), what)

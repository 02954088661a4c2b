"""A program that ends in the middle of a recording, in a good way and in a bad one."""
import signal
import time
import unittest

import sound
from program import RECORDING, Home, Program, eventually
from sip_caller import Call

SECONDS = 3.0


class InTheMiddleOfARecording(unittest.TestCase):
    def setUp(self):
        self.home = self.enterContext(Home())
        self.speech = sound.voice(SECONDS, seed=6)

    def end_while_recording(self, how):
        with Program(self.home) as program, Call(program.port) as call:
            call.answered()
            program.wait_for_log(RECORDING)
            call.voice.say(self.speech)
            time.sleep(0.2)  # what the jitter buffer still holds
            return program.stop(how)

    def assert_playable(self, at_least):
        """The only message is complete, and its sound is the speech from its beginning for `at_least` seconds."""
        [(name, record)] = self.home.complete_messages(1)
        recorded = sound.read_wave(self.home.inbox / name)
        self.assertEqual(int(record["Size"]), (self.home.inbox / name).stat().st_size)
        self.assertAlmostEqual(int(record["Length"]), len(recorded) * 1000 / sound.RATE, delta=1)
        sound.assert_arrived(self.speech[: int(at_least * sound.RATE)], recorded)

    def test_a_kill_costs_at_most_the_last_second(self):
        self.assertEqual(self.end_while_recording(signal.SIGKILL), -signal.SIGKILL)
        with Program(self.home):
            self.assert_playable(SECONDS - 1.0)

    def test_the_end_by_signal_files_the_message(self):
        self.assertEqual(self.end_while_recording(signal.SIGTERM), 0)
        with Program(self.home):
            self.assert_playable(SECONDS)

    def test_every_signal_of_a_session_s_end_is_an_exit(self):
        for how in (signal.SIGINT, signal.SIGHUP):
            with Program(self.home) as program:
                self.assertEqual(program.stop(how), 0, how)

    def test_a_recording_that_never_began_leaves_no_entry_behind(self):
        # As a crash between the entry and its file leaves it.
        self.home.inbox.mkdir(parents=True)
        index = self.home.inbox / "Messages.ini"
        index.write_text("[Msg0101260000001.wav]\r\nName=Gone\r\nSize=-1\r\nLength=-1\r\n", newline="")
        with Program(self.home):
            eventually(lambda: not self.home.messages(), "the healing of the index")

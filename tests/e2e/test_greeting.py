"""The greeting, recorded in the settings window: what was said at the microphone is what a caller hears."""
import threading
import unittest

import numpy as np

import sip_caller
import sound
from desk import Screen, SoundDesk
from program import RECORDING, Home, Program, eventually, main

WORDS = sound.voice(3, seed=21)
SAME_SOUND = 0.9  # nothing but the clocks lies between


class Greeting(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.screen = Screen()
        cls.addClassCleanup(cls.screen.close)
        cls.desk = SoundDesk()
        cls.addClassCleanup(cls.desk.close)

    def setUp(self):
        self.home = Home(settings={"AutoAnswerRingCount": 1}, greeting=sound.voice(1, seed=2))
        self.addCleanup(self.home.remove)
        self.program = Program(self.home, surroundings=self.screen.environment() | self.desk.environment())
        self.addCleanup(self.program.stop)
        self.file = self.home.path / "Sound" / "Greeting.wav"
        self.old = self.file.read_bytes()

    def test_is_recorded_listened_to_and_heard_by_a_caller(self):
        settings = self.start_recording()
        self.assertEqual(self.level(settings), 0)
        speaker = threading.Thread(target=self.desk.speak, args=(WORDS,))
        speaker.start()
        eventually(lambda: self.level(settings) > 10, "a level that moves")
        speaker.join()
        self.assertEqual(self.file.read_bytes(), self.old, "the old greeting stands until the new one is saved")
        self.screen.key("space")  # Stop: its neighbours can't be pressed any more
        self.recorded()
        eventually(lambda: self.level(settings) == 0, "a level at rest")

        before = len(self.desk.heard())
        self.screen.key("shift+Tab", "space")  # Play
        eventually(lambda: self.same(WORDS, self.desk.heard()[before:]), "the greeting at the loudspeaker")
        self.screen.key("Return")  # Apply
        self.screen.no_window("Settings")
        self.assertEqual(self.home.setting("GreetingFile"), str(self.file))

        with sip_caller.Call(self.program.port) as call:
            call.answered()
            self.program.wait_for_log(RECORDING)
            heard = call.voice.heard()
            call.hang_up()
        compared = sound.Comparison(sound.read_wide_wave(self.file), heard)
        self.assertGreater(compared.correlation, 0.98, str(compared))
        self.assertTrue(self.same(WORDS, heard), sound.pieces_alike(WORDS, heard))

    def test_is_saved_when_the_window_is_closed_meanwhile(self):
        self.start_recording()
        self.desk.speak(WORDS)
        self.screen.key("Escape")
        self.screen.no_window("Settings")
        self.recorded()

    def start_recording(self):
        self.screen.window("Kelmio Standard")
        self.screen.key("alt+t", "Return")
        settings = self.screen.window("Settings")
        self.screen.key("ctrl+Tab", "ctrl+Tab", *["shift+Tab"] * 9, "space")
        eventually(lambda: self.desk.listeners() == 1, "an open microphone")
        return settings

    def recorded(self):
        """Waits for the file with what was said."""
        eventually(lambda: self.desk.listeners() == 0, "a closed microphone")
        eventually(lambda: self.file.read_bytes() != self.old, "a new greeting")
        recording = sound.read_wide_wave(self.file)
        self.assertTrue(self.same(WORDS, recording), sound.pieces_alike(WORDS, recording))

    @staticmethod
    def same(said, heard):
        if len(heard) < len(said):
            return False
        alike = sound.pieces_alike(said, heard)
        return np.mean(alike) > SAME_SOUND and sum(one > SAME_SOUND for one in alike) > 0.9 * len(alike)

    def level(self, settings):
        """How many pixels the bar between "Record" and "Play" fills."""
        blue, _, red = self.screen.pixels(settings, 116, 311, 156, 1)[0].astype(int).T
        return int(np.sum(blue - red > 60))


if __name__ == "__main__":
    main()

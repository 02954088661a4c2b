"""The greeting, recorded in the settings window: what was said at the microphone is what a caller hears."""
import threading

import numpy as np

import sip_caller
import sound
from desk import SoundTestCase
from program import RECORDING, eventually

WORDS = sound.voice(3, seed=21)


class Greeting(SoundTestCase):
    def setUp(self):
        super().setUp()
        self.start(settings={"AutoAnswerRingCount": 1}, greeting=sound.voice(1, seed=2))
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
        eventually(lambda: self.are_words(self.desk.heard()[before:]), "the greeting at the loudspeaker")
        self.screen.key("Return")  # Apply
        self.screen.no_window("Settings")
        self.assertEqual(self.home.setting("GreetingFile"), str(self.file))

        with sip_caller.Call(self.program.port) as call:
            call.answered()
            self.program.wait_for_log(RECORDING)
            heard = call.voice.heard()
            call.hang_up()
        sound.assert_arrived(sound.read_wide_wave(self.file), heard, 0.98, undamaged=False)
        self.assertTrue(self.are_words(heard))

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
        self.assertTrue(self.are_words(sound.read_wide_wave(self.file)))

    @staticmethod
    def are_words(heard):
        # Nothing but the clocks lies between.
        return len(heard) >= len(WORDS) and sound.same_voice(WORDS, heard, 0.9)

    def level(self, settings):
        """How many pixels the bar between "Record" and "Play" fills."""
        red, _, blue = self.screen.pixels(116, 311, 156, 1, settings)[0].T
        return int(np.sum(blue - red > 60))

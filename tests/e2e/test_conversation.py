"""Calls that the user takes: by keys, at a screen, through microphone and loudspeaker."""
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import numpy as np

import sip_caller
import sound
from desk import Screen, SoundDesk
from program import Home, Program, eventually, free_port, main

FAR = sound.voice(5, seed=11)
NEAR = sound.voice(5, seed=12)
# The microphone's way leads through noise suppression and gain control, which follow the voice but not its wave.
SAME_VOICE = 0.5


class FarEnd:
    """A telephone that others wrote: it takes each call at once, says `speech` and keeps what it hears."""

    def __init__(self, speech):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="kelmio-e2e-"))
        self.port = free_port()
        sound.write_wave(self._folder / "speech.wav", speech)
        (self._folder / "config").write_text(
            f"sip_listen 127.0.0.1:{self.port}\nnet_interface 127.0.0.1\naudio_source aufile,{self._folder}/speech.wav\n"
            f"audio_player aufile,{self._folder}/none\naudio_alert aufile,{self._folder}/none\n"
            f"snd_path {self._folder}\nmodule_path /usr/lib/baresip/modules\nmodule_app account.so\nmodule g711.so\n"
            "module aufile.so\nmodule sndfile.so\nmodule_app menu.so\n")
        (self._folder / "accounts").write_text(
            "<sip:far@127.0.0.1>;regint=0;answermode=auto;audio_codecs=PCMU\n")
        (self._folder / "contacts").write_text("")
        self._process = subprocess.Popen(["baresip", "-f", self._folder], stdin=subprocess.DEVNULL,
                                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def end(self):
        """Ends it; what it has heard."""
        self._process.terminate()
        self._process.wait(20)
        return sound.read_wave(next(self._folder.glob("dump-*-dec.wav")))

    def close(self):
        self._process.kill()
        self._process.wait()
        shutil.rmtree(self._folder, ignore_errors=True)


class Conversation(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.screen = Screen()
        cls.addClassCleanup(cls.screen.close)
        cls.desk = SoundDesk()
        cls.addClassCleanup(cls.desk.close)
        cls.home = Home(settings={"KeyTones": 0, "AutoAnswerRingCount": 9}, greeting=sound.voice(1, seed=2))
        cls.addClassCleanup(cls.home.remove)
        cls.program = Program(cls.home, surroundings=cls.screen.environment() | cls.desk.environment())
        cls.addClassCleanup(cls.program.stop)

    def setUp(self):
        self.mark = self.program.mark()
        self.before = len(self.home.messages())

    def test_dial_talk_and_record(self):
        far = FarEnd(np.concatenate([sound.silence(9), FAR, sound.silence(30)]))
        self.addCleanup(far.close)
        self.open_dialer()
        self.screen.type(f"sip:far@127.0.0.1:{far.port}")
        before = len(self.desk.heard())
        self.screen.key("Return")
        self.wait_for_log("Connected")
        self.screen.key(*["shift+Tab"] * 5, "space")  # Record
        self.wait_for_log("Recording call...")
        self.desk.speak(NEAR)
        eventually(lambda: len(self.desk.heard()) - before > 15 * sound.RATE, "the far voice at the loudspeaker")
        self.screen.key("shift+Tab", "space")  # Drop: its neighbour can't be pressed any more
        self.wait_for_log("Line: Idle")
        self.screen.key("Escape")
        self.screen.no_window("Dialer")
        name, record = self.home.complete_messages(self.before + 1)[-1]
        self.assertEqual((record["Mode"], record["Name"]), ("Manual", "Unknown"))
        recorded = sound.read_wave(self.home.inbox / name)
        self.assert_same_voice(FAR, self.desk.heard()[before:], "far voice at the loudspeaker")
        self.assert_same_voice(NEAR, far.end(), "near voice at the far end")
        self.assert_same_voice(FAR, recorded, "far voice in the recording")
        self.assert_same_voice(NEAR, recorded, "near voice in the recording")

    def test_the_machine_answers_with_the_microphone_closed(self):
        with sip_caller.Call(self.program.port) as call:
            call.answered()
            call.voice.say(sound.voice(3, seed=3))
            self.wait_for_log("Recording call...")
            self.assertEqual(self.desk.listeners(), 0)
            call.hang_up()
        self.home.complete_messages(self.before + 1)

    def test_who_takes_a_call_speaks_on_it_to_its_end(self):
        with sip_caller.Call(self.program.port) as call:
            self.wait_for_log("Ring 1")
            self.screen.window("Kelmio Standard")
            self.screen.key("alt+a", "Return")  # Action, Answer
            call.answered()
            eventually(lambda: self.desk.listeners() == 1, "an open microphone")
            self.desk.speak(NEAR)
            call.hang_up()
            self.assert_same_voice(NEAR, call.voice.heard(), "near voice at the far end")
        eventually(lambda: self.desk.listeners() == 0, "a closed microphone")
        self.assertEqual(len(self.home.messages()), self.before, "nobody asked for a recording")

    def wait_for_log(self, text):
        self.program.wait_for_log(text, self.mark)

    def open_dialer(self):
        self.screen.window("Kelmio Standard")
        self.screen.key("alt+t", "Down", "Return")
        self.screen.window("Dialer")

    def assert_same_voice(self, said, heard, what):
        alike = sound.pieces_alike(said, heard)
        self.assertGreater(np.mean(alike), SAME_VOICE, f"{what}: {alike}")
        self.assertGreater(sum(one > SAME_VOICE for one in alike), 0.9 * len(alike), f"{what}: {alike}")


if __name__ == "__main__":
    main()

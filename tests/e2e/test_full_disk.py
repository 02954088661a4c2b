"""A disk that runs full during a recording."""
import os
import subprocess
import unittest

import sound
from program import Home, Program
from sip_caller import leave_message


@unittest.skipUnless(os.geteuid() == 0, "needs root, to mount a small file system")
class FullDisk(unittest.TestCase):
    def setUp(self):
        self.home = self.enterContext(Home())
        place = str(self.home.path)
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=1m", "tmpfs", place], capture_output=True)
        if mounted.returncode:
            self.skipTest("this container may not mount: " + mounted.stderr.decode())
        self.addCleanup(subprocess.run, ["umount", "-l", place], check=True)

    def call(self, program, samples, *caller):
        """The place in the log where the call began."""
        mark = program.mark()
        leave_message(program, samples, *caller)
        program.wait_for_log("Call ended", mark)
        self.assertTrue(program.runs())
        return mark

    def test_the_program_and_the_messages_before_survive(self):
        with Program(self.home) as program:
            self.call(program, sound.voice(2))
            [(name, before)] = self.home.complete_messages(1)
            sound_before = (self.home.inbox / name).read_bytes()

            filler = self.home.path / "filler"
            room = os.statvfs(self.home.path)
            filler.write_bytes(b"x" * max(room.f_bavail * room.f_frsize - 40_000, 0))
            mark = self.call(program, sound.voice(4))  # 64,000 bytes
            program.wait_for_log("No space left on device", mark)
            self.assertEqual(self.home.messages().get(name), before)
            self.assertEqual((self.home.inbox / name).read_bytes(), sound_before)

            filler.unlink()
            speech = sound.voice(1, seed=9)
            self.call(program, speech, "<sip:5550003@127.0.0.1>")
            last, record = self.home.complete_messages(len(self.home.messages()))[-1]
            self.assertEqual(record["Number"], "5550003")
            sound.assert_arrived(speech, sound.read_wave(self.home.inbox / last))

"""A voice modem with a line and a caller behind it, plugged into a folder of devices."""
import os
import pathlib
import subprocess

import sound
from program import Beside, eventually

EMULATOR = os.environ.get("KELMIO_MODEM_EMULATOR") or (
    pathlib.Path(__file__).parents[2] / "build/release/bin/modem_emulator")


class Modem(Beside):
    """`surroundings` go to the program, which finds this modem and no other but one that is plugged in `beside` it."""

    def __init__(self, personality="conexant", name="ttyACM0", beside=None):
        super().__init__()
        folder = (beside or self).folder
        self.surroundings = {"KELMIO_MODEM_DEVICES": str(folder)}
        self._process = self.start(EMULATOR, "--link", folder / name, "--personality", personality,
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=None, text=True)
        assert self._process.stdout.readline().startswith("ready"), "the modem does not start"

    def tell(self, command):
        """Has the modem or its line do something; what it says to that."""
        self._process.stdin.write(command + "\n")
        self._process.stdin.flush()
        said = []
        while (line := self._process.stdout.readline().rstrip("\n")) not in ("ok", "error"):
            assert self._process.poll() is None, "the modem is gone"
            said.append(line)
        assert line == "ok", f"{command}: refused"
        return said

    def ring(self, number="5551234", name="Sample"):
        self.tell(f"ring {number} {name}")

    def say(self, samples):
        path = self.folder / "said.wav"
        sound.write_wave(path, samples)
        self.tell(f"say {path}")

    def heard(self):
        """What the caller heard of the last call, from the answer on."""
        path = self.folder / "heard.wav"
        self.tell(f"heard {path}")
        return sound.read_wave(path)

    def state(self):
        words = self.tell("state")[0].split()
        return dict(zip(words[::2], words[1::2]))

    def on_hook(self):
        eventually(lambda: self.state()["off-hook"] == "0", "the modem on hook")

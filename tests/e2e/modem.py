"""A voice modem with a line and a caller behind it, plugged into a folder of devices."""
import os
import pathlib
import subprocess
import tempfile

import sound
from program import eventually

EMULATOR = os.environ.get("KELMIO_MODEM_EMULATOR") or (
    pathlib.Path(__file__).parents[2] / "build/release/bin/modem_emulator")


class Modem:
    """`surroundings` go to the program, which finds this modem and no other but one that is plugged in `beside` it."""

    def __init__(self, personality="conexant", name="ttyACM0", beside=None):
        self._folder = tempfile.TemporaryDirectory(prefix="kelmio-modem-")
        self.folder = beside.folder if beside else pathlib.Path(self._folder.name)
        self.surroundings = {"KELMIO_MODEM_DEVICES": str(self.folder)}
        self._process = subprocess.Popen(
            [EMULATOR, "--link", self.folder / name, "--personality", personality],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        assert self._process.stdout.readline().startswith("ready"), "the modem does not start"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.stdin.close()
        self._process.wait(10)
        self._process.stdout.close()
        self._folder.cleanup()

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

    def on_hook(self, timeout=15):
        eventually(lambda: self.state()["off-hook"] == "0", "the modem on hook", timeout)

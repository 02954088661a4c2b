"""A telephone that others wrote."""
import subprocess

import sound
from program import Beside, free_port


class Baresip(Beside):
    """It says `speech` in each call and keeps what it hears. `account` is its line in the list of accounts.

    It stands at `address`, behind `within`, a command that runs another; `more` are lines of its configuration.
    """

    def __init__(self, speech, account, modules=(), more="", address="127.0.0.1", within=()):
        super().__init__()
        self.port = free_port()
        sound.write_wave(self.folder / "speech.wav", speech)
        (self.folder / "config").write_text(
            f"sip_listen {f'[{address}]' if ':' in address else address}:{self.port}\nnet_interface {address}\n{more}"
            f"audio_source aufile,{self.folder}/speech.wav\naudio_player aufile,{self.folder}/none\n"
            f"audio_alert aufile,{self.folder}/none\nsnd_path {self.folder}\nmodule_path /usr/lib/baresip/modules\n"
            "module_app account.so\nmodule_app menu.so\n"
            + "".join(f"module {module}.so\n" for module in ("g711", "aufile", "sndfile", *modules)))
        (self.folder / "accounts").write_text(account + "\n")
        (self.folder / "contacts").write_text("")
        self._command = [*within, "baresip", "-f", self.folder]

    def call(self, target, seconds=9):
        """What it says of the call."""
        dialling = self.start(*self._command, "-e", f"/dial {target}", "-t", str(seconds),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return dialling.communicate(timeout=seconds + 30)[0].decode(errors="replace")

    def wait_for_calls(self):
        self._process = self.start(*self._command)

    def end(self):
        self._process.terminate()
        self._process.wait(20)

    def heard(self):
        """Of its only call, which is over."""
        [file] = self.folder.glob("dump-*-dec.wav")
        return sound.read_wave(file)

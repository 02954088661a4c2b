"""Calls from two SIP programs that others wrote."""
import pathlib
import shutil
import subprocess
import tempfile

import numpy as np

import sound
from program import ProgramTestCase, eventually, free_port, main

HERE = pathlib.Path(__file__).parent
SPEECH = sound.voice(4, seed=4)
SAID = np.concatenate([sound.silence(2), SPEECH, sound.silence(2)])  # the greeting is over after the first two seconds


class ThirdParty(ProgramTestCase):
    HOME = {"greeting": sound.voice(1, seed=2)}

    def setUp(self):
        super().setUp()
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kelmio-e2e-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def assert_recorded(self, name, keeps_waves=True):
        arrived = sound.Comparison(SPEECH, sound.read_wave(self.home.inbox / name))
        self.assertGreater(arrived.correlation, 0.999 if keeps_waves else 0.9, arrived)
        if keeps_waves:
            self.assertEqual(arrived.damaged, 0, arrived)

    def test_sipp(self):
        (self.folder / "sample.ulaw").write_bytes(sound.mulaw_encode(SAID))
        done = subprocess.run(
            ["sipp", f"127.0.0.1:{self.program.port}", "-sf", HERE / "speaking_caller.xml", "-i", "127.0.0.1",
             "-p", str(free_port()), "-m", "1", "-nostdin", "-timeout", "40", "-timeout_error",
             "-key", "caller_name", "Sipp Caller", "-key", "caller_number", "5550001",
             "-d", "7000", "-mp", str(free_port())],
            cwd=self.folder, stdin=subprocess.DEVNULL, capture_output=True, timeout=60)
        self.assertEqual(done.returncode, 0, done.stdout.decode()[-2000:] + done.stderr.decode()[-2000:])
        name, record = self.new_message()
        self.assertEqual((record["Name"], record["Number"]), ("Sipp Caller", "5550001"))
        self.assert_recorded(name)

    def test_baresip(self):
        self.take_baresips_call()

    def test_baresip_that_demands_encrypted_sound(self):
        self.take_baresips_call("srtp.so", "srtp-mand")

    def test_baresip_that_agrees_on_keys_along_the_way_of_the_sound(self):
        self.take_baresips_call("dtls_srtp.so", "dtls_srtp")

    def test_baresip_that_speaks_opus(self):
        self.take_baresips_call("opus.so", codec="opus")

    def take_baresips_call(self, module=None, encryption=None, codec="PCMU"):
        sound.write_wave(self.folder / "speech.wav", SAID)
        (self.folder / "config").write_text(
            f"sip_listen 127.0.0.1:{free_port()}\nnet_interface 127.0.0.1\naudio_source aufile,{self.folder}/speech.wav\n"
            f"audio_player aufile,{self.folder}/heard.wav\naudio_alert aufile,{self.folder}/heard.wav\n"
            "module_path /usr/lib/baresip/modules\nmodule_app account.so\nmodule g711.so\nmodule aufile.so\n"
            "module_app menu.so\n" + (f"module {module}\n" if module else ""))
        (self.folder / "accounts").write_text(
            f'"Bare Caller" <sip:5550002@127.0.0.1>;regint=0;audio_codecs={codec}'
            + (f";mediaenc={encryption}" if encryption else "") + "\n")
        (self.folder / "contacts").write_text("")
        baresip = subprocess.Popen(
            ["baresip", "-f", self.folder, "-e", f"/dial sip:line@127.0.0.1:{self.program.port}", "-t", "9"],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        try:
            told, _ = baresip.communicate(timeout=40)
        finally:
            baresip.kill()
        self.wait_for_log("Idle")
        eventually(lambda: len(self.home.messages()) > self.before, "a message; baresip: " + told.decode())
        name, record = self.new_message()
        self.assertEqual((record["Name"], record["Number"]), ("Bare Caller", "5550002"))
        self.assert_recorded(name, codec == "PCMU")


if __name__ == "__main__":
    main()

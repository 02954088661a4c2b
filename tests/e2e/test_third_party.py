"""Calls from two SIP programs that others wrote."""
import pathlib
import subprocess

import numpy as np

import sound
from baresip import Baresip
from program import Beside, ProgramTestCase, eventually, free_port

SCENARIO = pathlib.Path(__file__).resolve().with_name("speaking_caller.xml")
SPEECH = sound.voice(4, seed=4)
SAID = np.concatenate([sound.silence(2), SPEECH, sound.silence(2)])  # the greeting is over after the first two seconds


class ThirdParty(ProgramTestCase):
    HOME = {"greeting": sound.voice(1, seed=2)}

    def assert_recorded(self, caller, keeps_waves=True):
        name, record = self.new_message()
        self.assertEqual((record["Name"], record["Number"]), caller)
        recorded = sound.read_wave(self.home.inbox / name)
        sound.assert_arrived(SPEECH, recorded, 0.999 if keeps_waves else 0.9, undamaged=keeps_waves)

    def test_sipp(self):
        folder = self.enterContext(Beside()).folder
        (folder / "sample.ulaw").write_bytes(sound.mulaw_encode(SAID))
        done = subprocess.run(
            ["sipp", f"127.0.0.1:{self.program.port}", "-sf", SCENARIO, "-i", "127.0.0.1",
             "-p", str(free_port()), "-m", "1", "-nostdin", "-timeout", "40", "-timeout_error", "-key", "caller_name",
             "Sipp Caller", "-key", "caller_number", "5550001", "-d", "7000", "-mp", str(free_port())],
            cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, timeout=60)
        self.assertEqual(done.returncode, 0, done.stdout.decode()[-2000:] + done.stderr.decode()[-2000:])
        self.assert_recorded(("Sipp Caller", "5550001"))

    def test_baresip(self):
        for codec, modules, more in (("PCMU", (), ""),
                                     ("PCMU", ("srtp",), ";mediaenc=srtp-mand"),
                                     ("PCMU", ("dtls_srtp",), ";mediaenc=dtls_srtp"),  # keys along the way of the sound
                                     ("opus/48000/2", ("opus",), "")):
            with self.subTest(codec + more):
                self.mark = self.program.mark()
                account = f'"Bare Caller" <sip:5550002@127.0.0.1>;regint=0;audio_codecs={codec}{more}'
                with Baresip(SAID, account, modules, "ausrc_srate 8000\nausrc_channels 1\n") as baresip:
                    told = baresip.call(f"sip:line@127.0.0.1:{self.program.port}")
                self.assertIn(f"audio encoder: {codec.partition('/')[0]} ", told)
                self.wait_for_log("Idle")
                eventually(lambda: len(self.home.messages()) > self.before, "a message; baresip: " + told)
                self.assert_recorded(("Bare Caller", "5550002"), codec == "PCMU")

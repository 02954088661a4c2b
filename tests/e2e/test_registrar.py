"""The line as an account with a registrar: known there, called through it, and back when it was gone."""
import shutil
import tempfile
import time
import unittest
from pathlib import Path

import numpy as np

import sound
from program import Program, eventually, main
from registrar import PASSWORD, AccountHome, Baresip, Registrar, registered

SPEECH = sound.voice(3, seed=4)
SAID = np.concatenate([sound.silence(2), SPEECH, sound.silence(2)])


# Its package starts a service on the line's own port, so that it is not installed unasked.
@unittest.skipUnless(shutil.which("kamailio"), "needs the packages kamailio and kamailio-tls-modules")
class Account(unittest.TestCase):
    def start(self, registrar, **home):
        home = AccountHome(registrar, **home)
        self.addCleanup(home.remove)
        program = Program(home)
        self.addCleanup(program.stop)
        return home, program

    def test_an_encrypted_call_over_tls_becomes_a_message(self):
        with Registrar() as registrar, tempfile.TemporaryDirectory() as folder:
            home, program = self.start(registrar, greeting=sound.voice(1, seed=2), encryption="required")
            registered(program)
            self.assertTrue(any("encrypted" in line for line in program.log), program.log)
            told = Baresip(registrar, Path(folder), SAID, ";mediaenc=srtp-mand").call()
            eventually(lambda: home.messages(), "a message; baresip: " + told + "".join(program.log[-8:]))
            [(name, record)] = home.complete_messages(1)
            self.assertEqual(record["Number"], "caller")
            speech = sound.Comparison(SPEECH, sound.read_wave(home.inbox / name))
            self.assertGreater(speech.correlation, 0.999, speech)
            self.assertNotIn(PASSWORD, "".join(program.log))

    def test_a_call_comes_over_tcp_and_over_the_new_addresses(self):
        for address, transport in (("127.0.0.1", "tcp"), ("[::1]", "udp")):
            with (self.subTest(transport), Registrar(address=address, name=f"IP:{address.strip('[]')}") as registrar,
                  tempfile.TemporaryDirectory() as folder):
                home, program = self.start(registrar, greeting=sound.voice(1, seed=2), transport=transport)
                registered(program)
                told = Baresip(registrar, Path(folder), SAID, address=address.strip("[]")).call()
                eventually(lambda: home.messages(), "a message; baresip: " + told + "".join(program.log[-8:]))
                [(name, _)] = home.complete_messages(1)
                speech = sound.Comparison(SPEECH, sound.read_wave(home.inbox / name))
                self.assertGreater(speech.correlation, 0.999, speech)

    def test_a_registrar_that_was_gone_is_found_again(self):
        with Registrar() as registrar:
            _, program = self.start(registrar, transport="udp")
            registered(program)
            registrar.stop()
            mark = program.mark()
            program.wait_for_log("doesn't answer", mark, timeout=90)
            registrar.start()
            registered(program, mark, timeout=60)

    def test_a_wrong_password_is_told_and_not_tried_again_and_again(self):
        with Registrar() as registrar:
            _, program = self.start(registrar, transport="udp", password="wrong")
            program.wait_for_log("assword", timeout=30)
            time.sleep(5)
            self.assertLessEqual(len(registrar.asked()), 3, registrar.asked())

    def test_a_server_that_proves_nothing_gets_nothing(self):
        cases = {"authority": ({"authority": False}, {}), "expired": ({}, {"days": 0}), "name": ({}, {"name": "DNS:other"})}
        for case, (home, certificate) in cases.items():
            with self.subTest(case), Registrar(**certificate) as registrar:
                time.sleep(1)
                _, program = self.start(registrar, **home)
                program.wait_for_log("certificate", timeout=30)
                self.assertEqual(registrar.asked(), [])


if __name__ == "__main__":
    main()

"""The line as an account with a registrar: known there, called through it, and back when it was gone."""
import shutil
import time
import unittest

import numpy as np

import sound
from registrar import PASSWORD, AccountTestCase, Registrar

SPEECH = sound.voice(3, seed=4)
SAID = np.concatenate([sound.silence(2), SPEECH, sound.silence(2)])
GREETING = sound.voice(1, seed=2)


# Its package starts a service on the line's own port, so that it is not installed unasked.
@unittest.skipUnless(shutil.which("kamailio"), "needs the packages kamailio and kamailio-tls-modules")
class Account(AccountTestCase):
    def test_an_encrypted_call_over_tls_becomes_a_message(self):
        with Registrar() as registrar:
            self.start(registrar, greeting=GREETING, encryption="required")
            self.registered()
            self.assertTrue(any("encrypted" in line for line in self.program.log), self.program.log)
            self.take_a_call(SAID, SPEECH, ";mediaenc=srtp-mand")
            self.assertNotIn(PASSWORD, "".join(self.program.log))

    def test_a_call_comes_over_tcp_and_over_the_new_addresses(self):
        for address, server, transport in (("127.0.0.1", "127.0.0.1", "tcp"), ("::1", "[::1]", "udp")):
            with self.subTest(transport), Registrar(address=server, name=f"IP:{address}") as registrar:
                self.start(registrar, greeting=GREETING, transport=transport)
                self.registered()
                self.take_a_call(SAID, SPEECH, address=address)

    def test_a_registrar_that_was_gone_is_found_again(self):
        with Registrar() as registrar:
            self.start(registrar, transport="udp")
            self.registered()
            registrar.stop()
            mark = self.program.mark()
            self.program.wait_for_log("doesn't answer", mark, timeout=90)
            registrar.begin()
            self.registered(mark, timeout=60)

    def test_a_wrong_password_is_told_and_not_tried_again_and_again(self):
        with Registrar() as registrar:
            self.start(registrar, transport="udp", password="wrong")
            self.program.wait_for_log("assword", timeout=30)
            time.sleep(5)
            self.assertLessEqual(len(registrar.asked()), 3, registrar.asked())

    def test_a_server_that_proves_nothing_gets_nothing(self):
        for home, certificate in (({"authority": False}, {}), ({}, {"days": 0}), ({}, {"name": "DNS:other"})):
            with self.subTest(**home, **certificate), Registrar(**certificate) as registrar:
                time.sleep(1)
                self.start(registrar, **home)
                self.program.wait_for_log("certificate", timeout=30)
                self.assertEqual(registrar.asked(), [])

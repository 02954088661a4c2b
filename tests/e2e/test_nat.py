"""The line behind a router that translates addresses: calls find their way in, and sound both ways."""
import shutil
import subprocess
import sys
import time
import unittest
from pathlib import Path

import numpy as np

import network
import sound
from program import Beside, eventually
from registrar import AccountTestCase, Registrar

GREETING = sound.voice(2, seed=2)
SPEECH = sound.voice(3, seed=4)
SAID = np.concatenate([sound.silence(4), SPEECH, sound.silence(1)])
NEEDED = ("kamailio", "turnserver", "nft")  # the first two start services where they are installed: not done unasked
STUN = f"StunServer={network.WORLD_ADDRESS}\n"


class BehindARouter(AccountTestCase):
    @classmethod
    def setUpClass(cls):
        if not all(map(shutil.which, NEEDED)):
            raise unittest.SkipTest("needs " + ", ".join(NEEDED))
        try:
            network.go_apart()
            network.build()
        except (OSError, subprocess.CalledProcessError) as refused:
            raise unittest.SkipTest(f"needs the right to make networks of its own: {refused}") from refused

    def setUp(self):
        self.world = self.enterContext(Beside())

    def start_registrar(self, **certificate):
        return self.enterContext(Registrar(network.WORLD_ADDRESS, network.within("world"), **certificate))

    def start(self, registrar, **home):
        """The program at home with an account in the world."""
        super().start(registrar, network.within("home"), greeting=GREETING, **home)
        self.registered()

    def serve(self, *command, **how):
        return self.world.start(*network.within("world"), *command, cwd=self.world.folder, **how)

    def start_stun_server(self):
        self.serve("turnserver", "-n", "--stun-only", "--listening-ip", network.WORLD_ADDRESS, "--no-cli",
                   "--pidfile", "turn.pid", "--log-file", "stdout")
        listening = [*network.within("world"), "ss", "-Huln", "sport", "=", "3478"]
        eventually(lambda: subprocess.run(listening, capture_output=True, check=True).stdout, "the STUN server")

    def talk(self, parameters="", *modules):
        heard = self.take_a_call(SAID, SPEECH, parameters, modules, network.WORLD_ADDRESS, network.within("world"), 10)
        sound.assert_arrived(GREETING, heard, 0.99, undamaged=False)

    def talk_by_ice(self, encryption, module):
        self.start_stun_server()
        self.start(self.start_registrar(), encryption="required", more=STUN)
        self.talk(f";mediaenc={encryption};medianat=ice;stunserver=stun:{network.WORLD_ADDRESS}", module, "ice")

    def test_an_encrypted_call_over_tls_finds_its_way_by_ice(self):
        self.talk_by_ice("srtp-mand", "srtp")

    def test_keys_are_agreed_on_along_the_way(self):
        self.talk_by_ice("dtls_srtp", "dtls_srtp")

    def test_names_lead_to_the_servers_and_a_caller_who_looks_for_no_way_is_heard(self):
        registrar = self.start_registrar(name="DNS:provider.example")
        self.start_stun_server()
        network.ask_for_names(network.WORLD_ADDRESS)
        names = self.serve(sys.executable, "-B", Path(__file__).resolve().with_name("name_server.py"),
                           network.WORLD_ADDRESS, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        names.stdin.write(
            f"_sips._tcp.provider.example SRV 0 0 {registrar.tls_port} sip.provider.example\n"
            f"_sip._udp.provider.example SRV 0 0 {registrar.port} sip.provider.example\n"
            f"sip.provider.example A {network.WORLD_ADDRESS}\n"
            "_stun._udp.stun.example SRV 0 0 3478 sip.provider.example\n")
        names.stdin.close()
        self.assertEqual(names.stdout.readline(), "ready\n")
        more = "StunServer=stun.example\nIce=no\n"
        self.start(registrar, server="provider.example", transport="automatic", more=more)
        log = self.program.log
        self.assertTrue(any("Registered" in line and "encrypted" in line for line in log), log)
        self.talk(";mediaenc=srtp-mand", "srtp")

    def test_the_router_is_kept_awake_and_comes_back(self):
        self.start(self.start_registrar(), transport="udp", more=STUN)
        mark = self.program.mark()
        network.connect(False)
        self.program.wait_for_log("next try", mark, timeout=60)
        network.connect(True)
        self.registered(mark, timeout=60)
        time.sleep(network.FORGETS_AFTER + 5)
        self.start_stun_server()
        self.talk()

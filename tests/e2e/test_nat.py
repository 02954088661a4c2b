"""The line behind a router that translates addresses: calls find their way in, and sound both ways."""
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import numpy as np

import network
import sound
from program import Program, eventually, main
from registrar import AccountHome, Baresip, Registrar, registered

GREETING = sound.voice(2, seed=2)
SPEECH = sound.voice(3, seed=4)
SAID = np.concatenate([sound.silence(4), SPEECH, sound.silence(1)])
NEEDED = ("kamailio", "turnserver", "nft")  # the first two start services where they are installed: not done unasked


class BehindARouter(unittest.TestCase):
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
        self.folder = Path(tempfile.mkdtemp(prefix="kelmio-nat-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def start_registrar(self, **certificate):
        self.registrar = Registrar(address=network.WORLD_ADDRESS, within=network.within("world"), **certificate)
        self.addCleanup(self.registrar.__exit__)

    def start(self, **home):
        if "server" not in home:
            self.start_registrar()
        home = AccountHome(self.registrar, greeting=GREETING, **home)
        self.addCleanup(home.remove)
        program = Program(home, within=network.within("home"))
        self.addCleanup(program.stop)
        registered(program)
        return home, program

    def start_stun_server(self):
        server = subprocess.Popen(
            [*network.within("world"), "turnserver", "-n", "--stun-only", "--listening-ip", network.WORLD_ADDRESS, "--no-cli",
             "--pidfile", self.folder / "turn.pid", "--log-file", "stdout"],
            cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        listening = [*network.within("world"), "ss", "-Huln", "sport", "=", "3478"]
        eventually(lambda: subprocess.run(listening, capture_output=True, check=True).stdout, "the STUN server")

    def assert_talk(self, home, program, more, modules):
        caller = Baresip(self.registrar, self.folder, SAID, more, network.WORLD_ADDRESS, network.within("world"), modules)
        told = caller.call(10)
        eventually(home.messages, "a message; baresip: " + told + "".join(program.log[-8:]))
        [(name, record)] = home.complete_messages(1)
        self.assertEqual(record["Number"], "caller")
        recorded = sound.Comparison(SPEECH, sound.read_wave(home.inbox / name))
        self.assertGreater(recorded.correlation, 0.999, recorded)
        heard = sound.Comparison(GREETING, sound.read_wave(caller.heard()))
        self.assertGreater(heard.correlation, 0.99, heard)

    def test_an_encrypted_call_over_tls_finds_its_way_by_ice(self):
        self.start_stun_server()
        home, program = self.start(encryption="required", more=[f"StunServer={network.WORLD_ADDRESS}"])
        self.assert_talk(home, program, f";mediaenc=srtp-mand;medianat=ice;stunserver=stun:{network.WORLD_ADDRESS}", ("srtp", "ice"))

    def test_keys_are_agreed_on_along_the_way(self):
        self.start_stun_server()
        home, program = self.start(encryption="required", more=[f"StunServer={network.WORLD_ADDRESS}"])
        self.assert_talk(home, program, f";mediaenc=dtls_srtp;medianat=ice;stunserver=stun:{network.WORLD_ADDRESS}",
                         ("dtls_srtp", "ice"))

    def test_names_lead_to_the_servers_and_a_caller_who_looks_for_no_way_is_heard(self):
        self.start_registrar(name="DNS:provider.example")
        self.start_stun_server()
        self.start_name_server(
            f"_sips._tcp.provider.example SRV 0 0 {self.registrar.tls_port} sip.provider.example",
            f"_sip._udp.provider.example SRV 0 0 {self.registrar.port} sip.provider.example",
            f"sip.provider.example A {network.WORLD_ADDRESS}",
            "_stun._udp.stun.example SRV 0 0 3478 sip.provider.example")
        home, program = self.start(server="provider.example", transport="automatic", more=["StunServer=stun.example", "Ice=no"])
        self.assertTrue(any("Registered" in line and "encrypted" in line for line in program.log), program.log)
        self.assert_talk(home, program, ";mediaenc=srtp-mand", ("srtp",))

    def start_name_server(self, *records):
        network.ask_for_names(network.WORLD_ADDRESS)
        server = subprocess.Popen(
            [*network.within("world"), sys.executable, "-B", Path(__file__).with_name("name_server.py"), network.WORLD_ADDRESS],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        server.stdin.write("\n".join(records))
        server.stdin.close()
        self.assertEqual(server.stdout.readline(), "ready\n")
        self.addCleanup(server.stdout.close)

    def test_the_router_is_kept_awake_and_comes_back(self):
        home, program = self.start(transport="udp", more=[f"StunServer={network.WORLD_ADDRESS}"])
        mark = program.mark()
        network.connect(False)
        program.wait_for_log("next try", mark, timeout=60)
        network.connect(True)
        registered(program, mark, timeout=60)
        time.sleep(network.FORGETS_AFTER + 5)
        self.start_stun_server()
        self.assert_talk(home, program, "", ())


if __name__ == "__main__":
    main()

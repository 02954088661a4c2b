"""The real program on a voice modem, which an emulator plays on a pseudo terminal."""
import unittest

import sound
from modem import Modem
from program import RECORDING, Home, Program, eventually, read_ini
from sip_caller import Call

GREETING = sound.voice(1.5, seed=2)
SPEECH = sound.voice(3, seed=3)


class OnAModem(unittest.TestCase):
    def start(self, modem):
        """The program with this modem, at its first start."""
        home = self.enterContext(Home(greeting=GREETING))
        return home, self.enterContext(Program(home, surroundings=modem.surroundings))

    def chosen_line(self, home):
        """The name of the line that the program has chosen by itself."""
        numbers = read_ini(home.path / "Lines.ini")["Devices"]
        return next(name for name, number in numbers.items() if number == home.setting("CommDeviceID"))

    def test_a_call_becomes_a_message_and_a_modem_that_is_pulled_out_loses_nothing(self):
        with Modem() as modem:
            home, program = self.start(modem)
            self.assertTrue(self.chosen_line(home).startswith("Modem"), "a voice modem wins over the SIP line")

            program.wait_for_log("ready for calls", timeout=40)
            mark = program.mark()
            modem.ring()
            program.wait_for_log(RECORDING, mark, timeout=40)
            self.speak(modem, SPEECH)
            modem.tell("hangup loop")
            modem.on_hook()
            [(name, record)] = home.complete_messages(1)
            self.assertEqual((record["Name"], record["Number"]), ("Sample", "5551234"))
            sound.assert_arrived(GREETING, modem.heard(), 0.99, undamaged=False)
            sound.assert_arrived(SPEECH, sound.read_wave(home.inbox / name), 0.99)

            mark = program.mark()
            modem.ring("5550001", "Unlucky")
            program.wait_for_log(RECORDING, mark, timeout=40)
            self.speak(modem, sound.voice(1, seed=4))
            modem.tell("unplug")
            messages = home.complete_messages(2)
            self.assertIn("5550001", [record["Number"] for _, record in messages])

            mark = program.mark()
            modem.tell("replug")
            program.wait_for_log("ready for calls", mark, timeout=40)
            mark = program.mark()
            modem.ring("5550002", "Back")
            program.wait_for_log(RECORDING, mark, timeout=40)
            modem.tell("hangup loop")
            home.complete_messages(3)

    def test_a_modem_for_data_alone_leaves_the_line_to_sip(self):
        with Modem("data") as modem:
            home, program = self.start(modem)
            self.assertEqual(self.chosen_line(home), "SIP")
            with Call(program.port) as call:
                call.answered()
                call.hang_up()

    def test_a_voice_modem_wins_wherever_it_stands(self):
        for account in ("", "[SIP account 1]\nServer=127.0.0.1:9\nUser=line\nTransport=udp\n"):
            for first, second in (("data", "conexant"), ("conexant", "data")):
                with (self.subTest(account=account, first=first), Modem(first) as one, Modem(second, "ttyACM1", one),
                      Home(greeting=GREETING, line=account) as home, Program(home, surroundings=one.surroundings)):
                    place = "ttyACM0" if first == "conexant" else "ttyACM1"
                    self.assertIn(place, self.chosen_line(home))

    def speak(self, modem, samples):
        """Returns once the modem has handed on all of it, one byte a sample."""

        def recorded():
            return int(modem.state()["recorded"])

        before = recorded()
        eventually(lambda: recorded() > before, "the start of a recording")
        before = recorded()
        modem.say(samples)
        eventually(lambda: recorded() > before + len(samples) + sound.RATE // 2, "the speech")

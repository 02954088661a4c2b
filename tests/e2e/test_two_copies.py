"""Two runs of the program on one home, and a port that is taken."""
import socket
import time
import unittest

import sound
from program import RECORDING, Home, Program, free_port
from sip_caller import Call


class TwoCopies(unittest.TestCase):
    def setUp(self):
        self.home = self.enterContext(Home())

    def test_both_record_into_one_inbox(self):
        with Program(self.home) as one, Program(self.home) as other:
            calls = []
            for program, number in ((one, "5550011"), (other, "5550022")):
                call = self.enterContext(Call(program.port, f"<sip:{number}@127.0.0.1>"))
                call.answered()
                program.wait_for_log(RECORDING)
                call.voice.begin_to_say(sound.voice(2, seed=int(number)))
                calls.append(call)
                time.sleep(1.1)  # a message's name holds the second in which it began
            time.sleep(1)
            for call in calls:
                call.hang_up()
            messages = self.home.complete_messages(2)
            self.assertEqual(sorted(record["Number"] for _, record in messages), ["5550011", "5550022"])
            for name, record in messages:
                self.assertEqual(len(record), 9)
                speech = sound.voice(2, seed=int(record["Number"]))
                sound.assert_arrived(speech, sound.read_wave(self.home.inbox / name))
            self.assertEqual(sorted(entry[1] for entry in self.home.calls()), ["5550011", "5550022"])

    def test_a_port_that_is_taken_opens_no_line(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as taken:
            taken.bind(("127.0.0.1", free_port()))
            with Program(self.home, port=taken.getsockname()[1], expect="No telephony device opened") as program:
                self.assertEqual(program.stop(), 0)

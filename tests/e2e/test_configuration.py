"""The line, set up in its own dialog while the program runs."""
import socket

import sip_caller
from desk import ScreenTestCase
from program import eventually, free_port, read_ini


class Configuration(ScreenTestCase):
    def setUp(self):
        super().setUp()
        self.start(settings={"AutoAnswerRingCount": 1})
        self.screen.window("Kelmio Standard")
        self.screen.key("alt+t", "Return")
        self.screen.window("Settings")
        self.screen.key("Tab", "Tab")  # to "Configure"

    def test_the_next_call_comes_in_on_the_new_port(self):
        port = free_port()
        self.enter_port(port)
        self.screen.no_window("SIP Line")
        self.take_a_call(port)
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as old:
            old.bind(("127.0.0.1", self.program.port))

    def test_a_port_that_is_taken_is_told_and_the_old_one_stays(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as other:
            other.bind(("127.0.0.1", 0))
            dialog = self.enter_port(other.getsockname()[1])
            eventually(lambda: self.result_is_shown(dialog), "words in the dialog")
        self.take_a_call(self.program.port)
        self.screen.window("SIP Line")
        self.screen.key("Escape")
        self.screen.no_window("SIP Line")

    def enter_port(self, port):
        self.screen.key("space")
        dialog = self.screen.window("SIP Line")
        eventually(lambda: not self.result_is_shown(dialog), "a dialog with no result")
        self.screen.key("Tab")
        self.screen.type(str(port))
        self.screen.key("Return")
        return dialog

    def take_a_call(self, port):
        self.assertEqual(read_ini(self.home.path / "Lines.ini")["SIP"]["Listen"], f"127.0.0.1:{port}")
        with sip_caller.Call(port) as call:
            call.answered()
            call.hang_up()

    def result_is_shown(self, dialog):
        """Whether there is text below the state of the line."""
        return self.screen.pixels(14, 345, 450, 35, dialog).min() < 100

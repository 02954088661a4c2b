"""The notification of a call, on a desktop with a bus and a notification service of its own."""
import os
import re
import subprocess
import threading

import sip_caller
import sound
from desk import Bus, ScreenTestCase
from program import RECORDING, eventually

NAME = "Kelmio Standard"
CALLER = "Jane Sample\n5551234"


class Notifier(Bus):
    """A notification service that others wrote. `shown` is what it was given to show: titles and texts."""

    def __init__(self, screen):
        super().__init__()
        self._environment = os.environ | self.environment() | {"DISPLAY": screen.display, "HOME": str(self.folder)}
        menu = self.folder / "menu"  # takes the button "Answer" of those that are offered
        menu.write_text("#!/bin/sh\ngrep Answer\n")
        menu.chmod(0o700)
        (self.folder / "conf").write_text(f"[global]\ndmenu = {menu}\nmarkup = full\nmouse_left_click = do_action\n")
        service = self.start("dunst", "-print", "-conf", self.folder / "conf", env=self._environment,
                             stdout=subprocess.PIPE, text=True)
        self._text = ""
        self._reader = threading.Thread(target=self._read, args=(service.stdout,), daemon=True)
        self._reader.start()
        eventually(lambda: self.control("is-paused") == "false", "a notification service")

    @property
    def shown(self):
        return re.findall(r"^\tsummary: '(.*)'\n\tbody: '((?:.|\n)*?)'\n\ticon:", self._text, re.MULTILINE)

    def count(self):
        return int(self.control("count", "displayed") or 0)

    def control(self, *words):
        return subprocess.run(["dunstctl", *words], env=self._environment, capture_output=True,
                              text=True, timeout=20).stdout.strip()

    def _read(self, told):
        for line in told:
            self._text += line


class Notifications(ScreenTestCase):
    def setUp(self):
        super().setUp()
        self.notifier = self.enterContext(Notifier(self.screen))
        self.start(self.notifier.environment(), settings={"AutoAnswerRingCount": 5}, greeting=sound.voice(1, seed=2))
        self.window = self.screen.window(NAME)

    def shows(self, title, text=CALLER):
        notification = (title, text)
        eventually(lambda: self.notifier.shown[-1:] == [notification], f"the notification {notification}")
        self.assertEqual(self.notifier.count(), 1)

    def test_the_button_takes_the_call(self):
        with sip_caller.Call(self.program.port) as call:
            self.shows("New call")
            self.notifier.control("context")  # the menu
            call.answered()
            eventually(lambda: self.notifier.count() == 0, "no notification of a call that is taken")
            call.hang_up()
        self.program.wait_for_log("Call ended")
        self.assertEqual((self.notifier.count(), len(self.home.messages())), (0, 0))

    def test_a_missed_call_leads_to_the_window(self):
        caller = "&lt;i&gt;Eve&lt;/i&gt; &amp; &lt;img src=x&gt;\n666"
        with sip_caller.Call(self.program.port, '"<i>Eve</i> & <img src=x>" <sip:666@127.0.0.1>') as call:
            self.shows("New call", caller)
            call.cancel()
        self.shows("Missed call", caller)
        self.screen.minimize(self.window)
        self.screen.no_window(NAME)
        self.screen.click(self.screen.visible(".*[Dd]unst.*"), 150, 50)
        self.screen.visible(NAME)

    def test_a_message_is_told(self):
        with sip_caller.Call(self.program.port) as call:
            self.shows("New call")
            call.answered()
            self.program.wait_for_log(RECORDING)
            call.voice.say(sound.voice(1, seed=3))
            call.hang_up()
        self.shows("New message")
        self.home.complete_messages(1)

    def test_nothing_rings_on_after_the_end(self):
        with sip_caller.Call(self.program.port):
            self.shows("New call")
            self.assertEqual(self.program.stop(), 0)
            eventually(lambda: self.notifier.count() == 0, "no notification of a program that is gone")

"""The notification of a call, on a desktop with a bus and a notification service of its own."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import threading
import unittest

import sip_caller
import sound
from desk import Screen
from program import Home, Program, eventually, main

NAME = "Kelmio Standard"
CALLER = "Jane Sample\n5551234"
# A bus that starts no services by itself.
BUS = """<busconfig><type>session</type><listen>unix:path={}/bus</listen><policy context="default">
<allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy></busconfig>"""
HOSTILE = '"<i>Eve</i> & <img src=x>" <sip:666@127.0.0.1>'


class Notifier:
    """A notification service that others wrote. `shown` is what it was given to show: titles and texts."""

    def __init__(self, screen):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="kelmio-e2e-"))
        (self._folder / "bus.conf").write_text(BUS.format(self._folder))
        self._bus = subprocess.Popen(["dbus-daemon", f"--config-file={self._folder}/bus.conf", "--nofork",
                                      "--nosyslog", "--print-address"],
                                     stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.environment = {"DBUS_SESSION_BUS_ADDRESS": self._bus.stdout.readline().strip(),
                            "DISPLAY": screen.display, "HOME": str(self._folder)}
        menu = self._folder / "menu"  # takes the button "Answer" of those that are offered
        menu.write_text("#!/bin/sh\ngrep Answer\n")
        menu.chmod(0o700)
        (self._folder / "conf").write_text(f"[global]\ndmenu = {menu}\nmarkup = full\nmouse_left_click = do_action\n")
        self._service = subprocess.Popen(["dunst", "-print", "-conf", self._folder / "conf"],
                                         env=os.environ | self.environment, stdout=subprocess.PIPE,
                                         stderr=subprocess.DEVNULL, text=True)
        self._text = ""
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        eventually(lambda: self._control("is-paused") == "false", "a notification service")

    def close(self):
        for process in (self._service, self._bus):
            process.kill()
            process.wait()
            process.stdout.close()
        self._reader.join(5)
        shutil.rmtree(self._folder, ignore_errors=True)

    @property
    def shown(self):
        return re.findall(r"^\tsummary: '(.*)'\n\tbody: '((?:.|\n)*?)'\n\ticon:", self._text, re.MULTILINE)

    def count(self):
        return int(self._control("count", "displayed") or 0)

    def answer(self):
        self._control("context")

    def clear(self):
        self._control("close-all")

    def _control(self, *words):
        return subprocess.run(["dunstctl", *words], env=os.environ | self.environment, capture_output=True,
                              text=True, timeout=20).stdout.strip()

    def _read(self):
        try:
            for line in self._service.stdout:
                self._text += line
        except ValueError:
            pass  # closed


class Notifications(unittest.TestCase):
    def setUp(self):
        self.screen = Screen()
        self.addCleanup(self.screen.close)
        self.notifier = Notifier(self.screen)
        self.addCleanup(self.notifier.close)
        self.home = Home(settings={"AutoAnswerRingCount": 5}, greeting=sound.voice(1, seed=2))
        self.addCleanup(self.home.remove)
        self.program = Program(self.home, surroundings=self.screen.environment() | {
            "DBUS_SESSION_BUS_ADDRESS": self.notifier.environment["DBUS_SESSION_BUS_ADDRESS"]})
        self.addCleanup(self.program.stop)
        self.window = self.screen.window(NAME)

    def shows(self, *notification):
        eventually(lambda: self.notifier.shown[-1:] == [notification], f"the notification {notification}")
        self.assertEqual(self.notifier.count(), 1)

    def test_the_button_takes_the_call(self):
        with sip_caller.Call(self.program.port) as call:
            self.shows("New call", CALLER)
            self.notifier.answer()
            call.answered()
            eventually(lambda: self.notifier.count() == 0, "no notification of a call that is taken")
            call.hang_up()
        self.program.wait_for_log("Call ended")
        self.assertEqual((self.notifier.count(), len(self.home.messages())), (0, 0))

    def test_a_missed_call_leads_to_the_window(self):
        with sip_caller.Call(self.program.port, HOSTILE) as call:
            self.shows("New call", "&lt;i&gt;Eve&lt;/i&gt; &amp; &lt;img src=x&gt;\n666")
            call.cancel()
        self.shows("Missed call", "&lt;i&gt;Eve&lt;/i&gt; &amp; &lt;img src=x&gt;\n666")
        self.screen.minimize(self.window)
        self.screen.no_window(NAME)
        self.screen.click(self.screen.visible(".*[Dd]unst.*"), 150, 50)
        self.screen.visible(NAME)

    def test_a_message_is_told(self):
        with sip_caller.Call(self.program.port) as call:
            self.shows("New call", CALLER)
            call.answered()
            self.program.wait_for_log("Recording call...")
            call.voice.say(sound.voice(1, seed=3))
            call.hang_up()
        self.shows("New message", CALLER)
        self.home.complete_messages(1)

    def test_nothing_rings_on_after_the_end(self):
        with sip_caller.Call(self.program.port):
            self.shows("New call", CALLER)
            self.assertEqual(self.program.stop(), 0)
            eventually(lambda: self.notifier.count() == 0, "no notification of a program that is gone")


if __name__ == "__main__":
    main()

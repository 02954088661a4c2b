"""The key that brings the program up from anywhere."""
import subprocess
import time

from desk import ScreenTestCase

NAME = "Kelmio Standard"
KEY = "alt+ctrl+shift+F8"  # as the settings have it by default


class HotKey(ScreenTestCase):
    def minimize(self, window=None):
        self.screen.minimize(window or self.screen.window(NAME))
        self.screen.no_window(NAME)

    def press(self, keys):
        """Whatever locks are on stay on."""
        self.screen.xdotool("key", keys)

    def assert_brings_the_window_up(self, keys=KEY):
        self.press(keys)
        self.screen.visible(NAME)

    def test_brings_the_window_up_whichever_locks_are_on(self):
        self.start()
        for lock in ("", "Num_Lock", "Caps_Lock"):  # the last with both
            if lock:
                self.press(lock)
            self.minimize()
            self.assert_brings_the_window_up()

    def test_a_key_that_another_program_has_is_left_to_it(self):
        self.start()
        first = self.screen.window(NAME)
        self.start()
        self.screen.visible(NAME, but=first)
        self.program.stop()  # it runs, and ends, without the key
        self.minimize(first)
        self.assert_brings_the_window_up()

    def test_a_held_key_counts_once(self):
        self.start()
        self.minimize()
        keys = KEY.split("+")
        for key in keys:
            self.screen.xdotool("keydown", key)
        self.minimize(self.screen.visible(NAME))
        time.sleep(1.5)  # the keyboard repeats 25 times a second after 0.66 s
        self.assertFalse(self.screen.windows(NAME), "it comes up while the key is held")
        for key in keys:
            self.screen.xdotool("keyup", key)
        self.assert_brings_the_window_up()
        self.assertTrue(self.program.runs())

    def test_the_key_follows_the_layout_of_the_keyboard(self):
        self.start(settings={"HotKeyCode": ord("Z")})
        for layout in ("us", "de", "us"):  # Y and Z change places
            subprocess.run(["setxkbmap", "-display", self.screen.display, layout], check=True, timeout=20)
            self.minimize()
            self.assert_brings_the_window_up("alt+ctrl+shift+z")

"""The key that brings the program up from anywhere."""
import time
import unittest

from desk import Screen
from program import Home, Program, main

NAME = "Kelmio Standard"
KEY = "alt+ctrl+shift+F8"  # as the settings have it by default


class HotKey(unittest.TestCase):
    def setUp(self):
        self.screen = Screen()
        self.addCleanup(self.screen.close)
        self.home = Home()
        self.addCleanup(self.home.remove)

    def run_program(self, home):
        program = Program(home, surroundings=self.screen.environment())
        self.addCleanup(program.stop)
        return program

    def test_brings_the_window_up_whichever_locks_are_on(self):
        self.run_program(self.home)
        for lock in ("", "Num_Lock", "Caps_Lock"):  # the last with both
            if lock:
                self.screen.press(lock)
            self.screen.minimize(self.screen.window(NAME))
            self.screen.no_window(NAME)
            self.screen.press(KEY)
            self.screen.visible(NAME)

    def test_a_key_that_another_program_has_is_left_to_it(self):
        self.run_program(self.home)
        first = self.screen.window(NAME)
        other = Home()
        self.addCleanup(other.remove)
        second = self.run_program(other)
        self.screen.visible(NAME, but=first)
        second.stop()  # it runs, and ends, without the key
        self.screen.minimize(first)
        self.screen.press(KEY)
        self.screen.visible(NAME)

    def test_a_held_key_counts_once(self):
        program = self.run_program(self.home)
        self.screen.minimize(self.screen.window(NAME))
        self.screen.no_window(NAME)
        keys = KEY.split("+")
        for key in keys:
            self.screen.hold(key)
        self.screen.minimize(self.screen.visible(NAME))
        self.screen.no_window(NAME)
        time.sleep(1.5)  # the keyboard repeats 25 times a second after 0.66 s
        self.assertFalse(self.screen.sees(NAME), "it comes up while the key is held")
        for key in keys:
            self.screen.let_go(key)
        self.screen.press(KEY)
        self.screen.visible(NAME)
        self.assertTrue(program.runs())

    def test_the_key_follows_the_layout_of_the_keyboard(self):
        self.home.remove()
        self.home = Home(settings={"HotKeyCode": ord("Z")})
        self.addCleanup(self.home.remove)
        self.run_program(self.home)
        for layout in ("us", "de", "us"):  # Y and Z change places
            self.screen.set_layout(layout)
            self.screen.minimize(self.screen.window(NAME))
            self.screen.no_window(NAME)
            self.screen.press("alt+ctrl+shift+z")
            self.screen.visible(NAME)


if __name__ == "__main__":
    main()

"""The window that tells of a new call: where it stands, what it covers and what it leaves alone."""
import pathlib
import subprocess
import tempfile
import unittest

import numpy as np

from desk import Screen
from program import Home, Program, eventually, main
from sip_caller import Call

MAIN = "Kelmio Standard"
ALERT = "New Call"
CONTACTS = "[1]\nName=Jane Sample\nPhone=5551234\n"
SCREEN = (1280, 800)
RED = (200, 30, 40)
PHOTO = 72 * 88  # pixels


def write_bitmap(path, color, width=72, height=88):
    pixels = np.tile(np.array(color, np.uint8), (height, width, 1))
    subprocess.run(["convert", "-size", f"{width}x{height}", "-depth", "8", "rgb:-", f"BMP3:{path}"],
                   input=pixels.tobytes(), check=True, timeout=20)


class Alert(unittest.TestCase):
    def setUp(self):
        self.screen = Screen()
        self.addCleanup(self.screen.close)

    def run_program(self, alert_time):
        """With a contact who has a photo."""
        home = Home(settings={"NewCallAlertTime": alert_time, "AutoAnswerRingCount": 20}, contacts=CONTACTS)
        self.addCleanup(home.remove)
        (home.path / "Photos").mkdir()
        write_bitmap(home.path / "Photos" / "1.bmp", RED)
        program = Program(home, surroundings=self.screen.environment())
        self.addCleanup(program.stop)
        return program

    def window_below(self):
        """Covers the corner of the screen with a window that writes the clicks it gets into the file returned."""
        folder = tempfile.TemporaryDirectory(prefix="kelmio-e2e-")
        self.addCleanup(folder.cleanup)
        events = pathlib.Path(folder.name) / "events"
        with events.open("w") as file:
            listener = subprocess.Popen(
                ["stdbuf", "-oL", "xev", "-display", self.screen.display, "-name", "below", "-event", "button",
                 "-geometry", "800x600+480+200"], stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.DEVNULL)
        self.addCleanup(listener.wait)
        self.addCleanup(listener.terminate)
        self.screen.visible("below")
        return events

    def pixels(self):
        """What is on the screen: rows of red, green and blue."""
        with tempfile.NamedTemporaryFile(suffix=".rgb") as file:
            subprocess.run(["import", "-display", self.screen.display, "-window", "root", "-depth", "8", file.name],
                           check=True, timeout=20)
            return np.fromfile(file.name, np.uint8).reshape(SCREEN[1], SCREEN[0], 3).astype(int)

    def red_pixels(self):
        return np.argwhere(np.abs(self.pixels() - RED).max(axis=2) < 8)

    def test_stands_in_the_corner_takes_no_focus_and_lets_clicks_through(self):
        program = self.run_program(6000)
        main_window = self.screen.window(MAIN)
        with Call(program.port) as call:
            call.wait_for(180)
            alert = self.screen.visible(ALERT)
            self.assertEqual(self.screen.active(), main_window)
            left, top, width, height = self.screen.place(alert)
            self.assertAlmostEqual(left + width, SCREEN[0], delta=4)
            self.assertAlmostEqual(top + height, SCREEN[1], delta=4)
            eventually(lambda: len(self.red_pixels()) == PHOTO, "the photo")
            photo = self.red_pixels()
            self.assertTrue((photo >= (top, left)).all() and (photo < (top + height, left + width)).all())

            events = self.window_below()
            self.assertEqual(len(self.red_pixels()), PHOTO, "the alert stays above")
            self.screen.click_at(left + width // 2, top + height // 2)
            eventually(lambda: "ButtonPress" in events.read_text(), "the click, below the alert")
            self.screen.no_window(ALERT)
        self.assertEqual(len(self.red_pixels()), 0)

    def test_the_program_ends_in_the_midst_of_it(self):
        for alert_time in (6, 60000):
            program = self.run_program(alert_time)
            with Call(program.port) as call:
                call.wait_for(180)
                program.wait_for_log("Caller: Jane Sample")
                self.assertEqual(program.stop(), 0)


if __name__ == "__main__":
    main()

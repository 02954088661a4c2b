"""The window that tells of a new call: where it stands, what it covers and what it leaves alone."""
import subprocess

import numpy as np

from desk import ScreenTestCase
from program import Beside, eventually
from sip_caller import Call

MAIN = "Kelmio Standard"
ALERT = "New Call"
CONTACTS = "[1]\nName=Jane Sample\nPhone=5551234\n"
RED = (200, 30, 40)
PHOTO = 72 * 88  # pixels


class Alert(ScreenTestCase):
    def start(self, alert_time):
        """With a contact who has a photo."""
        super().start(settings={"NewCallAlertTime": alert_time, "AutoAnswerRingCount": 20}, contacts=CONTACTS)
        photos = self.home.path / "Photos"
        subprocess.run(["convert", "-size", "72x88", f"xc:rgb{RED}", f"BMP3:{photos}/1.bmp"], check=True, timeout=20)

    def window_below(self):
        """Covers the corner of the screen with a window that writes the clicks it gets into the file returned."""
        beside = self.enterContext(Beside())
        events = beside.folder / "events"
        with events.open("w") as file:
            beside.start("stdbuf", "-oL", "xev", "-display", self.screen.display, "-name", "below", "-event", "button",
                         "-geometry", "800x600+480+200", stdout=file)
        self.screen.visible("below")
        return events

    def red_pixels(self):
        return np.argwhere(np.abs(self.screen.pixels() - RED).max(axis=2) < 8)

    def test_stands_in_the_corner_takes_no_focus_and_lets_clicks_through(self):
        self.start(6000)
        main_window = self.screen.window(MAIN)
        with Call(self.program.port) as call:
            call.wait_for(180)
            alert = self.screen.visible(ALERT)
            self.assertEqual(self.screen.active(), main_window)
            left, top, width, height = self.screen.place(alert)
            self.assertAlmostEqual(left + width, self.screen.SIZE[0], delta=4)
            self.assertAlmostEqual(top + height, self.screen.SIZE[1], delta=4)
            eventually(lambda: len(self.red_pixels()) == PHOTO, "the photo")
            photo = self.red_pixels()
            self.assertTrue((photo >= (top, left)).all() and (photo < (top + height, left + width)).all())

            events = self.window_below()
            self.assertEqual(len(self.red_pixels()), PHOTO, "the alert stays above")
            self.screen.click(alert, width // 2, height // 2)
            eventually(lambda: "ButtonPress" in events.read_text(), "the click, below the alert")
            self.screen.no_window(ALERT)
        self.assertEqual(len(self.red_pixels()), 0)

    def test_the_program_ends_in_the_midst_of_it(self):
        for alert_time in (6, 60000):
            self.start(alert_time)
            with Call(self.program.port) as call:
                call.wait_for(180)
                self.program.wait_for_log("Caller: Jane Sample")
                self.assertEqual(self.program.stop(), 0)

"""The icon in trays of both kinds, and the window that never gets lost."""
import pathlib
import unittest

from desk import Screen
from program import Home, Program, eventually, main
from trays import Bus, NotifierTray

NAME = "Kelmio Standard"
BALLOON = "Balloon"
MENU = ["-", "Show Window", "Hide Window", "-", "Contacts", "Add New Contact", "-", "Dialer", "Settings", "-", "On*",
        "Off", "-", "Exit"]


class TrayScreen(Screen):
    """A screen whose window manager has a tray."""

    PREFERENCES = "ShowTaskBar=1\nTaskBarShowTray=1\nTaskBarShowClock=0\n"

    def __init__(self):
        super().__init__()
        (pathlib.Path(self._folder) / ".icewm" / "preferences").write_text(self.PREFERENCES)
        self.end_tray()  # it has read other preferences
        self.start_tray()

    def start_tray(self):
        self._start("icewm")

    def end_tray(self):
        manager = self._processes.pop()
        manager.terminate()
        manager.wait(10)

    def icon(self):
        """The program's window in the tray."""

        def found():
            for window in self._xdotool("search", "--onlyvisible", "--class", "kelmio").split():
                size = dict(line.split("=") for line in
                            self._xdotool("getwindowgeometry", "--shell", window).splitlines())
                if 0 < int(size.get("WIDTH", 0)) <= 32 and int(size["Y"]) > 700:
                    return window
            return None

        return eventually(found, "an icon in the tray", 25)

    def click_icon(self, button, times=1):
        self._xdotool("mousemove", "--window", self.icon(), "8", "8", "click", "--repeat", str(times), "--delay", "60",
                      str(button))

    def popup(self):
        """Waits for the menu."""

        def found():
            return [w for w in self._xdotool("search", "--onlyvisible", "--class", "kelmio").split()
                    if "WIDTH" in (shell := self._xdotool("getwindowgeometry", "--shell", w)) and
                    150 < int(shell.split("HEIGHT=")[1].split()[0]) < 400]

        return eventually(found, "the menu of the tray")[-1]


class Tray(unittest.TestCase):
    def start(self, screen, surroundings):
        self.addCleanup(screen.close)
        home = Home()
        self.addCleanup(home.remove)
        program = Program(home, surroundings=screen.environment() | surroundings)
        self.addCleanup(program.stop)
        return program

    def test_an_embedded_icon_comes_back_with_its_tray(self):
        screen = TrayScreen()
        program = self.start(screen, {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"})
        screen.icon()
        screen.visible(BALLOON)
        screen.no_window(NAME)
        screen.click_icon(1, times=2)
        screen.visible(NAME)
        screen.click_icon(3)
        screen.popup()
        screen.key("Down", "Down", "Return")  # hide
        screen.no_window(NAME)

        screen.end_tray()
        screen.visible(NAME)  # a hidden window could not be reached any more
        screen.start_tray()
        screen.click_icon(1, times=2)
        screen.click_icon(3)
        screen.popup()
        screen.key("Up", "Return")  # exit
        eventually(lambda: not program.runs(), "the program's end")

    def test_a_notifier_is_found_when_it_comes_and_when_it_comes_again(self):
        bus = Bus()
        self.addCleanup(bus.close)
        screen = Screen()
        program = self.start(screen, bus.environment())
        screen.visible(NAME)
        tray = NotifierTray(bus)
        eventually(lambda: len(tray.items) == 2 and tray.item(), "the icon", 25)  # it is added twice
        self.assertTrue(tray.shown("ToolTip")[2].startswith(NAME))
        self.assertEqual(tray.menu(), MENU)
        tray.choose("Off")
        eventually(lambda: "Off*" in tray.menu() and "On" in tray.menu(), "the tick at Off")

        tray.choose("Hide Window")
        screen.no_window(NAME)
        screen.visible(BALLOON)  # in the corner, as such a tray doesn't say where its icon is
        tray.activate()
        screen.visible(NAME)
        tray.choose("Hide Window")
        screen.no_window(NAME)
        tray.close()
        screen.visible(NAME)

        again = NotifierTray(bus)
        self.addCleanup(again.close)
        eventually(lambda: len(again.items) == 2 and again.item(), "the icon added twice in the new tray", 25)
        self.assertTrue(again.shown("ToolTip")[2].startswith(NAME))
        again.choose("Exit")
        eventually(lambda: not program.runs(), "the program's end")


if __name__ == "__main__":
    main()

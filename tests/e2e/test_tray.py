"""The icon in trays of both kinds, and the window that never gets lost."""
from desk import Bus, ScreenTestCase
from program import eventually
from trays import NotifierTray, ScreenWithTray

NAME = "Kelmio Standard"
BALLOON = "Balloon"
MENU = ["-", "Show Window", "Hide Window", "-", "Contacts", "Add New Contact", "-", "Dialer", "Settings", "-", "On*",
        "Off", "-", "Exit"]


class Tray(ScreenTestCase):
    def test_an_embedded_icon_comes_back_with_its_tray(self):
        screen = self.screen = self.enterContext(ScreenWithTray())
        self.start({"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"})
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
        screen.start_manager()
        screen.click_icon(1, times=2)
        screen.click_icon(3)
        screen.popup()
        screen.key("Up", "Return")  # exit
        eventually(lambda: not self.program.runs(), "the program's end")

    def test_a_notifier_is_found_when_it_comes_and_when_it_comes_again(self):
        bus = self.enterContext(Bus())
        screen = self.screen
        self.start(bus.environment())
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
        eventually(lambda: not self.program.runs(), "the program's end")

"""Trays of both kinds: the window manager's, which takes windows in, and a host of status notifiers on a bus."""
import threading

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

from desk import Screen
from program import eventually

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"
# Programs look here for the properties before they ask for one.
DESCRIPTION = f"""<node><interface name="{WATCHER}">
<method name="RegisterStatusNotifierItem"><arg direction="in" type="s" name="service"/></method>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/>
</interface></node>"""


class ScreenWithTray(Screen):
    """A screen whose window manager has a tray."""

    PREFERENCES = "ShowTaskBar=1\nTaskBarShowTray=1\nTaskBarShowClock=0\n"

    def end_tray(self):
        self.manager.terminate()
        self.manager.wait(10)

    def icon(self):
        """The program's window in the tray."""
        return self._of_program(lambda top, width, height: 0 < width <= 32 and top > 700, "an icon in the tray")

    def click_icon(self, button, times=1):
        self.xdotool("mousemove", "--window", self.icon(), "8", "8", "click", "--repeat", str(times), "--delay", "60",
                     str(button))

    def popup(self):
        """Waits for the menu."""
        return self._of_program(lambda top, width, height: 150 < height < 400, "the menu of the tray")

    def _of_program(self, fits, what):
        def found():
            windows = self.xdotool("search", "--onlyvisible", "--class", "kelmio").split()
            return [window for window in windows if fits(*self.place(window)[1:])]

        return eventually(found, what, 25)[0]


class NotifierTray:
    """A host of status notifiers. `items` are the services that have registered, in their order."""

    def __init__(self, bus):
        self.items = []
        dbus.mainloop.glib.threads_init()
        self._served = dbus.bus.BusConnection(bus.address, mainloop=dbus.mainloop.glib.DBusGMainLoop())
        self._calls = dbus.bus.BusConnection(bus.address)
        self._loop = GLib.MainLoop()
        tray = self

        class Watcher(dbus.service.Object):
            @dbus.service.method("org.freedesktop.DBus.Introspectable", out_signature="s")
            def Introspect(self):
                return DESCRIPTION

            @dbus.service.method(WATCHER, in_signature="s")
            def RegisterStatusNotifierItem(self, service):
                tray.items.append(str(service))

            @dbus.service.method(PROPERTIES, in_signature="ss", out_signature="v")
            def Get(self, interface, name):
                return self.GetAll(interface)[name]

            @dbus.service.method(PROPERTIES, in_signature="s", out_signature="a{sv}")
            def GetAll(self, interface):
                return {"IsStatusNotifierHostRegistered": True, "ProtocolVersion": dbus.Int32(0)}

        self._watcher = Watcher(self._served, "/StatusNotifierWatcher")
        self._served.request_name(WATCHER)
        self._thread = threading.Thread(target=self._loop.run, daemon=True)
        self._thread.start()

    def close(self):
        self._loop.quit()
        self._thread.join(5)
        self._watcher.remove_from_connection()
        self._served.close()
        self._calls.close()

    def item(self):
        """The service of the icon, nothing while there is none."""
        standing = [service for service in self.items if self._calls.name_has_owner(service)]
        return standing[-1] if standing else None

    def shown(self, name):
        """A property of the icon."""
        return self._object("/StatusNotifierItem", PROPERTIES).Get(ITEM, name)

    def activate(self):
        self._object("/StatusNotifierItem", ITEM).Activate(dbus.Int32(0), dbus.Int32(0))

    def menu(self):
        """The lines of the menu: captions, with a dash for a separator and a star behind what is ticked."""
        return [line for _, line in self._entries()]

    def choose(self, caption):
        [number] = [number for number, line in self._entries() if line.rstrip("*") == caption]
        self._menu().Event(number, "clicked", dbus.String("", variant_level=1), dbus.UInt32(0))

    def _object(self, path, interface):
        return dbus.Interface(self._calls.get_object(self.item(), path, introspect=False), interface)

    def _menu(self):
        return self._object(str(self.shown("Menu")), MENU)

    def _entries(self):
        self._menu().AboutToShow(dbus.Int32(0))
        _, (_, _, entries) = self._menu().GetLayout(dbus.Int32(0), dbus.Int32(-1), dbus.Array([], signature="s"))
        return [(number, self._line(entry)) for number, entry, _ in entries if entry.get("visible", True)]

    @staticmethod
    def _line(properties):
        if properties.get("type") == "separator":
            return "-"
        ticked = "*" if properties.get("toggle-state") == 1 else ""
        return str(properties.get("label", "")).replace("_", "") + ticked

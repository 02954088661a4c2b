"""Trays of both kinds: the window manager's, which takes windows in, and a host of status notifiers on a bus of its own."""
import subprocess
import threading

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

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


class Bus:
    """A session bus of the test's own."""

    def __init__(self):
        self._daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"],
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.address = self._daemon.stdout.readline().strip()

    def environment(self):
        return {"DBUS_SESSION_BUS_ADDRESS": self.address}

    def close(self):
        self._daemon.terminate()
        self._daemon.wait()
        self._daemon.stdout.close()


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
                return {"IsStatusNotifierHostRegistered": True, "ProtocolVersion": dbus.Int32(0)}[name]

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
        item = self._calls.get_object(self.item(), "/StatusNotifierItem", introspect=False)
        return item.Get(ITEM, name, dbus_interface=PROPERTIES)

    def activate(self):
        item = self._calls.get_object(self.item(), "/StatusNotifierItem", introspect=False)
        item.Activate(dbus.Int32(0), dbus.Int32(0), dbus_interface=ITEM)

    def menu(self):
        """The lines of the menu: captions, with a dash for a separator and a star behind what is ticked."""
        return [self._line(properties) for _, properties in self._entries()]

    def choose(self, caption):
        for number, properties in self._entries():
            if self._line(properties).rstrip("*") == caption:
                self._menu().Event(number, "clicked", dbus.String("", variant_level=1), dbus.UInt32(0),
                                   dbus_interface=MENU)

    def _menu(self):
        return self._calls.get_object(self.item(), str(self.shown("Menu")), introspect=False)

    def _entries(self):
        self._menu().AboutToShow(dbus.Int32(0), dbus_interface=MENU)
        _, (_, _, entries) = self._menu().GetLayout(
            dbus.Int32(0), dbus.Int32(-1), dbus.Array([], signature="s"), dbus_interface=MENU)
        return [(number, properties) for number, properties, _ in entries if properties.get("visible", True)]

    @staticmethod
    def _line(properties):
        if properties.get("type") == "separator":
            return "-"
        ticked = "*" if properties.get("toggle-state") == 1 else ""
        return str(properties.get("label", "")).replace("_", "") + ticked

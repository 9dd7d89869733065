"""The icon in the tray, with trays of either kind that come late and go again."""
import os
import subprocess
import time

from gi.repository import Gio, GLib

from drive import processes
from drive.manager import SIGN_IN_WINDOW
from drive.waiting import wait_for

from steps import expect


class TrayWatcher:
    """A desktop's tray in the newer fashion: the watcher's name on the bus, and what registered there."""

    INTERFACE = """<node><interface name="org.kde.StatusNotifierWatcher">
      <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
      <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
      <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
      <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
      <property name="ProtocolVersion" type="i" access="read"/>
      <signal name="StatusNotifierHostRegistered"/>
    </interface></node>"""

    def __init__(self):
        self.bus = Gio.DBusConnection.new_for_address_sync(
            os.environ["DBUS_SESSION_BUS_ADDRESS"], Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        self.item = None
        interface = Gio.DBusNodeInfo.new_for_xml(self.INTERFACE).interfaces[0]
        self.bus.register_object("/StatusNotifierWatcher", interface, self._called, self._asked, None)
        self.ask("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                 GLib.Variant("(su)", ("org.kde.StatusNotifierWatcher", 0)))

    def _called(self, _bus, sender, _path, _interface, method, arguments, call):
        if method == "RegisterStatusNotifierItem":
            self.item = sender
        call.return_value(None)

    @staticmethod
    def _asked(_bus, _sender, _path, _interface, name):
        return {"RegisteredStatusNotifierItems": GLib.Variant("as", []),
                "IsStatusNotifierHostRegistered": GLib.Variant("b", True),
                "ProtocolVersion": GLib.Variant("i", 0)}[name]

    def serve(self):
        """Answers what came in; true once an icon registered."""
        while GLib.MainContext.default().iteration(False):
            pass
        return self.item

    def ask(self, name, path, interface, method, arguments=None):
        return self.bus.call_sync(name, path, interface, method, arguments, None, 0, 5000, None).unpack()

    def property(self, name):
        return self.ask(self.item, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
                        GLib.Variant("(ss)", ("org.kde.StatusNotifierItem", name)))[0]

    def menu(self):
        """Labels of the exported menu, with whether each can be chosen."""
        path = self.property("Menu")
        self.ask(self.item, path, "com.canonical.dbusmenu", "AboutToShow", GLib.Variant("(i)", (0,)))
        layout = self.ask(self.item, path, "com.canonical.dbusmenu", "GetLayout", GLib.Variant("(iias)", (0, -1, [])))
        return {entry[1].get("label", "").replace("_", ""): (entry[0], entry[1].get("enabled", True))
                for entry in layout[1][2]}

    def choose(self, label):
        self.ask(self.item, self.property("Menu"), "com.canonical.dbusmenu", "Event",
                 GLib.Variant("(isvu)", (self.menu()[label][0], "clicked", GLib.Variant("s", ""), 0)))

    def activate(self):
        self.ask(self.item, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate",
                 GLib.Variant("(ii)", (100, 100)))


def late_tray(stage):
    """A tray that appears after the start gets the icon: the rows on a press, the same commands as plain text."""
    stage.store_server(stage.server.https_port)
    manager = stage.launch()
    manager.control(SIGN_IN_WINDOW)
    tray = TrayWatcher()
    wait_for("the icon in the tray", tray.serve, 10)
    tip = wait_for("the tool tip", lambda: tray.property("ToolTip")[2], 5)
    expect(tip == "Quillbox", f"the tool tip says {tip!r}")
    entries = tray.menu()
    expect(not entries["Settings…"][1] and entries["Quit Quillbox"][1], f"the exported menu is {entries}")
    menu = OpenMenu(manager)
    for close in (lambda: stage.desktop.key("Escape"), tray.activate):
        tray.activate()
        menu.wait_until_open()
        close()
        menu.wait_until_closed()
        time.sleep(ONE_PRESS)
    tray.choose("Quit Quillbox")
    expect(manager.wait_for_end() == 0, "the manager ended with an error")


ONE_PRESS = 0.4  # what closes the menu and presses the icon at once is one press


class OpenMenu:
    """The menu that the icon opens: a window that was not there before."""

    def __init__(self, manager):
        self.manager, self.before = manager, set(manager.windows())

    def windows(self):
        return set(self.manager.windows()) - self.before

    def wait_until_open(self):
        wait_for("the menu on the screen", self.windows, 10)

    def wait_until_closed(self):
        wait_for("the menu to close", lambda: not self.windows(), 10)


def tray_of_the_screen(stage):
    """A real tray of the older fashion, which comes late and goes again: a press on the icon opens the menu, the next
    one closes it; without the tray a second launch shows the menu."""
    stage.store_server(stage.server.https_port)
    manager = stage.launch()
    manager.control(SIGN_IN_WINDOW)
    before = set(manager.windows())
    for _ in range(2):
        tray = processes.start(["trayer", "--edge", "top", "--align", "left", "--widthtype", "pixel", "--width", "100",
                                "--height", "32"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        icon = wait_for("the icon in the tray", lambda: set(manager.windows()) - before, 10,
                        while_true=(lambda: tray.poll() is None, "the tray ended")).pop()
        menu = OpenMenu(manager)
        for button in (1, 3):
            stage.desktop.click(icon, button)
            menu.wait_until_open()
            stage.desktop.click(icon, button)
            menu.wait_until_closed()
            time.sleep(ONE_PRESS)
            expect(not menu.windows(), "the press that closed the menu opened it again")
        tray.terminate()
        tray.wait(5)
        wait_for("the icon to go", lambda: not set(manager.windows()) - before, 10)
    manager.choose_in_menu("performQuitApp")
    expect(manager.wait_for_end() == 0, "the manager ended with an error")


ALL = (late_tray, tray_of_the_screen)

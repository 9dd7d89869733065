"""Every entry of the menu and every pane of the settings window, pressed in the real program."""
import os
import plistlib
import stat
import urllib.parse

from gi.repository import Gio, GLib

from drive import processes, road
from drive.manager import SIGN_IN_WINDOW
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD
from drive.server_calls import ServerCalls
from drive.waiting import wait_for

from steps import expect, signed_in

OPENER = """#!/bin/sh
printf '%s\\n' "$*" >> "{log}"
"""
PANES = {"btnGeneral": "btnCheckClearCache", "btnAccount": "btnChangePassword", "btnAbout": "txtVersion"}


class Opener:
    """Stands before the desktop's opener in the path and notes what it was asked to open."""

    def __init__(self, folder):
        self.log = os.path.join(folder, "opened")
        bin_folder = os.path.join(folder, "bin")
        os.makedirs(bin_folder)
        path = os.path.join(bin_folder, "xdg-open")
        with open(path, "w", encoding="utf-8") as file:
            file.write(OPENER.format(log=self.log))
        os.chmod(path, os.stat(path).st_mode | stat.S_IXUSR)
        os.environ["PATH"] = bin_folder + os.pathsep + os.environ["PATH"]

    def opened(self):
        if not os.path.exists(self.log):
            return []
        with open(self.log, encoding="utf-8") as file:
            return urllib.parse.unquote(file.read()).splitlines()

    def wait_for(self, part, seconds=15):
        """The address or path that was opened and holds `part`."""
        return wait_for(f"something with {part!r} to be opened; opened so far: {self.opened()}",
                        lambda: next((line for line in self.opened() if part in line), None), seconds)


def prepared(stage):
    opener = Opener(stage.folder)
    manager, _ = signed_in(stage)
    road.wait_for_volume(manager)
    return manager, opener


def menu_entries(stage):
    """What leads outside is opened by the desktop's programs, with the address that belongs to it."""
    manager, opener = prepared(stage)
    manager.choose_in_menu("showQuillboxWindow")
    opener.wait_for("volumes/Quillbox")
    manager.choose_in_menu("showQuillboxWeb")
    page = opener.wait_for(".html")
    expect(stage.profile.session()["account"]["tokenId"] not in page, "the token stands in an argument list")
    for entry, part in (("helpSubMenu_QuickStart", "quickstart"), ("helpSubMenu_HelpOnline", "/help?"),
                        ("helpSubMenu_TrainOnline", "training")):
        if manager.launch_again() != 0:
            expect(False, "the second launch ended with an error")
        manager.press("helpMenu")
        manager.press(entry)
        opener.wait_for(part)
    manager.choose_in_menu("showSearchWindow")
    manager.control("txtSearchInputField")
    manager.choose_in_menu("changePassword")
    manager.control("comfirmPassword")
    road.sign_out(manager)
    expect(not manager.find("txtSearchInputField"), "the search window stayed after signing out")
    expect(not manager.find("comfirmPassword"), "the change-password window stayed after signing out")
    manager.launch_again()
    for entry in ("showQuillboxWindow", "showTransferWindow", "showPreferenceWindow", "performLogout"):
        expect(not manager.control(entry).is_enabled(), f"{entry} is enabled while signed out")
    expect(not manager.find("openMyFavorites") and not manager.find("changePassword"), "run-time entries stayed")
    manager.press("performQuitApp")
    expect(manager.wait_for_end() == 0, "the manager ended with an error")


def settings(stage):
    """All panes, the flag that is kept, and the way to the change of the password."""
    manager, opener = prepared(stage)
    manager.choose_in_menu("showPreferenceWindow")
    for button, content in PANES.items():
        manager.press(button)
        manager.control(content)
        if os.environ.get("QUILLBOX_PICTURES"):
            manager.screenshot(os.path.join(os.environ["QUILLBOX_PICTURES"], f"settings-{button}.png"))
    manager.press("btnAccount")
    wait_for("the account's quota", lambda: "G" in manager.control("txtQuota").spoken_name(), 10)
    expect(manager.control("txtAccount").spoken_name() == stage.profile.session()["account"]["name"],
           "the account pane names another account")
    manager.press("btnGeneral")
    manager.press("btnCheckClearCache")
    path = os.path.join(os.path.dirname(stage.profile.session_file), "clearCache.plist")
    user = stage.profile.session()["account"]["userId"]
    wait_for("the choice to be kept", lambda: kept_choice(path, user), 5)
    manager.press("btnAccount")
    manager.press("btnChangePassword")
    manager.control("comfirmPassword")
    road.sign_out(manager)
    manager.gone("btnGeneral")
    road.quit_manager(manager)


def kept_choice(path, user):
    try:
        with open(path, "rb") as file:
            return plistlib.load(file)["ClearCacheSettingWindowFlag"].get(user)
    except (OSError, KeyError, plistlib.InvalidFileException):
        return None


class Panel:
    """A window of the companion's, in a program of its own."""

    def __init__(self, stage, manager, kind):
        self.stage, self.kind = stage, kind
        self.process_id = wait_for(f"the companion's window {kind}", lambda: self._running(manager), 15)

    def _running(self, manager):
        return next((process_id for process_id in manager.profile.processes()
                     if self.kind in processes.arguments(process_id)[1:2]), None)

    def control(self, name):
        def find():
            application = self.stage.bus.application(self.process_id)
            return application and application.find(name)
        return wait_for(f"{name} in the companion's window {self.kind}", find, 15)

    def type(self, name, text):
        """Types into a field and presses Return."""
        field = self.control(name)

        def has_keyboard():
            # Nobody manages the windows here: the menu that goes away may take the focus along once more.
            self.focus()
            field.focus()
            return field.has_focus()
        wait_for(f"the keyboard focus in {name}", has_keyboard, 10)
        self.stage.desktop.type_text(text)
        wait_for(f"the typed text in {name}", lambda: field.text_length() == len(text), 5)
        self.stage.desktop.key("Return")

    def texts(self):
        application = self.stage.bus.application(self.process_id)
        return [text for child in application.children() for text in child.shown_texts()] if application else []

    def wait_for_text(self, part):
        wait_for(f"{part!r} in the companion's window {self.kind}; shown: {self.texts()}",
                 lambda: any(part in text for text in self.texts()), 15)

    def focus(self):
        window = wait_for("the window on the screen", lambda: self.stage.desktop.windows(self.process_id), 10)[-1]
        self.stage.desktop.focus(window)
        if os.environ.get("QUILLBOX_PICTURES"):
            self.stage.desktop.screenshot(window, os.path.join(os.environ["QUILLBOX_PICTURES"], self.kind + ".png"))


def companion_windows(stage):
    """Transfers, favourites, search and direct upload show a window, and what is chosen there happens."""
    manager, opener = prepared(stage)
    own = stage.profile.volume.own_documents()
    folder = os.path.join(own, "Reports")
    os.mkdir(folder)
    for name in ("Plan 2026.txt", "Other.txt"):
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(name)
    second = ServerCalls("127.0.0.1", stage.server.https_port, True, stage.server.certificate)
    second.sign_in(DEMO_ACCOUNT, DEMO_PASSWORD)
    reports = second.call("dir", "list", docid=second.own_entry(), attr=True)["dirs"][0]["docid"]
    second.call("favorites", "add", docid=second.files(reports)["Other.txt"]["docid"])

    manager.choose_in_menu("openMyFavorites")
    favorites = Panel(stage, manager, "favorites")
    favorites.wait_for_text("Other.txt")
    expect(not any("Plan" in text for text in favorites.texts()), "a document that is no favourite is listed")
    favorites.focus()
    favorites.control("documents").focus()
    stage.desktop.key("Home")
    stage.desktop.key("Return")
    opener.wait_for(folder)

    manager.choose_in_menu("showContentSearchWindow")
    search = Panel(stage, manager, "search")
    search.type("searchField", "plan")
    search.wait_for_text("Plan 2026.txt")

    manager.choose_in_menu("showTransferWindow")
    transfers = Panel(stage, manager, "transfers")
    transfers.wait_for_text("No transfers")
    # Every program that is started closes its copy of the file, which saves it: nothing is started here.
    with open(os.path.join(own, "unfinished.txt"), "w", encoding="utf-8") as file:
        file.write("not closed yet")
        file.flush()
        transfers.wait_for_text("unfinished.txt")
    transfers.wait_for_text("No transfers")

    source = os.path.join(stage.folder, "to upload.txt")
    with open(source, "w", encoding="utf-8") as file:
        file.write("uploaded")
    manager.choose_in_menu("showDirectUploadPanel")
    upload = Panel(stage, manager, "upload")
    upload.type("fileNameEdit", source)
    upload.wait_for_text("Finished")
    expect("to upload.txt" in second.files(second.own_entry()), "the server has no such file")
    road.sign_out(manager)
    wait_for("the companion's windows to go", lambda: not any(
        "QuillboxPanel" in (processes.executable(process_id) or "") for process_id in manager.profile.processes()), 10)
    road.quit_manager(manager)


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

    def choose(self, identity):
        self.ask(self.item, self.property("Menu"), "com.canonical.dbusmenu", "Event",
                 GLib.Variant("(isvu)", (identity, "clicked", GLib.Variant("s", ""), 0)))

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
    before = set(manager.windows())
    tray.activate()
    menu = wait_for("the menu on the screen", lambda: set(manager.windows()) - before, 10).pop()
    if os.environ.get("QUILLBOX_PICTURES"):
        stage.desktop.screenshot(menu, os.path.join(os.environ["QUILLBOX_PICTURES"], "tray-menu.png"))
    stage.desktop.key("Escape")
    wait_for("the menu to close", lambda: not set(manager.windows()) - before, 10)
    tray.choose(tray.menu()["Quit Quillbox"][0])
    expect(manager.wait_for_end() == 0, "the manager ended with an error")


ALL = (menu_entries, settings, companion_windows, late_tray)

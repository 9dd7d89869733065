"""The shell when things go wrong around it: the companion, the volume, the session bus, the folders of the user."""
import contextlib
import os
import pathlib
import shutil
import signal
import stat
import subprocess
import time

from gi.repository import Gio

from drive import processes, road
from drive.manager import SERVER_WINDOW, SIGN_IN_WINDOW
from drive.round_trip import second_session
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD
from drive.waiting import wait_for

import volume_cases
from opener import Opener
from panel import Panel
from steps import expect, signed_in, store_automatic_sign_in
from tray_cases import TrayWatcher

ENTRY = "com.velto.quillbox.desktop"
STOP_PATIENCE = 15  # what the manager grants a companion that was told to stop


def two_at_once(stage):
    """Of copies that start within the same instant exactly one stays; the others end well."""
    for _ in range(3):
        managers = [stage.launch() for _ in range(3)]
        wait_for("two of three copies to end", lambda: sum(one.runs() for one in managers) == 1, 15)
        left = next(one for one in managers if one.runs())
        left.control(SERVER_WINDOW)
        codes = [one.process.returncode for one in managers if one is not left]
        expect(codes == [0, 0], f"the other copies ended with {codes}")
        left.process.terminate()
        left.wait_for_end(5)


def companion_stopped(stage):
    """A companion that hangs holds up neither signing out nor quitting, and is gone after the next start."""
    manager, companion = signed_in(stage)
    road.wait_for_volume(manager)
    os.kill(companion, signal.SIGSTOP)
    manager.choose_in_menu("performLogout")
    manager.control(SIGN_IN_WINDOW, STOP_PATIENCE + 10)
    expect(not stage.profile.companions(), "the hanging companion is still there")

    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    companion = road.wait_for_companion(manager)
    road.wait_for_volume(manager)
    os.kill(companion, signal.SIGSTOP)
    manager.choose_in_menu("performQuitApp")
    expect(manager.wait_for_end(15) == 0, "the manager did not quit beside a hanging companion")
    manager = stage.launch()
    wait_for("the companion of the earlier run to end", lambda: not stage.profile.companions(), 10)
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    road.wait_for_companion(manager)
    road.wait_for_volume(manager)
    road.quit_manager(manager)


def put_in_place(stage, script):
    """Another program in the companion's place; returns the file where it notes its id when it runs."""
    note = stage.profile.companion + ".pid"
    with contextlib.suppress(FileNotFoundError):
        os.remove(note)
    with contextlib.suppress(FileNotFoundError):
        os.remove(stage.profile.companion)
    with open(stage.profile.companion, "w", encoding="utf-8") as file:
        file.write('#!/bin/sh\necho $$ >"$0.pid.new" && mv "$0.pid.new" "$0.pid"\n' + script)
    os.chmod(stage.profile.companion, 0o755)
    return note


def companion_replaced(stage):
    """Another program in its place: one that ends at once signs out again, one that ignores everything is ended."""
    stage.store_server(stage.server.https_port)
    note = put_in_place(stage, "exit 0\n")
    manager = stage.launch()
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    wait_for("the first program to run", lambda: os.path.exists(note), 10)
    manager.control(SIGN_IN_WINDOW, 10)

    note = put_in_place(stage, "trap '' TERM INT HUP\nwhile :; do sleep 0.2; done\n")
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    wait_for("the second program to run", lambda: os.path.exists(note), 10)
    with open(note, encoding="ascii") as file:
        other = int(file.read())
    manager.choose_in_menu("performLogout")
    manager.control(SIGN_IN_WINDOW, STOP_PATIENCE + 10)
    expect(other not in processes.running(), "the other program still runs")


def no_session_bus(stage):
    """Without a session bus there is a window all the same, and an end without a complaint."""
    manager_bus = os.environ["DBUS_SESSION_BUS_ADDRESS"]
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={stage.folder}/nobody-listens"
    try:
        manager = stage.launch()
        wait_for("a window", manager.windows, 20, while_true=(manager.runs, "the manager ended"))
        manager.process.terminate()
        expect(manager.wait_for_end(10) == 0, "the manager ended with an error")
    finally:
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = manager_bus


def nothing_can_be_written(stage):
    """A read-only installation, folders of the user that take nothing: the window comes, and signing in ends nothing."""
    stage.store_server(stage.server.https_port)
    kept = [os.path.join(stage.profile.folder, name) for name in ("config", "data", "cache")] + [stage.profile.resources]
    branding = os.path.join(stage.profile.resources, "QBOEM.plist")
    os.chmod(branding, 0o444)
    modes = {folder: stat.S_IMODE(os.stat(folder).st_mode) for folder in kept}
    for folder in kept:
        os.chmod(folder, 0o500)
    try:
        for _ in range(2):
            manager = stage.launch()
            manager.type("txtUserName", DEMO_ACCOUNT)
            manager.type("txtPassword", DEMO_PASSWORD)
            manager.press(SIGN_IN_WINDOW)
            wait_for("the sign-in to end, one way or the other", lambda: not manager.find(SIGN_IN_WINDOW) or
                     manager.find("txtErrorMessage"), 20, while_true=(manager.runs, "the manager ended"))
            manager.process.terminate()
            expect(manager.wait_for_end(10) == 0, "the manager ended with an error")
    finally:
        for folder, mode in modes.items():
            os.chmod(folder, mode)


def addresses(stage):
    """Addresses that come while the user is signed out, and three at once while the companion is still starting."""
    opener = Opener(stage.folder)
    manager, _ = signed_in(stage)
    road.wait_for_volume(manager)
    calls = second_session(stage.profile, DEMO_ACCOUNT, DEMO_PASSWORD)
    early, *three = names = ("early", "first", "second", "third")
    links = {name: f"quillbox://open?docid={calls.create_folder(calls.own_entry(), name)}" for name in names}
    road.sign_out(manager)

    os.rename(stage.profile.companion, stage.profile.companion + ".real")
    note = put_in_place(stage, 'until [ -e "$0.go" ]; do sleep 0.02; done\nexec "$0.real" "$@"\n')
    expect(manager.launch_again(links[early]) == 0, "the launch with an address failed")
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    wait_for("the companion to be started", lambda: os.path.exists(note), 10)
    expect(manager.launch_again(*(links[name] for name in three)) == 0, "the launch with three failed")
    pathlib.Path(stage.profile.companion + ".go").touch()
    opener.wait_for("third")
    opener.wait_for(early)
    order = [name for name in (line.rpartition("/")[2] for line in opener.opened()) if name in three]
    expect(order == sorted(order, key=three.index), f"opened in this order: {order}")


def session_bus_lost(stage):
    """The bus goes while the user is signed in, and comes back: the log says so, nothing spins meanwhile, and then the
    icon, its menu, notifications and second launches are there again. The automatic sign-in and the menu that the tray
    draws stand in for assistive technology, which goes with the bus."""
    opener = Opener(stage.folder)
    address = os.environ["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={stage.desktop.runtime}/other-bus"
    bus, _ = stage.desktop.start_bus(address)
    tray = TrayWatcher()
    store_automatic_sign_in(stage)
    manager = stage.launch()
    companion = road.wait_for_companion(manager)
    road.wait_for_volume(manager)
    wait_for("the icon in the tray", tray.serve, 10)

    bus.kill()
    wait_for("both programs to tell of the loss", lambda: stage.manager_log().count("The session bus is gone") == 2, 5)
    told = stage.manager_log()
    before = processes.seconds_used(manager.process.pid) + processes.seconds_used(companion)
    time.sleep(2)
    used = processes.seconds_used(manager.process.pid) + processes.seconds_used(companion) - before
    expect(used < 0.2, f"without a bus {used:.2f} s of processor time went in 2 s")
    expect(stage.manager_log() == told, f"told of the loss: {stage.manager_log()[len(told):]}")
    expect(manager.runs() and stage.profile.companions() == [companion], "the loss of the bus ended a program")

    stage.desktop.start_bus(address)
    tray = TrayWatcher()
    wait_for("the icon in the new tray", tray.serve, 20)
    expect(manager.launch_again() == 0, "the second launch ended with an error")
    opener.wait_for("volumes/Quillbox")
    tray.choose("Transfers")
    Panel(stage, manager, "transfers")
    tray.choose("Sign Out")
    wait_for("the companion to end", lambda: not stage.profile.companions(), 15)
    tray.choose("Quit Quillbox")
    expect(manager.wait_for_end() == 0, "the manager ended with an error")


class SmallDisk:
    """Takes the place of the folders in which the user's settings, data and caches lie."""

    def __init__(self, profile):
        self.folder = os.environ["QUILLBOX_SMALL_DISK"]
        self.filler = os.path.join(self.folder, "filler")
        for name in ("config", "data", "cache"):
            os.mkdir(os.path.join(self.folder, name), 0o700)
            os.rmdir(os.path.join(profile.folder, name))
            os.symlink(os.path.join(self.folder, name), os.path.join(profile.folder, name))

    def fill(self):
        with contextlib.suppress(OSError), open(self.filler, "ab", buffering=0) as file:
            while True:
                file.write(bytes(4096))

    def clear(self):
        os.remove(self.filler)


def home_full(stage):
    """A full disk: what cannot be kept is said, what was kept stays whole, and nothing ends but by its own crash."""
    disk = SmallDisk(stage.profile)
    stage.store_server(stage.server.https_port)
    disk.fill()
    manager = stage.launch()
    manager.type("txtUserName", DEMO_ACCOUNT)
    manager.type("txtPassword", DEMO_PASSWORD)
    manager.press(SIGN_IN_WINDOW)
    message = wait_for("a text in the error line", lambda: manager.control("txtErrorMessage").spoken_name(), 10)
    expect("could not be saved" in message, f"the error line says {message!r}")
    expect(not stage.profile.companions(), "a companion runs without a session")
    disk.clear()
    road.sign_in(manager)
    road.wait_for_companion(manager)
    own = road.wait_for_volume(manager)

    session = pathlib.Path(stage.profile.session_file).read_bytes()
    disk.fill()
    manager.choose_in_menu("showPreferenceWindow")
    manager.press("btnCheckClearCache")
    manager.control("alertButton1")
    expect(any("could not be saved" in text for text in manager.shown_texts()), f"shown: {manager.shown_texts()}")
    manager.press("alertButton1")
    expect(not manager.control("btnCheckClearCache").is_checked(), "the box shows a choice that was not kept")
    expect(volume_cases.fails(pathlib.Path(own, "large.bin").write_bytes, bytes(4 * 1024 * 1024)),
           "a program was told that its file is saved")
    road.sign_out(manager)
    expect(pathlib.Path(stage.profile.session_file).read_bytes() == session, "the session file is damaged")

    for kept in (0, 1):  # whoever sends the signal gets a report, and the program goes on
        manager.process.send_signal(signal.SIGSEGV)
        wait_for("the report's end", lambda: f"write SigCrash sucess:{kept}" in stage.manager_log(), 5)
        reports = [path.name for path in pathlib.Path(disk.folder, "cache").rglob("SigCrash/*")]
        expect(len(reports) == kept, f"reports: {reports}")
        if not kept:
            disk.clear()
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    road.wait_for_companion(manager)


def desktop_entry(stage):
    """The desktop starts the bundle by its entry and hands it addresses of the scheme; removing leaves nothing."""
    folders = {name: os.path.join(stage.folder, name) for name in ("XDG_DATA_HOME", "XDG_CONFIG_HOME")}
    tool = pathlib.Path(__file__).resolve().parents[2] / "packaging/install-desktop"
    bundle = os.path.join(stage.folder, 'a "strange" $place/Quillbox.app')
    shutil.copytree(stage.profile.bundle, bundle)

    def install(*arguments):
        subprocess.run([tool, *arguments], env={**os.environ, **folders}, check=True)
        return sorted(str(path.relative_to(stage.folder)) for folder in folders.values()
                      for path in pathlib.Path(folder).rglob("com.velto.quillbox*"))

    found = install("--autostart", bundle)
    expect(len(found) == 4, f"installed: {found}")
    entry = Gio.DesktopAppInfo.new_from_filename(os.path.join(stage.folder, "XDG_DATA_HOME/applications/" + ENTRY))
    expect("x-scheme-handler/quillbox" in entry.get_supported_types(), "the entry takes no addresses")
    start = Gio.DesktopAppInfo.new_from_filename(os.path.join(stage.folder, "XDG_CONFIG_HOME/autostart/" + ENTRY))
    context = Gio.AppLaunchContext()
    for name, value in stage.profile.environment().items():
        context.setenv(name, value)
    started = []
    context.connect("launched", lambda _context, _entry, data: started.append(data.unpack()["pid"]))
    start.launch([], context)
    wait_for("the application to start with the session", lambda: processes.running_below(bundle), 10)
    first = processes.running_below(bundle)[0]
    wait_for("its window", lambda: stage.desktop.windows(first), 20)
    entry.launch_uris(["quillbox://open?docid=1"], context)
    wait_for("the second launch to end", lambda: started[1] not in processes.running(), 10)
    expect(processes.running_below(bundle) == [first], "the second launch took the first one's place")
    os.kill(first, signal.SIGTERM)
    wait_for("the application to end", lambda: not processes.running_below(bundle), 10)
    expect(install("--remove") == [], "something is left of the entry")


ALL = (two_at_once, companion_stopped, companion_replaced, no_session_bus, session_bus_lost, nothing_can_be_written,
       home_full, addresses, desktop_entry)

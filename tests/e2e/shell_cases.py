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
from drive.manager import SERVER_WINDOW, SIGN_IN_WINDOW, Manager
from drive.round_trip import second_session
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD
from drive.waiting import wait_for

from menu_cases import Opener
from steps import expect, signed_in

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


def volume_busy(stage):
    """A file that is open on the volume: the user is asked and can stay, twice; forced, the end comes all the same."""
    manager, companion = signed_in(stage)
    path = os.path.join(road.wait_for_volume(manager), "open.txt")
    file = os.open(path, os.O_WRONLY | os.O_CREAT)
    try:
        os.write(file, b"not saved yet")
        for entry in ("performLogout", "performQuitApp"):
            manager.choose_in_menu(entry)
            manager.press("alertButton2")
            time.sleep(2.5)  # as long as the watch takes to notice an end of the companion
            expect(manager.runs() and stage.profile.companions() == [companion], f"{entry} went on though refused")
            os.write(file, b", and more")
        manager.choose_in_menu("performQuitApp")
        manager.press("alertButton1")
        expect(manager.wait_for_end(15) == 0, "the forced end did not come")
    finally:
        with contextlib.suppress(OSError):  # nobody is left to take it
            os.close(file)
    wait_for("everything of the application to end", lambda: not stage.profile.processes(), 15)
    stage.profile.volume.wait_until_gone(10)


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
    """Addresses reach the companion: handed over at launch, while signed out, and three at once, in their order."""
    opener = Opener(stage.folder)
    manager, _ = signed_in(stage)
    road.wait_for_volume(manager)
    calls = second_session(stage.profile, DEMO_ACCOUNT, DEMO_PASSWORD)
    names = ("at launch", "signed out", "first", "second", "third")
    links = {name: f"quillbox://open?docid={calls.create_folder(calls.own_entry(), name)}" for name in names}
    road.quit_manager(manager)

    manager = Manager(stage.profile, stage.desktop, stage.bus, arguments=[links["at launch"]])
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    opener.wait_for("at launch")
    road.sign_out(manager)
    expect(manager.launch_again(links["signed out"]) == 0, "the launch with an address failed")
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    opener.wait_for("signed out")
    before = len(opener.opened())
    expect(manager.launch_again(links["first"], links["second"], links["third"]) == 0, "the launch with three failed")
    opener.wait_for("third")
    order = [line.rpartition("/")[2] for line in opener.opened()[before:]]
    expect(order == sorted(order, key=names.index) and order[-1] == "third", f"opened in this order: {order}")


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


ALL = (two_at_once, companion_stopped, companion_replaced, volume_busy, no_session_bus, nothing_can_be_written,
       addresses, desktop_entry)

#!/usr/bin/python3
"""Runs the demonstration on a finished build; quickstart calls it with the folders and the user's options.

With a screen: starts server and manager and waits until the user quits. Headless: walks the whole road on a virtual
screen with a file copied out of the volume and one copied in, prints each milestone and keeps a picture of each window.
"""
import argparse
import os
import pathlib
import shutil
import signal
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))

from drive import demo_documents, processes, road, round_trip  # noqa: E402
from drive.manager import SERVER_WINDOW, SIGN_IN_WINDOW, Manager, Profile  # noqa: E402
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD, Server  # noqa: E402
from drive.volume import Volume, obstacle  # noqa: E402
from drive.waiting import Failure, wait_for  # noqa: E402


class Milestones:
    """Prints `milestone NAME SECONDS`, seconds since the demonstration began, and remembers what comes next."""

    def __init__(self):
        self.began, self.next = time.monotonic(), None

    def expect(self, name):
        self.next = name

    def reached(self):
        print(f"milestone {self.next} {time.monotonic() - self.began:.2f}", flush=True)
        self.next = None


def parse(arguments):
    parser = argparse.ArgumentParser(add_help=False)
    parser.add_argument("--build", required=True)
    parser.add_argument("--out", required=True)
    parser.add_argument("--headless", action="store_true")
    parser.add_argument("--server")
    parser.add_argument("--certificate")
    parser.add_argument("--account", default=DEMO_ACCOUNT)
    parser.add_argument("--password-file")
    return parser.parse_args(arguments)


def prepare(options):
    """(server or None, profile) with the demonstration's own folders, made afresh."""
    demo = os.path.join(options.out, "demo")
    leftovers = processes.running_below(demo)
    if leftovers:
        raise Failure(f"a demonstration out of {demo} is still running (process {leftovers[0]}); quit it first")
    Volume(os.path.join(os.path.realpath(demo), "volumes/Quillbox")).detach()
    shutil.rmtree(demo, ignore_errors=True)
    os.makedirs(demo, mode=0o700)
    profile = Profile(demo, os.path.join(options.build, "Quillbox.app"))
    if options.server:
        return None, profile
    documents = os.path.join(demo, "documents")
    demo_documents.make(documents)
    return Server(os.path.join(options.build, "bin/quillbox-server"), os.path.join(demo, "server"),
                  ("--demo-documents", documents)), profile


def preset(options, server, profile):
    """Fills the windows in: address, port and account. Returns the password."""
    if server:
        server.wait_until_ready()
        address, port, password = "127.0.0.1", server.https_port, DEMO_PASSWORD
        profile.use_certificate(server.certificate)
    else:
        address, _, port = options.server.rpartition(":")
        password = DEMO_PASSWORD
        if options.password_file:
            password = pathlib.Path(options.password_file).read_text(encoding="utf-8").rstrip("\n")
        if options.certificate:
            profile.use_certificate(options.certificate)
    profile.preset(address, port, options.account, password)
    return password


def run_headless(options, milestones):
    from drive.accessible import AccessibilityBus
    from drive.desktop import Desktop

    with Desktop() as desktop:
        milestones.expect("server-ready")
        server, profile = prepare(options)
        password = preset(options, server, profile)
        milestones.reached()
        walk(Manager(profile, desktop, AccessibilityBus()), options, password, milestones)


def walk(manager, options, password, milestones):
    walk_to_service(manager, options.out, milestones)
    walk_volume(manager, options, password, milestones)
    walk_out(manager, options.out, milestones)


def walk_to_service(manager, pictures, milestones):
    def picture(name):
        manager.screenshot(os.path.join(pictures, name + ".png"))

    milestones.expect("first-window")
    manager.control(SERVER_WINDOW)
    milestones.reached()
    picture("server-settings")

    milestones.expect("server-accepted")
    road.choose_server(manager)
    milestones.reached()
    picture("sign-in")

    milestones.expect("signed-in")
    road.sign_in(manager)
    milestones.reached()

    milestones.expect("service-running")
    road.wait_for_companion(manager)
    milestones.reached()


def walk_volume(manager, options, password, milestones):
    milestones.expect("volume-mounted")
    own = road.wait_for_volume(manager)
    milestones.reached()
    print("\n".join("    " + name for name in round_trip.listing(manager.profile.volume, own)), flush=True)

    milestones.expect("file-round-trip")
    calls = round_trip.second_session(manager.profile, options.account, password)
    print("    " + round_trip.show(own, calls, os.path.join(manager.profile.folder, "copies")), flush=True)
    milestones.reached()


def walk_out(manager, pictures, milestones):
    milestones.expect("signed-out")
    manager.launch_again()
    manager.control("performLogout")
    manager.screenshot(os.path.join(pictures, "menu.png"))
    road.sign_out(manager)
    milestones.reached()
    manager.screenshot(os.path.join(pictures, "signed-out.png"))

    milestones.expect("quit")
    road.quit_manager(manager)
    milestones.reached()


def run_with_screen(options, milestones):
    milestones.expect("server-ready")
    server, profile = prepare(options)
    preset(options, server, profile)
    milestones.reached()
    address = f"127.0.0.1, port {server.https_port}" if server else options.server
    print(f"Server: {address}. Account: {options.account}." + (f" Password: {DEMO_PASSWORD}" if server else ""))
    print(f"Press OK in the server window, then sign in; the documents appear in {profile.volume.path}.")
    if obstacle():
        print(f"Signing in will not last here: {obstacle()}")
    print("Quit in Quillbox's menu, or press Ctrl-C here.", flush=True)
    manager = Manager(profile)
    manager.process.wait()
    if manager.process.returncode != 0:
        raise Failure(f"the manager ended with status {manager.process.returncode} (log: {profile.log})")


def main():
    options = parse(sys.argv[1:])
    os.makedirs(options.out, exist_ok=True)
    signal.signal(signal.SIGINT, signal.default_int_handler)  # also when started in the background
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda caught, _: sys.exit(128 + caught))
    processes.adopt_orphans()
    milestones = Milestones()
    try:
        (run_headless if options.headless else run_with_screen)(options, milestones)
    except Failure as failure:
        where = f"milestone {milestones.next} did not come: " if milestones.next else ""
        print(f"quickstart: {where}{failure}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130
    finally:
        processes.end_all()
    if options.headless:
        print(f"Done. Pictures of the windows: {options.out}/*.png")
    return 0


if __name__ == "__main__":
    sys.exit(main())

"""The end-to-end cases of the volume: ordinary programs work on it, and the server is asked what arrived."""
import os
import signal
import time

from drive import road
from drive.manager import SIGN_IN_WINDOW
from drive.round_trip import second_session, server_digest
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD
from drive.volume import digest, expect_same, run
from drive.waiting import wait_for

from steps import expect, signed_in

STRANGE_NAME = "文档 “final” \U0001f4c4's\ncopy.bin"


class Work:
    """Programs at work on the volume, and the digests of what they must have left on the server."""

    def __init__(self, stage, manager):
        self.outside = os.path.join(stage.folder, "outside")
        os.makedirs(self.outside)
        self.own = road.wait_for_volume(manager)
        self.calls = second_session(stage.profile, DEMO_ACCOUNT, DEMO_PASSWORD)
        self.folder = os.path.join(self.own, "work")
        os.mkdir(self.folder)
        entry = self.calls.own_entry()
        listed = self.calls.call("dir", "list", docid=entry, attr=True)["dirs"]
        self.docid = next(record["docid"] for record in listed if record["name"] == "work")
        self.digests = {}

    def source(self, size):
        path = os.path.join(self.outside, "source")
        with open(path, "wb") as file:
            file.write(os.urandom(size))
        return path

    def copy_in(self, name, size):
        source = self.source(size)
        run("cp", "--", source, os.path.join(self.folder, name))
        self.digests[name] = digest(source)

    def save_like_an_editor(self, name, size):
        """Writes beside the file, flushes, and puts the new file in the old one's place."""
        source = self.source(size)
        run("dd", f"if={source}", f"of={self.folder}/.{name}.new", "bs=64k", "conv=fsync")
        run("mv", "--", f"{self.folder}/.{name}.new", os.path.join(self.folder, name))
        self.digests[name] = digest(source)

    def check_volume(self):
        expect(sorted(os.listdir(self.folder)) == sorted(self.digests), f"the volume lists {os.listdir(self.folder)}")
        for name, value in self.digests.items():
            path, copy = os.path.join(self.folder, name), os.path.join(self.outside, "copied out")
            run("cp", "--", path, copy)
            expect_same(f"{name!r} copied out", value, digest(copy))

    def check_server(self):
        listed = self.calls.files(self.docid)
        expect(sorted(listed) == sorted(self.digests), f"the server lists {sorted(listed)}")
        for name, value in self.digests.items():
            found = server_digest(self.calls, self.docid, name, os.path.join(self.outside, "server"))
            expect_same(f"{name!r} on the server", value, found)


def volume(stage):
    """What programs copy and save is so on the server, and still so after signing in again."""
    manager, _ = signed_in(stage)
    work = Work(stage, manager)
    work.copy_in("large.bin", 9 * 1024 * 1024 + 7)
    work.copy_in(STRANGE_NAME, 70_000)
    work.copy_in("edited.txt", 5_000)
    work.save_like_an_editor("edited.txt", 123_457)
    work.check_volume()
    work.check_server()
    road.sign_out(manager)
    expect(os.listdir(stage.profile.volume.path) == [], "files are left where the volume was")
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    road.wait_for_companion(manager)
    road.wait_for_volume(manager)
    work.check_volume()
    road.quit_manager(manager)


def volume_after_crash(stage):
    """The companion is killed while a program works: that program gets an error, the user the sign-in window, and after
    the next sign-in the volume works again."""
    manager, companion = signed_in(stage)
    work = Work(stage, manager)
    work.copy_in("kept.bin", 300_000)
    unfinished = os.open(os.path.join(work.folder, "unfinished.bin"), os.O_WRONLY | os.O_CREAT)
    os.write(unfinished, bytes(200_000))
    start = time.monotonic()
    os.kill(companion, signal.SIGKILL)
    wait_for("the sign-in window", lambda: manager.find(SIGN_IN_WINDOW), 10, 0.01)
    seconds = time.monotonic() - start
    failed = fails(os.write, unfinished, b"more")
    fails(os.close, unfinished)
    print(f"sign-in window {seconds:.2f} s after the companion was killed")
    expect(seconds < 3, f"the sign-in window took {seconds:.2f} s, although the watch looks every two seconds")
    expect(failed, "a write to a volume whose service was killed did not fail")
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    expect(road.wait_for_companion(manager) != companion, "no new companion was started")
    wait_for("the new volume", lambda: is_answering(stage.profile.volume), 20)
    expect(stage.profile.volume.mounts() == 1, "the dead volume lies below the new one")
    work.check_volume()
    work.check_server()
    road.quit_manager(manager)


def fails(call, *arguments):
    try:
        call(*arguments)
        return False
    except OSError:
        return True


def is_answering(volume):
    """A dead mount fails at once; a new one lists its folders."""
    try:
        return volume.mounts() and os.listdir(volume.path)
    except OSError:
        return False

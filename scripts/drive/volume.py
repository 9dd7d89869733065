"""The mounted volume as ordinary programs see it, and what keeps it from being mounted."""
import os
import pathlib
import re
import stat
import subprocess

from .waiting import Failure, wait_for

DEVICE = "/dev/fuse"
OWN_DOCUMENTS = "MyDocuments.localized"


def obstacle():
    """Why this user can mount nothing, in plain words; empty when nothing speaks against it."""
    if not os.path.exists(DEVICE):
        return f"there is no {DEVICE}; install fuse3, and start a container with --device {DEVICE} --cap-add SYS_ADMIN"
    if os.access(DEVICE, os.R_OK | os.W_OK):
        return ""
    mode = stat.S_IMODE(os.stat(DEVICE).st_mode)
    return (f"this user may not open {DEVICE} (its mode is {mode:04o}), so the volume cannot be mounted; "
            f"run as root, or let root run: chmod 666 {DEVICE}")


class Volume:
    def __init__(self, path):
        self.path = path

    def mounts(self):
        """How many file systems lie on the path. Only the kernel's table is asked, so that a dead one cannot hang."""
        with open("/proc/self/mountinfo", "rb") as table:
            places = [line.split(b" ")[4] for line in table]
        wanted = re.sub(rb"[ \t\n\\]", lambda found: b"\\%03o" % found[0][0], os.fsencode(self.path))
        return places.count(wanted)

    def wait_until_mounted(self, while_true=None, seconds=20):
        reason = obstacle()
        if reason:
            raise Failure(reason)
        wait_for(f"the volume at {self.path}", self.mounts, seconds, while_true=while_true)

    def wait_until_gone(self, seconds=5):
        wait_for(f"the volume at {self.path} to be unmounted", lambda: not self.mounts(), seconds)

    def own_documents(self):
        """The folder of the user's own entry document."""
        category = os.path.join(self.path, OWN_DOCUMENTS)
        entries = run("ls", "-A", category).splitlines()
        if len(entries) != 1:
            raise Failure(f"{category} shows {entries} instead of the one folder of the user's own documents")
        return os.path.join(category, entries[0])

    def detach(self):
        """Removes what a killed companion may have left, dead or alive."""
        for _ in range(self.mounts()):
            command = ["umount", "-l"] if os.geteuid() == 0 else ["fusermount3", "-u", "-z", "-q"]
            subprocess.run([*command, self.path], check=False)


def run(*command, seconds=60, **options):
    """Output of an ordinary program; its failure, or its hanging, is a `Failure` with its own words."""
    try:
        result = subprocess.run(command, capture_output=True, text=True, timeout=seconds, check=False, **options)
    except subprocess.TimeoutExpired:
        raise Failure(f"{' '.join(command)} did not end within {seconds} s") from None
    if result.returncode != 0:
        raise Failure(f"{' '.join(command)} ended with {result.returncode}: {result.stderr.strip()}")
    return result.stdout


def digest(path):
    return run("sha256sum", "--", str(path)).lstrip("\\").split()[0]


def expect_same(what, first, second):
    if first != second:
        raise Failure(f"{what}: the bytes differ ({first} and {second})")


def files_below(folder):
    """Relative paths of all files, sorted."""
    root = pathlib.Path(folder)
    return sorted(str(path.relative_to(root)) for path in root.rglob("*") if path.is_file())

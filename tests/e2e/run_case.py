#!/usr/bin/python3
"""Runs one end-to-end case against a build: run_case.py CASE SOURCE_FOLDER BUILD_FOLDER

Always as an ordinary user: root first copies what is needed to a folder of the user "nobody" and continues as that user.
Where only root may open the FUSE device, that user gets a node of its own, which nobody else sees. A case that fills a
disk gets a small one of its own; whoever is not root mounts it in a user namespace.
"""
import os
import pathlib
import pwd
import shutil
import signal
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent

DEVICE = "/dev/fuse"
WITH_OWN_DEVICE = """set -e; folder=$1; number=$2; shift 2
mount -t tmpfs -o mode=755 none "$folder"
mknod -m 666 "$folder/fuse" c $number
mount --bind "$folder/fuse" /dev/fuse
exec "$@"
"""
ON_SMALL_DISK = ("home_full",)
SMALL_DISK = "QUILLBOX_SMALL_DISK"  # names its folder
WITH_SMALL_DISK = """set -e; mount -t tmpfs -o size=1m,mode=777 none "$1"; shift; exec "$@" """


def with_small_disk(command, folder, *namespaces):
    return ["unshare", "--mount", *namespaces, "sh", "-c", WITH_SMALL_DISK, "sh", folder, *command]


def in_user_namespace(arguments):
    """Repeats this program where its user may mount, and returns its exit status."""
    folder = tempfile.mkdtemp(prefix="quillbox-small-")
    try:
        command = with_small_disk([sys.executable, *arguments], folder, "--user", "--map-root-user")
        return subprocess.run(command, env={**os.environ, SMALL_DISK: folder}, check=False).returncode
    finally:
        os.rmdir(folder)


def with_device(command, folder):
    """The command line, in a mount namespace of its own where everybody may open the device."""
    if not os.path.exists(DEVICE) or os.stat(DEVICE).st_mode & 0o006 == 0o006:
        return command
    number = os.stat(DEVICE).st_rdev
    folder.mkdir()
    return ["unshare", "--mount", "--propagation", "private", "sh", "-c", WITH_OWN_DEVICE, "sh", folder,
            f"{os.major(number)} {os.minor(number)}", *command]


def as_ordinary_user(case, source, build):
    """Repeats this program as "nobody", out of a folder of its own, and returns its exit status."""
    user = pwd.getpwnam("nobody")
    folder = pathlib.Path(tempfile.mkdtemp(prefix="quillbox-e2e-", dir="/tmp"))
    try:
        shutil.copytree(build / "Quillbox.app", folder / "build/Quillbox.app", symlinks=True)
        shutil.copytree(build / "bin", folder / "build/bin", symlinks=True)
        shutil.copytree(source / "scripts/drive", folder / "source/scripts/drive")
        shutil.copytree(HERE, folder / "source/tests/e2e")
        shutil.copytree(source / "packaging", folder / "source/packaging")
        (folder / "home").mkdir()
        (folder / "small").mkdir()
        subprocess.run(["chown", "-R", f"{user.pw_uid}:{user.pw_gid}", folder], check=True)
        environment = {name: os.environ[name] for name in ("PATH", "LANG") if name in os.environ}
        command = ["setpriv", f"--reuid={user.pw_uid}", f"--regid={user.pw_gid}", "--clear-groups", "--pdeathsig=TERM",
                   sys.executable, folder / "source/tests/e2e/run_case.py", case, folder / "source", folder / "build"]
        environment.update(HOME=str(folder / "home"), PYTHONDONTWRITEBYTECODE="1")
        if case in ON_SMALL_DISK:
            environment[SMALL_DISK] = str(folder / "small")
            command = with_small_disk(command, folder / "small", "--propagation", "private")
        command = with_device(command, folder / "device")
        return subprocess.run(command, env=environment, cwd=folder, check=False).returncode
    finally:
        shutil.rmtree(folder, ignore_errors=True)


class Stage:
    """What a case plays on: a server, a profile and a virtual screen."""

    def __init__(self, folder, build, desktop):
        from drive.accessible import AccessibilityBus
        from drive.manager import Profile

        self.folder, self.build = folder, build
        self.desktop, self.bus = desktop, AccessibilityBus()
        self.profile = Profile(os.path.join(folder, "profile"), str(build / "Quillbox.app"))
        self.server = self.start_server()
        self.profile.use_certificate(self.server.certificate)

    def start_server(self, *options):
        from drive.server import Server

        server = Server(str(self.build / "bin/quillbox-server"), tempfile.mkdtemp(dir=self.folder), options)
        server.wait_until_ready()
        return server

    @staticmethod
    def has_connection(port):
        """Is a connection to this port of the loopback interface established?"""
        peer, established = f":{int(port):04X}", "01"
        with open("/proc/net/tcp", encoding="ascii") as table:
            return any(fields[2].endswith(peer) and fields[3] == established for fields in map(str.split, table))

    def store_server(self, port):
        """Settings of a user who chose the server earlier."""
        self.profile.write_settings({"ServerID": "127.0.0.1", "AuthportNew": port})

    def launch(self, locale="en_US.UTF-8"):
        from drive.manager import Manager

        return Manager(self.profile, self.desktop, self.bus, locale)

    def manager_log(self):
        return read(self.profile.log)


def read(path):
    return pathlib.Path(path).read_text(encoding="utf-8", errors="replace") if os.path.exists(path) else ""


def play(case, build):
    from drive.desktop import Desktop
    from drive.waiting import Failure

    import cases

    folder = tempfile.mkdtemp(prefix="quillbox-e2e-")
    stage = None
    try:
        with Desktop() as desktop:
            stage = Stage(folder, build, desktop)
            cases.ALL[case](stage)
        return 0
    except Failure as failure:
        print(f"{case}: {failure}")
        if stage:
            print(f"--- manager\n{stage.manager_log()[-4000:]}--- server\n{read(stage.server.log)[-2000:]}")
        return 1
    finally:
        if stage:
            stage.profile.volume.detach()  # before the folder goes, and documents with it
        shutil.rmtree(folder, ignore_errors=True)


def main():
    case, source, build = sys.argv[1], pathlib.Path(sys.argv[2]).resolve(), pathlib.Path(sys.argv[3]).resolve()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    if os.geteuid() == 0 and SMALL_DISK not in os.environ:
        return as_ordinary_user(case, source, build)
    if case in ON_SMALL_DISK and SMALL_DISK not in os.environ:
        return in_user_namespace(sys.argv)
    sys.path.insert(0, str(source / "scripts"))
    from drive import processes

    processes.adopt_orphans()
    try:
        return play(case, build)
    finally:
        processes.end_all()


if __name__ == "__main__":
    sys.exit(main())

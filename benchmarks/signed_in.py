"""What the measurements of a signed-in application share: screen, server, application, figures out of /proc."""
import base64
import contextlib
import os
import pathlib
import shutil
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "scripts"))

from drive import processes  # noqa: E402
from drive.accessible import AccessibilityBus  # noqa: E402
from drive.desktop import Desktop  # noqa: E402
from drive.manager import Manager, Profile  # noqa: E402
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD, Server  # noqa: E402


@contextlib.contextmanager
def at_sign_in(build):
    """A manager whose sign-in window is filled in for the demo account of a server of its own."""
    build = os.path.realpath(build)
    processes.adopt_orphans()
    folder = tempfile.mkdtemp(prefix="quillbox-measure-")
    profile = Profile(os.path.join(folder, "profile"), os.path.join(build, "Quillbox.app"))
    try:
        with Desktop() as desktop:
            server = Server(os.path.join(build, "bin/quillbox-server"), os.path.join(folder, "server"))
            server.wait_until_ready()
            profile.use_certificate(server.certificate)
            profile.write_settings({"ServerID": "127.0.0.1", "AuthportNew": server.https_port,
                                    "AccountName": DEMO_ACCOUNT, "AutoLogin": 0,
                                    "EncryptPassword": base64.b64encode(DEMO_PASSWORD.encode()).decode()})
            yield Manager(profile, desktop, AccessibilityBus())
    finally:
        profile.volume.detach()  # before the folder goes, and documents with it
        shutil.rmtree(folder, ignore_errors=True)


def memory(process_id):
    """(resident, private) in MiB."""
    values = {}
    with open(f"/proc/{process_id}/smaps_rollup", encoding="ascii") as file:
        for line in file:
            fields = line.split()
            if fields[-1] == "kB":
                values[fields[0]] = int(fields[1]) / 1024
    return values["Rss:"], values["Private_Dirty:"] + values["Private_Clean:"]

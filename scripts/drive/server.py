"""A document server of our own, started on free ports with fresh data."""
import os
import re
import subprocess

from . import processes
from .waiting import Failure, wait_for

DEMO_ACCOUNT = "demo"
DEMO_PASSWORD = "Quillbox-demo1"


class Server:
    def __init__(self, program, folder, extra=()):
        """Starts the program; `wait_until_ready` must be called before the ports are known."""
        os.makedirs(folder, mode=0o700, exist_ok=True)
        self.log = os.path.join(folder, "server.log")
        self.certificate = os.path.join(folder, "certificate.der")
        self.http_port = self.https_port = None
        with open(self.log, "wb") as log:
            self.process = processes.start(
                [program, "--data", os.path.join(folder, "data"), "--http-port", "0", "--https-port", "0",
                 "--export-certificate", self.certificate, *extra], stdout=log, stderr=subprocess.STDOUT)

    def wait_until_ready(self, seconds=30):
        ready = wait_for("the document server to be ready (log: %s)" % self.log, self._ready_line, seconds,
                         while_true=(self.runs, "the document server ended (log: %s)" % self.log))
        self.http_port, self.https_port = ready.groups()
        if not os.path.exists(self.certificate):
            raise Failure("the document server wrote no certificate")

    def _ready_line(self):
        with open(self.log, encoding="utf-8", errors="replace") as log:
            return re.search(r"^ready http=(\d+) https=(\d+)$", log.read(), re.M)

    def runs(self):
        return self.process.poll() is None

    def stop(self):
        if self.runs():
            self.process.terminate()
        try:
            self.process.wait(5)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()

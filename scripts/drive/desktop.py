"""A screen without a screen: an X server in memory and a session bus, both ended with the program."""
import os
import shutil
import subprocess
import tempfile
import time

from . import processes
from .waiting import Failure, wait_for

SESSION_VARIABLES = ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR",
                     "AT_SPI_BUS_ADDRESS")


class Desktop:
    """Environment variables of this process name the new session as long as the desktop lives."""

    def __init__(self, size="1280x800x24"):
        self.runtime = tempfile.mkdtemp(prefix="quillbox-", dir="/tmp")
        self.before = {name: os.environ.get(name) for name in SESSION_VARIABLES}
        for name in SESSION_VARIABLES:
            os.environ.pop(name, None)
        os.environ["XDG_RUNTIME_DIR"] = self.runtime
        try:
            os.environ["DISPLAY"] = self._start_screen(size)
            os.environ["DBUS_SESSION_BUS_ADDRESS"] = self.start_bus(f"unix:dir={self.runtime}")[1]
        except BaseException:
            self.close()
            raise

    def _start_screen(self, size):
        # The server picks a free display number and tells it through the pipe.
        read, write = os.pipe()
        processes.start(["Xvfb", "-displayfd", str(write), "-screen", "0", size, "-nolisten", "tcp", "-noreset"],
                        pass_fds=(write,), stdout=subprocess.DEVNULL, stderr=self._log("xvfb.log"))
        os.close(write)
        return ":" + self._line(read, "the virtual screen (Xvfb)")

    def start_bus(self, address):
        """(process, address) of a session bus that listens there."""
        read, write = os.pipe()
        bus = processes.start(["dbus-daemon", "--session", "--nofork", f"--print-address={write}",
                               f"--address={address}"],
                              pass_fds=(write,), stdout=subprocess.DEVNULL, stderr=self._log("bus.log"))
        os.close(write)
        return bus, self._line(read, "the session bus (dbus-daemon)")

    def _log(self, name):
        return open(os.path.join(self.runtime, name), "wb")  # noqa: SIM115 - belongs to the child

    @staticmethod
    def _line(descriptor, what):
        with os.fdopen(descriptor, encoding="utf-8") as pipe:
            line = pipe.readline().strip()
        if not line:
            raise Failure(f"{what} did not start")
        return line

    def windows(self, process_id):
        """Shown top-level X windows of a process, as decimal ids."""
        found = subprocess.run(["xdotool", "search", "--all", "--onlyvisible", "--pid", str(process_id)],
                               capture_output=True, text=True, check=False).stdout.split()
        return [int(window) for window in found]

    def focus(self, window):
        subprocess.run(["xdotool", "windowraise", str(window), "windowfocus", str(window)], check=False,
                       stderr=subprocess.DEVNULL)

    def type_text(self, text):
        """Replaces what the focused field holds. The text travels through a pipe, never through an argument list."""
        subprocess.run(["xdotool", "key", "--clearmodifiers", "ctrl+a", "Delete"], check=True)
        if text:
            subprocess.run(["xdotool", "type", "--delay", "4", "--file", "-"], input=text, text=True, check=True)

    def click(self, window, button=1):
        """With the mouse, in the middle of the window."""
        place = dict(line.split("=") for line in subprocess.run(
            ["xdotool", "getwindowgeometry", "--shell", str(window)], capture_output=True, text=True,
            check=True).stdout.splitlines())
        middle = [str(int(place[start]) + int(place[size]) // 2) for start, size in (("X", "WIDTH"), ("Y", "HEIGHT"))]
        subprocess.run(["xdotool", "mousemove", *middle, "click", str(button)], check=True)

    def key(self, name):
        subprocess.run(["xdotool", "key", name], check=True)

    def screenshot(self, window, path):
        """Saves a window once two pictures in a row are alike and more than a bare surface."""
        last = None

        def settled():
            nonlocal last
            previous, last = last, self._capture(window)
            return last is not None and last == previous and self._colors(last) > 8

        try:
            wait_for("a finished picture of the window", settled, 5, 0.1)
        finally:
            if last:
                with open(path, "wb") as file:
                    file.write(last)

    @staticmethod
    def _capture(window):
        command = ["import", "-silent", "-window", str(window), "-define", "png:exclude-chunks=date,time", "png:-"]
        result = subprocess.run(command, capture_output=True, check=False)
        return result.stdout if result.returncode == 0 else None

    @staticmethod
    def _colors(picture):
        result = subprocess.run(["identify", "-format", "%k", "png:-"], input=picture, capture_output=True, check=False)
        return int(result.stdout or 0)

    def close(self):
        processes.end_all()
        for name, value in self.before.items():
            if value is None:
                os.environ.pop(name, None)
            else:
                os.environ[name] = value
        end = time.monotonic() + 2
        while os.path.exists(self.runtime) and time.monotonic() < end:
            shutil.rmtree(self.runtime, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

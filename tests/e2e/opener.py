"""The desktop's opener, replaced by one that only notes what it was asked to open."""
import os
import stat
import urllib.parse

from drive.waiting import wait_for

OPENER = """#!/bin/sh
printf '%s\\n' "$*" >> "{log}"
"""


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

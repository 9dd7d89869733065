"""The manager as a user meets it: its own copy of the bundle, its own profile, its windows."""
import base64
import os
import plistlib
import shutil
import subprocess
import time

from . import processes
from .volume import Volume
from .waiting import Failure, wait_for

SESSION_FILE = ("com.velto.quillbox/Library/Containers/com.velto.quillbox.FinderHelper1/Data/Library/"
                "Application Support/com.velto.quillbox/quillbox.globe")
SIGN_IN_WINDOW = "btnLogin"
SERVER_WINDOW = "btnConfirm"


class Profile:
    """Folders that stand for the user's: settings, data, caches, volumes and a copy of the application."""

    def __init__(self, folder, bundle):
        self.folder = os.path.realpath(folder)
        for name in ("config", "data", "cache", "volumes"):
            os.makedirs(os.path.join(self.folder, name), mode=0o700, exist_ok=True)
        self.volume = Volume(os.path.join(self.folder, "volumes/Quillbox"))
        self.bundle = os.path.join(self.folder, "Quillbox.app")
        shutil.rmtree(self.bundle, ignore_errors=True)
        shutil.copytree(bundle, self.bundle, symlinks=True)
        self.resources = os.path.join(self.bundle, "Contents/Resources")
        self.program = os.path.join(self.bundle, "Contents/MacOS/Quillbox")
        self.companion = os.path.join(self.resources, "FUSEService.app/Contents/MacOS/FUSEService")
        self.session_file = os.path.join(self.folder, "data", SESSION_FILE)
        self.log = os.path.join(self.folder, "manager.log")

    def environment(self):
        return dict(os.environ, XDG_CONFIG_HOME=os.path.join(self.folder, "config"),
                    XDG_DATA_HOME=os.path.join(self.folder, "data"), XDG_CACHE_HOME=os.path.join(self.folder, "cache"),
                    QUILLBOX_VOLUMES=os.path.join(self.folder, "volumes"))

    def use_certificate(self, certificate):
        shutil.copyfile(certificate, os.path.join(self.resources, "public_key.der"))

    def preset(self, address, port, account, password):
        """What the windows show filled in: the address through the branding file, the rest through the settings."""
        branding_file = os.path.join(self.resources, "QBOEM.plist")
        with open(branding_file, "rb") as file:
            branding = plistlib.load(file)
        branding["IPAddress"] = address
        with open(branding_file, "wb") as file:
            plistlib.dump(branding, file)
        settings = {"AuthportNew": port, "AccountName": account,
                    "EncryptPassword": base64.b64encode(password.encode()).decode(), "AutoLogin": 0}
        self.write_settings(settings)

    def write_settings(self, settings):
        path = os.path.join(self.folder, "config/com.velto.quillbox.plist")
        with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "wb") as file:
            plistlib.dump({key: value for key, value in settings.items() if value is not None}, file)

    def session(self):
        """The session record as {"server": …, "account": …}; empty while there is none."""
        try:
            with open(self.session_file, "rb") as file:
                return plistlib.load(file)
        except (OSError, plistlib.InvalidFileException, ValueError):
            return {}

    def is_signed_in(self):
        return bool(self.session().get("account", {}).get("tokenId"))

    def companions(self):
        return [process_id for process_id in processes.running() if processes.executable(process_id) == self.companion]

    def processes(self):
        """Every running process out of this copy of the application."""
        return processes.running_below(self.bundle)


class Manager:
    """One run of the application. With a desktop and a bus its windows can be driven; without, they are the user's."""

    def __init__(self, profile, desktop=None, bus=None, locale="en_US.UTF-8", arguments=()):
        self.profile, self.desktop, self.bus = profile, desktop, bus
        self.environment = profile.environment()
        if desktop:
            self.environment.update(QUILLBOX_TEST_IDS="1", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb",
                                    LC_ALL=locale)
            self.environment.pop("LANGUAGE", None)
        self.started = time.monotonic()
        self.process = self._launch(*arguments)

    def _launch(self, *arguments):
        with open(self.profile.log, "ab") as log:
            return processes.start([self.profile.program, *arguments], env=self.environment, stdout=log,
                                   stderr=subprocess.STDOUT)

    def runs(self):
        return self.process.poll() is None

    def launch_again(self, *arguments, seconds=10):
        """Starts the application a second time and returns the exit status of that second start."""
        second = self._launch(*arguments)
        try:
            return second.wait(seconds)
        except subprocess.TimeoutExpired:
            second.kill()
            second.wait()
            raise Failure(f"the second launch did not end within {seconds} s") from None

    def find(self, object_name):
        application = self.bus.application(self.process.pid)
        return application.find(object_name) if application else None

    def control(self, object_name, seconds=20):
        """The shown control of this name; waits for it."""
        try:
            return wait_for(f"the control {object_name}", lambda: self.find(object_name), seconds,
                            while_true=(self.runs, "the manager ended"))
        except Failure as failure:
            raise Failure(f"{failure}; shown instead: {self.shown_texts()}") from None

    def shown_texts(self):
        application = self.bus.application(self.process.pid) if self.runs() else None
        return [text for child in application.children() for text in child.shown_texts()][:12] if application else []

    def gone(self, object_name, seconds=20):
        wait_for(f"the control {object_name} to go", lambda: not self.find(object_name), seconds)

    def press(self, object_name, seconds=20):
        control = self.control(object_name, seconds)
        wait_for(f"{object_name} to be enabled", control.is_enabled, seconds)
        control.press()

    def type(self, object_name, text):
        """Types into a field with real key strokes and checks that they arrived."""
        field = self.control(object_name)
        windows = self.windows()
        if windows:
            self.desktop.focus(windows[-1])
        field.focus()
        wait_for(f"the keyboard focus in {object_name}", field.has_focus, 5)
        self.desktop.type_text(text)
        wait_for(f"the typed text in {object_name}", lambda: field.text_length() == len(text), 5)

    def clear(self, object_name):
        """Empties a field with real key strokes."""
        field = self.control(object_name)
        field.focus()
        wait_for(f"the keyboard focus in {object_name}", field.has_focus, 5)
        self.desktop.key("ctrl+a")
        self.desktop.key("BackSpace")
        wait_for(f"{object_name} to be empty", lambda: field.text_length() == 0, 5)

    def windows(self):
        return self.desktop.windows(self.process.pid)

    def screenshot(self, path):
        window = wait_for("a window to take a picture of", self.windows, 5)[-1]
        self.desktop.focus(window)
        self.desktop.screenshot(window, path)

    def choose_in_menu(self, action):
        """What a user without a tray does: launches again, which shows the menu as a window, and picks an entry."""
        if self.launch_again() != 0:
            raise Failure("the second launch ended with an error")
        self.press(action)

    def wait_for_end(self, seconds=10):
        wait_for("the manager to end", lambda: not self.runs(), seconds)
        return self.process.returncode

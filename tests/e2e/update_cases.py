"""The end-to-end cases of updates: the application replaces itself, is refused bad images, and survives being killed."""
import hashlib
import json
import os
import pathlib
import plistlib
import shutil
import signal
import subprocess

from drive import processes, road
from drive.manager import SERVER_WINDOW, SIGN_IN_WINDOW, Manager
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD
from drive.waiting import wait_for

from steps import expect

NEW_VERSION = "1.1.0"
# Into its own bundle: what it was asked about updates, and that it has been registered.
WRITTEN_BY_THE_MANAGER = ("Resources/AppUpdate.plist", "Resources/QBOEM.plist")
MAKE_IMAGE = pathlib.Path(__file__).resolve().parents[2] / "packaging/make-update-image"
# What the installer writes into its log, in this order.
STEPS = ("manager ended", "checked", "folder made", "copied", "compared", "exchanged", "detached", "started", "confirmed",
         "stayed")
EXCHANGED = STEPS.index("exchanged")
NOT_ALLOWED = "You may not replace this installation. Ask your administrator for the new version."


class Orphan:
    """A process that is not this one's child, as far as Manager asks about it."""

    def __init__(self, process_id):
        self.pid, self.returncode = process_id, None

    def poll(self):
        if processes.status(self.pid)[0] in ("", "Z"):
            self.returncode = 0  # nobody but its parent learns more
        return self.returncode

    def terminate(self):
        os.kill(self.pid, signal.SIGTERM)


class Restarted(Manager):
    """The run of the application that the installer started."""

    def __init__(self, before, process_id):  # not started by this program
        self.profile, self.desktop, self.bus = before.profile, before.desktop, before.bus
        self.environment, self.process = before.environment, Orphan(process_id)


class Scene:
    """An installed version, a newer one in an image, and a home of its own."""

    def __init__(self, stage):
        self.stage, self.profile = stage, stage.profile
        self.home = os.path.join(stage.folder, "home")
        self.downloads = os.path.join(self.home, "Downloads")
        os.makedirs(self.downloads)
        os.environ["HOME"] = self.home
        self.served = os.path.join(stage.folder, "served")
        os.makedirs(self.served)
        self.installed = os.path.join(stage.folder, "installed.app")
        shutil.copytree(self.profile.bundle, self.installed, symlinks=True)
        self.old_version = self.version()
        self.image = self.make_image(self.profile.bundle, "Quillbox.dmg")
        self.log = os.path.join(self.profile.folder, "data/com.velto.quillbox/Library/Logs/appInstall.log")

    def make_image(self, bundle, name):
        image = os.path.join(self.served, name)
        command = [MAKE_IMAGE, "--version", NEW_VERSION, "--compression", "lz4", bundle, image]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
        return image

    def reinstall(self):
        """The state before the update, whatever has become of it."""
        for process_id in self.managers() + self.helpers():
            os.kill(process_id, signal.SIGKILL)
        wait_for("all of the application to end", lambda: not self.managers() + self.helpers(), 5)
        shutil.rmtree(self.profile.bundle)
        shutil.copytree(self.installed, self.profile.bundle, symlinks=True)

    def offer(self, result, image, address=None):
        """A server that offers the image."""
        update = {"result": result, "latest": NEW_VERSION, "file": image}
        if address is not None:
            update["downloadurl"] = address
        path = os.path.join(self.stage.folder, "scenario.json")
        with open(path, "w", encoding="utf-8") as file:
            json.dump({"update": update}, file)
        server = self.stage.start_server("--scenario", path)
        self.stage.store_server(server.http_port)
        return server

    def version(self):
        with open(os.path.join(self.profile.bundle, "Contents/Info.plist"), "rb") as file:
            return plistlib.load(file)["CFBundleShortVersionString"]

    def managers(self):
        return [process_id for process_id in processes.running()
                if processes.executable(process_id) == self.profile.program]

    def helpers(self):
        return processes.running_below(os.path.join(self.profile.folder, "cache"))

    def log_text(self):
        return pathlib.Path(self.log).read_text(encoding="utf-8") if os.path.exists(self.log) else ""

    def reached(self, step):
        return f" {step}\n" in self.log_text()

    def attached(self):
        """Mount points below the volumes folder, the cloud volume left out; escapes stay as they are."""
        prefix = os.path.join(self.profile.folder, "volumes/")
        with open("/proc/self/mountinfo", encoding="utf-8") as table:
            points = [line.split()[4] for line in table]
        return [point for point in points if point.startswith(prefix) and point != prefix + "Quillbox"]

    def beside(self):
        """What stands beside the application and belongs to an installation."""
        return [name for name in os.listdir(os.path.dirname(self.profile.bundle)) if name.endswith(".appInstall")]

    def next_manager(self, before):
        """The run that follows the run `before`."""
        before.wait_for_end(60)
        return Restarted(before, wait_for("the application to be started again", self.managers, 60)[0])

    def check_tidy(self):
        wait_for("the installation to tidy up", lambda: not self.beside() and not self.helpers(), 30)
        wait_for("the images to be detached", lambda: not self.attached(), 30)
        expect(not os.path.exists(os.path.join(self.profile.bundle, "Contents/update-pending")), "an update is pending")

    def check_whole(self):
        """The installed application is the old or the new one to the last file."""
        contents = pathlib.Path(self.profile.bundle, "Contents")
        if self.version() == NEW_VERSION:
            files = plistlib.loads((contents / "_CodeSignature/CodeResources").read_bytes())["files"]
        else:
            files = {str(path.relative_to(self.installed + "/Contents")): digest(path)
                     for path in pathlib.Path(self.installed, "Contents").rglob("*") if path.is_file()}
        for name, expected in files.items():
            if name not in WRITTEN_BY_THE_MANAGER:
                expect(digest(contents / name) == expected, f"{name} of version {self.version()} is damaged")


def digest(path):
    return hashlib.sha256(pathlib.Path(path).read_bytes()).digest()


def update_forced(stage):
    """The whole way, with a name that a shell would take for commands, and with images of earlier attempts attached."""
    scene = Scene(stage)
    name = "it's \"new\";touch trap;$(touch trap)`touch trap`.dmg"
    stage.profile.use_certificate(scene.offer("forced", scene.image, f"http://127.0.0.1/download/{name}").certificate)
    scene.make_image(stage.profile.bundle, os.path.basename(scene.image))  # the new version has to trust that server too
    before = stage.launch()
    before.control("btnUpdateNow")
    expect(before.find("btnLater") is None, "a forced update can be put off")
    for old in ("old.dmg", "older.dmg"):
        attach(scene, shutil.copy(scene.image, os.path.join(scene.home, old)))
    expect(len(scene.attached()) == 2, f"attached are {scene.attached()}")
    before.press("btnUpdateNow")
    manager = scene.next_manager(before)
    manager.control(SIGN_IN_WINDOW, 30)
    expect(scene.version() == NEW_VERSION, f"version {scene.version()} is installed")
    with open(os.path.join(scene.profile.bundle, "Contents/_CodeSignature/CodeResources"), "rb") as file:
        listed = plistlib.load(file)["files"]["MacOS/Quillbox"]
    expect(digest(f"/proc/{manager.process.pid}/exe") == listed, "another program than the new one runs")
    scene.check_tidy()
    expect(scene.reached("done"), "the installer did not come to its end")
    expect(os.listdir(scene.downloads) == [name], f"the downloads hold {os.listdir(scene.downloads)}")
    expect(not os.path.exists("trap"), "a name was run as a command")
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    road.wait_for_companion(manager)
    road.quit_manager(manager)


def update_refused(stage):
    """Bad images: the installer starts the old version again."""
    scene = Scene(stage)
    garbage = os.path.join(scene.served, "garbage.dmg")
    pathlib.Path(garbage).write_bytes(os.urandom(100_000))
    cut = os.path.join(scene.served, "cut.dmg")
    pathlib.Path(cut).write_bytes(pathlib.Path(scene.image).read_bytes()[:3_000_000])
    for image in (garbage, cut):
        name = os.path.basename(image)
        server = scene.offer("optional", image)
        before = stage.launch()
        before.press("btnUpdateNow")
        manager = scene.next_manager(before)
        manager.control("btnUpdateNow", 30)  # offered again
        expect(scene.version() == scene.old_version, f"{name}: version {scene.version()} is installed")
        scene.check_whole()
        scene.check_tidy()
        scene.reinstall()
        server.stop()


def update_not_allowed(stage):
    """Where this user may not replace the application, that is said, and nothing is downloaded."""
    scene = Scene(stage)
    scene.offer("optional", scene.image)
    manager = stage.launch()
    manager.control("btnUpdateNow")
    os.chmod(scene.profile.folder, 0o555)
    try:
        manager.press("btnUpdateNow")
        manager.control(SERVER_WINDOW, 30)
        wait_for("the reason to be shown", lambda: NOT_ALLOWED in manager.shown_texts(), 10)
    finally:
        os.chmod(scene.profile.folder, 0o755)
    expect(manager.runs() and not os.listdir(scene.downloads), f"the downloads hold {os.listdir(scene.downloads)}")


def attach(scene, image):
    tool = os.path.join(scene.profile.resources, "linux/hdiutil")
    result = subprocess.run([tool, "attach", image], env=scene.profile.environment(), check=True, capture_output=True)
    return result.stdout.decode().rstrip("\n").split("\t")[1]


def start_installer(scene):
    """The installer as the manager starts it, right before it ends."""
    image = shutil.copy(scene.image, scene.downloads)
    mount_point = attach(scene, image)
    copy = os.path.join(scene.profile.folder, "cache/com.velto.quillbox/com.velto.appInstall/appInstall.app")
    shutil.rmtree(copy, ignore_errors=True)
    shutil.copytree(os.path.join(scene.profile.resources, "appInstall.app"), copy)
    if os.path.exists(scene.log):
        os.remove(scene.log)
    environment = dict(scene.profile.environment(), QUILLBOX_TEST_IDS="1", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                       QT_QPA_PLATFORM="xcb")
    arguments = [os.path.join(copy, "Contents/MacOS/appInstall"), scene.profile.bundle,
                 os.path.join(mount_point, "Quillbox.app"), image]
    with open(scene.profile.log, "ab") as output:
        return processes.start(arguments, env=environment, stdout=output, stderr=output)


def when_reached(scene, step):
    wait_for(f"the step {step!r}", lambda: scene.reached(step), 60, 0.001)


def kill_installer(scene, step, also_its_parent):
    """kill -9 right after the step; its parent is the process that would take the work up again."""
    installer = start_installer(scene)
    when_reached(scene, step)
    for process_id in scene.helpers():
        if also_its_parent or process_id != installer.pid:
            kill(process_id)
    return installer


def check_after_kill(scene, step):
    wait_for("the application to run", scene.managers, 30)
    scene.check_tidy()
    scene.check_whole()
    expect(scene.managers(), f"after {step!r} the application does not run")
    scene.reinstall()


def update_installer_killed(stage):
    """Killed with its parent at each step: the next start of the application finds one that works, and tidies."""
    scene = Scene(stage)
    for step in STEPS:
        kill_installer(scene, step, True).wait()
        wait_for("the installer to end", lambda: not scene.helpers(), 5)
        if not scene.managers():
            stage.launch()
        late = STEPS.index(step) >= EXCHANGED
        expect(not late or scene.version() == NEW_VERSION, f"after {step!r} version {scene.version()} is installed")
        check_after_kill(scene, step)


def update_installer_recovers(stage):
    """Killed without its parent, which sees to it that the application runs, with nobody's help."""
    scene = Scene(stage)
    for step in ("manager ended", "exchanged", "confirmed"):
        installer = kill_installer(scene, step, False)
        check_after_kill(scene, step)
        installer.wait(60)


def update_abandoned(stage):
    """Killed with its parent while a version is on trial that cannot run: the next start brings the old one back."""
    scene = Scene(stage)
    scene.make_image(spoiled(scene), os.path.basename(scene.image))
    kill_installer(scene, "exchanged", True).wait()
    wait_for("the new version to fail", lambda: not scene.managers(), 10)
    expect(scene.version() == NEW_VERSION, f"version {scene.version()} is installed")
    stage.launch()
    wait_for("the old version to run", lambda: scene.version() == scene.old_version and scene.managers(), 60)
    scene.check_tidy()
    scene.check_whole()


def spoiled(scene):
    """A version that fails as soon as it needs the screen."""
    bundle = os.path.join(scene.stage.folder, "spoiled.app")
    shutil.copytree(scene.profile.bundle, bundle, symlinks=True)
    pathlib.Path(bundle, "Contents/MacOS/qt.conf").write_text("[Paths]\nPlugins = /none\n", encoding="ascii")
    return bundle


def update_manager_killed(stage):
    """kill -9 of the manager while it downloads, while the image is attached, and when the installer has been started."""
    scene = Scene(stage)
    moments = {"download": lambda: os.listdir(scene.downloads), "attached": scene.attached, "installer": scene.helpers}
    for name, has_come in moments.items():
        server = scene.offer("forced", scene.image)
        manager = stage.launch()
        manager.press("btnUpdateNow")
        wait_for(f"the moment {name!r}", has_come, 60, 0.001)
        manager.process.kill()
        manager.process.wait()
        wait_for("the installer to end", lambda: not scene.helpers(), 60)
        server.stop()
        if not scene.managers():
            stage.launch()
        wait_for("the application to run", scene.managers, 10)
        scene.check_tidy()
        scene.check_whole()
        wait_for("the half image to go", lambda: not set(os.listdir(scene.downloads)) - {"Quillbox.dmg"}, 10)
        scene.reinstall()
        for left in os.listdir(scene.downloads):
            os.remove(os.path.join(scene.downloads, left))


def kill(process_id):
    try:
        os.kill(process_id, signal.SIGKILL)
    except ProcessLookupError:
        pass


ALL = (update_forced, update_refused, update_not_allowed, update_installer_killed, update_installer_recovers,
       update_abandoned, update_manager_killed)

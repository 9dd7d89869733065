"""The end-to-end cases. Each gets a fresh `Stage`: server, profile, screen; the name of the function is its test name."""
import json
import os
import pathlib
import signal
import time

from drive import processes, road
from drive.manager import SIGN_IN_WINDOW
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD
from drive.waiting import wait_for

import shell_cases
import signin_cases
import tray_cases
import update_cases
import volume_cases
from day_case import day
from steps import expect, signed_in


def road_http(stage):
    """The road through a server that knows no encryption; the day takes the other one."""
    manager = stage.launch()
    road.choose_server(manager, "127.0.0.1", stage.server.http_port)
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    server = stage.profile.session()["server"]
    expect(server.get("authPort") == stage.server.http_port and not server.get("useHttps"), f"stored: {server}")
    road.wait_for_companion(manager)
    road.sign_out(manager)
    road.quit_manager(manager)


def secrets_stay_private(stage):
    """After signing in with a remembered password, no log, argument list or environment holds it, and files are 0600."""
    manager, companion = signed_in(stage)
    secrets = (DEMO_PASSWORD, stage.profile.session()["account"]["tokenId"])
    for process_id in (manager.process.pid, companion):
        for source in ("cmdline", "environ"):
            with open(f"/proc/{process_id}/{source}", encoding="utf-8", errors="replace") as file:
                text = file.read()
            expect(not any(secret in text for secret in secrets), f"a secret stands in {source} of {process_id}")
    for log in (stage.profile.log, stage.server.log):
        with open(log, encoding="utf-8", errors="replace") as file:
            text = file.read()
        expect(not any(secret in text for secret in secrets), f"a secret stands in {os.path.basename(log)}")
    for path in (stage.profile.session_file, os.path.join(stage.profile.folder, "config/com.velto.quillbox.plist")):
        expect(os.stat(path).st_mode & 0o777 == 0o600, f"{path} is not readable for its owner only")
    road.quit_manager(manager)


def wrong_password(stage):
    stage.store_server(stage.server.https_port)
    manager = stage.launch()
    manager.type("txtUserName", DEMO_ACCOUNT)
    manager.type("txtPassword", "not-the-password")
    manager.press(SIGN_IN_WINDOW)
    message = wait_for("a text in the error line", manager.control("txtErrorMessage").spoken_name, 10)
    expect("incorrect" in message, f"the error line says {message!r}")
    expect(not stage.profile.is_signed_in() and not stage.profile.companions(), "signed in with a wrong password")
    wait_for("the sign-in button to be ready again", manager.control(SIGN_IN_WINDOW).is_enabled, 10)
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    road.wait_for_companion(manager)


def scenario_server(stage, settings, *options):
    """A server with these settings, chosen and trusted by the profile."""
    path = os.path.join(stage.folder, "scenario.json")
    with open(path, "w", encoding="utf-8") as file:
        json.dump(settings, file)
    server = stage.start_server("--scenario", path, *options)
    stage.profile.use_certificate(server.certificate)
    stage.store_server(server.https_port)


def sms_code(stage):
    """A second factor: the code that the server sent is typed into the verification window and finishes the sign-in."""
    codes = os.path.join(stage.folder, "codes")
    scenario_server(stage, {"dualfactor_auth_server_status": {"auth_by_sms": True}}, "--codes", codes)
    manager = stage.launch()
    manager.type("txtUserName", DEMO_ACCOUNT)
    manager.type("txtPassword", DEMO_PASSWORD)
    manager.press(SIGN_IN_WINDOW)
    manager.control("verificationCodeTextField")
    with open(codes, encoding="utf-8") as file:
        code = json.loads(file.readlines()[-1])["code"]
    manager.type("verificationCodeTextField", "0" if code != "0" else "1")
    manager.press("verifyButton")
    message = wait_for("a text in the error line", manager.control("errorMessageTextField").spoken_name, 10)
    expect("code" in message, f"the error line says {message!r}")
    manager.clear("verificationCodeTextField")
    manager.type("verificationCodeTextField", code)
    manager.press("verifyButton")
    road.wait_for_companion(manager)
    manager.gone("verificationCodeTextField")
    road.quit_manager(manager)


def companion_killed(stage):
    """Its death brings the sign-in window back within the time that the watch needs, and a new sign-in starts it again."""
    places = pathlib.Path(stage.profile.folder, "config/gtk-3.0/bookmarks")
    places.parent.mkdir()
    manager, companion = signed_in(stage)
    wait_for("the volume among the favourite places", lambda: places.exists() and "Quillbox" in places.read_text(), 10)
    start = time.monotonic()
    os.kill(companion, signal.SIGKILL)
    wait_for("the sign-in window", lambda: manager.find(SIGN_IN_WINDOW), 10, 0.01)
    seconds = time.monotonic() - start
    print(f"sign-in window {seconds:.2f} s after the companion was killed")
    expect(seconds < 3, f"the sign-in window took {seconds:.2f} s, although the watch looks every two seconds")
    wait_for("the volume to go from the favourite places", lambda: "Quillbox" not in places.read_text(), 5)
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    expect(road.wait_for_companion(manager) != companion, "no new companion was started")
    road.quit_manager(manager)


def companion_missing(stage):
    os.remove(stage.profile.companion)
    stage.store_server(stage.server.https_port)
    manager = stage.launch()
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    wait_for("the log to tell that the companion is missing",
             lambda: "ERROR: can't find FUSEService!" in stage.manager_log(), 10)
    expect(manager.runs() and stage.profile.is_signed_in(), "the missing companion ended the session")
    road.quit_manager(manager)


def manager_killed(stage):
    """A companion does not stay behind when the manager dies."""
    manager, _ = signed_in(stage)
    manager.process.kill()
    manager.process.wait()
    wait_for("the companion to notice that the manager died", lambda: not stage.profile.companions(), 10)


def server_down_at_start(stage):
    """A stored server that does not answer opens the server window with a reason, and the road goes on from there."""
    stage.store_server(stage.server.http_port)
    stage.server.stop()
    manager = stage.launch()
    message = wait_for("a text in the message line", manager.control("txtMessage", 30).spoken_name, 10)
    expect("reach the server" in message, f"the server window says {message!r}")
    expect(not manager.find(SIGN_IN_WINDOW), "the sign-in window is shown without a server")


def terminated(stage):
    """SIGTERM, as at the end of a desktop session: no question, nothing left running."""
    manager, _ = signed_in(stage)
    manager.process.send_signal(signal.SIGTERM)
    code = manager.wait_for_end(5)
    expect(code == 0, f"ended with status {code}")
    wait_for("everything of the application to end", lambda: not stage.profile.processes(), 5)


def quit_while_server_is_slow(stage):
    """Quitting does not wait for the reply of a server that takes five seconds for it."""
    server = stage.start_server("--delay", "5000")
    stage.store_server(server.https_port)
    manager = stage.launch()
    wait_for("the manager to ask the server", lambda: stage.has_connection(server.https_port), 10,
             while_true=(manager.runs, "the manager ended"))
    manager.process.send_signal(signal.SIGTERM)
    code = manager.wait_for_end(2)
    expect(code == 0, f"ended with status {code}")


def languages(stage):
    """The windows speak the user's language."""
    stage.store_server(stage.server.https_port)
    for locale, title in (("zh_CN.UTF-8", "登录"), ("zh_TW.UTF-8", "登入"), ("en_US.UTF-8", "Sign in"),
                          ("fr_FR.UTF-8", "Sign in")):
        manager = stage.launch(locale)
        shown = manager.control(SIGN_IN_WINDOW).spoken_name()
        expect(shown == title, f"{locale}: the sign-in button says {shown!r}")
        manager.process.terminate()
        manager.wait_for_end(5)
        wait_for("the application to end", lambda: not processes.running_below(stage.profile.bundle), 5)


ALL = {case.__name__: case for case in (
    day, road_http, secrets_stay_private, wrong_password, sms_code, companion_killed, companion_missing, manager_killed,
    server_down_at_start, terminated, quit_while_server_is_slow, languages, *tray_cases.ALL, *signin_cases.ALL,
    *shell_cases.ALL, volume_cases.volume, volume_cases.volume_after_crash, *update_cases.ALL)}

"""Every road that leads through the sign-in windows, taken with the real server and real pages."""
import base64
import hashlib
import hmac
import json
import os
import struct
import time

from drive import road
from drive.manager import SIGN_IN_WINDOW
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD
from drive.waiting import wait_for

from opener import Opener
from steps import expect
from web_page import Page, pages

DEMO_SECRET = "KF2WS3DMMJXXQLLEMVWW6LLPNZSQ"
NEW_PASSWORD = "Another-pass2"
# The engine describes its pages only to a reader that it knows; this one has to be asked for.
os.environ["QTWEBENGINE_CHROMIUM_FLAGS"] = "--force-renderer-accessibility"


class Codes:
    """What the server sent by SMS and e-mail, and what its pictures say."""

    def __init__(self, stage, settings, port="https_port"):
        self.path = os.path.join(stage.folder, "codes")
        scenario = os.path.join(stage.folder, "scenario.json")
        with open(scenario, "w", encoding="utf-8") as file:
            json.dump(settings, file)
        self.server = stage.start_server("--scenario", scenario, "--codes", self.path)
        stage.profile.use_certificate(self.server.certificate)
        stage.store_server(getattr(self.server, port))

    def all(self, way):
        if not os.path.exists(self.path):
            return []
        with open(self.path, encoding="utf-8") as file:
            lines = [json.loads(line) for line in file if line.endswith("\n")]
        return [line["code"] for line in lines if line["way"] == way]

    def wait_for(self, way, number=1):
        return wait_for(f"code number {number} by {way}", lambda: self.all(way)[number - 1:number], 15)[0]


def fill_in(manager, password=DEMO_PASSWORD):
    manager.type("txtUserName", DEMO_ACCOUNT)
    manager.type("txtPassword", password)


def message_of(manager, name="txtErrorMessage"):
    return wait_for(f"a text in {name}", lambda: manager.control(name).spoken_name(), 10)


def is_in(manager):
    """Ends signed in with the companion running, and quits."""
    wait_for("the stored session to hold a token", manager.profile.is_signed_in, 30,
             while_true=(manager.runs, "the manager ended"))
    road.wait_for_companion(manager)
    road.quit_manager(manager)


def picture_code(stage):
    """Needed after one wrong password; a wrong code brings another picture, the right one leads in."""
    codes = Codes(stage, {"vcode_login_config": {"isenable": True, "passwderrcnt": 1}})
    manager = stage.launch()
    fill_in(manager, "not-the-password")
    manager.press(SIGN_IN_WINDOW)
    manager.control("txtVcode")
    codes.wait_for("picture")
    fill_in(manager)
    manager.type("txtVcode", "####")
    manager.press(SIGN_IN_WINDOW)
    codes.wait_for("picture", 2)
    wait_for("the sign-in button to be ready again", manager.control(SIGN_IN_WINDOW).is_enabled, 10)
    before = len(codes.all("picture"))
    manager.press("vcodeImage")  # the picture can be changed by a click
    manager.type("txtVcode", codes.wait_for("picture", before + 1))
    manager.press(SIGN_IN_WINDOW)
    is_in(manager)


def one_time_password(stage):
    Codes(stage, {"dualfactor_auth_server_status": {"auth_by_OTP": True}})
    manager = stage.launch()
    fill_in(manager)
    counter = struct.pack(">Q", int(time.time()) // 30)
    digest = hmac.new(base64.b32decode(DEMO_SECRET + "=" * (-len(DEMO_SECRET) % 8)), counter, hashlib.sha1).digest()
    start = digest[-1] & 15
    code = (struct.unpack(">I", digest[start:start + 4])[0] & 0x7fffffff) % 1_000_000
    manager.type("txtOTPCode", f"{code:06}")
    manager.press(SIGN_IN_WINDOW)
    is_in(manager)


def email_code(stage):
    codes = Codes(stage, {"dualfactor_auth_server_status": {"auth_by_email": True}})
    manager = stage.launch()
    fill_in(manager)
    manager.press(SIGN_IN_WINDOW)
    manager.type("verificationCodeTextField", codes.wait_for("email"))
    shown = " ".join(manager.shown_texts())
    expect("d***@example.org" in shown, f"the window does not tell where the code went: {shown}")
    manager.press("verifyButton")
    is_in(manager)


def resend_code(stage):
    """After the interval another code can be had; the first one is then worth nothing."""
    codes = Codes(stage, {"dualfactor_auth_server_status": {"auth_by_sms": True}, "second_factor": {"send_interval": 2}})
    manager = stage.launch()
    fill_in(manager)
    manager.press(SIGN_IN_WINDOW)
    first = codes.wait_for("sms")
    manager.press("getVCodeButton", 10)
    second = codes.wait_for("sms", 2)
    if first != second:
        manager.type("verificationCodeTextField", first)
        manager.press("verifyButton")
        message_of(manager, "errorMessageTextField")
    manager.type("verificationCodeTextField", second)
    manager.press("verifyButton")
    is_in(manager)


def forced_password_change(stage):
    Codes(stage, {"password": {"initial_change": True}})
    manager = stage.launch()
    fill_in(manager)
    manager.press(SIGN_IN_WINDOW)
    manager.press("alertButton1")
    for field, text in (("oldPassword", DEMO_PASSWORD), ("theNewpassword", NEW_PASSWORD),
                        ("comfirmPassword", NEW_PASSWORD)):
        manager.type(field, text)
    manager.press("confirmButton")
    manager.gone("confirmButton")
    fill_in(manager, NEW_PASSWORD)
    manager.press(SIGN_IN_WINDOW)
    is_in(manager)


def locked_account(stage):
    Codes(stage, {"lock": {"after": 2, "minutes": 25}})
    manager = stage.launch()
    for attempt in range(2):
        fill_in(manager, f"not-the-password-{attempt}")
        manager.press(SIGN_IN_WINDOW)
        message = message_of(manager)
        wait_for("the sign-in button to be ready again", manager.control(SIGN_IN_WINDOW).is_enabled, 10)
    message = message_of(manager)
    expect("25 minutes" in message, f"the error line says {message!r}")
    fill_in(manager)
    manager.press(SIGN_IN_WINDOW)
    wait_for("the refusal of the right password", lambda: "minutes" in message_of(manager), 10)
    expect(not stage.profile.is_signed_in(), "signed in to a locked account")


def with_sign_on_page(stage, style):
    config = {"authServer": f"/sso/{style}", "loginButtonText": "Company sign-in"}
    if style == "match":
        config["matchUrl"] = "/sso/return"
    Codes(stage, {"thirdauth": {"id": "sso", "config": config}})
    manager = stage.launch()
    manager.control("thirdLoginButton")
    return manager


def fill_in_page(page):
    page.wait_for_focus("Account")
    page.type(DEMO_ACCOUNT)
    page.type(DEMO_PASSWORD, "Return")


def single_sign_on(stage, style):
    manager = with_sign_on_page(stage, style)
    expect(not pages(manager), "a browser runs before any page was opened")
    manager.press("thirdLoginButton")
    page = Page(manager, "Sign in with your organization")
    page.wait_for_focus("Account")
    page.type(DEMO_ACCOUNT)
    page.type("not-the-password", "Return")
    page.wait_for("is incorrect")
    if style == "script":  # the page stays as it is
        manager.desktop.key("shift+Tab")
    fill_in_page(page)
    wait_for("the stored session to hold a token", manager.profile.is_signed_in, 30,
             while_true=(manager.runs, "the manager ended"))
    expect(stage.profile.session()["account"].get("name") == DEMO_ACCOUNT, "another account name was stored")
    expect("ST-" not in stage.manager_log(), "a ticket stands in the log")
    wait_for("the browser to end", lambda: not pages(manager), 5)
    is_in(manager)


def single_sign_on_hash(stage):
    single_sign_on(stage, "hash")


def single_sign_on_match(stage):
    single_sign_on(stage, "match")


def single_sign_on_hops(stage):
    single_sign_on(stage, "hops")


def single_sign_on_script(stage):
    """The page signs in by itself and shows the ticket as its own place, without another request."""
    single_sign_on(stage, "script")


def single_sign_on_twice(stage):
    """The server takes a ticket once; the page sends it again before the first answer."""
    single_sign_on(stage, "twice")


def single_sign_on_large(stage):
    """A ticket of 100 kB that opens nothing ends in an alert, and that in the sign-in window."""
    manager = with_sign_on_page(stage, "large")
    manager.press("thirdLoginButton")
    fill_in_page(Page(manager, "Sign in with your organization"))
    manager.press("alertButton1", 30)
    manager.control("thirdLoginButton")
    expect(not stage.profile.is_signed_in(), "signed in with a worthless ticket")
    wait_for("the browser to end", lambda: not pages(manager), 5)
    road.quit_manager(manager)


def single_sign_on_hangs(stage, style):
    manager = with_sign_on_page(stage, style)
    manager.press("thirdLoginButton")
    manager.press("btnBack", 60)
    manager.control("thirdLoginButton")
    wait_for("the browser to end", lambda: not pages(manager), 5)
    road.quit_manager(manager)


def single_sign_on_endless(stage):
    single_sign_on_hangs(stage, "endless")


def single_sign_on_loop(stage):
    single_sign_on_hangs(stage, "loop")


def password_reset(stage):
    """The page from the forgotten password to the new one, by keyboard alone, and a sign-in with it."""
    codes = Codes(stage, {"vcode_server_status": {"send_vcode_by_sms": True, "send_vcode_by_email": True}})
    manager = stage.launch()
    manager.press("btnForgetPWD")
    page = Page(manager, "Enter your account")
    page.wait_for_focus("Account")
    manager.desktop.key("Escape")  # out of the page, and in again
    wait_for("the page to end", lambda: not pages(manager), 5)
    manager.press("btnForgetPWD")
    page = Page(manager, "Enter your account")
    page.wait_for_focus("Account")
    page.type(DEMO_ACCOUNT, "Return")
    page.wait_for("E-mail: d***@example.org")
    page.focus()
    for key in ("Down", "Tab", "Tab", "Return"):  # e-mail; past the code to the button that sends it
        manager.desktop.key(key)
    code = codes.wait_for("email")
    page.wait_for("on its way to d***@example.org")
    page.wait_for("Send again (")
    page.wait_for_focus("Code")
    page.type("x" + code[1:])
    page.type(NEW_PASSWORD)
    page.type(NEW_PASSWORD, "Return")
    page.wait_for("The code is wrong")
    manager.desktop.key("shift+Tab")
    manager.desktop.key("shift+Tab")
    page.wait_for_focus("Code")
    page.type(code, "Return")
    manager.control(SIGN_IN_WINDOW, 30)
    fill_in(manager, NEW_PASSWORD)
    manager.press(SIGN_IN_WINDOW)
    is_in(manager)


def password_reset_switched_off(stage):
    """Between the sign-in window and the reset window the administrator switches both ways off."""
    codes = Codes(stage, {"vcode_server_status": {"send_vcode_by_sms": True}})
    manager = stage.launch()
    manager.control("btnForgetPWD")
    with open(os.path.join(stage.folder, "scenario.json"), "w", encoding="utf-8") as file:
        json.dump({}, file)
    manager.press("btnForgetPWD")
    manager.press("alertButton1", 10)
    manager.control(SIGN_IN_WINDOW)
    expect(not codes.all("sms") and not pages(manager), "a page was opened")


def agreement(stage):
    """Can only be left by accepting, which the server remembers."""
    Codes(stage, {"oem": {"autoPopUserAgreement": True, "agreementText": "Keep your password to yourself."}})
    manager = stage.launch()
    fill_in(manager)
    manager.press(SIGN_IN_WINDOW)
    terms = manager.control("txtViewUserProtocol")
    expect("Keep your password" in terms.text(), "the terms are not shown")
    open_volume = manager.control("btnShowVolume")
    expect(not open_volume.is_enabled(), "the volume can be opened without accepting")
    manager.desktop.focus(manager.windows()[-1])
    manager.desktop.key("Escape")
    expect(not stage.profile.companions(), "the companion runs before the terms are accepted")
    manager.press("btnReadUserProtocol")
    manager.press("btnShowVolume")
    manager.gone("btnShowVolume")
    road.wait_for_companion(manager)
    road.sign_out(manager)
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    road.wait_for_companion(manager)
    expect(not manager.find("btnShowVolume"), "the terms are shown again")
    road.quit_manager(manager)


def quick_start_in_browser(stage):
    """Without a page of the organization the general one opens in the user's own browser."""
    Codes(stage, {"needquickstart": True})
    opener = Opener(stage.folder)
    manager = stage.launch()
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    address = opener.wait_for("/quickstart")
    expect("lang=en-us&version=" in address, f"opened: {address}")
    expect(not pages(manager), "it was opened in a window as well")
    road.wait_for_companion(manager)
    road.quit_manager(manager)


def quick_start(stage):
    """Shown once to a new user, as a page of the organization's server."""
    Codes(stage, {"needquickstart": True, "oem": {"QuickStartURL": "/quickstart?from=client"}})
    manager = stage.launch()
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    page = Page(manager, "Find your documents")
    page.wait_for("For Quillbox ")
    road.sign_out(manager)
    wait_for("the page to end with the session", lambda: not pages(manager), 5)
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    road.wait_for_companion(manager)
    expect(not pages(manager), "the introduction is shown again")
    road.quit_manager(manager)


ALL = (picture_code, one_time_password, email_code, resend_code, forced_password_change, locked_account,
       single_sign_on_hash, single_sign_on_match, single_sign_on_hops, single_sign_on_script,
       single_sign_on_twice, single_sign_on_large, single_sign_on_endless, single_sign_on_loop,
       password_reset, password_reset_switched_off, agreement, quick_start, quick_start_in_browser)

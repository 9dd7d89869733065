"""A user's whole day in one go, driven from outside: each function is an hour of it."""
import contextlib
import os
import plistlib
import signal
import time

from drive import processes, road
from drive.manager import SERVER_WINDOW, Manager
from drive.round_trip import second_session
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD
from drive.waiting import wait_for

from opener import Opener
from panel import Panel, notices
from steps import expect, store_automatic_sign_in

PANES = {"btnGeneral": "btnCheckClearCache", "btnAccount": "btnChangePassword", "btnAbout": "txtVersion"}
LINK_FIELD = "txtSearchInputField"


def day(stage):
    """Start, sign in, every entry of the menu, settings, search, out and in again, quit with an open file, and the next
    morning's start with an address."""
    opener = Opener(stage.folder)
    manager = starts(stage)
    signs_in_for_the_first_time(stage, manager)
    own = road.wait_for_volume(manager)
    calls = second_session(stage.profile, DEMO_ACCOUNT, DEMO_PASSWORD)
    opens_what_leads_outside(stage, manager, opener)
    looks_at_lists(stage, manager, opener, own, calls)
    uploads(stage, manager, calls)
    goes_through_the_settings(stage, manager)
    finds_shared_documents(stage, manager, opener, calls)
    signs_out(stage, manager)
    signs_in_again(manager)
    quits_with_an_open_file(stage, manager)
    starts_with_an_address(stage, opener, calls)


def starts(stage):
    """A second launch shows the menu, disturbs nothing, and leaves no process behind."""
    manager = stage.launch()
    manager.control(SERVER_WINDOW)
    manager.type("txtServerAddress", "half-typed")
    expect(manager.launch_again() == 0, "the second launch did not end with 0")
    expect(manager.control("txtServerAddress").text() == "half-typed", "the second launch disturbed the first one")
    expect(stage.profile.processes() == [manager.process.pid], "the second launch left a process behind")
    manager.control("performQuitApp")
    closes_the_menu(manager)
    return manager


def closes_the_menu(manager):
    manager.desktop.focus(manager.windows()[-1])
    manager.desktop.key("Escape")
    manager.gone("performQuitApp")


def signs_in_for_the_first_time(stage, manager):
    """By the Return key."""
    road.choose_server(manager, "127.0.0.1", stage.server.https_port)
    manager.type("txtUserName", DEMO_ACCOUNT)
    manager.type("txtPassword", DEMO_PASSWORD)
    stage.desktop.key("Return")
    road.wait_for_companion(manager)
    session = stage.profile.session()
    stored = (session["server"].get("authPort"), bool(session["server"].get("useHttps")), session["account"].get("name"))
    expect(stored == (stage.server.https_port, True, DEMO_ACCOUNT), f"stored: {stored}")


def opens_what_leads_outside(stage, manager, opener):
    """The volume, the web client and the help pages go to the desktop's programs."""
    manager.choose_in_menu("showQuillboxWindow")
    opener.wait_for("volumes/Quillbox")
    manager.choose_in_menu("showQuillboxWeb")
    page = opener.wait_for(".html")
    expect(stage.profile.session()["account"]["tokenId"] not in page, "the token stands in an argument list")
    for entry, part in (("helpSubMenu_QuickStart", "quickstart"), ("helpSubMenu_HelpOnline", "/help?"),
                        ("helpSubMenu_TrainOnline", "training")):
        manager.choose_in_menu("helpMenu")
        manager.press(entry)
        opener.wait_for(part)


def looks_at_lists(stage, manager, opener, own, calls):
    """Favourites, what a search for a name finds, and what is being transferred."""
    folder = os.path.join(own, "Reports")
    os.mkdir(folder)
    for name in ("Plan 2026.txt", "Other.txt"):
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(name)
    reports = calls.call("dir", "list", docid=calls.own_entry(), attr=True)["dirs"][0]["docid"]
    calls.call("favorites", "add", docid=calls.files(reports)["Other.txt"]["docid"])

    manager.choose_in_menu("openMyFavorites")
    favorites = Panel(stage, manager, "favorites")
    favorites.wait_for_text("Other.txt")
    expect(not any("Plan" in text for text in favorites.texts()), "a document that is no favourite is listed")
    favorites.focus()
    favorites.control("documents").focus()
    stage.desktop.key("Home")
    stage.desktop.key("Return")
    opener.wait_for(folder)

    manager.choose_in_menu("showContentSearchWindow")
    search = Panel(stage, manager, "search")
    search.type("searchField", "plan")
    search.wait_for_text("Plan 2026.txt")

    manager.choose_in_menu("showTransferWindow")
    transfers = Panel(stage, manager, "transfers")
    transfers.wait_for_text("No transfers")
    # Every program that is started closes its copy of the file, which saves it: nothing is started here.
    with open(os.path.join(own, "unfinished.txt"), "w", encoding="utf-8") as file:
        file.write("not closed yet")
        file.flush()
        transfers.wait_for_text("unfinished.txt")
    transfers.wait_for_text("No transfers")


def uploads(stage, manager, calls):
    source = os.path.join(stage.folder, "to upload.txt")
    with open(source, "w", encoding="utf-8") as file:
        file.write("uploaded")
    manager.choose_in_menu("showDirectUploadPanel")
    upload = Panel(stage, manager, "upload")
    upload.type("fileNameEdit", source)
    upload.wait_for_text("Finished")
    expect("to upload.txt" in calls.files(calls.own_entry()), "the server has no such file")


def goes_through_the_settings(stage, manager):
    """All panes, the choice that is kept, and the way to the change of the password, also from the menu."""
    manager.choose_in_menu("showPreferenceWindow")
    for button, content in PANES.items():
        manager.press(button)
        manager.control(content)
    manager.press("btnAccount")
    wait_for("the account's quota", lambda: "G" in manager.control("txtQuota").spoken_name(), 10)
    expect(manager.control("txtAccount").spoken_name() == DEMO_ACCOUNT, "the account pane names another account")
    manager.press("btnGeneral")
    manager.press("btnCheckClearCache")
    wait_for("the choice to be kept", lambda: clears_cache(stage.profile), 5)
    manager.press("btnAccount")
    manager.press("btnChangePassword")
    manager.press("cancelButton")
    manager.gone("comfirmPassword")
    manager.choose_in_menu("changePassword")
    manager.control("comfirmPassword")


def clears_cache(profile):
    path = os.path.join(os.path.dirname(profile.session_file), "clearCache.plist")
    try:
        with open(path, "rb") as file:
            return plistlib.load(file)["ClearCacheSettingWindowFlag"].get(profile.session()["account"]["userId"])
    except (OSError, KeyError, plistlib.InvalidFileException):
        return None


def finds_shared_documents(stage, manager, opener, calls):
    """A link is searched in the window, opened by a second launch, and explained where it leads nowhere; a text is
    searched for."""
    shared = calls.create_folder(calls.own_entry(), "Shared plans")
    inner = calls.create_folder(shared, "2027")
    manager.choose_in_menu("showSearchWindow")
    manager.type(LINK_FIELD, f"https://127.0.0.1/link?docid={shared}")
    stage.desktop.key("Return")
    found = opener.wait_for("Shared plans")
    expect(found.endswith("/Shared plans"), f"opened: {found}")
    expect(manager.control(LINK_FIELD).text_length() > 0, "the field lost its text")

    expect(manager.launch_again(f"quillbox://open?docid={inner}") == 0, "the second launch failed")
    opener.wait_for("Shared plans/2027")

    opened = opener.opened()
    manager.clear(LINK_FIELD)
    manager.type(LINK_FIELD, "qb://nowhere/7")
    stage.desktop.key("Return")
    notice = wait_for("the notice", lambda: notices(stage.profile), 15)[0]
    wait_for("the notice's window", lambda: stage.desktop.windows(notice), 15)
    os.kill(notice, signal.SIGTERM)
    wait_for("the notice to end", lambda: not notices(stage.profile), 10)
    expect(opener.opened() == opened, f"opened: {opener.opened()}")

    expect(manager.launch_again("--service-text", "2027") == 0, "the launch with a text failed")
    wait_for("the search for a name", lambda: any(
        processes.arguments(one)[1:] == ["search", stage.profile.volume.path, "2027"]
        for one in stage.profile.processes()), 15)


def signs_out(stage, manager):
    """Every window of the session goes, and the menu offers nothing that needs one."""
    road.sign_out(manager)
    for control in (LINK_FIELD, "comfirmPassword", "btnGeneral"):
        expect(not manager.find(control), f"the window of {control} stayed after signing out")
    wait_for("the companion's windows to go", lambda: not any(
        "QuillboxPanel" in (processes.executable(process_id) or "") for process_id in stage.profile.processes()), 10)
    manager.launch_again()
    for entry in ("showQuillboxWindow", "showQuillboxWeb", "showTransferWindow", "showDirectUploadPanel",
                  "showSearchWindow", "showContentSearchWindow", "showPreferenceWindow", "performLogout"):
        expect(not manager.control(entry).is_enabled(), f"{entry} is enabled while signed out")
    expect(not manager.find("openMyFavorites") and not manager.find("changePassword"), "run-time entries stayed")
    closes_the_menu(manager)


def signs_in_again(manager):
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    road.wait_for_companion(manager)


def quits_with_an_open_file(stage, manager):
    """The user is asked, also when signing out, and can stay; forced, the end comes all the same."""
    path = os.path.join(road.wait_for_volume(manager), "open.txt")
    file = os.open(path, os.O_WRONLY | os.O_CREAT)
    companions = stage.profile.companions()
    try:
        os.write(file, b"not saved yet")
        for entry in ("performLogout", "performQuitApp"):
            manager.choose_in_menu(entry)
            manager.press("alertButton2")
            manager.gone("alertButton2")
            os.write(file, b", and more")
        time.sleep(2.5)  # as long as the watch takes to notice an end of the companion
        expect(manager.runs() and stage.profile.companions() == companions, "what was refused went on")
        manager.choose_in_menu("performQuitApp")
        manager.press("alertButton1")
        expect(manager.wait_for_end(15) == 0, "the forced end did not come")
    finally:
        with contextlib.suppress(OSError):  # nobody is left to take it
            os.close(file)
    wait_for("everything of the application to end", lambda: not stage.profile.processes(), 15)
    stage.profile.volume.wait_until_gone(10)


def starts_with_an_address(stage, opener, calls):
    """The automatic sign-in of the next morning, begun by a link in another program, and a link while it runs."""
    links = {name: f"quillbox://open?docid={calls.create_folder(calls.own_entry(), name)}" for name in
             ("Before breakfast", "After breakfast")}
    store_automatic_sign_in(stage)
    manager = Manager(stage.profile, stage.desktop, stage.bus, arguments=[links["Before breakfast"]])
    opener.wait_for("Before breakfast")
    expect(manager.launch_again(links["After breakfast"]) == 0, "the launch with an address failed")
    opener.wait_for("After breakfast")
    road.quit_manager(manager)

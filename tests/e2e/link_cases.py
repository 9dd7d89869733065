"""Shared links: the companion finds the document and its folder is opened, or the user is told that there is none."""
import os
import signal

from drive import processes, road
from drive.round_trip import second_session
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD
from drive.waiting import wait_for

from menu_cases import Opener
from steps import expect, signed_in

FIELD = "txtSearchInputField"


def notices(stage):
    """Ids of the programs that show the companion's messages."""
    program = stage.profile.program + "Notice"
    return [one for one in stage.profile.processes() if processes.executable(one) == program]


def shared_link(stage):
    """A link is searched in the window, opened by a second launch, and explained where it leads nowhere."""
    opener = Opener(stage.folder)
    manager, _ = signed_in(stage)
    own = road.wait_for_volume(manager)
    calls = second_session(stage.profile, DEMO_ACCOUNT, DEMO_PASSWORD)
    shared = calls.create_folder(calls.own_entry(), "Shared plans")
    inner = calls.create_folder(shared, "2026")

    manager.choose_in_menu("showSearchWindow")
    manager.type(FIELD, f"https://127.0.0.1/link?docid={shared}")
    stage.desktop.key("Return")
    expect(opener.wait_for("Shared plans").endswith(f"{own}/Shared plans"), f"opened: {opener.opened()}")
    expect(manager.control(FIELD).text_length() > 0, "the field lost its text")

    expect(manager.launch_again(f"quillbox://open?docid={inner}") == 0, "the second launch failed")
    opener.wait_for("Shared plans/2026")

    opened = opener.opened()
    manager.clear(FIELD)
    manager.type(FIELD, "qb://nowhere/7")
    stage.desktop.key("Return")
    notice = wait_for("the notice", lambda: notices(stage), 15)[0]
    wait_for("the notice's window", lambda: stage.desktop.windows(notice), 15)
    os.kill(notice, signal.SIGTERM)
    wait_for("the notice to end", lambda: not notices(stage), 10)
    expect(opener.opened() == opened, f"opened: {opener.opened()}")

    expect(manager.launch_again("--service-text", "2026") == 0, "the launch with a text failed")
    wait_for("the search for a name", lambda: any(
        processes.arguments(one)[1:] == ["search", stage.profile.volume.path, "2026"]
        for one in stage.profile.processes()), 15)
    road.sign_out(manager)
    expect(manager.find(FIELD) is None, "the search window stands after signing out")

"""The road a new user takes, from the server's address to quitting, in steps that the caller may mark or photograph."""
from . import processes
from .manager import SERVER_WINDOW, SIGN_IN_WINDOW
from .volume import obstacle
from .waiting import Failure, wait_for


def choose_server(manager, address=None, port=None):
    """Confirms the server window, after typing address and port when they are given; the sign-in window follows."""
    if address is not None:
        manager.type("txtServerAddress", address)
        manager.type("txtAuthPort", port)
    manager.press(SERVER_WINDOW)
    manager.control(SIGN_IN_WINDOW, 30)


def sign_in(manager, account=None, password=None):
    """Presses the sign-in button, after typing account and password when they are given; ends signed in."""
    if account is not None:
        manager.type("txtUserName", account)
        manager.type("txtPassword", password)
    manager.press(SIGN_IN_WINDOW)
    wait_for("the stored session to hold a token", manager.profile.is_signed_in, 30,
             while_true=(manager.runs, "the manager ended"))
    manager.gone(SIGN_IN_WINDOW)


def wait_for_companion(manager, seconds=20):
    """The id of the companion process, which must have been told the manager's id. It ends where it cannot mount."""
    reason = obstacle()
    if reason:
        raise Failure(reason)
    # A process has its new program an instant before its arguments.
    companion = wait_for("the companion process FUSEService",
                         lambda: next(filter(processes.arguments, manager.profile.companions()), None), seconds,
                         while_true=(manager.runs, "the manager ended"))
    if processes.arguments(companion)[1:] != [str(manager.process.pid)]:
        raise Failure(f"the companion was started with {processes.arguments(companion)[1:]}")
    return companion


def wait_for_volume(manager, seconds=20):
    """The folder of the user's own documents on the mounted volume."""
    manager.profile.volume.wait_until_mounted((manager.profile.companions, "the companion ended"), seconds)
    return manager.profile.volume.own_documents()


def sign_out(manager):
    """Ends at the sign-in window, with the companion and the volume gone."""
    manager.choose_in_menu("performLogout")
    wait_for("the companion process to end", lambda: not manager.profile.companions(), 15)
    manager.profile.volume.wait_until_gone()
    manager.control(SIGN_IN_WINDOW, 15)


def quit_manager(manager):
    manager.choose_in_menu("performQuitApp")
    code = manager.wait_for_end()
    if code != 0:
        raise Failure(f"the manager ended with status {code}")
    wait_for("everything of the application to end", lambda: not manager.profile.processes(), 5)
    manager.profile.volume.wait_until_gone()

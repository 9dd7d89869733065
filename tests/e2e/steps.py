"""What several end-to-end cases do."""
import base64

from drive import road
from drive.server import DEMO_ACCOUNT, DEMO_PASSWORD
from drive.waiting import Failure


def expect(condition, text):
    if not condition:
        raise Failure(text)


def signed_in(stage):
    """A manager that was started with a stored server and signed in; the shortest way to that state."""
    stage.store_server(stage.server.https_port)
    manager = stage.launch()
    road.sign_in(manager, DEMO_ACCOUNT, DEMO_PASSWORD)
    return manager, road.wait_for_companion(manager)


def store_automatic_sign_in(stage):
    """Settings of a user who is signed in by the start alone."""
    stage.profile.write_settings({
        "ServerID": "127.0.0.1", "AuthportNew": stage.server.https_port, "AccountName": DEMO_ACCOUNT,
        "EncryptPassword": base64.b64encode(DEMO_PASSWORD.encode()).decode(), "AutoLogin": 1})

"""What several end-to-end cases do."""
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

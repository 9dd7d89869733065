"""Windows of the companion's: its lists, and its messages."""
from drive import processes
from drive.waiting import wait_for


class Panel:
    """A window of the companion's, in a program of its own."""

    def __init__(self, stage, manager, kind):
        self.stage, self.kind = stage, kind
        self.process_id = wait_for(f"the companion's window {kind}", lambda: self._running(manager), 15)

    def _running(self, manager):
        return next((process_id for process_id in manager.profile.processes()
                     if self.kind in processes.arguments(process_id)[1:2]), None)

    def control(self, name):
        def find():
            application = self.stage.bus.application(self.process_id)
            return application and application.find(name)
        return wait_for(f"{name} in the companion's window {self.kind}", find, 15)

    def type(self, name, text):
        """Types into a field and presses Return."""
        field = self.control(name)

        def has_keyboard():
            # Nobody manages the windows here: the menu that goes away may take the focus along once more.
            self.focus()
            field.focus()
            return field.has_focus()
        wait_for(f"the keyboard focus in {name}", has_keyboard, 10)
        self.stage.desktop.type_text(text)
        wait_for(f"the typed text in {name}", lambda: field.text_length() == len(text), 5)
        self.stage.desktop.key("Return")

    def texts(self):
        application = self.stage.bus.application(self.process_id)
        return [text for child in application.children() for text in child.shown_texts()] if application else []

    def wait_for_text(self, part):
        wait_for(f"{part!r} in the companion's window {self.kind}; shown: {self.texts()}",
                 lambda: any(part in text for text in self.texts()), 15)

    def focus(self):
        window = wait_for("the window on the screen", lambda: self.stage.desktop.windows(self.process_id), 10)[-1]
        self.stage.desktop.focus(window)


def notices(profile):
    """Ids of the programs that show the companion's messages."""
    return [one for one in profile.processes() if processes.executable(one) == profile.program + "Notice"]

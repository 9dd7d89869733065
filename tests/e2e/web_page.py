"""The web pages that the manager shows, and the processes behind them."""
import os

from drive.waiting import Failure, wait_for

PAGE_PROCESSES = ("--type=renderer", "--type=utility", "--type=gpu-process")


class Page:
    """The web page in the manager's newest window, read through the accessibility bus and typed into with real keys."""

    def __init__(self, manager, first_text):
        self.manager = manager
        self.wait_for(first_text, 30)
        self.focus()

    def focus(self):
        self.manager.desktop.focus(self.manager.windows()[-1])

    def texts(self):
        application = self.manager.bus.application(self.manager.process.pid)
        return [text for child in application.children() for text in child.shown_texts()] if application else []

    def wait_for(self, part, seconds=15):
        try:
            wait_for(f"the text {part!r} in the page", lambda: any(part in text for text in self.texts()), seconds,
                     while_true=(self.manager.runs, "the manager ended"))
        except Failure as failure:
            raise Failure(f"{failure}; shown instead: {self.texts()}") from None

    def focused(self):
        waiting = list(self.manager.bus.application(self.manager.process.pid).children())
        while waiting:
            node = waiting.pop(0)
            waiting.extend(node.children())
            if node.has_focus() and node.spoken_name():
                yield node.spoken_name()

    def wait_for_focus(self, name):
        wait_for(f"the keyboard focus in {name!r}; it is in {list(self.focused())}",
                 lambda: name in list(self.focused()), 10)

    def type(self, text, then="Tab"):
        self.manager.desktop.type_text(text)
        self.manager.desktop.key(then)


def parent_of(process_id):
    try:
        with open(f"/proc/{process_id}/stat", encoding="utf-8", errors="replace") as file:
            return int(file.read().rpartition(")")[2].split()[1])
    except (OSError, ValueError):
        return 0


def pages(manager):
    """Processes that show pages for the manager; helpers that wait for the next page do not count."""
    found = []
    for process_id in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{process_id}/cmdline", encoding="utf-8", errors="replace") as file:
                words = file.read().replace("\0", " ")
                is_page = any(kind in words for kind in PAGE_PROCESSES)
        except OSError:
            continue
        above = process_id
        while is_page and above and above != manager.process.pid:
            above = parent_of(above)
        if is_page and above:
            found.append(int(process_id))
    return found

"""Child processes that never outlive the program, and questions about running processes."""
import ctypes
import os
import signal
import subprocess
import time

PR_SET_PDEATHSIG = 1
PR_SET_CHILD_SUBREAPER = 36
_libc = ctypes.CDLL(None, use_errno=True)


def adopt_orphans():
    """Makes processes whose parents end children of this one, so that `end_all` finds them."""
    _libc.prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def _die_with_parent():
    _libc.prctl(PR_SET_PDEATHSIG, signal.SIGTERM, 0, 0, 0)


def start(arguments, **options):
    """A child in a session of its own (Ctrl-C reaches only the parent), without standard input."""
    options.setdefault("stdin", subprocess.DEVNULL)
    return subprocess.Popen(arguments, start_new_session=True, preexec_fn=_die_with_parent, **options)


def running():
    """Ids of all processes that have not ended."""
    for entry in os.listdir("/proc"):
        if entry.isdigit() and status(int(entry))[0] not in ("", "Z"):
            yield int(entry)


def status(process_id):
    """(state letter, parent id); ("", 0) when there is no such process."""
    try:
        with open(f"/proc/{process_id}/stat", encoding="utf-8", errors="replace") as file:
            fields = file.read().rpartition(")")[2].split()
        return fields[0], int(fields[1])
    except (OSError, IndexError):
        return "", 0


def seconds_used(process_id):
    """Processor time of a running process so far."""
    with open(f"/proc/{process_id}/stat", encoding="utf-8", errors="replace") as file:
        fields = file.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def executable(process_id):
    try:
        return os.readlink(f"/proc/{process_id}/exe")
    except OSError:
        return ""


def arguments(process_id):
    try:
        with open(f"/proc/{process_id}/cmdline", "rb") as file:
            return [part.decode(errors="replace") for part in file.read().split(b"\0")[:-1]]
    except OSError:
        return []


def running_below(folder):
    """Ids of the running processes whose executable lies in `folder`."""
    prefix = os.path.realpath(folder) + "/"
    return [process_id for process_id in running() if executable(process_id).startswith(prefix)]


def descendants(root):
    parents = {process_id: status(process_id)[1] for process_id in running()}
    found, added = set(), {root}
    while added:
        added = {child for child, parent in parents.items() if parent in added} - found
        found |= added
    return found


def end_all(grace=3.0):
    """Ends every descendant: asks first, kills after `grace` seconds, and reaps them."""
    for number, seconds in ((signal.SIGTERM, grace), (signal.SIGKILL, 5.0)):
        end = time.monotonic() + seconds
        for process_id in descendants(os.getpid()):
            _send(process_id, number)
        while descendants(os.getpid()) and time.monotonic() < end:
            if number == signal.SIGKILL:  # what was adopted meanwhile
                for process_id in descendants(os.getpid()):
                    _send(process_id, number)
            _reap()
            time.sleep(0.02)
    _reap()


def _send(process_id, number):
    try:
        os.kill(process_id, number)
    except (ProcessLookupError, PermissionError):  # gone, or a helper that runs with root's rights and ends by itself
        pass


def _reap():
    try:
        while os.waitpid(-1, os.WNOHANG)[0]:
            pass
    except ChildProcessError:
        pass

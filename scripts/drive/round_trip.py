"""Shows that the volume and the server hold the same: copies out, copies in, and what the server says about it."""
import os

from .server_calls import ServerCalls
from .volume import digest, expect_same, files_below, run
from .waiting import Failure


def listing(volume, own):
    """Lines that tell what the volume shows: the categories, then the user's own files."""
    return [*run("ls", "-A", volume.path).splitlines(), *(os.path.join(os.path.relpath(own, volume.path), name)
                                                          for name in files_below(own))]


def second_session(profile, account, password):
    """Calls of a client of its own, signed in to the server that the manager is signed in to."""
    server = profile.session()["server"]
    calls = ServerCalls(server["server"], server["authPort"], server.get("useHttps"),
                        os.path.join(profile.resources, "public_key.der"))
    calls.sign_in(account, password)
    return calls


def server_digest(calls, folder, name, copy):
    """Digest of a file as the server holds it; its bytes are kept in `copy`."""
    record = calls.files(folder).get(name)
    if not record:
        raise Failure(f"the server does not list {name}")
    with open(copy, "wb") as file:
        file.write(calls.read(record["docid"], record["size"]))
    return digest(copy)


def show(own, calls, copies):
    """Copies a file out and a new one in, compares each with the server, and tells about it in a line."""
    os.makedirs(copies, exist_ok=True)
    entry = calls.own_entry()
    names = [name for name in files_below(own) if "/" not in name]
    if not names:
        raise Failure(f"{own} holds no file to copy out")
    outside, from_server = os.path.join(copies, "out"), os.path.join(copies, "server")
    run("cp", "--", os.path.join(own, names[0]), outside)
    expect_same(f"{names[0]}, copied out", digest(outside), server_digest(calls, entry, names[0], from_server))

    new = "Copied in.bin"
    with open(os.path.join(copies, new), "wb") as file:
        file.write(os.urandom(3 * 1024 * 1024 + 1))
    made = digest(os.path.join(copies, new))
    run("cp", "--", os.path.join(copies, new), own)
    expect_same(f"{new} on the volume", made, digest(os.path.join(own, new)))
    expect_same(f"{new} on the server", made, server_digest(calls, entry, new, from_server))
    return f"out: {names[0]}, in: {new}, the same on the server; sha256 {made}"

"""The windows of a program as assistive technology sees them, spoken to over the accessibility bus.

A control is found by its accessible description "#" + name, which the program sets when it is started with
QUILLBOX_TEST_IDS=1. Needs DBUS_SESSION_BUS_ADDRESS to name the session the program runs in.
"""
import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

ACCESSIBLE = "org.a11y.atspi.Accessible"
ROOT = "/org/a11y/atspi/accessible/root"
TIMEOUT = 2000  # milliseconds
STATE_CHECKED, STATE_ENABLED, STATE_FOCUSED, STATE_SENSITIVE, STATE_SHOWING = 4, 8, 12, 24, 25


class AccessibilityBus:
    def __init__(self):
        session = Gio.bus_get_sync(Gio.BusType.SESSION, None)
        session.set_exit_on_close(False)
        address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None,
                                    GLib.VariantType("(s)"), 0, 10_000, None).unpack()[0]
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)

    def call(self, name, path, interface, method, arguments=None):
        """The unpacked reply, or None when the object is gone or does not answer in time."""
        try:
            reply = self.connection.call_sync(name, path, interface, method, arguments, None, 0, TIMEOUT, None)
            return reply.unpack()
        except GLib.Error:
            return None

    def send(self, name, path, interface, method, arguments=None):
        """Like `call`, but does not wait: what is set off may run a modal dialog before it answers."""
        message = Gio.DBusMessage.new_method_call(name, path, interface, method)
        if arguments is not None:
            message.set_body(arguments)
        message.set_flags(Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
        self.connection.send_message(message, Gio.DBusSendMessageFlags.NONE)
        self.connection.flush_sync(None)

    def process_id(self, name):
        reply = self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                          "GetConnectionUnixProcessID", GLib.Variant("(s)", (name,)))
        return reply[0] if reply else 0

    def application(self, process_id):
        """The root object of the program with this process id, or None while it has not registered."""
        reply = self.call("org.a11y.atspi.Registry", ROOT, ACCESSIBLE, "GetChildren")
        for name, path in reply[0] if reply else []:
            if self.process_id(name) == process_id:
                return Accessible(self, name, path)
        return None


class Accessible:
    def __init__(self, bus, name, path):
        self.bus, self.name, self.path = bus, name, path

    def call(self, interface, method, arguments=None):
        return self.bus.call(self.name, self.path, interface, method, arguments)

    def property(self, interface, key):
        reply = self.call("org.freedesktop.DBus.Properties", "Get", GLib.Variant("(ss)", (interface, key)))
        return reply[0] if reply else None

    def children(self):
        reply = self.call(ACCESSIBLE, "GetChildren")
        return [Accessible(self.bus, name, path) for name, path in (reply[0] if reply else [])]

    def description(self):
        return self.property(ACCESSIBLE, "Description") or ""

    def spoken_name(self):
        return self.property(ACCESSIBLE, "Name") or ""

    def has_state(self, state):
        reply = self.call(ACCESSIBLE, "GetState")
        return bool(reply) and bool(reply[0][state // 32] >> (state % 32) & 1)

    def is_showing(self):
        return self.has_state(STATE_SHOWING)

    def is_enabled(self):
        return self.has_state(STATE_ENABLED) and self.has_state(STATE_SENSITIVE)

    def is_checked(self):
        return self.has_state(STATE_CHECKED)

    def has_focus(self):
        return self.has_state(STATE_FOCUSED)

    def find(self, object_name):
        """The first shown control of this name at or below this object."""
        waiting = [self]
        while waiting:
            node = waiting.pop(0)
            if node.description() == "#" + object_name and node.is_showing():
                return node
            waiting.extend(node.children())
        return None

    def shown_texts(self):
        """Names of everything shown, for failure messages."""
        texts = [self.spoken_name()] if self.is_showing() else []
        for child in self.children():
            texts += child.shown_texts()
        return [text for text in texts if text]

    def press(self):
        """Sets off the control's first action (that of its mouse click); does not wait for what it does."""
        self.bus.send(self.name, self.path, "org.a11y.atspi.Action", "DoAction", GLib.Variant("(i)", (0,)))

    def focus(self):
        self.call("org.a11y.atspi.Component", "GrabFocus")

    def text(self):
        count = self.property("org.a11y.atspi.Text", "CharacterCount") or 0
        reply = self.call("org.a11y.atspi.Text", "GetText", GLib.Variant("(ii)", (0, count)))
        return reply[0] if reply else ""

    def text_length(self):
        return self.property("org.a11y.atspi.Text", "CharacterCount") or 0

"""Reads a program's windows as a screen reader does, over the accessibility bus."""

from gi.repository import Gio, GLib

from .waiting import wait_for

ACCESSIBLE = "org.a11y.atspi.Accessible"
COMPONENT = "org.a11y.atspi.Component"
TEXT = "org.a11y.atspi.Text"
VALUE = "org.a11y.atspi.Value"
TABLE = "org.a11y.atspi.Table"
PROPERTIES = "org.freedesktop.DBus.Properties"
# Bits of the state that the bus tells of every object.
ACTIVE, CHECKED, ENABLED, FOCUSED, SELECTED, SHOWING = 1, 4, 8, 12, 23, 25
CALL_TIMEOUT_MS = 10000
GONE = "null"
REGISTRY = "org.a11y.atspi.Registry"
ROOT = "/org/a11y/atspi/accessible/root"


def _connect(address):
    flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


class Widget:
    """One object of a window. What it tells is asked anew each time."""

    def __init__(self, bus, owner, path):
        self._bus = bus
        self.owner = owner
        self._path = path

    def _call(self, interface, method, arguments=None):
        return self._bus.call_sync(self.owner, self._path, interface, method, arguments, None,
                                   Gio.DBusCallFlags.NONE, CALL_TIMEOUT_MS, None).unpack()

    def _property(self, interface, name):
        return self._call(PROPERTIES, "Get", GLib.Variant("(ss)", (interface, name)))[0]

    def _widgets(self, references):
        return [Widget(self._bus, owner, path) for owner, path in references if not path.endswith(GONE)]

    def __eq__(self, other):
        return isinstance(other, Widget) and (self.owner, self._path) == (other.owner, other._path)

    def __hash__(self):
        return hash((self.owner, self._path))

    @property
    def name(self):
        return self._property(ACCESSIBLE, "Name")

    @property
    def description(self):
        return self._property(ACCESSIBLE, "Description")

    @property
    def role(self):
        return self._call(ACCESSIBLE, "GetRoleName")[0]

    @property
    def children(self):
        return self._widgets(self._call(ACCESSIBLE, "GetChildren")[0])

    @property
    def interfaces(self):
        return self._call(ACCESSIBLE, "GetInterfaces")[0]

    @property
    def text(self):
        return self._call(TEXT, "GetText", GLib.Variant("(ii)", (0, -1)))[0]

    @property
    def value(self):
        return self._property(VALUE, "CurrentValue")

    @property
    def area(self):
        """Left, top, width and height on the screen."""
        return self._call(COMPONENT, "GetExtents", GLib.Variant("(u)", (0,)))[0]

    @property
    def centre(self):
        left, top, width, height = self.area
        return left + width // 2, top + height // 2

    def cell(self, row, column):
        return self._widgets(self._call(TABLE, "GetAccessibleAt", GLib.Variant("(ii)", (row, column))))[0]

    def has(self, state):
        low, high = self._call(ACCESSIBLE, "GetState")[0]
        return bool(((high << 32 | low) >> state) & 1)

    def walk(self):
        """This one and everything below it that is on the screen, from left to right as it is told."""
        yield self
        for child in self.children:
            if child.has(SHOWING):
                yield from child.walk()

    def find(self, name, role=None):
        """The widget on the screen with this name (and role), or None."""
        for widget in self.walk():
            if widget.name == name and (role is None or widget.role == role):
                return widget
        return None

    def await_widget(self, name, role=None):
        """Waits for it: a window is told of before all that stands in it."""
        return wait_for(lambda: self.find(name, role), f"{role or 'widget'} {name!r}", seen=self.outline)

    @property
    def labels(self):
        """The texts of all labels in it, one per line."""
        return "\n".join(widget.name for widget in self.walk() if widget.role == "label" and widget.name)

    def find_role(self, role):
        """The first widget of this role, or None."""
        return next((widget for widget in self.walk() if widget.role == role), None)

    def outline(self, depth=0):
        """What a screen reader could say of it, for the one who has to find out what went wrong."""
        marks = [word for state, word in ((ACTIVE, "active"), (CHECKED, "checked"), (FOCUSED, "focused"),
                                          (SELECTED, "selected")) if self.has(state)]
        more = [self.text] if TEXT in self.interfaces else []
        more += [str(self.value)] if VALUE in self.interfaces else []
        line = "  " * depth + f"{self.role} {self.name!r} {more} {' '.join(marks)} {self.area}"
        below = [child.outline(depth + 1) for child in self.children if child.has(SHOWING)]
        return "\n".join([line + " " + self.description[:60], *below])


class Accessibility:
    """The accessibility bus of a session, which starts with this.

    A program must be up before: one that finds the bus at its start registers before it is connected, and
    never again.
    """

    def __init__(self, session_address):
        session = _connect(session_address)
        address = wait_for(lambda: self._address(session), "an accessibility bus")
        self._bus = _connect(address)
        self._ask("StartServiceByName", GLib.Variant("(su)", (REGISTRY, 0)))

    def _ask(self, method, arguments=None):
        return self._bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
                                   arguments, None, Gio.DBusCallFlags.NONE, CALL_TIMEOUT_MS, None).unpack()[0]

    @staticmethod
    def _address(session):
        return session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                                 Gio.DBusCallFlags.NONE, CALL_TIMEOUT_MS, None).unpack()[0]

    def application(self, process):
        """What this process shows, or None as long as it is not there."""
        for name in self._ask("ListNames"):
            try:
                if name.startswith(":") and self._ask("GetConnectionUnixProcessID",
                                                      GLib.Variant("(s)", (name,))) == process:
                    application = Widget(self._bus, name, ROOT)
                    return application if application.children else None
            except GLib.Error:
                continue  # gone, or not ready
        return None


class Reader:
    """The windows of one process."""

    def __init__(self, accessibility, process):
        self._known = {}
        self.application = wait_for(lambda: accessibility.application(process),
                                    f"process {process} on the accessibility bus")

    def titles(self):
        return [window.name for window in self.application.children if window.has(SHOWING)]

    def _in_front(self, matches):
        try:
            for window in self.application.children:
                if window.has(SHOWING) and window.has(ACTIVE) and matches(window):
                    return window
        except GLib.Error:
            pass  # it went while it was asked
        return None

    def is_there(self, window):
        try:
            return window in self.application.children and window.has(SHOWING)
        except GLib.Error:
            return False

    def now(self, title):
        """The window, if it is in front now."""
        return self._in_front(lambda window: window.name.startswith(title))

    def window(self, title):
        """Waits for the window whose title begins so to be in front, and to have found its place."""
        return self._settled(lambda window: window.name.startswith(title), f"window {title!r}")

    def box(self, text):
        """The same for a message box with this text in it; those have no title."""
        return self._settled(lambda window: window.role.startswith("alert") and text in window.labels,
                             f"a box with {text!r}")

    def _in_front_of_all(self):
        boxes = [window.labels for window in self.application.children if window.role.startswith("alert")]
        return f"windows {self.titles()}, boxes {boxes}"

    def _settled(self, matches, what):
        window = wait_for(lambda: self._in_front(matches), f"{what} in front", seen=self._in_front_of_all)
        areas = [None]

        def has_settled():
            areas.append(window.area)
            return areas[-1] == areas[-2]

        wait_for(has_settled, f"{what} stands still")
        return window

    def has_window(self, title):
        return any(name.startswith(title) for name in self.titles())

    def find(self, title, name, role=None):
        """Waits for a widget of a window that need not be in front."""
        key = (title, name, role)
        known = self._known.get(key)
        try:
            if known and known.has(SHOWING) and known.name == name:
                return known
        except GLib.Error:
            pass

        def look():
            try:
                for window in self.application.children:
                    found = window.name.startswith(title) and window.has(SHOWING) and window.find(name, role)
                    if found:
                        return found
            except GLib.Error:
                pass
            return None

        self._known[key] = wait_for(look, f"{role or 'widget'} {name!r} in {title!r}", seen=self.outline)
        return self._known[key]

    def labelled(self, title, description):
        """The text of the label that is described so, empty when there is none."""
        try:
            for window in self.application.children:
                if window.name.startswith(title) and window.has(SHOWING):
                    return next((widget.name for widget in window.walk() if widget.description == description), "")
        except GLib.Error:
            pass
        return ""

    def outline(self):
        try:
            return "\n" + self.application.outline()
        except GLib.Error as error:
            return str(error)

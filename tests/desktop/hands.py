"""Two ways through the windows that need neither eye nor mouse: the keys, and what a screen reader uses (AT-SPI)."""

import copy
import os

from desktop import Gio, GLib, Program, wait_for

WINDOW, QUESTION = "Manage Accounts", "Letterloft"  # the notice is titled as the questions are
ADD_APP, ADD_FILE = "Select a new app", "Select File Or Folder"
# From nothing selected, or anything, to the first of at least two rows.
TO_FIRST_ROW = ["Down"] * 3 + ["Up"] * 9


class Keyboard:
    """Keys into the window that has the focus. A row is found by its place."""

    def __init__(self, desktop):
        self.desktop = desktop

    def focus(self):
        """The title of the window that gets the keys."""
        return self.desktop.output("xdotool", "getwindowfocus", "getwindowname").strip()

    def wait_for_focus(self, title):
        wait_for(lambda: self.focus().startswith(title), lambda: f"{title!r} instead of {self.focus()!r}")

    def press(self, *keys, then=WINDOW):
        """Keys, and the window that has the focus after them."""
        self.desktop.output("xdotool", "key", *keys)
        self.wait_for_focus(then)

    def type(self, text, *keys):
        self.desktop.output("xdotool", "type", text)
        self.desktop.output("xdotool", "key", *keys)

    def rows_above(self, key, entry):
        return ["Down"] * self.desktop.settings()[key].index(entry)

    def choose(self, program, title):
        Program(self.desktop).exit_status()
        self.wait_for_focus("Letterloft")
        titles = [row[1] for row in program.rows() if row[1] and row[2]]
        self.desktop.output("xdotool", "key", *TO_FIRST_ROW, *["Down"] * titles.index(title), "Return")

    def wait_for_window(self, title):
        self.wait_for_focus(title)

    def close(self, program, title, key="alt+F4"):
        windows = len(self.desktop.windows(program.process))
        self.desktop.output("xdotool", "key", key)
        wait_for(lambda: len(self.desktop.windows(program.process)) < windows, f"the end of {title!r}")

    def answer(self, text, button):
        self.wait_for_focus(QUESTION)
        self.press({"OK": "Return", "Cancel": "Escape"}[button])

    def add_account(self):
        self.press("ctrl+n")

    def rename(self, account, name):
        self.press("alt+c", *TO_FIRST_ROW, *self.rows_above("Accounts", account), "F2", "ctrl+a")
        self.type(name, "Return")

    def delete_account(self, account):
        self.desktop.output("xdotool", "key", "alt+c", *TO_FIRST_ROW, *self.rows_above("Accounts", account), "Delete")

    def tick(self, app):
        self.press("alt+m", *TO_FIRST_ROW, *self.rows_above("Apps", app), "space")

    def add_application(self, name):
        self.press("alt+p", then=ADD_APP)
        self.type(name, "Return")
        self.wait_for_focus(WINDOW)

    def add_file(self, app, path):
        self.press("alt+m", *TO_FIRST_ROW, *self.rows_above("Apps", app), "alt+f", then=ADD_FILE)
        self.press("alt+f", "ctrl+a", then=ADD_FILE)
        self.type(os.path.dirname(path), "Return", "Tab", "Tab")
        # The folder is listed when it has been read, which is not to be seen from outside.
        choose = ["xdotool", "key", os.path.basename(path)[0], "Return"]
        wait_for(lambda: self.focus().startswith(WINDOW) or self.desktop.output(*choose), self.focus)

    def expand(self, app):
        self.press("alt+m", *TO_FIRST_ROW, *self.rows_above("Apps", app), "Right")

    def remove(self, app, file=None):
        inside = ["Right"] if file else []
        self.desktop.output("xdotool", "key", "alt+m", *TO_FIRST_ROW, *self.rows_above("Apps", app), *inside, "Delete")

    def wait_for_mark(self, account):
        """Where it is to be seen is looked at by the panel's rows."""

    def reset(self):
        self.desktop.output("xdotool", "key", "alt+r")


class ScreenReader:
    """What is told of the windows over the bus of the screen readers, and done there: no key, no mouse."""

    ACTIVE, SELECTED, SHOWING = 1, 23, 25

    def __init__(self, desktop):
        self.desktop = desktop
        desktop.start("/usr/libexec/at-spi-bus-launcher", "--launch-immediately", "--a11y=1")
        address = wait_for(lambda: desktop.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"),
                           "the bus of the screen readers")
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.reader = copy.copy(desktop)
        self.reader.bus = Gio.DBusConnection.new_for_address_sync(address[0], flags, None, None)
        self.reader.bus.set_exit_on_close(False)

    def call(self, thing, interface, method, arguments=None):
        return (self.reader.call(*thing, "org.a11y.atspi." + interface, method, arguments) or (None,))[0]

    def property(self, thing, name):
        return self.reader.property(*thing, "org.a11y.atspi.Accessible", name)

    def has(self, thing, state):
        states = self.call(thing, "Accessible", "GetState")
        return bool(states and states[0] >> state & 1)

    def things(self):
        """All that is shown, in its order: (what to call it by, role, name)."""
        todo = [("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")]
        while todo:
            thing = todo.pop()
            role = self.call(thing, "Accessible", "GetRoleName")
            if role == "desktop frame" or self.has(thing, self.SHOWING):
                yield thing, role, self.property(thing, "Name")
                todo += reversed(self.call(thing, "Accessible", "GetChildren") or [])

    def find(self, role, name, description=None):
        for thing, *what in self.things():
            if what == [role, name] and description in (None, self.property(thing, "Description")):
                return thing
        return None

    def wait_until(self, condition, what):
        return wait_for(condition, lambda: f"{what} among {[thing[1:] for thing in self.things()]}")

    def thing(self, role, name):
        return self.wait_until(lambda: self.find(role, name), f"{role} {name!r}")

    def gone(self, role, name):
        self.wait_until(lambda: not self.find(role, name), f"the end of {role} {name!r}")

    def act(self, role, name, action="Press", of=None):
        """An action by its name, as soon as it is offered."""
        def is_done():
            thing = self.find(role, name, of)
            names = [action[0] for action in thing and self.call(thing, "Action", "GetActions") or []]
            if action in names:  # a program that ends by it may not answer
                self.call(thing, "Action", "DoAction", GLib.Variant("(i)", (names.index(action),)))
            return action in names

        self.wait_until(is_done, f"{action} of {role} {name!r}")

    def select(self, role, name):
        self.act(role, name, "SetFocus")
        wait_for(lambda: self.has(self.thing(role, name), self.SELECTED), f"the selection of {name!r}")

    def write(self, name, text):
        self.call(self.thing("text", name), "EditableText", "SetTextContents", GLib.Variant("(s)", (text,)))

    def choose(self, program, title):
        Program(self.desktop).exit_status()
        self.act("list item", title)

    def wait_for_window(self, title):
        self.wait_until(lambda: self.has(self.thing("frame", title), self.ACTIVE), f"the focus of {title!r}")

    def close(self, program, title):
        self.act("frame", title, "Close")
        self.gone("frame", title)

    def answer(self, text, button):
        self.thing("label", text)
        self.act("push button", button)
        self.gone("label", text)

    def add_account(self):
        self.act("push button", "Add account")

    def rename(self, account, name):
        self.act("cell", account, "Edit")
        self.write("Account name", name)
        self.act("push button", "Add account", "SetFocus")

    def delete_account(self, account):
        self.select("cell", account)
        self.act("push button", "Delete account")

    def tick(self, app):
        self.act("check box", "Launch after a switch", "Toggle", of=app)

    def add_application(self, name):
        self.act("push button", "Add application")
        self.write("Search applications", name)
        self.act("push button", "OK")

    def add_file(self, app, path):
        self.select("tree item", app)
        self.act("push button", "Add file or folder")
        self.write("Folder:", path)
        self.act("push button", "OK")

    def expand(self, app):
        self.act("tree item", app, "Expand")

    def remove(self, app, file=None):
        self.select("tree item", file or app)
        self.act("push button", "Stop managing")

    def wait_for_mark(self, account):
        self.wait_until(lambda: self.find("list", "Letterloft Menu", f"{account}: current account"), f"the list's {account!r}")
        self.wait_until(lambda: self.find("list item", account, "current account"), f"the mark at {account!r}")

    def reset(self):
        self.act("push button", "Reset all data")

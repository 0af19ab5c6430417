"""The manager window by the keyboard or a screen reader alone, and what has become of the files and the settings."""

import copy
import os
import re
import signal
import unittest

from desktop import Application, DesktopTest, Gio, GLib, wait_for

WINDOW, QUESTION = "Manage Accounts", "Letterloft"  # the notice is titled as the questions are
ADD_APP, ADD_FILE = "Select a new app", "Select File Or Folder"
STAMP = re.compile(r"\d{8}-\d\d\.\d\d\.\d\d?")
# From nothing selected, or anything, to the first of at least two rows.
TO_FIRST_ROW = ["Down"] * 3 + ["Up"] * 5


class ManagerTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.desktop.show_window_manager()

    def open(self, **changes):
        program = self.start(**changes)
        program.choose("Manage Accounts...")
        self.wait_for_focus(WINDOW)
        return program

    def focus(self):
        """The title of the window that gets the keys."""
        return self.desktop.output("xdotool", "getwindowfocus", "getwindowname").strip()

    def focused(self):
        return self.desktop.output("xdotool", "getwindowfocus")

    def wait_for_focus(self, title):
        wait_for(lambda: self.focus().startswith(title), lambda: f"{title!r} instead of {self.focus()!r}")

    def press(self, *keys, then=WINDOW):
        """Keys into the window that has the focus, and the window that has it after them."""
        self.desktop.output("xdotool", "key", *keys)
        self.wait_for_focus(then)

    def type(self, text, *keys):
        self.desktop.output("xdotool", "type", text)
        self.desktop.output("xdotool", "key", *keys)

    def ask(self, *keys, answer=None):
        self.press(*keys, then=QUESTION)
        if answer:
            self.press(answer)

    def close_window(self, program, key="alt+F4"):
        self.desktop.output("xdotool", "key", key)
        wait_for(lambda: not self.desktop.windows(program.process), "the end of the window")

    def wait_for_settings(self, expected):
        wait_for(lambda: expected.items() <= self.desktop.settings().items(), self.desktop.settings)

    def assert_support(self, expected):
        """What lies in the support folder; a stamp is written as *."""
        tree = self.desktop.tree(self.desktop.support)
        self.assertEqual({STAMP.sub("*", path): content for path, content in tree.items()}, expected)


class Accounts(ManagerTest):
    def test_accounts_are_added_renamed_and_deleted_with_a_backup(self):
        application = self.prepare(("A", "B"))
        self.desktop.write(os.path.join(self.desktop.account_folder("Default User"), "mail"), "left over")
        program = self.open()
        self.press("ctrl+n")
        self.wait_for_settings({"Accounts": ["A", "B", "Default User"]})
        self.assert_support({"A": None, "B/.notes/mail": "mail of B", "Default User/mail": "left over"})
        self.press(*TO_FIRST_ROW, "F2")
        self.type("Home", "Return")
        self.wait_for_settings({"Accounts": ["Home", "B", "Default User"], "Current User": "Home"})
        self.ask("F2", "ctrl+a", "shift+b", "Return", answer="Escape")
        self.press(*TO_FIRST_ROW, "Down")
        self.ask("Delete", answer="Escape")
        self.assertEqual(self.desktop.settings()["Accounts"], ["Home", "B", "Default User"])
        self.ask("Delete", answer="Return")
        self.wait_for_settings({"Accounts": ["Home", "Default User"], "Current User": "Home"})
        backup = {"OldData/B/*/Account/.notes/mail": "mail of B"}
        self.assert_support({"Home": None, "Default User/mail": "left over", **backup})
        self.assertEqual(self.desktop.tree(application.item), {"mail": "mail of A"})
        self.assertEqual(program.accounts(), ["B", "A"])
        self.close_window(program)
        wait_for(lambda: program.accounts() == ["Default User", "Home"], program.accounts)
        self.assertEqual(program.marked(), ["Home"])
        self.assertEqual(program.end(), 0)


class Applications(ManagerTest):
    def test_an_application_and_a_file_are_added_ticked_and_removed_with_backups(self):
        gone, added = "/nowhere/gone.desktop", Application(self.desktop, "added").entry
        notes = self.prepare(("A", "B"))
        file = os.path.join(self.desktop.home, "data/prefs")
        self.desktop.write(file, "prefs of A")
        self.desktop.write(os.path.join(self.desktop.account_folder("B"), "prefs"), "prefs of B")
        self.desktop.set_settings({**self.desktop.settings(), "Apps": [notes.entry, gone], gone: []})
        program = self.open()
        self.press("alt+p", then=ADD_APP)
        chooser = self.focused()
        self.press("alt+b", then=ADD_APP)
        wait_for(lambda: self.focused() != chooser, "the window to browse in")
        self.press("Escape", then=ADD_APP)
        wait_for(lambda: self.focused() == chooser, self.focus)
        self.type("added", "Return")
        self.wait_for_settings({"Apps": [notes.entry, gone, added], added: []})
        self.wait_for_focus(WINDOW)
        self.press("alt+m", *TO_FIRST_ROW, "Down", "Down", "space")
        self.wait_for_settings({"Autostart Apps": [added]})
        self.press("alt+f", then=ADD_FILE)
        self.press("alt+f", "ctrl+a", then=ADD_FILE)
        self.type(os.path.dirname(file), "Return", "Tab", "Tab")
        # The folder is listed when it has been read, which is not to be seen from outside.
        choose = ["xdotool", "key", "p", "Return"]
        wait_for(lambda: self.focus().startswith(WINDOW) or self.desktop.output(*choose), self.focus)
        self.wait_for_settings({added: [file]})

        self.press(*TO_FIRST_ROW, "Down", "Down", "Right", "Down")
        self.ask("Delete", answer="Escape")
        self.assertEqual(self.desktop.settings()[added], [file])
        self.ask("Delete", answer="Return")
        self.wait_for_settings({added: []})
        self.assert_support({"A": None, "B/.notes/mail": "mail of B", "OldData/B/*/prefs": "prefs of B"})
        self.press(*TO_FIRST_ROW, "Down", "Down")
        self.ask("Delete", answer="Return")
        self.wait_for_settings({"Apps": [notes.entry, gone], "Autostart Apps": []})
        self.assertNotIn(added, self.desktop.settings())
        self.press(*TO_FIRST_ROW)
        self.ask("Delete", answer="Return")
        self.wait_for_settings({"Apps": [gone]})
        backups = {"OldData/B/*/prefs": "prefs of B", "OldData/B/*/.notes/mail": "mail of B"}
        self.assert_support({"A": None, "B": None, **backups})
        self.assertEqual(self.desktop.tree(notes.item), {"mail": "mail of A"})
        self.assertEqual(self.desktop.read(file), "prefs of A")
        self.assertEqual(program.end(), 0)

    def test_the_notice_is_seen_without_the_window_and_leaves_it_closed(self):
        self.prepare(("A", "B"))
        program, before = self.open(), self.desktop.settings()
        self.press("alt+p", then=ADD_APP)
        self.type("notes", "Return")
        self.wait_for_focus(QUESTION)
        self.assertEqual(len(self.desktop.windows(program.process)), 1)
        self.close_window(program, "Return")
        program.choose("Manage Accounts...")
        self.wait_for_focus(WINDOW)
        self.assertEqual(self.desktop.settings(), before)
        self.assertEqual(program.end(), 0)


class Reset(ManagerTest):
    def reset(self, answer):
        application, kept = self.prepare(), {"/unlisted": ["/kept"], "AutostartApps": ["/kept"]}
        apps = {"Apps": [application.entry, "/without a list"], "Autostart Apps": ["/other"]}
        self.desktop.set_settings({**self.desktop.settings(), **apps, **kept})
        program = self.open()
        self.ask("alt+r", answer=answer)
        self.wait_for_settings({"Accounts": ["Default User"], "Current User": "Default User"})
        mail = "/Applications/Mail.app"
        items = ["Library/Preferences/com.apple.mail.plist", "Library/Mail", "Library/Mail Downloads"]
        self.assertEqual(self.desktop.settings(), {
            "Accounts": ["Default User"], "Current User": "Default User", "Apps": [mail], "Autostart Apps": [mail],
            mail: [os.path.join(self.desktop.home, item) for item in items], **kept})
        self.assert_support({"Default User": None})
        self.assertEqual(self.desktop.tree(application.item), {"mail": "mail of A"})
        self.assertEqual(program.accounts(), ["C", "B", "A"])
        self.close_window(program)
        wait_for(lambda: program.accounts() == ["Default User"], program.accounts)
        self.assertEqual(program.end(), 0)

    def test_ok_deletes_the_others_and_keeps_what_is_live(self):
        self.reset("Return")

    def test_cancel_resets_too(self):
        self.reset("Escape")


class OpenQuestion(ManagerTest):
    def test_quit_and_sigterm_answer_no_question(self):
        gone = "/nowhere/gone.desktop"
        application = self.prepare(Apps=["/nowhere/first.desktop", gone])
        self.desktop.set_settings({**self.desktop.settings(), gone: [application.item]})

        def state():
            return self.desktop.settings(), self.desktop.tree(self.desktop.support), self.desktop.tree(application.item)

        before, second_row = state(), [*TO_FIRST_ROW, "Down"]
        for end in (lambda: program.choose("Quit"), lambda: program.process.send_signal(signal.SIGTERM)):
            for sheet, *keys in ((QUESTION, "alt+r"), (QUESTION, *second_row, "Delete"), (ADD_APP, "alt+p"),
                                 (QUESTION, "alt+m", *second_row, "Delete"), (ADD_FILE, "alt+m", *second_row, "alt+f")):
                program = self.open()
                self.press(*keys, then=sheet)
                end()
                self.assertEqual(program.exit_status(), 0, program.log())
                self.assertEqual(state(), before, program.log())


class ScreenReader(ManagerTest):
    def setUp(self):
        super().setUp()
        self.desktop.start("/usr/libexec/at-spi-bus-launcher")
        address = wait_for(lambda: self.desktop.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"),
                           "the bus of the screen readers")
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.reader = copy.copy(self.desktop)
        self.reader.bus = Gio.DBusConnection.new_for_address_sync(address[0], flags, None, None)
        self.reader.bus.set_exit_on_close(False)

    def things(self):
        """All that can be read, by what is read of it: (role, name)."""
        found, todo = {}, [("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")]
        for thing in todo:
            role = self.reader.call(*thing, "org.a11y.atspi.Accessible", "GetRoleName") or ("",)
            found[role[0], self.reader.property(*thing, "org.a11y.atspi.Accessible", "Name")] = thing
            todo += (self.reader.call(*thing, "org.a11y.atspi.Accessible", "GetChildren") or [[]])[0]
        return found

    def thing(self, role, name):
        return wait_for(lambda: self.things().get((role, name)), lambda: f"{role} {name!r} in {list(self.things())}")

    def act(self, role, name, action=0):
        self.reader.call(*self.thing(role, name), "org.a11y.atspi.Action", "DoAction", GLib.Variant("(i)", (action,)))

    def test_buttons_are_pressed_and_ticks_and_questions_are_read(self):
        application = self.prepare(("A", "B"))
        self.desktop.set_settings({**self.desktop.settings(), "Apps": [application.entry, "/nowhere/gone.desktop"]})
        program = self.open(QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        self.assertNotIn(("tree item", "Launch after a switch: checked"), self.things())
        self.press("alt+m", *TO_FIRST_ROW, "space")
        self.thing("tree item", "Launch after a switch: checked")
        self.wait_for_settings({"Autostart Apps": [application.entry]})
        self.act("push button", "Stop managing")
        self.wait_for_focus(QUESTION)
        # A screen reader presses what is behind the question too. What is asked for twice is asked once.
        self.act("push button", "Stop managing")
        self.act("push button", "Add account")
        self.wait_for_settings({"Accounts": ["A", "B", "Default User"]})
        self.thing("cell", "Default User")
        self.act("push button", "OK")
        self.wait_for_focus(WINDOW)
        self.wait_for_settings({"Apps": ["/nowhere/gone.desktop"], "Autostart Apps": []})
        self.assertEqual(program.end(), 0)


if __name__ == "__main__":
    unittest.main()

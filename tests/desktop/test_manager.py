"""The windows by the keyboard alone and by a screen reader alone, and what becomes of the files and the settings."""

import os
import re
import signal
import unittest

from desktop import Application, DesktopTest, wait_for
from hands import ADD_APP, ADD_FILE, QUESTION, TO_FIRST_ROW, WINDOW, Keyboard, ScreenReader

HELP = "Letterloft Help"
STAMP = re.compile(r"\d{8}-\d\d\.\d\d\.\d\d?")


class ManagerTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.desktop.show_window_manager()
        self.keyboard = Keyboard(self.desktop)

    def open(self, **changes):
        program = self.start(**changes)
        program.choose("Manage Accounts...")
        self.keyboard.wait_for_focus(WINDOW)
        return program


class Tour(ManagerTest):
    """From an empty manager's first account to the end of the program."""

    def wait_for_settings(self, **expected):
        wait_for(lambda: expected.items() <= self.desktop.settings().items(), self.desktop.settings)

    def assert_support(self, expected):
        """What lies in the support folder; a stamp is written as *."""
        tree = self.desktop.tree(self.desktop.support)
        self.assertEqual({STAMP.sub("*", path): content for path, content in tree.items()}, expected)

    def test_by_the_keyboard_alone(self):
        self.tour(self.keyboard, "Cancel")

    def test_by_a_screen_reader_alone(self):
        self.tour(ScreenReader(self.desktop), "OK")

    def tour(self, hand, answer_to_reset):
        """The reset has only one answer, whichever is given."""
        self.gone, self.added = "/nowhere/gone.desktop", Application(self.desktop, "added").entry
        self.notes, self.kept = self.prepare(("A", "B")), {"/unlisted": ["/kept"], "AutostartApps": ["/kept"]}
        self.file, self.hand = os.path.join(self.desktop.home, "data/prefs"), hand
        for path, text in ((self.file, "prefs of A"), (f"{self.desktop.support}/B/prefs", "prefs of B"),
                           (f"{self.desktop.support}/Default User/mail", "left over")):
            self.desktop.write(path, text)
        self.desktop.set_settings({**self.desktop.settings(), "Apps": [self.notes.entry, self.gone], self.gone: [], **self.kept})
        self.program = self.start()
        hand.choose(self.program, "Manage Accounts...")
        hand.wait_for_window(WINDOW)
        self.add_and_rename()
        self.manage_an_application()
        hand.close(self.program, WINDOW)
        wait_for(lambda: self.program.accounts() == ["Default User", "B", "Home"], self.program.accounts)
        self.switch()
        hand.choose(self.program, "Manage Accounts...")
        hand.wait_for_window(WINDOW)
        self.delete_an_account()
        self.stop_managing()
        self.reset(answer_to_reset)
        hand.choose(self.program, HELP)
        hand.wait_for_window(HELP)
        hand.close(self.program, HELP)
        hand.choose(self.program, "Quit")
        self.assertEqual(self.program.exit_status(), 0)

    def add_and_rename(self):
        self.hand.add_account()
        self.wait_for_settings(Accounts=["A", "B", "Default User"])
        self.hand.rename("A", "Home")
        self.wait_for_settings(Accounts=["Home", "B", "Default User"], **{"Current User": "Home"})
        self.hand.rename("B", "Home")
        self.hand.answer("ERROR! Account name Home already exists!!", "OK")

    def manage_an_application(self):
        for ticked in ([self.notes.entry], []):
            self.hand.tick(self.notes.entry)
            self.wait_for_settings(**{"Autostart Apps": ticked})
        self.hand.add_application("added")
        self.wait_for_settings(**{"Apps": [self.notes.entry, self.gone, self.added], self.added: []})
        self.hand.add_file(self.added, self.file)
        self.wait_for_settings(**{self.added: [self.file]})

    def switch(self):
        self.hand.choose(self.program, "B")
        self.program.wait_for_current("B")
        self.hand.wait_for_mark("B")
        wait_for(lambda: self.program.marked() == ["B"], self.program.marked)
        self.assertEqual(self.desktop.tree(self.notes.item), {"mail": "mail of B"})
        self.assertEqual(self.desktop.read(self.file), "prefs of B")

    def delete_an_account(self):
        self.hand.delete_account("B")
        self.hand.answer("You can't delete the currently active account!", "OK")
        for answer, left in (("Cancel", ["Home", "B", "Default User"]), ("OK", ["Home", "B"])):
            self.hand.delete_account("Default User")
            self.hand.answer("Are you sure you want to delete account Default User and all of it's files & data?", answer)
            self.wait_for_settings(Accounts=left)
        self.assert_support({"B": None, "Home/.notes/mail": "mail of A", "Home/prefs": "prefs of A",
                             "OldData/Default User/*/Account/mail": "left over"})

    def stop_managing(self):
        self.hand.tick(self.notes.entry)
        self.hand.expand(self.added)
        for answer, left in (("Cancel", [self.file]), ("OK", [])):
            self.hand.remove(self.added, self.file)
            self.hand.answer(f"Are you sure you want to stop managing the file/directory {self.file}?", answer)
            self.wait_for_settings(**{self.added: left})
        self.hand.remove(self.notes.entry)
        self.hand.answer(f"Are you sure you want to stop managing the app {self.notes.entry}?", "OK")
        self.wait_for_settings(**{"Apps": [self.gone, self.added], "Autostart Apps": []})
        self.assertNotIn(self.notes.entry, self.desktop.settings())
        backups = {"OldData/Home/*/prefs": "prefs of A", "OldData/Home/*/.notes/mail": "mail of A"}
        self.assert_support({"B": None, "Home": None, "OldData/Default User/*/Account/mail": "left over", **backups})

    def reset(self, answer):
        self.hand.reset()
        self.hand.answer("Are you sure you want to reset all your data?", answer)
        mail = "/Applications/Mail.app"
        items = ["Library/Preferences/com.apple.mail.plist", "Library/Mail", "Library/Mail Downloads"]
        expected = {"Accounts": ["Default User"], "Current User": "Default User", "Apps": [mail], "Autostart Apps": [mail],
                    mail: [os.path.join(self.desktop.home, item) for item in items], **self.kept}
        wait_for(lambda: self.desktop.settings() == expected, self.desktop.settings)
        self.assert_support({"Default User": None})
        self.assertEqual(self.desktop.tree(self.notes.item), {"mail": "mail of B"})
        self.assertEqual(self.desktop.read(self.file), "prefs of B")
        self.assertEqual(self.program.accounts(), ["Default User", "B", "Home"])
        self.hand.close(self.program, WINDOW)
        wait_for(lambda: self.program.accounts() == ["Default User"], self.program.accounts)


class Sheets(ManagerTest):
    def test_the_notice_is_seen_without_the_window_and_leaves_it_closed(self):
        self.prepare(("A", "B"))
        program, before = self.open(), self.desktop.settings()
        self.keyboard.press("alt+p", then=ADD_APP)
        self.keyboard.type("notes", "Return")
        self.keyboard.wait_for_focus(QUESTION)
        self.assertEqual(len(self.desktop.windows(program.process)), 1)
        self.keyboard.close(program, QUESTION, "Return")
        program.choose("Manage Accounts...")
        self.keyboard.wait_for_focus(WINDOW)
        self.assertEqual(self.desktop.settings(), before)
        self.assertEqual(program.end(), 0)


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
                self.keyboard.press(*keys, then=sheet)
                end()
                self.assertEqual(program.exit_status(), 0, program.log())
                self.assertEqual(state(), before, program.log())


if __name__ == "__main__":
    unittest.main()

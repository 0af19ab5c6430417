"""Settings that are damaged or odd, and accounts whose folder is gone."""

import os
import plistlib
import shutil
import unittest

from desktop import DesktopTest, Program

GOOD = plistlib.dumps({"Accounts": ["A", "B"], "Current User": "A", "Apps": []})


class Settings(DesktopTest):
    def test_damaged_settings_are_refused_and_left_as_they_are(self):
        damages = {"empty": b"", "zeroed": bytes(len(GOOD)), "truncated": GOOD[:len(GOOD) // 2],
                   "a list": plistlib.dumps(["Accounts"]), "unreadable": GOOD}
        self.desktop.set_settings({})
        for name, content in damages.items():
            with self.subTest(name):
                with open(self.desktop.settings_file, "wb") as file:
                    file.write(content)
                os.chmod(self.desktop.settings_file, 0 if name == "unreadable" else 0o600)
                program = Program(self.desktop)
                dialog = program.wait_for_window()[0]
                self.assertIn(self.desktop.settings_file, program.log())
                self.assertIn("settings.plist.bak", program.log())
                self.desktop.output("xdotool", "windowfocus", "--sync", dialog, "key", "Escape")
                self.assertGreater(program.exit_status(), 0)
                os.chmod(self.desktop.settings_file, 0o600)
                with open(self.desktop.settings_file, "rb") as file:
                    self.assertEqual(file.read(), content)
                self.assertFalse(os.path.exists(self.desktop.support))

    def test_a_refused_start_that_is_ended_by_a_signal_fails_too(self):
        self.desktop.write(self.desktop.settings_file, "damaged")
        program = Program(self.desktop)
        program.wait_for_window()
        self.assertNotEqual(program.end(), 0)

    def test_a_refused_start_without_display_says_why(self):
        self.desktop.write(self.desktop.settings_file, "damaged")
        program = Program(self.desktop, DISPLAY=None)
        self.assertGreater(program.exit_status(), 0)
        self.assertIn(self.desktop.settings_file, program.log())

    def test_a_list_of_accounts_that_is_none_or_empty_stays_and_shows_none(self):
        for accounts, current in ((42, "A"), ([], "A"), (["gone"], "gone")):
            self.desktop.set_settings({"Accounts": accounts, "Current User": current, "Apps": []})
            program = self.start()
            self.assertEqual(program.accounts(), [])
            self.assertEqual(program.end(), 0)
            self.assertEqual(self.desktop.settings(), {"Accounts": accounts if accounts == 42 else [],
                                                       "Current User": current, "Apps": []})

    def test_a_list_with_a_number_in_a_binary_file_reads_as_its_texts(self):
        application = self.prepare(("A", "B"), Accounts=["A", 7, "B"], Foreign={"key": 1.5})
        values = self.desktop.settings()
        with open(self.desktop.settings_file, "wb") as file:
            plistlib.dump(values, file, fmt=plistlib.FMT_BINARY)
        program = self.start()
        self.assertEqual(program.accounts(), ["B", "A"])
        program.choose("B")
        program.wait_for_current("B")
        self.assert_live(application, "B", ["A"])
        self.assertEqual(self.desktop.settings()["Accounts"], ["A", 7, "B"])
        self.assertEqual(self.desktop.settings()["Foreign"], {"key": 1.5})
        self.assertEqual(program.end(), 0)

    def test_an_account_without_folder_is_shown_once_more_and_then_gone(self):
        application = self.prepare(("A", "B", "C", "D"))
        for account in "AD":
            shutil.rmtree(self.desktop.account_folder(account))
        self.desktop.write(self.desktop.account_folder("D"), "a plain file")
        program = self.start()
        self.assertEqual(program.accounts(), ["D", "C", "B", "A"])
        # D, the last one when A went, was dropped in its turn.
        self.assertEqual(program.marked(), ["C"])
        program.choose("D")
        program.wait_for_log("Error!  D is not a valid user!")
        program.end()
        self.assertEqual(self.desktop.settings()["Accounts"], ["B", "C"])
        self.assertEqual(self.desktop.settings()["Current User"], "C")
        self.assertEqual(self.desktop.tree(application.item), {"mail": "mail of A"})
        self.assertEqual(self.start().accounts(), ["C", "B"])


if __name__ == "__main__":
    unittest.main()

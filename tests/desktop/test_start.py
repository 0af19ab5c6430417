"""The first start, a second one, and starts that something is missing for."""

import os
import stat
import unittest

from desktop import FIXED_TITLES, DesktopTest, GLib, Program, wait_for


class Start(DesktopTest):
    def test_the_first_start_makes_one_account_and_the_defaults(self):
        program = self.start()
        wait_for(lambda: "Apps" in self.desktop.settings(), "the defaults")
        self.assertEqual(program.titles(), ["Default User", *FIXED_TITLES])
        self.assertEqual(program.marked(), ["Default User"])
        mail = "/Applications/Mail.app"
        items = ["Library/Preferences/com.apple.mail.plist", "Library/Mail", "Library/Mail Downloads"]
        self.assertEqual(self.desktop.settings(), {
            "Accounts": ["Default User"], "Current User": "Default User", "Apps": [mail], "AutostartApps": [mail],
            mail: [os.path.join(self.desktop.home, item) for item in items]})
        self.assertEqual(self.desktop.tree(self.desktop.support), {"Default User": None})
        self.assertIn("We have no accounts present!  Creating a default user now...", program.log())
        for path in (self.desktop.support, self.desktop.account_folder("Default User")):
            self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o700)
        self.assertEqual(stat.S_IMODE(os.stat(self.desktop.settings_file).st_mode), 0o600)
        program.choose("Quit")
        self.assertEqual(program.exit_status(), 0)

    def test_of_many_starts_one_stays_and_a_later_one_opens_its_menu_window(self):
        self.desktop.show_host()
        starts = [Program(self.desktop) for _ in range(6)]
        wait_for(lambda: sum(start.is_running() for start in starts) == 1, lambda: [start.log() for start in starts])
        first = next(start for start in starts if start.is_running())
        self.assertEqual(first.accounts(), ["Default User"])
        starts.append(Program(self.desktop))
        self.assertEqual(starts[-1].exit_status(), 0)
        first.wait_for_window()
        self.assertEqual(first.end(), 0)
        self.assertEqual({start.exit_status() for start in starts}, {0})

    def test_activation_over_the_bus_opens_the_menu_window(self):
        program = self.start()
        def activate():
            return self.desktop.call("org.letterloft.Letterloft", "/org/letterloft/Letterloft",
                                     "org.freedesktop.Application", "Activate", GLib.Variant("(a{sv})", ({},)))

        wait_for(lambda: activate() is not None, "the activation")
        program.wait_for_window()
        self.assertEqual(program.end(), 0)

    def test_a_start_without_display_says_so(self):
        program = Program(self.desktop, DISPLAY=None)
        self.assertGreater(program.exit_status(), 0, program.log())
        self.assertIn("There is no display that Letterloft can use: ", program.log())
        self.assertIn("could not connect to display", program.log())
        self.assertFalse(os.path.exists(self.desktop.support))

    def test_without_session_bus_the_menu_is_in_a_window(self):
        program = Program(self.desktop, DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere")
        program.wait_for_window()
        self.assertEqual(self.desktop.settings()["Accounts"], ["Default User"])
        self.assertEqual(program.end(), 0)

    def test_a_home_that_is_not_writable_is_told_and_survived(self):
        os.chmod(self.desktop.home, 0o500)
        program = self.start()
        program.wait_for_log("There was an error creating the support folder:\n")
        self.assertIn("There was an error creating a folder for the Default user:\n", program.log())
        self.assertEqual(program.titles(), FIXED_TITLES)
        self.assertEqual(os.listdir(self.desktop.home), [])
        self.assertEqual(program.end(), 0)
        os.chmod(self.desktop.home, 0o700)


if __name__ == "__main__":
    unittest.main()

"""Status bars that come late, go, or come again, and names that are hard to show."""

import os
import signal
import unittest

from desktop import FIXED_TITLES, DesktopTest, Program, wait_for

NAMES = ["R&D", "<b>x</b>", "a_b", "_&x", "A & B & C", "x&", "&&", "__", "_", "&_", "a__b&&c", "&x&", "100%_&_",
         "%@ %1 %s%n", "/etc", "a/b", "..", "x" * 255, "Zoë 日本 🦉"]


class StatusBar(DesktopTest):
    def test_a_late_panel_takes_the_item_from_the_menu_window(self):
        program = Program(self.desktop)
        program.wait_for_window()
        self.desktop.show_panel()
        self.assertEqual(program.titles(), ["Default User", *FIXED_TITLES])
        wait_for(lambda: not self.desktop.windows(program.process), "the end of the menu window")
        self.assertEqual(program.end(), 0)

    def test_a_killed_panel_gets_the_item_again(self):
        panel = self.desktop.show_panel()
        program = Program(self.desktop)
        program.wait_for_item()
        panel.send_signal(signal.SIGKILL)
        panel.wait()
        wait_for(lambda: not program.item(), "the end of the status bar")
        self.desktop.show_panel()
        self.assertEqual(program.accounts(), ["Default User"])
        self.assertEqual(program.end(), 0)


class Names(DesktopTest):
    def test_every_name_is_shown_exactly_and_switched_to(self):
        application = self.prepare(("A", *NAMES))
        program = self.start()
        self.assertEqual(program.accounts(), [*reversed(NAMES), "A"])
        for name, before in zip(NAMES, ["A", *NAMES]):
            program.choose(name)
            program.wait_for_current(name)
            self.assertEqual(self.desktop.tree(application.item), {"mail": f"mail of {name}"})
            self.assertEqual(self.desktop.tree(self.parked(before, application)), {"mail": f"mail of {before}"})
            wait_for(lambda: program.marked() == [name], f"the mark at {name!r}")
        self.assertEqual(program.end(), 0)

    def test_a_line_break_in_a_name_stays_one_line_in_the_log(self):
        application = self.prepare(("A", "two\nlines"))
        self.desktop.write(os.path.join(self.parked("A", application), "old"), "in the way")
        program = self.start()
        self.assertEqual(program.accounts(), ["two lines", "A"])
        program.choose("two lines")
        program.wait_for_current("two\nlines")
        program.wait_for_log(f"moving the file at {self.desktop.support}/two\\nlines to {application.item}:\n")

    def test_an_account_named_like_a_fixed_item_comes_once_more_with_each_rebuild(self):
        application = self.prepare(("A", "Quit", "B"))
        program = self.start()
        self.assertEqual(program.accounts(), ["B", "Quit", "A"])
        program.choose("Quit")
        program.wait_for_current("Quit")
        wait_for(lambda: program.accounts() == ["B", "Quit", "A", "Quit"], program.accounts)
        self.assert_live(application, "Quit", ["A", "B"])
        self.assertEqual(program.end(), 0)


if __name__ == "__main__":
    unittest.main()

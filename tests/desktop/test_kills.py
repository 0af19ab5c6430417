"""The real program, killed at any moment of a switch and started again: nothing is lost."""

import collections
import os
import random
import shutil
import tempfile
import time
import unittest

from desktop import DesktopTest, Gio, GLib

KILLS = int(os.environ.get("LETTERLOFT_KILLS", "12"))
FILES_IN_FOLDER = 150


def far_folder(test):
    """On another file system than the home folder."""
    for parent in ("/dev/shm", os.path.dirname(os.environ["LETTERLOFT"])):
        if os.stat(parent).st_dev != os.stat(test.desktop.home).st_dev:
            folder = tempfile.mkdtemp(prefix="letterloft-desktop-", dir=parent)
            test.addCleanup(shutil.rmtree, folder)
            return folder
    raise AssertionError("there is no second file system here")


class Kills(DesktopTest):
    def fill(self, far):
        application = self.prepare()
        items = [os.path.join(folder, name) for name in ("mail", "notes") for folder in (self.desktop.home, far)]
        items.append(os.path.join(far, "archive"))
        for account in "ABC":
            for item in items:
                place = item if account == "A" else os.path.join(self.desktop.account_folder(account), os.path.basename(item))
                names = [f"/{n // 50}/{n}" for n in range(FILES_IN_FOLDER)] if item != items[-1] else [""]
                for name in names:
                    self.desktop.write(place + name, f"of {account}: {item}{name}")
        self.desktop.set_settings({**self.desktop.settings(), application.entry: items})

    def files(self, far):
        """How often each file stands under a name that is no mark, by what it holds and its time; and the marks."""
        found, marks = collections.Counter(), []
        for root in (self.desktop.home, far):
            for path, folders, names in os.walk(root):
                marks += [name for name in folders + names if name.startswith(".letterloft-")]
                for name in names:
                    file = os.path.join(path, name)
                    text = self.desktop.read(file) if os.path.isfile(file) and not os.path.islink(file) else None
                    if text and text.startswith("of ") and "/.letterloft-" not in file:
                        found[(text, os.stat(file).st_mtime_ns)] += 1
        return found, marks

    def choose_without_answer(self, program, title):
        number = [row[0] for row in program.rows() if row[1] == title][0]
        name, menu = program.item()
        clicked = GLib.Variant("(isvu)", (number, "clicked", GLib.Variant("s", ""), 0))
        self.desktop.bus.call(name, menu, "com.canonical.dbusmenu", "Event", clicked, None, Gio.DBusCallFlags.NO_AUTO_START,
                              -1, None, None)
        self.desktop.bus.flush_sync(None)

    def start_again(self, far, all_files):
        """The program and the accounts it can switch to."""
        self.desktop.host and self.desktop.host.items.clear()
        program = self.start()
        self.assertEqual(self.files(far), (all_files, []), program.log())
        accounts, current = self.desktop.settings()["Accounts"], self.desktop.settings()["Current User"]
        self.assertIn(current, accounts)
        return program, [account for account in accounts if account != current]

    def test_at_any_moment_of_a_switch_nothing_is_lost(self):
        seed = random.randrange(1 << 32)
        chance = random.Random(seed)
        far = far_folder(self)
        self.fill(far)
        all_files, _ = self.files(far)
        self.assertEqual(set(all_files.values()), {1})
        program, others = self.start_again(far, all_files)
        began = time.monotonic()
        self.choose_without_answer(program, "B")
        program.wait_for_current("B")
        duration = time.monotonic() - began
        program.end()
        died_with_marks = 0
        for kill in range(KILLS):
            with self.subTest(kill=kill, seed=seed):
                program, others = self.start_again(far, all_files)
                self.choose_without_answer(program, chance.choice(others))
                time.sleep(chance.uniform(0, duration))  # the moment is what chance wants it to be
                program.process.kill()
                program.process.wait()
                found, marks = self.files(far)
                died_with_marks += bool(marks)
                self.assertEqual(all_files - found, collections.Counter(), "lost")
        program, others = self.start_again(far, all_files)
        program.choose(others[0])
        program.wait_for_current(others[0])
        self.assertEqual(self.files(far), (all_files, []))
        self.assertEqual(program.end(), 0)
        print(f"{KILLS} kills over {duration:.2f} s, {died_with_marks} of them in a move to another file system")


if __name__ == "__main__":
    unittest.main()

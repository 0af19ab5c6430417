"""What others may try: planted links, odd starts, hostile variables, calls that no status bar makes, other users."""

import glob
import os
import random
import stat
import time
import unittest

from desktop import DesktopTest, GLib, Program, wait_for

CALLS = int(os.environ.get("LETTERLOFT_CALLS", "300"))
MENU, ITEM, APPLICATION = "com.canonical.dbusmenu", "org.kde.StatusNotifierItem", "org.freedesktop.Application"
PROPERTIES = "org.freedesktop.DBus.Properties"
TEXTS = ["", "clicked", "hovered", "opened", "closed", "Clicked", "label", "enabled", MENU, ITEM, "Status", "x" * 500, "é日\u200e\n"]


class Intruders(DesktopTest):
    def test_planted_links_are_not_followed(self):
        application = self.prepare(("A", "B"))
        victim, support = os.path.join(self.desktop.root, "victim"), self.desktop.support
        self.desktop.write(f"{victim}/folder/file", "untouched")
        before = self.desktop.tree(victim)
        marks = [f".letterloft-0123456789abcdef.{kind}" for kind in ("note", "staging", "aside")]
        for folder in (support, f"{support}/A", f"{support}/B", self.desktop.home):
            for mark in marks:
                os.symlink(f"{victim}/folder", os.path.join(folder, mark))
        for name in (".new", ".bak", ".bak.new"):
            os.symlink(f"{victim}/folder/file", self.desktop.settings_file + name)
        os.symlink(f"{victim}/folder/file", f"{support}.socket")
        os.symlink(f"{victim}/folder", f"{support}/OldData")
        os.symlink(f"{victim}/nothing", self.parked("A", application))
        program = self.start()
        program.choose("B")
        program.wait_for_current("B")
        # What dangles at A's place is in the way of A's mail, and that in the way of B's.
        self.assertEqual(self.desktop.tree(application.item), {"mail": "mail of A"})
        os.unlink(self.parked("A", application))
        for account in ("A", "B"):
            program.choose(account)
            program.wait_for_current(account)
        self.assertEqual(program.end(), 0)
        self.assertEqual(self.desktop.tree(application.item), {"mail": "mail of B"})
        self.assertEqual(self.desktop.tree(self.parked("A", application)), {"mail": "mail of A"})
        self.assertEqual(self.desktop.tree(victim), before)

    def test_odd_starts_leave_nothing_open_to_others(self):
        support, settings = self.desktop.support, self.desktop.settings_file
        for mask in ("000", "077", "777"):
            program = self.start(within=("sh", "-c", f'umask {mask}; exec "$0" <&- >&- 2>&-'))
            self.assertEqual(program.accounts(), ["Default User"])
            wait_for(lambda: "Apps" in self.desktop.settings(), "the defaults")
            self.assertEqual(Program(self.desktop).exit_status(), 0)
            # What was logged has gone into no file of ours.
            self.assertEqual(os.path.getsize(f"{support}.lock"), 0)
            for path, mode in ((support, 0o700), (self.desktop.account_folder("Default User"), 0o700), (settings, 0o600),
                               (os.path.dirname(settings), 0o700), (f"{support}.lock", 0o600), (f"{support}.socket", 0o600)):
                self.assertEqual(oct(stat.S_IMODE(os.stat(path).st_mode)), oct(mode), path)
            self.assertEqual(program.end(), 0)
            for path in (support, os.path.dirname(settings), f"{support}.lock"):
                os.rename(path, f"{self.desktop.root}/{os.path.basename(path)}{mask}")

    def test_no_variable_leads_anything_elsewhere(self):
        application = self.prepare(("A", "B"))
        trap = os.path.join(self.desktop.root, "trap")
        os.makedirs(f"{trap}/Library/Application Support/Letterloft/B/.notes")
        variables = ("TMPDIR", "TMP", "TEMP", "TEMPDIR", "PWD", "OLDPWD", "USER", "LOGNAME", "CDPATH", "HOMEPATH",
                     "CFFIXED_USER_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_DIRS",
                     "XDG_DOCUMENTS_DIR", "QT_QPA_PLATFORMTHEME", "G_TEST_SRCDIR", "IFS", "ENV", "BASH_ENV")
        program = self.start(XDG_CONFIG_HOME="trap", **dict.fromkeys(variables, trap))
        program.choose("B")
        program.wait_for_current("B")
        self.assertEqual(program.end(), 0)
        self.assert_live(application, "B", ["A"])
        self.assertEqual(glob.glob(f"{trap}/**/*mail*", recursive=True) + glob.glob(f"{trap}/**/*.plist", recursive=True), [])


class Calls(DesktopTest):
    """Any call but a click on an item that is there changes nothing, and the program is there after all of them."""

    def value(self, depth=0):
        """A value of any type, as a variant."""
        kind = self.random.randrange(7 if depth < 20 else 4)
        if kind == 0:
            return GLib.Variant("s", self.random.choice(TEXTS))
        if kind == 1:
            return GLib.Variant("i", self.number())
        if kind == 2:
            return GLib.Variant("d", self.random.random())
        if kind == 3:
            return GLib.Variant("ay", bytes(self.random.randrange(300)))
        if kind == 4:
            return GLib.Variant("v", self.value(depth + 1))
        if kind == 5:
            return GLib.Variant("a{sv}", {text: self.value(depth + 1) for text in self.random.sample(TEXTS, 2)})
        return GLib.Variant("(iv)", (self.number(), self.value(depth + 1)))

    def number(self):
        return self.random.choice([0, -1, 1, 2**31 - 1, -2**31, self.random.randrange(1000, 10**6), *self.numbers])

    def event(self):
        """Not a click on anything that is there: with those the menu does what it says."""
        number, name = self.number(), self.random.choice(TEXTS)
        if number in self.numbers and name == "clicked":
            name = "hovered"
        return number, name, self.value(), self.random.randrange(2**32)

    def many(self, one):
        return [one() for _ in range(self.random.choice([0, 1, 3, 50]))]

    def text(self):
        return self.random.choice(TEXTS)

    def any_call(self):
        choices = [
            (MENU, "Event", "(isvu)", self.event),
            (MENU, "EventGroup", "(a(isvu))", lambda: (self.many(self.event),)),
            (MENU, "GetLayout", "(iias)", lambda: (self.number(), self.number(), self.many(self.text))),
            (MENU, "GetGroupProperties", "(aias)", lambda: (self.many(self.number), self.many(self.text))),
            (MENU, "GetProperty", "(is)", lambda: (self.number(), self.text())),
            (MENU, "AboutToShow", "(i)", lambda: (self.number(),)),
            (MENU, "AboutToShowGroup", "(ai)", lambda: (self.many(self.number),)),
            (PROPERTIES, "Get", "(ss)", lambda: (self.text(), self.text())),
            (PROPERTIES, "GetAll", "(s)", lambda: (self.text(),)),
            (PROPERTIES, "Set", "(ssv)", lambda: (self.text(), self.text(), self.value())),
            (ITEM, "Activate", "(ii)", lambda: (self.number(), self.number())),
            (ITEM, "Scroll", "(is)", lambda: (self.number(), self.text())),
            (APPLICATION, "Open", "(asa{sv})", lambda: (self.many(self.text), {"x": self.value()})),
            (APPLICATION, "ActivateAction", "(sava{sv})", lambda: (self.text(), self.many(self.value), {})),
        ]
        interface, method, signature, arguments = self.random.choice(choices)
        given = GLib.Variant(signature, arguments())
        if self.random.random() < 0.1:
            given = GLib.Variant.new_tuple(*[self.value() for _ in range(self.random.randrange(4))])
        return interface, method, given

    def test_none_does_harm(self):
        seed = int(os.environ.get("LETTERLOFT_SEED", time.time_ns()))
        self.random, self.numbers = random.Random(seed), []
        application = self.prepare()
        program = self.start()
        name, menu = program.item()
        self.numbers = [number for number, _, _, _ in program.rows()]
        paths = {MENU: menu, ITEM: "/StatusNotifierItem", APPLICATION: "/org/letterloft/Letterloft"}
        with self.subTest(f"LETTERLOFT_SEED={seed}"):
            for _ in range(CALLS):
                interface, method, given = self.any_call()
                target = "org.letterloft.Letterloft" if interface == APPLICATION else name
                self.desktop.call(target, paths.get(interface, menu), interface, method, given)
                self.assertTrue(program.is_running(), program.log())
            self.assertEqual(program.titles()[:3], ["C", "B", "A"])
            self.assertEqual(self.desktop.settings()["Current User"], "A")
            self.assert_live(application, "A", ["B", "C"])
            program.choose("B")
            program.wait_for_current("B")
            self.assert_live(application, "B", ["A", "C"])
            self.assertEqual(program.end(), 0)


class OtherUsers(DesktopTest):
    """On a bus that lets everybody in. Needs root, to be somebody else."""

    def call_as_another(self, name, path, method, *arguments):
        another = ("setpriv", "--reuid=65534", "--regid=65534", "--clear-groups")
        called = self.desktop.start(*another, "gdbus", "call", "--session", "--dest", name, "--object-path", path,
                                    "--method", method, *arguments, stderr=self.answer)
        called.wait()
        self.answer.seek(0)
        return self.answer.read().decode()

    def test_another_user_neither_sees_nor_chooses(self):
        for folder in (self.desktop.root, self.desktop.environment["XDG_RUNTIME_DIR"]):
            os.chmod(folder, 0o755)
        application = self.prepare()
        program = self.start()
        name, menu = program.item()
        number = str([number for number, title, _, _ in program.rows() if title == "B"][0])
        shown = "org.letterloft.Letterloft", "/org/letterloft/Letterloft", f"{APPLICATION}.Activate", "@a{sv} {}"
        wait_for(lambda: self.desktop.call(*shown[:2], "org.freedesktop.DBus.Peer", "Ping") is not None, "the name")
        for call in ((name, menu, f"{MENU}.Event", number, "clicked", "<''>", "uint32 0"),
                     (name, menu, f"{MENU}.EventGroup", f"[({number}, 'clicked', <''>, uint32 0)]"),
                     (name, menu, f"{MENU}.GetLayout", "0", "int32 -1", "@as []"), shown):
            with open(f"{self.desktop.root}/answer", "wb+") as self.answer:
                self.assertIn("AccessDenied", self.call_as_another(*call))
        self.assertEqual(self.desktop.windows(program.process), [])
        self.assertEqual(program.marked(), ["A"])
        self.assert_live(application, "A", ["B", "C"])
        program.choose("B")
        program.wait_for_current("B")
        self.assertEqual(program.end(), 0)


if __name__ == "__main__":
    unittest.main()

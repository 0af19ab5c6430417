"""Many of everything. Nothing is measured but what grows; LETTERLOFT_LOAD=full is the size that the program is made for."""

import os
import shutil
import tempfile
import unittest

import desktop
from desktop import Application, DesktopTest, GLib, Program, wait_for

FULL = os.environ.get("LETTERLOFT_LOAD") == "full"
desktop.LIMIT_SECONDS = 1800


def size(full, small):
    return full if FULL else small


class Load(DesktopTest):
    def switch(self, program, account):
        program.choose(account)
        program.wait_for_current(account)
        wait_for(lambda: program.marked() == [account], lambda: f"the mark at {account!r}")

    def test_many_accounts(self):
        names = ["A", *(f"account {n}" for n in range(size(10_000, 300)))]
        application = self.prepare(names)
        program = self.start()
        self.assertEqual(program.accounts(), names[::-1])
        self.switch(program, names[-1])
        self.assertEqual(self.desktop.tree(application.item), {"mail": f"mail of {names[-1]}"})
        self.assertEqual(program.end(), 0)

    def test_many_applications(self):
        running = self.prepare(("A", "B"))
        lists = {}
        for n in range(size(1000, 30)):
            name = f"managed{n}"
            entry = f"{self.desktop.home}/.local/share/applications/{name}.desktop"
            os.link(running.program, f"{self.desktop.root}/{name}")
            self.desktop.write(entry, f"[Desktop Entry]\nType=Application\nName={name}\nExec={self.desktop.root}/{name}\n")
            lists[entry] = [f"{self.desktop.home}/.{name}"]
            self.desktop.write(lists[entry][0], "of A")
            self.desktop.write(f"{self.desktop.account_folder('B')}/.{name}", "of B")
        settings = self.desktop.settings()
        self.desktop.set_settings({**settings, **lists, "Apps": [*lists, running.entry]})
        running.start()
        program = self.start()
        self.switch(program, "B")
        self.assertEqual(running.journal(), ["started", "asked", "ended-with-item"])
        self.assertEqual({self.desktop.read(item) for item, in lists.values()}, {"of B"})
        self.assertEqual({self.desktop.read(f"{self.desktop.account_folder('A')}/{os.path.basename(item)}")
                          for item, in lists.values()}, {"of A"})
        self.assertEqual(program.end(), 0)

    def test_many_files_in_an_item_on_another_file_system(self):
        application = self.prepare(("A", "B"))
        elsewhere = tempfile.mkdtemp(prefix="letterloft-load-", dir="/dev/shm")
        self.addCleanup(shutil.rmtree, elsewhere)
        item = f"{elsewhere}/maildir"
        names = {f"{n}.eml" for n in range(size(200_000, 3000))}
        os.mkdir(item)
        for name in names:
            with open(f"{item}/{name}", "w", encoding="utf-8") as file:
                file.write(name)
        self.desktop.set_settings({**self.desktop.settings(), application.entry: [item]})
        program = self.start()
        for account, place in (("B", f"{self.desktop.account_folder('A')}/maildir"), ("A", item)):
            self.switch(program, account)
            self.assertEqual(set(os.listdir(place)), names)
            self.assertTrue(all(self.desktop.read(f"{place}/{name}") == name for name in names))
            self.assertEqual(os.listdir(elsewhere), ["maildir"] if account == "A" else [])
        self.assertEqual(program.end(), 0)

    def held(self, program):
        """What a program has of the system: open files, connections to the bus, and pages of memory of its own."""
        bus = "org.freedesktop.DBus"
        names = self.desktop.call(bus, "/", bus, "ListNames")[0]
        owners = [self.desktop.call(bus, "/", bus, "GetConnectionUnixProcessID", GLib.Variant("(s)", (name,)))
                  for name in names]
        with open(f"/proc/{program.pid}/statm", encoding="ascii") as statm:
            _, resident, shared = map(int, statm.read().split()[:3])
        return len(os.listdir(f"/proc/{program.pid}/fd")), owners.count((program.pid,)), resident - shared

    def test_many_switches_leave_nothing_behind(self):
        application = self.prepare(("A", "B"))
        # A sanitizer would keep what was freed, and whence.
        program = self.start(ASAN_OPTIONS="quarantine_size_mb=0:thread_local_quarantine_size_kb=0:malloc_context_size=1")
        before = None
        for number in range(size(1000, 20)):
            if number == size(200, 10):
                before = self.held(program)
            if number % 10 == 0:
                application.start()
            self.switch(program, "AB"[(number + 1) % 2])
        after = self.held(program)
        self.assertEqual(after[:2], before[:2])
        self.assertLess((after[2] - before[2]) * os.sysconf("SC_PAGESIZE"), 2 << 20)
        self.assert_live(application, "A", ["B"])
        self.assertEqual(program.end(), 0)

    def test_of_many_starts_at_once_one_stays(self):
        self.desktop.show_host()
        starts = [Program(self.desktop) for _ in range(size(50, 8))]
        wait_for(lambda: sum(start.is_running() for start in starts) == 1, "the end of all but one")
        stays, = (start for start in starts if start.is_running())
        self.assertEqual({start.process.returncode for start in starts if start is not stays}, {0})
        self.assertEqual(stays.accounts(), ["Default User"])
        self.assertEqual(stays.end(), 0)

    def test_an_application_of_many_processes_is_awaited_whole(self):
        count = size(50, 8)
        application = self.prepare(("A", "B"))
        script = f"{self.desktop.root}/many"
        command = " ".join(application.command)
        self.desktop.write(script, f"#!/bin/sh\nfor n in $(seq {count}); do {command} & done\nwait\n")
        os.chmod(script, 0o755)
        self.desktop.write(application.entry, f"[Desktop Entry]\nType=Application\nName=many\nExec={script}\n")
        running = self.desktop.start(script)
        wait_for(lambda: application.journal().count("started") == count, "the start of all")
        program = self.start()
        self.switch(program, "B")
        self.assertEqual(running.poll(), 0)
        self.assertEqual(application.journal()[count:].count("ended-with-item"), count)
        self.assertNotIn("ended-without-item", application.journal())
        self.assert_live(application, "B", ["A"])
        self.assertEqual(program.end(), 0)


if __name__ == "__main__":
    unittest.main()

"""The switch from account to account, with applications that run, refuse, take their time or are launched."""

import os
import signal
import unittest

from desktop import Application, DesktopTest, Gio, GLib, Program, SessionManager, wait_for


class Switch(DesktopTest):
    def test_all_copies_of_an_application_end_before_anything_moves_and_a_stranger_goes_on(self):
        application, stranger = self.prepare(), Application(self.desktop, "stranger")
        self.desktop.show_window_manager()
        other, copies = stranger.start(), [application.start(), application.start()]
        program = self.start()
        program.choose("B")
        program.wait_for_current("B")
        self.assertEqual(application.journal(), ["started"] * 2 + ["asked", "ended-with-item"] * 2)
        self.assertEqual([copy.poll() for copy in copies], [0, 0])
        self.assertIsNone(other.poll())
        self.assertEqual(stranger.journal(), ["started"])
        self.assert_live(application, "B", ["A", "C"])
        wait_for(lambda: program.marked() == ["B"], "the mark at B")
        program.choose("A")
        program.wait_for_current("A")
        self.assert_live(application, "A", ["B", "C"])
        self.assertEqual(program.end(), 0)

    def test_ticked_applications_are_launched_and_outlive_the_program(self):
        gone = "/nowhere/gone.desktop"
        application = self.prepare()
        self.desktop.set_settings({**self.desktop.settings(), "Autostart Apps": [gone, application.entry]})
        program = self.start()
        program.choose("B")
        application.wait_for_journal("started")
        self.assertIn(f"ERROR LAUNCHING {gone}", program.log())
        self.assertEqual(program.end(), 0)
        self.assertEqual(application.journal(), ["started"])
        # Found again by a program that did not launch it, and ended by it.
        self.start().choose("A")
        application.wait_for_journal("ended-with-item")

    def test_of_two_choices_during_a_wait_the_later_one_follows(self):
        application = self.prepare(("A", "B", "C", "D"), options="on-close=ignore")
        running = application.start()
        program = self.start()
        for account in ("B", "C", "D"):
            program.choose(account)
        application.wait_for_journal("asked")
        self.assertEqual(Program(self.desktop).exit_status(), 0)  # a second start is heard all the while
        program.wait_for_window()
        self.assertEqual(self.desktop.settings()["Current User"], "A")
        self.assert_live(application, "A", ["B", "C", "D"])
        running.send_signal(signal.SIGUSR1)
        program.wait_for_current("D")
        self.assert_live(application, "D", ["A", "B", "C"])
        wait_for(lambda: program.marked() == ["D"], "the mark at D")
        self.assertEqual(program.end(), 0)

    def test_what_is_in_the_way_stays_and_is_logged(self):
        application = self.prepare(("A", "B"))
        self.desktop.write(os.path.join(self.parked("A", application), "old"), "older mail of A")
        program = self.start()
        program.choose("B")
        program.wait_for_current("B")
        live, folders = application.item, [self.desktop.account_folder(account) for account in "AB"]
        self.assertIn(f"There was an error moving the file at {live} to {folders[0]}:\n", program.log())
        self.assertIn(f"There was an error moving the file at {folders[1]} to {live}:\n", program.log())
        self.assertEqual(self.desktop.tree(live), {"mail": "mail of A"})
        self.assertEqual(self.desktop.tree(folders[0]), {".notes/old": "older mail of A"})
        self.assertEqual(self.desktop.tree(folders[1]), {".notes/mail": "mail of B"})

    def test_odd_applications_are_passed_over_and_our_own_files_stay(self):
        application = self.prepare(("A", "B"))
        home, support = self.desktop.home, self.desktop.support
        ours = {f"{home}/broken.desktop": support, f"{home}/stray.txt": os.path.dirname(self.desktop.settings_file),
                f"{home}/gone.app": f"{home}/Library"}
        self.desktop.write(f"{home}/broken.desktop", '[Desktop Entry]\nType=Application\nName=x\nExec="open\n')
        self.desktop.write(f"{home}/stray.txt", "no application")
        self.desktop.set_settings({**self.desktop.settings(), **{app: [item] for app, item in ours.items()},
                                   "Apps": [*ours, application.entry], "Autostart Apps": list(ours)})
        program = self.start()
        program.choose("B")
        for app, item in ours.items():
            program.wait_for_log(f"ERROR LAUNCHING {app}\n")
            self.assertIn(f"There was an error moving the file at {item} to {support}/A:\n", program.log())
        self.assertEqual(program.log().count("Letterloft's own settings, lock or support folder are there"), 3)
        self.assert_live(application, "B", ["A"])

    def test_accounts_that_cant_be_looked_at_stay_and_so_does_their_mail(self):
        application = self.prepare(("A", "B"))
        os.chmod(self.desktop.support, 0)
        program = self.start()
        self.assertEqual(program.accounts(), ["B", "A"])
        program.choose("B")
        program.wait_for_current("B")
        for moved in (f"{application.item} to {self.desktop.support}/A", f"{self.desktop.support}/B to {application.item}"):
            self.assertRegex(program.log(), f"There was an error moving the file at {moved}:\n.*Permission denied")
        self.assertEqual(program.end(), 0)
        os.chmod(self.desktop.support, 0o700)
        self.assert_live(application, "A", ["B"])


class Ending(DesktopTest):
    def end_during_the_wait(self, end, **changes):
        application = self.prepare(options="on-close=ignore")
        running = application.start()
        program = self.start(**changes)
        program.choose("B")
        application.wait_for_journal("asked")
        end(program)
        self.assertEqual(program.exit_status(), 0, program.log())
        self.assertIsNone(running.poll())
        self.assertEqual(self.desktop.settings()["Current User"], "A")
        self.assert_live(application, "A", ["B", "C"])

    def test_quit_during_the_wait_leaves_all_where_it_is(self):
        self.end_during_the_wait(lambda program: program.choose("Quit"))

    def test_sigterm_during_the_wait_leaves_all_where_it_is(self):
        self.end_during_the_wait(lambda program: program.process.send_signal(signal.SIGTERM))

    def test_the_log_out_during_the_wait_leaves_all_where_it_is(self):
        session = SessionManager(self.desktop)
        self.addCleanup(session.close)
        self.end_during_the_wait(lambda _: session.log_out(), SESSION_MANAGER=session.address)

    def end_during_the_moves(self, end, **changes):
        application = self.prepare(("A", "B"))
        items = [os.path.join(self.desktop.home, "items", str(n)) for n in range(4000)]
        for item in items:
            self.desktop.write(item, "of A")
        self.desktop.set_settings({**self.desktop.settings(), "Autostart Apps": [application.entry],
                                   application.entry: items})
        program, accounts = self.start(**changes), ["A", "B"]
        while True:
            # Stopped as soon as the first item is elsewhere; if it was too late, the next switch is the next occasion.
            is_parked = os.path.exists(items[0])
            name, menu = program.item()
            quit_row = [number for number, title, _, _ in program.rows() if title == "Quit"][0]
            program.choose(accounts[1])
            while os.path.exists(items[0]) == is_parked and program.is_running():
                pass
            program.process.send_signal(signal.SIGSTOP)
            if os.path.exists(items[-1]) == is_parked:
                break
            program.process.send_signal(signal.SIGCONT)
            program.wait_for_current(accounts[1])
            accounts.reverse()
        launched = application.journal()
        end(program, (name, menu, "com.canonical.dbusmenu", "Event",
                      GLib.Variant("(isvu)", (quit_row, "clicked", GLib.Variant("s", ""), 0))))
        program.process.send_signal(signal.SIGCONT)
        self.assertEqual(program.exit_status(), 0, program.log())
        self.assertEqual(self.desktop.settings()["Current User"], accounts[1])
        self.assertEqual({os.path.exists(item) for item in items}, {not is_parked})
        self.assertEqual(application.journal(), launched)

    def test_sigterm_during_the_moves_is_heeded_when_they_are_recorded(self):
        self.end_during_the_moves(lambda program, _: program.process.send_signal(signal.SIGTERM))

    def test_the_log_out_during_the_moves_is_heeded_when_they_are_recorded(self):
        session = SessionManager(self.desktop)
        self.addCleanup(session.close)
        self.end_during_the_moves(lambda *_: session.announce_log_out(), SESSION_MANAGER=session.address)

    def test_quit_during_the_moves_is_heeded_when_they_are_recorded(self):
        def choose_quit(_, click):
            # Nobody answers for now; the bus has passed it on when it answers itself.
            self.desktop.bus.call(*click, None, Gio.DBusCallFlags.NO_AUTO_START, -1, None, None)
            bus = "org.freedesktop.DBus"
            self.desktop.call(bus, "/", bus, "GetId")

        self.end_during_the_moves(choose_quit)

    def test_other_ends_are_orderly_too(self):
        for sent in (signal.SIGINT, signal.SIGHUP):
            self.assertEqual(self.start().end(by=sent), 0)


if __name__ == "__main__":
    unittest.main()

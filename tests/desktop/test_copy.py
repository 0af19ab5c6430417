"""A copy to another file system that takes long, and what is done to the program meanwhile."""

import os
import unittest
import unittest.mock

from desktop import Gio, GLib, wait_for
from test_kills import far_folder
from test_manager import ManagerTest

NOTIFICATIONS = "org.freedesktop.Notifications"
INTERFACE = f"""<node><interface name="{NOTIFICATIONS}">
<method name="Notify"><arg type="s"/><arg type="u"/><arg type="s"/><arg type="s"/><arg type="s"/><arg type="as"/>
<arg type="a{{sv}}"/><arg type="i"/><arg type="u" direction="out"/></method>
<method name="CloseNotification"><arg type="u"/></method>
</interface></node>"""
# Each thing that is copied takes a second, since its time is set so slowly.
SLOW = """#!/bin/sh
exec strace -D -f -qq -o /dev/null --seccomp-bpf -e trace=utimensat -e inject=utimensat:delay_enter=1050000 {program}
"""


class Copy(ManagerTest):
    def show_notifications(self, on_notify):
        self.shown = []

        def called(_bus, _sender, _path, _interface, method, arguments, invocation):
            values = arguments.unpack()
            if method == "Notify":
                self.shown.append((values[3], values[1]))
                on_notify()
                invocation.return_value(GLib.Variant("(u)", (7,)))
            else:
                self.shown.append(("withdrawn", *values))
                invocation.return_value(None)

        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        self.desktop.bus.register_object("/org/freedesktop/Notifications", interface, called, None, None)
        Gio.bus_own_name_on_connection(self.desktop.bus, NOTIFICATIONS, Gio.BusNameOwnerFlags.NONE, None, None)

    def start_slowly(self):
        slow = os.path.join(self.desktop.root, "slow")
        self.desktop.write(slow, SLOW.format(program=os.environ["LETTERLOFT"]))
        os.chmod(slow, 0o700)
        with unittest.mock.patch.dict(os.environ, LETTERLOFT=slow):
            return self.open(ASAN_OPTIONS="detect_leaks=0")  # nobody can look for leaks in what is traced

    def test_it_is_shown_and_nothing_is_delivered_between_two_moves(self):
        far, application = far_folder(self), self.prepare()
        items = [os.path.join(far, name) for name in ("first", "second", "third")]
        for item, names in zip(items, (("/1", "/2", "/3", "/4"), ("/1", "/2", "/3"), ("",))):
            for name in names:
                self.desktop.write(item + name, "of A")
        self.desktop.set_settings({**self.desktop.settings(), application.entry: items})
        parked = [os.path.join(self.desktop.account_folder("A"), os.path.basename(item)) for item in items]
        seen, answers = [], []

        def state():
            values = self.desktop.settings()
            return values["Current User"], values["Accounts"], [os.path.exists(path) for path in parked]

        def choose_and_click():
            seen.append(state())
            self.desktop.output("xdotool", "key", "ctrl+n")
            for number in numbers:
                clicked = GLib.Variant("(isvu)", (number, "clicked", GLib.Variant("s", ""), 0))
                self.desktop.bus.call(name, menu, "com.canonical.dbusmenu", "Event", clicked, None,
                                      Gio.DBusCallFlags.NO_AUTO_START, -1, None, lambda *_: answers.append(state()))

        self.show_notifications(choose_and_click)
        program = self.start_slowly()
        name, menu = program.item()
        numbers = [number for number, title, _, _ in program.rows() if title in ("C", "Manage Accounts...", "Letterloft Help")]
        program.choose("B")
        program.wait_for_current("B")
        moved_by_then = [[False] * 3, [False] * 3, [True, False, False]]
        self.assertEqual(seen, [("A", ["A", "B", "C"], moved) for moved in moved_by_then])
        wait_for(lambda: len(answers) == 3 * len(numbers), "the answers")
        self.assertNotIn("A", [current for current, _, _ in answers])
        wait_for(lambda: len(self.desktop.settings()["Accounts"]) == 6, "the three accounts that were added")
        self.assertEqual(self.shown, [("Moving first", 0), ("Moving first", 7), ("withdrawn", 7), ("Moving second", 0),
                                      ("withdrawn", 7)])
        self.assertEqual({self.desktop.read(path) for path in (parked[0] + "/4", parked[1] + "/3", parked[2])}, {"of A"})


if __name__ == "__main__":
    unittest.main()

"""A desktop of its own for each test: display, session bus, home folder, panel; and the real program on it.

Everything is driven and looked at from outside. All waiting is for a condition; the limit only ends a wait that is lost.
"""

import os
import plistlib
import shutil
import signal
import socket
import struct
import subprocess
import tempfile
import threading
import time
import unittest

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

LIMIT_SECONDS = 60
WATCHER = "org.kde.StatusNotifierWatcher"
FIXED_TITLES = ["", "Manage Accounts...", "Letterloft Help", "Quit"]

PANEL = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="false"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=8;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="32"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property>
</channel>
"""

BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:dir={runtime}</listen><servicedir>{services}</servicedir>
<policy context="default"><allow user="*"/><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy></busconfig>
"""

WATCHER_INTERFACE = """<node><interface name="org.kde.StatusNotifierWatcher">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<property name="RegisteredStatusNotifierItems" type="as" access="read"/>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
</interface></node>"""


def wait_for(condition, what):
    """The first true value of `condition`; the main loop runs meanwhile."""
    deadline = time.monotonic() + LIMIT_SECONDS
    ticker = GLib.timeout_add(5, lambda: True)
    try:
        while True:
            value = condition()
            if value:
                return value
            if time.monotonic() > deadline:
                raise AssertionError(f"waited in vain for: {what() if callable(what) else what}")
            GLib.MainContext.default().iteration(True)
    finally:
        GLib.source_remove(ticker)


class Host:
    """A status bar of our own: the smallest StatusNotifier watcher that is also a host."""

    def __init__(self, bus):
        self.items = []
        interface = Gio.DBusNodeInfo.new_for_xml(WATCHER_INTERFACE).interfaces[0]
        bus.register_object("/StatusNotifierWatcher", interface, self._called, self._property, None)
        Gio.bus_own_name_on_connection(bus, WATCHER, Gio.BusNameOwnerFlags.NONE, None, None)

    def _called(self, _bus, sender, _path, _interface, _method, _arguments, invocation):
        self.items.append(sender)
        invocation.return_value(None)

    def _property(self, _bus, _sender, _path, _interface, name):
        if name == "RegisteredStatusNotifierItems":
            return GLib.Variant("as", [f"{sender}/StatusNotifierItem" for sender in self.items])
        return GLib.Variant("b", True)


class SessionManager:
    """The smallest X session manager (ICE 1.1, XSMP 1.0): takes one program in, and tells it of the log-out."""

    def __init__(self, desktop):
        path = f"{desktop.root}/session"
        self.server = socket.socket(socket.AF_UNIX)
        self.server.bind(path)
        self.server.listen()
        self.address = f"local/{os.uname().nodename}:{path}"
        self.entry = threading.Thread(target=self._take_in, daemon=True)
        self.entry.start()

    def _take_in(self):
        self.client = self.server.accept()[0]
        self.stream = self.client.makefile("rb")
        connection_setup, protocol_setup, register = 2, 7, 1
        byte_order, connection_reply, protocol_reply, registered = 1, 6, 8, 2
        self._send(0, byte_order)
        self._await(connection_setup)
        self._send(0, connection_reply, body=bytes(8))
        self._await(protocol_setup)
        self._send(0, protocol_reply, data=(0, 1), body=bytes(8))
        self._await(register)
        self._send(1, registered, body=struct.pack("<I4s", 4, b"1234"))

    def _send(self, protocol, message, data=(0, 0), body=b""):
        self.client.sendall(struct.pack("<BBBBI", protocol, message, *data, len(body) // 8) + body)

    def _await(self, message):
        found = None
        while found != message:
            found, length = struct.unpack("<xBxxI", self.stream.read(8))
            self.stream.read(length * 8)

    def announce_log_out(self):
        """As every program is asked to save what it has; each is ended when all have answered."""
        self.entry.join()
        save_yourself, both_kinds, shutdown = 3, 2, 1
        self._send(1, save_yourself, body=bytes([both_kinds, shutdown, 0, 0, 0, 0, 0, 0]))

    def log_out(self):
        saved, die = 8, 9
        self.announce_log_out()
        self._await(saved)
        self._send(1, die)

    def close(self):
        for end in (self.stream, self.client, self.server):
            end.close()


class Desktop:
    """One display, one session bus, one home. `close` ends what was started, each by its own process id."""

    def __init__(self):
        self.root = tempfile.mkdtemp(prefix="letterloft-desktop-")
        self.home = os.path.join(self.root, "home")
        self.support = os.path.join(self.home, "Library/Application Support/Letterloft")
        self.settings_file = os.path.join(self.home, ".config/letterloft/settings.plist")
        runtime, services = os.path.join(self.root, "run"), os.path.join(self.root, "services")
        for folder in (self.home, runtime, services):
            os.mkdir(folder, 0o700)
        os.symlink("/usr/share/dbus-1/services/org.xfce.Xfconf.service", f"{services}/org.xfce.Xfconf.service")
        self.environment = {
            "HOME": self.home, "XDG_RUNTIME_DIR": runtime, "LANG": "C.UTF-8", "PATH": os.environ["PATH"],
            "XDG_DATA_DIRS": "/usr/local/share:/usr/share", "NO_AT_BRIDGE": "1", "GTK_A11Y": "none", "GDK_BACKEND": "x11",
        }
        self.processes, self.host = [], None
        display = self.start("Xvfb", "-displayfd", "1", "-screen", "0", "1024x600x24", "-nolisten", "tcp", "-noreset",
                             stdout=subprocess.PIPE)
        self.environment["DISPLAY"] = ":" + display.stdout.readline().decode().strip()
        self.write(f"{self.root}/bus.conf", BUS.format(runtime=runtime, services=services))
        daemon = self.start("dbus-daemon", f"--config-file={self.root}/bus.conf", "--nofork", "--print-address=1",
                            stdout=subprocess.PIPE)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = daemon.stdout.readline().decode().strip()
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.bus = Gio.DBusConnection.new_for_address_sync(self.environment["DBUS_SESSION_BUS_ADDRESS"], flags, None, None)
        self.bus.set_exit_on_close(False)

    def close(self):
        for process in reversed(self.processes):
            if process.poll() is None:
                process.terminate()
                try:
                    process.wait(10)
                except subprocess.TimeoutExpired:
                    process.kill()
            process.wait()
            if process.stdout:
                process.stdout.close()
        shutil.rmtree(self.root)

    def start(self, *command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **changes):
        """Starts a program that ends with the test, however the test ends. A variable changed to None is taken away."""
        environment = {k: v for k, v in {**self.environment, **changes}.items() if v is not None}
        # Root is held to the modes of files as everybody else is.
        as_anybody = ["--bounding-set=-dac_override,-dac_read_search"] if os.geteuid() == 0 else []
        process = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", *as_anybody, *command], env=environment,
                                   stdin=subprocess.DEVNULL, stdout=stdout, stderr=stderr, cwd=self.home)
        self.processes.append(process)
        return process

    def show_host(self):
        self.host = Host(self.bus)

    def show_window_manager(self):
        self.start("xfwm4", "--compositor=off")
        wait_for(lambda: "_NET_SUPPORTING_WM_CHECK(WINDOW): window" in
                 self.output("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"), "the window manager")

    def show_panel(self):
        self.write(f"{self.home}/.config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", PANEL)
        panel = self.start("xfce4-panel", "--disable-wm-check")
        wait_for(lambda: self.property(WATCHER, "/StatusNotifierWatcher", WATCHER, "IsStatusNotifierHostRegistered"),
                 "the panel's status bar")
        return panel

    def output(self, *command):
        return subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.decode()

    def windows(self, process):
        """The visible windows of a program, as their numbers."""
        return self.output("xdotool", "search", "--all", "--onlyvisible", "--pid", str(process.pid), "--name", ".*").split()

    # The session bus.

    def call(self, name, path, interface, method, arguments=None):
        """The answer, or None when there is none to be had."""
        answers = []
        self.bus.call(name, path, interface, method, arguments, None, Gio.DBusCallFlags.NO_AUTO_START, LIMIT_SECONDS * 1000,
                      None, lambda bus, result: answers.append(self._finished(result)))
        wait_for(lambda: answers, f"the answer to {method}")
        return answers[0]

    def _finished(self, result):
        try:
            return self.bus.call_finish(result).unpack()
        except GLib.Error:
            return None

    def property(self, name, path, interface, key):
        answer = self.call(name, path, "org.freedesktop.DBus.Properties", "Get", GLib.Variant("(ss)", (interface, key)))
        return answer[0] if answer else None

    # Files.

    @staticmethod
    def write(path, text):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)

    @staticmethod
    def read(path):
        try:
            with open(path, encoding="utf-8") as file:
                return file.read()
        except FileNotFoundError:
            return None

    def tree(self, folder):
        """Every file below a folder with what it holds, and every empty folder with None."""
        found = {}
        for path, folders, files in os.walk(folder):
            for name in files:
                found[os.path.relpath(os.path.join(path, name), folder)] = self.read(os.path.join(path, name))
            if not folders and not files:
                found[os.path.relpath(path, folder)] = None
        return found

    def account_folder(self, name):
        return os.path.join(self.support, name.lstrip("/"))

    def set_settings(self, values):
        os.makedirs(os.path.dirname(self.settings_file), exist_ok=True)
        with open(self.settings_file, "wb") as file:
            plistlib.dump(values, file)

    def settings(self):
        try:
            with open(self.settings_file, "rb") as file:
                return plistlib.load(file)
        except FileNotFoundError:
            return {}


class Program:
    """The real program, and its menu as a status bar sees it."""

    def __init__(self, desktop, within=(), **changes):
        """`within` is a command that becomes the program in the end."""
        self.desktop, self.log_file = desktop, os.path.join(desktop.root, f"log{len(desktop.processes)}")
        with open(self.log_file, "wb") as log:
            self.process = desktop.start(*within, os.environ["LETTERLOFT"], stderr=log, **changes)
        self.pid = self.process.pid

    def log(self):
        return self.desktop.read(self.log_file)

    def is_running(self):
        return self.process.poll() is None

    def exit_status(self):
        wait_for(lambda: not self.is_running(), lambda: "the end of the program; its log:\n" + self.log())
        return self.process.returncode

    def wait_for_log(self, text):
        wait_for(lambda: text in self.log(), lambda: f"{text!r} in the log:\n{self.log()}")

    def wait_for_window(self):
        return wait_for(lambda: self.desktop.windows(self.process), lambda: "a window of the program; its log:\n" + self.log())

    def end(self, by=signal.SIGTERM):
        self.process.send_signal(by)
        return self.exit_status()

    def item(self):
        """The bus name and menu path of the status item that the status bar shows, or None."""
        for entry in self.desktop.property(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems") or []:
            name = entry.partition("/")[0]
            pid = self.desktop.call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                                    GLib.Variant("(s)", (name,)))
            menu = self.desktop.property(name, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Menu")
            if pid == (self.pid,) and menu and menu != "/NO_DBUSMENU":
                return name, menu
        return None

    def wait_for_item(self):
        return wait_for(self.item, lambda: "the status item; the log:\n" + self.log())

    def rows(self):
        """The menu as a status bar reads it, from top to bottom: (number, title, can be chosen, has an image)."""
        name, menu = self.wait_for_item()
        self.desktop.call(name, menu, "com.canonical.dbusmenu", "AboutToShow", GLib.Variant("(i)", (0,)))
        layout = self.desktop.call(name, menu, "com.canonical.dbusmenu", "GetLayout", GLib.Variant("(iias)", (0, -1, [])))
        return [(number, _title(values.get("label", "")), values.get("enabled", True), bool(values.get("icon-data")))
                for number, values, _ in layout[1][2]]

    def titles(self):
        return [title for _, title, _, _ in self.rows()]

    def accounts(self):
        """The titles above the separator."""
        titles = self.titles()
        return titles[:titles.index("")]

    def marked(self):
        """The titles that carry the current account's image, which can't be chosen."""
        return [title for _, title, can_be_chosen, has_image in self.rows() if has_image and not can_be_chosen]

    def choose(self, title):
        """Chooses the topmost row of that title; what follows from it follows later."""
        rows = wait_for(lambda: [row for row in self.rows() if row[1] == title], f"the row {title!r}")
        name, menu = self.item()
        clicked = GLib.Variant("(isvu)", (rows[0][0], "clicked", GLib.Variant("s", ""), 0))
        self.desktop.call(name, menu, "com.canonical.dbusmenu", "Event", clicked)

    def wait_for_current(self, account):
        wait_for(lambda: self.desktop.settings().get("Current User") == account,
                 lambda: f"the switch to {account!r}; the log:\n{self.log()}")


def _title(label):
    """What a status bar shows of a label: a doubled underscore is one, a single one marks the next letter."""
    return "_".join(part.replace("_", "") for part in label.split("__"))


class Application:
    """A small real program with a window, and its desktop entry. It keeps a journal of what happens to it."""

    def __init__(self, desktop, name="notes", options="on-close=close"):
        self.desktop, self.name = desktop, name
        self.program = os.path.join(desktop.root, name)
        self.journal_file, self.item = self.program + ".journal", os.path.join(desktop.home, "." + name)
        self.entry = os.path.join(desktop.home, ".local/share/applications", name + ".desktop")
        shutil.copy(os.environ["TEST_APPLICATION"], self.program)
        self.command = [self.program, f"journal={self.journal_file}", f"item={self.item}", "windows=1", options]
        desktop.write(self.entry, f"[Desktop Entry]\nType=Application\nName={name}\nExec={' '.join(self.command)}\n")

    def start(self):
        before = self.journal().count("started")
        process = self.desktop.start(*self.command)
        wait_for(lambda: self.journal().count("started") > before, f"the start of {self.name}")
        return process

    def journal(self):
        return (self.desktop.read(self.journal_file) or "").split()

    def wait_for_journal(self, word):
        wait_for(lambda: word in self.journal(), lambda: f"{word!r} in the journal of {self.name}: {self.journal()}")


class DesktopTest(unittest.TestCase):
    """A desktop for each case."""

    def setUp(self):
        self.desktop = Desktop()
        self.addCleanup(self.desktop.close)

    def prepare(self, accounts=("A", "B", "C"), options="on-close=close", **settings):
        """Accounts, the first one current, each with its own copy of the one item of one managed application."""
        application = Application(self.desktop, options=options)
        for account in accounts:
            os.makedirs(self.desktop.account_folder(account), mode=0o700, exist_ok=True)
        for account in accounts[1:]:
            self.desktop.write(os.path.join(self.parked(account, application), "mail"), f"mail of {account}")
        self.desktop.write(os.path.join(application.item, "mail"), f"mail of {accounts[0]}")
        values = {"Accounts": list(accounts), "Current User": accounts[0], "Apps": [application.entry]}
        self.desktop.set_settings({**values, application.entry: [application.item], **settings})
        return application

    def parked(self, account, application):
        return os.path.join(self.desktop.account_folder(account), os.path.basename(application.item))

    def start(self, **changes):
        """The program, as soon as a status bar of our own has its item."""
        if not self.desktop.host:
            self.desktop.show_host()
        program = Program(self.desktop, **changes)
        program.wait_for_item()
        return program

    def assert_live(self, application, account, others):
        """The account's own mail is live, and each of the others' is parked in its own folder, and nothing else is."""
        expected = {f"{other}/{os.path.basename(application.item)}/mail": f"mail of {other}" for other in others}
        self.assertEqual(self.desktop.tree(application.item), {"mail": f"mail of {account}"})
        self.assertEqual(self.desktop.tree(self.desktop.support), {account: None, **expected})

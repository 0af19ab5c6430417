"""Moves to another disk that are broken off, and disks that are full."""

import os
import shutil
import signal
import subprocess
import tempfile
import unittest

from desktop import DesktopTest


class Disks(DesktopTest):
    def test_a_killed_copy_to_another_disk_is_settled_at_the_next_start(self):
        application = self.prepare(("A", "B"))
        other = tempfile.mkdtemp(dir="/dev/shm")
        self.addCleanup(shutil.rmtree, other)
        self.assertNotEqual(os.stat(other).st_dev, os.stat(self.desktop.home).st_dev, "two file systems are needed")
        os.rmdir(self.desktop.account_folder("A"))
        os.symlink(other, self.desktop.account_folder("A"))
        mail = {str(n): f"letter {n}" for n in range(1000)}
        for name, text in mail.items():
            self.desktop.write(os.path.join(application.item, name), text)
        mail["mail"] = "mail of A"

        def marks():
            return [name for folder in (other, self.desktop.home) for name in os.listdir(folder)
                    if name.startswith(".letterloft-")]

        program, accounts = self.start(), ["A", "B"]
        while not marks():
            # If the copy was quicker than the look at it, the next switch is the next occasion.
            if self.desktop.settings()["Current User"] == accounts[1]:
                accounts.reverse()
            if not program.is_running():
                program = self.start()
            program.choose(accounts[1])
            while not marks() and self.desktop.settings()["Current User"] == accounts[0] and program.is_running():
                pass
            self.assertEqual(program.end(by=signal.SIGKILL), -signal.SIGKILL, program.log())
        program = self.start()
        self.assertEqual(marks(), [])
        whole_once = [[mail, {}], [{}, mail]]
        self.assertIn([self.desktop.tree(application.item), self.desktop.tree(self.parked("A", application))], whole_once)
        self.assertEqual(program.end(), 0)


class FullDisk(DesktopTest):
    def test_full_disks_lose_nothing_and_the_settings_are_saved_later(self):
        application = self.prepare()
        letters = "A" * 100000
        self.desktop.write(os.path.join(application.item, "mail"), letters)
        full, folder = os.path.join(self.desktop.root, "full"), self.desktop.account_folder("A")
        os.mkdir(full)
        namespace = ["unshare", "--map-current-user", "--keep-caps", "--mount"]
        possible = subprocess.run([*namespace, "mount", "-t", "tmpfs", "none", full], stderr=subprocess.PIPE)
        if possible.returncode != 0:
            self.skipTest(f"no small disk can be had here: {possible.stderr.decode().strip()}")
        mount = "mount -t tmpfs -o size=64k,mode=700 none"
        disks = (f'{mount} "{folder}" && {mount} "{full}" && cp -r "{os.path.dirname(self.desktop.settings_file)}" "{full}" '
                 f'&& {{ cat /dev/zero >"{full}/rest"; exec "$0"; }}')
        program = self.start(within=[*namespace, "sh", "-c", disks], XDG_CONFIG_HOME=full)
        inside = f"/proc/{program.pid}/root"
        self.desktop.settings_file = f"{inside}{full}/letterloft/settings.plist"
        program.choose("B")
        program.wait_for_log(f'The settings could not be saved to "{full}/letterloft/settings.plist": ')
        self.assertRegex(program.log(), f"moving the file at {application.item} to {folder}:\n.* has room for ")
        self.assertRegex(program.log(), "could not be saved .*No space left on device")
        self.assertEqual(self.desktop.settings()["Current User"], "A")
        self.assertEqual(self.desktop.tree(inside + folder), {".": None})
        self.assertEqual(self.desktop.tree(application.item), {"mail": letters})
        self.assertEqual(self.desktop.tree(self.parked("B", application)), {"mail": "mail of B"})
        os.remove(f"{inside}{full}/rest")
        program.choose("C")
        program.wait_for_current("C")
        self.assertEqual(self.desktop.tree(application.item), {"mail": letters})
        self.assertEqual(program.end(), 0)


if __name__ == "__main__":
    unittest.main()

"""Start to registered status item, and memory at rest, of the program against the least that Qt can do.

start.py PROGRAM PROBE --short|--long. Both get the same session bus, virtual display and fake status bar, in turns.
"""

import os
import signal
import statistics
import sys
import time

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../tests/desktop"))
from desktop import Desktop, wait_for  # noqa: E402

MOST_TIME, MOST_MEMORY = 1.3, 1.15


class Sample:
    """One start. Memory is counted as the kernel shares it out (PSS), when the program has nothing more to do."""

    def __init__(self, desktop, program):
        desktop.host.items.clear()
        begin = time.monotonic()
        process = desktop.start(program)
        wait_for(lambda: desktop.host.items, "the status item")
        self.seconds = time.monotonic() - begin
        wait_for(lambda: self.sleeps(process.pid), "rest")
        self.kilobytes = self.proportional_memory(process.pid)
        process.send_signal(signal.SIGTERM)
        process.wait()

    @staticmethod
    def sleeps(pid):
        """Whether it has used no processor time during a tenth of a second."""
        def used():
            with open(f"/proc/{pid}/schedstat", encoding="ascii") as file:
                return file.read()
        before, begin = used(), time.monotonic()
        wait_for(lambda: time.monotonic() - begin > 0.1, "a tenth of a second")
        return used() == before

    @staticmethod
    def proportional_memory(pid):
        with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
            return next(int(line.split()[1]) for line in file if line.startswith("Pss:"))


def main():
    program, probe, size = sys.argv[1:]
    rounds = 25 if size == "--short" else 60
    desktop = Desktop()
    try:
        desktop.show_host()
        samples = {program: [], probe: []}
        for _ in range(rounds + 1):
            for each, found in samples.items():
                found.append(Sample(desktop, each))
    finally:
        desktop.close()
    # The first start of each fills the disk's caches.
    times, memory = ([statistics.median(getattr(sample, unit) for sample in found[1:]) for found in samples.values()]
                     for unit in ("seconds", "kilobytes"))
    print(f"start to status item: {times[0] * 1000:.0f} ms, probe {times[1] * 1000:.0f} ms; "
          f"memory at rest: {memory[0] / 1024:.1f} MB, probe {memory[1] / 1024:.1f} MB")
    print(f"start to registered status item against a bare QSystemTrayIcon\t{times[0] / times[1]:.2f}\t{MOST_TIME}\t-")
    print(f"memory at rest against a bare QSystemTrayIcon\t{memory[0] / memory[1]:.2f}\t{MOST_MEMORY}\t-")


if __name__ == "__main__":
    main()

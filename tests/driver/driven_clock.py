"""A clock for the engine that a test drives, by the library that TARVELMON_DRIVEN_CLOCK names."""

import atexit
import mmap
import os
import tempfile
import time

# What is to be loaded ahead of the C library; empty where that cannot be done.
PRELOADED = os.environ.get("TARVELMON_DRIVEN_CLOCK", "")

# Seconds after which a wait counts as failed.
PATIENCE = float(os.environ.get("TARVELMON_PATIENCE", "120"))

# A process's monotonic clock is its own processor time.
PROCESSOR_TIME = ("env", "LD_PRELOAD=" + PRELOADED, "TARVELMON_CLOCK=processor")

# The fields of the record, 64 bits each.
STANDS_AT, AHEAD, LOOKS, LOOK_TAKES = range(4)


class DrivenClock:
    """Runs like the real one until it is moved or stopped. To be closed by its owner."""

    def __init__(self, look_takes=0):
        with tempfile.NamedTemporaryFile(prefix="tarvelmon-clock-", delete=False) as file:
            file.write(bytes(mmap.PAGESIZE))
            self._path = file.name
        with open(self._path, "r+b") as file:
            self._memory = mmap.mmap(file.fileno(), mmap.PAGESIZE)
        self._fields = memoryview(self._memory).cast("q")  # each is read and written at once
        self._fields[LOOK_TAKES] = look_takes
        self.arguments = ("env", "LD_PRELOAD=" + PRELOADED, "TARVELMON_CLOCK=" + self._path)

    def close(self):
        self._fields.release()
        self._memory.close()
        os.unlink(self._path)

    def stop(self):
        """Stands still from now on, at the present time."""
        self._fields[STANDS_AT] = time.monotonic_ns() + self._fields[AHEAD]

    def advance(self, seconds):
        field = STANDS_AT if self._fields[STANDS_AT] else AHEAD
        self._fields[field] += int(seconds * 1e9)

    def wait_for_looks(self, count, still_wanted):
        """Waits until the process has looked at the clock so often after this call; or until `still_wanted` says no."""
        wanted = self._fields[LOOKS] + count
        deadline = time.monotonic() + PATIENCE
        while self._fields[LOOKS] < wanted and still_wanted():
            if time.monotonic() > deadline:
                raise AssertionError("nobody looks at the clock")
            time.sleep(0.002)


def standing_clock():
    """Arguments for engines whose clock stands still for ever, so that nothing but their depth ends their searches; none
    where there is no such clock."""
    if not PRELOADED:
        return ()
    clock = DrivenClock()
    atexit.register(clock.close)
    clock.stop()
    return clock.arguments

#!/usr/bin/python3
"""Notes when the machine stood still: tests of a device that must answer within 1.5 s fail then, whatever they test.

It stands still for a program that gets no processor, and for one that waits for a page of its own from the disk.

Usage: stall_watch.py FILE      writes a line for each time, until it is ended; keeps FILE.probe beside it
"""

import os
import sys
import time

LOOK_EVERY_SECONDS = 0.1
STALL_SECONDS = 1.0
PAGE = bytes(4096)


def touch_disk(probe):
    """Writes a page to the disk itself, and reads it from there."""
    os.pwrite(probe, PAGE, 0)
    os.fsync(probe)
    os.posix_fadvise(probe, 0, len(PAGE), os.POSIX_FADV_DONTNEED)
    os.pread(probe, len(PAGE), 0)


def main():
    probe = os.open(sys.argv[1] + ".probe", os.O_RDWR | os.O_CREAT, 0o600)
    with open(sys.argv[1], "a", encoding="utf-8", buffering=1) as notes:
        last = time.monotonic()
        while True:
            time.sleep(LOOK_EVERY_SECONDS)
            touch_disk(probe)
            now = time.monotonic()
            if now - last > STALL_SECONDS:
                print(f"{time.strftime('%H:%M:%S')}: no processor or no disk for {now - last:.1f} s", file=notes)
            last = now


if __name__ == "__main__":
    main()

"""Waiting for what a person would see happen, and telling what was seen instead."""

import time

# The machine may be busy with many tests; what takes longer than this does not happen any more.
PATIENCE_SECONDS = 30
LOOK_EVERY_SECONDS = 0.03


class Unexpected(Exception):
    """Something else was seen than what was expected."""


def wait_for(condition, expected, seconds=PATIENCE_SECONDS, seen=None):
    """Waits until condition() is true and returns what it returned.

    After the deadline it raises Unexpected with the text `expected` and what seen() tells then.
    """
    end = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise Unexpected(f"expected: {expected}\n    seen: {seen() if seen else result!r}")
        time.sleep(LOOK_EVERY_SECONDS)


def wait_until_equal(read, expected, what, seconds=PATIENCE_SECONDS):
    """Waits until read() returns `expected`."""
    last = [None]

    def is_equal():
        last[0] = read()
        return last[0] == expected

    wait_for(is_equal, f"{what} is {expected!r}", seconds, lambda: repr(last[0]))


def stays(condition, unexpected, seconds):
    """Looks again and again for `seconds`, as only time shows that nothing happens."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not condition():
            raise Unexpected(unexpected)
        time.sleep(LOOK_EVERY_SECONDS)


def check(condition, expected, seen=""):
    """Raises Unexpected when the condition does not hold now."""
    if not condition:
        raise Unexpected(f"expected: {expected}\n    seen: {seen}")

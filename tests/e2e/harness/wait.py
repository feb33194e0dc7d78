# Vantorel. MIT licence, see LICENSE.
# Waiting for a condition with a deadline; the only place where the suite polls.

import time


def until(condition, timeout, what, interval=0.02):
    """Polls `condition` until it is true and returns its value; fails with `what` (a text or a function giving one)."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= deadline:
            raise AssertionError(f"not within {timeout} s: {what() if callable(what) else what}")
        time.sleep(interval)


def stays(condition, seconds, what, interval=0.05):
    """Fails unless `condition` holds at every look during `seconds`: for things that must not happen."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        assert condition(), f"did not last {seconds} s: {what() if callable(what) else what}"
        time.sleep(interval)
    assert condition(), f"did not last {seconds} s: {what() if callable(what) else what}"


def same(seen, wanted, what):
    """Fails unless the two are equal, and shows both."""
    assert seen == wanted, f"{what}:\n  wanted {wanted!r}\n  seen   {seen!r}"


def settled(look, quiet=0.3, timeout=5):
    """Waits until `look` gives the same value for `quiet` seconds, and returns that value."""
    deadline = time.monotonic() + timeout
    value, since = look(), time.monotonic()
    while time.monotonic() - since < quiet:
        assert time.monotonic() < deadline, f"does not settle within {timeout} s: {value!r}"
        time.sleep(0.02)
        now = look()
        if now != value:
            value, since = now, time.monotonic()
    return value

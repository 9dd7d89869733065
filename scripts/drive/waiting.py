"""Waiting for something to come true, with a failure that says what did not come."""
import time


class Failure(Exception):
    """Something that had to happen did not; the text says what was waited for."""


def wait_for(what, condition, seconds, interval=0.03, while_true=None):
    """Returns the first true result of `condition`. `while_true`, when given, is (condition, text): once it is false
    there is nothing left to wait for."""
    end = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if while_true and not while_true[0]():
            raise Failure(f"waited for {what}, but {while_true[1]}")
        if time.monotonic() > end:
            raise Failure(f"waited {seconds:g} s for {what}")
        time.sleep(interval)

"""Mouse and keyboard, as the X server gets them from real ones."""

import subprocess

from .reader import FOCUSED
from .waiting import wait_for

WHEEL_UP, WHEEL_DOWN = 4, 5


class Hands:
    def __init__(self, environment):
        self._environment = environment

    def _do(self, *words):
        subprocess.run(["xdotool", *[str(word) for word in words]], env=self._environment, check=True, timeout=60)

    def move(self, x, y):
        self._do("mousemove", x, y)

    def click_at(self, x, y, count=1):
        self._do("mousemove", x, y, "click", "--repeat", count, "--delay", 60, 1)

    def click(self, widget, count=1):
        self.click_at(*widget.centre, count=count)

    def press(self, x, y):
        self._do("mousemove", x, y, "mousedown", 1)

    def release(self):
        self._do("mouseup", 1)

    def wheel(self, widget, button, steps):
        self._do("mousemove", *widget.centre, "click", "--repeat", steps, "--delay", 20, button)

    def key(self, *keys):
        self._do("key", "--delay", 20, *keys)

    def type(self, text):
        self._do("type", "--delay", 15, "--", text)

    def focus(self, widget, most=120):
        """Goes to the widget with the Tab key."""
        for _ in range(most):
            if widget.has(FOCUSED):
                return
            self.key("Tab")
        wait_for(lambda: widget.has(FOCUSED), f"the Tab key reaches {widget.name!r}", 2)

    def fill(self, widget, text):
        """Replaces the text of a field."""
        self.click(widget, count=3)
        wait_for(lambda: widget.has(FOCUSED), f"the focus in {widget.name!r}")
        self.key("ctrl+a")
        self.type(text)

"""The main window, as the one sees it who works with it."""

from .programs import CHANNELS
from .reader import CHECKED, FOCUSED
from .waiting import Unexpected, check, wait_for, wait_until_equal

TITLE = "VYR Laser Illuminator"
# Between the ends of the slider and the middle of its handle at 0 and at 100 %.
HANDLE_MARGIN = 11
NUMBERS = range(1, len(CHANNELS) + 1)


class Panel:
    def __init__(self, day):
        self._reader = day.reader
        self._hands = day.hands
        self._reader.window(TITLE)

    def widget(self, name, role=None):
        return self._reader.find(TITLE, name, role)

    def slider(self, number):
        return self.widget(f"Channel {number} intensity", "slider")

    def percent(self, number):
        return self.widget(f"Channel {number} intensity in percent", "text")

    def shutter(self, number):
        return self.widget(f"Channel {number} shutter", "check box")

    def name(self, number):
        return self.widget(f"Channel {number} name", "text")

    def levels(self):
        return [round(self.slider(number).value) for number in NUMBERS]

    def open_shutters(self):
        return [self.shutter(number).has(CHECKED) for number in NUMBERS]

    def expect_mode(self, word):
        wait_until_equal(lambda: self.widget("Laser status").description, word, "the laser's status")

    def expect_text(self, meaning, text):
        """One of the window's texts, the status bar's by "Status", as it is read out."""
        wait_until_equal(lambda: self._reader.labelled(TITLE, meaning), text, meaning)

    def expect_lamps(self, first, second):
        wait_until_equal(lambda: (self.widget("555 nm fiber interlock").description,
                                  self.widget("Novalum fiber interlock").description),
                         (first, second), "the lamps of the fibers")

    def expect_shutter(self, number, is_open):
        wait_until_equal(lambda: self.shutter(number).has(CHECKED), is_open, f"shutter {number} open")

    def expect_same_as(self, simulator):
        """The screen shows what the device is, and a field shows what its slider shows."""
        seen = {}

        def is_same():
            seen["screen"] = (self.levels(), self.open_shutters())
            seen["fields"] = [int(self.percent(number).text) for number in NUMBERS]
            seen["device"] = (simulator.levels(), simulator.open_shutters())
            return seen["screen"] == seen["device"] and seen["fields"] == seen["screen"][0]

        wait_for(is_same, "screen and device agree", seen=lambda: seen)

    def drag(self, number, target, let_go=True):
        """Takes the slider's handle and moves it until the value is there."""
        slider = self.slider(number)
        left, top, width, height = slider.area
        travel = height - 2 * HANDLE_MARGIN
        y = top + height - HANDLE_MARGIN - slider.value * travel / 100
        self._hands.press(left + width // 2, round(y))
        for _ in range(30):
            before = slider.value
            if round(before) == target:
                break
            step = (target - before) * travel / 100
            y -= step if abs(step) > 1 else (1 if step > 0 else -1)
            self._hands.move(left + width // 2, round(y))
            try:
                wait_for(lambda: slider.value != before, "the slider follows the mouse", 2)
            except Unexpected:
                continue  # less than a step
        check(round(slider.value) == target, f"slider {number} dragged to {target}", slider.value)
        if let_go:
            self._hands.release()

    def type_percent(self, number, text):
        self._hands.fill(self.percent(number), text)
        self._hands.key("Return")

    def give_focus(self, widget):
        """With the Tab key, from the field above."""
        self._hands.focus(widget)
        wait_for(lambda: widget.has(FOCUSED), f"the focus on {widget.name!r}")

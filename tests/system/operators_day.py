#!/usr/bin/python3
"""A day of the one who works with the light: from the cable to the scenario and to the next morning."""

from person.day import check_log, live
from person.panel import NUMBERS, TITLE, Panel
from person.hands import WHEEL_DOWN, WHEEL_UP
from person.waiting import check, stays, wait_for, wait_until_equal

QUIET_SECONDS = 1.0
HOUR = "3600000"
# What a line that asks for an open shutter looks like.
OPENING = r"shutter:\d+=1"
SETTINGS = "System Info & Settings"
LIMIT = "System at limit of enabled channels.  Please disable a channel."
INTERLOCK = "Channel is disabled due to fiber interlock."
EXTERNAL = "Shutter change not allowed.  System is in External Shutter Control Mode."
# The start without a device, the click in the warm-up, and the pulled cable leave these.
EXPECTED_IN_LOG = ("Error setting idle mode", "Not ready to run or error", "Serial port error",
                   "setChannelIntensity error -40010")


class OperatorsDay:
    def __init__(self, day):
        self.day = day
        self.hands = day.hands
        self.simulator = day.simulator()
        # For as long as the day likes: time passes when it is told to.
        self.simulator.tell("warmup " + HOUR, "log on", "unplug")
        self.vyr = None
        self.panel = None

    def come_in(self):
        self.vyr = self.day.start("VYR")
        self.panel = Panel(self.day)

    def live(self):
        for station in (self.starts_without_a_device, self.plugs_in, self.waits_for_the_warm_up,
                        self.switches_on, self.sets_intensities, self.moves_shutters_by_mouse,
                        self.moves_shutters_by_keyboard, self.meets_the_limit, self.loses_a_fiber,
                        self.lets_the_inputs_rule, self.meets_a_fault, self.loses_the_cable_in_a_drag,
                        self.keeps_a_scenario, self.takes_the_small_window, self.goes_home,
                        self.comes_back_the_next_morning):
            station()
            self.day.station(station.__name__.replace("_", " "))

    def starts_without_a_device(self):
        self.come_in()
        self.panel.expect_mode("Disconnected")
        self.panel.expect_lamps("Dark", "Dark")
        check(self.panel.levels() == [0] * 8, "eight sliders at 0", self.panel.levels())
        unnamed = [widget.outline() for widget in self.day.reader.window(TITLE).walk()
                   if widget.role in ("push button", "check box", "slider", "text", "graphic") and not widget.name]
        check(not unnamed, "a name for each control", unnamed)

    def plugs_in(self):
        self.simulator.tell("plug")
        self.vyr.expect_said("Successfully opened device")
        self.panel.expect_mode("Warm-up")
        self.simulator.expect_status("mode", "warm-up")

    def waits_for_the_warm_up(self):
        self.hands.click(self.panel.widget("Laser on/off"))
        self.vyr.expect_said("Not ready to run or error")
        self.panel.expect_text("Status", "System warming up.  Not ready to run.")
        check(self.simulator.status()["mode"] == "warm-up", "no other mode", self.simulator.status())
        self.simulator.tell("pass " + HOUR)
        self.panel.expect_mode("Idle")
        self.panel.expect_lamps("Lit", "Lit")
        self.panel.expect_same_as(self.simulator)

    def switches_on(self):
        self.hands.click(self.panel.widget("Laser on/off"))
        self.panel.expect_mode("Run")
        self.panel.expect_text("Laser system mode", "Run")
        self.panel.expect_text("Status", "Run mode")
        self.simulator.expect_status("mode", "run")

    def sets_intensities(self):
        panel = self.panel
        panel.drag(2, 75)
        wait_until_equal(lambda: panel.percent(2).text, "75", "the field of channel 2")
        # The wheel is for the one slider that has the focus.
        self.hands.wheel(panel.slider(2), WHEEL_DOWN, 1)
        wait_for(lambda: panel.slider(2).value < 75, "the wheel lowers channel 2", seen=panel.levels)
        self.hands.wheel(panel.slider(2), WHEEL_UP, 1)
        wait_until_equal(lambda: panel.slider(2).value, 75, "slider 2")
        self.hands.wheel(panel.slider(3), WHEEL_UP, 3)
        panel.type_percent(5, "42")
        wait_until_equal(panel.levels, [0, 75, 0, 0, 42, 0, 0, 0], "the sliders")
        left, top, width, height = panel.widget("Channel 8 intensity steps").area
        self.hands.click_at(left + width // 4, top + height // 2, count=3)
        self.hands.click_at(left + 3 * width // 4, top + height // 2)
        wait_until_equal(lambda: panel.slider(8).value, 2, "slider 8 after three steps up and one down")
        panel.expect_same_as(self.simulator)

    def moves_shutters_by_mouse(self):
        self.hands.click(self.panel.shutter(2))
        self.panel.expect_shutter(2, True)
        self.panel.expect_same_as(self.simulator)
        self.hands.click(self.panel.shutter(2))
        self.panel.expect_shutter(2, False)
        self.panel.expect_same_as(self.simulator)

    def moves_shutters_by_keyboard(self):
        self.hands.click(self.panel.percent(5))
        self.panel.give_focus(self.panel.shutter(5))
        before = len(self.simulator.lines)
        self.hands.key("space", "Return", "KP_Enter", "o")
        stays(lambda: not any(self.panel.open_shutters()), "a bare key opened a shutter", QUIET_SECONDS)
        asked = self.simulator.received(OPENING, before)
        check(not asked, "a bare key asks for no open shutter", asked)
        self.hands.key("ctrl+Return")
        self.simulator.expect_received(OPENING, before)
        self.panel.expect_shutter(5, True)
        self.panel.expect_same_as(self.simulator)
        self.hands.key("ctrl+Return")
        self.panel.expect_shutter(5, False)

    def refuse(self, number, text):
        """A click that is answered by a box; nothing moves."""
        before = self.panel.open_shutters()
        lines = len(self.simulator.lines)
        self.hands.click(self.panel.shutter(number))
        self.day.answer(text, "OK")
        self.day.reader.window(TITLE)
        asked = self.simulator.received(OPENING, lines)
        check(not asked, "the device is not asked", asked)
        check(self.panel.open_shutters() == before, f"shutters stay {before}", self.panel.open_shutters())
        self.panel.expect_same_as(self.simulator)

    def meets_the_limit(self):
        for number in (1, 2, 3, 4):
            self.hands.click(self.panel.shutter(number))
            self.panel.expect_shutter(number, True)
        self.refuse(5, LIMIT)
        for number in (1, 3, 4):
            self.hands.click(self.panel.shutter(number))
            self.panel.expect_shutter(number, False)
        self.panel.expect_same_as(self.simulator)

    def loses_a_fiber(self):
        self.simulator.tell("warn 555 fiber interlock")
        self.panel.expect_lamps("Dark", "Lit")
        self.refuse(6, INTERLOCK)
        self.simulator.tell("clear warning")
        self.panel.expect_lamps("Lit", "Lit")
        self.hands.click(self.panel.shutter(6))
        self.panel.expect_shutter(6, True)
        self.hands.click(self.panel.shutter(6))
        self.panel.expect_shutter(6, False)

    def choose_control(self, *choices):
        self.hands.click(self.panel.widget("Settings", "push button"))
        self.day.reader.window(SETTINGS)
        self.hands.click(self.day.reader.find(SETTINGS, "Control Mode", "page tab"))
        for choice in choices:
            self.hands.click(self.day.reader.find(SETTINGS, choice, "radio button"))
        self.hands.key("Escape")
        self.day.reader.window(TITLE)

    def lets_the_inputs_rule(self):
        kept = self.panel.levels()
        self.choose_control("Intensity Control: External Analog", "Shutter Control: External Digital")
        self.simulator.expect_status("intensity from", "external")
        self.simulator.expect_status("shutters from", "external")
        self.panel.expect_text("Intensity control", "Intensity Control: External Analog")
        self.panel.expect_text("Shutter control", "Shutter Control: External Digital")
        self.simulator.tell("analog 470 66", "ttl 520 high")
        wait_until_equal(lambda: self.panel.slider(3).value, 66, "slider 3, moved by its input")
        self.panel.expect_shutter(4, True)
        self.panel.expect_same_as(self.simulator)
        self.refuse(5, EXTERNAL)
        self.simulator.tell("ttl 520 low")
        self.panel.expect_shutter(4, False)
        self.choose_control("Intensity Control: Host USB", "Shutter Control: Host USB")
        self.simulator.expect_status("intensity from", "host")
        self.simulator.expect_status("shutters from", "host")
        self.panel.expect_mode("Idle")  # no light by surprise
        wait_until_equal(self.panel.levels, kept, "the sliders, as they were before the inputs moved them")
        self.panel.expect_same_as(self.simulator)
        self.hands.click(self.panel.widget("Laser on/off"))
        self.panel.expect_mode("Run")

    def meets_a_fault(self):
        self.simulator.tell("fault Interlock open")
        self.panel.expect_mode("Fault")
        self.panel.expect_lamps("Dark", "Dark")
        self.vyr.expect_said("fault state from device = true msg = .*Interlock open")
        self.hands.click(self.panel.widget("Laser status"))
        self.simulator.expect_status("fault", "none")
        self.panel.expect_mode("Idle")
        self.panel.expect_lamps("Lit", "Lit")
        self.panel.expect_same_as(self.simulator)

    def loses_the_cable_in_a_drag(self):
        self.panel.drag(7, 30, let_go=False)
        self.simulator.tell("unplug")
        self.panel.expect_mode("Disconnected")
        self.hands.release()
        self.panel.drag(7, 60, let_go=False)
        said = len(self.vyr.errors)
        self.simulator.tell("plug")
        self.vyr.expect_said("Successfully opened device", said)
        self.panel.expect_mode("Idle")
        self.hands.release()
        wait_until_equal(lambda: self.panel.slider(7).value, 60, "slider 7")
        self.panel.expect_same_as(self.simulator)

    def keeps_a_scenario(self):
        self.hands.click(self.panel.shutter(1))
        self.panel.expect_shutter(1, True)
        kept = self.panel.levels(), self.panel.open_shutters()
        self.hands.key("ctrl+s")
        self.day.reader.window("Save Scenario")
        self.hands.type("Noon / 1 %")
        self.hands.key("Return")
        self.day.reader.window(TITLE)
        self.panel.type_percent(1, "90")
        self.panel.type_percent(7, "5")
        self.hands.click(self.panel.shutter(1))
        self.panel.expect_shutter(1, False)
        self.hands.click(self.panel.shutter(3))
        self.panel.expect_shutter(3, True)
        self.panel.expect_same_as(self.simulator)
        self.hands.key("ctrl+o")
        self.day.reader.window("Load Scenario")
        self.hands.click(self.day.reader.find("Load Scenario", "Noon / 1 %", "list item"), count=2)
        self.day.reader.window(TITLE)
        wait_until_equal(lambda: (self.panel.levels(), self.panel.open_shutters()), kept, "the scenario's state")
        self.panel.expect_text("Scenario", "Scenario: Noon / 1 %")
        self.panel.expect_same_as(self.simulator)

    def takes_the_small_window(self):
        large = self.day.reader.window(TITLE).area[2:]
        self.hands.click(self.panel.widget("Expand or collapse the window"))
        wait_for(lambda: self.day.reader.window(TITLE).area[3] < large[1] * 2 // 3, "a small window")
        check(not self.day.reader.window(TITLE).find("Channel 1 intensity", "slider"), "one slider only")
        self.panel.drag(8, 33)
        wait_until_equal(lambda: self.simulator.levels()[7], 33, "channel 8 of the device")
        self.hands.click(self.panel.widget("Expand or collapse the window"))
        wait_until_equal(lambda: self.day.reader.window(TITLE).area[2:], large, "the large window's size")
        self.panel.expect_same_as(self.simulator)

    def goes_home(self):
        self.hands.fill(self.panel.name(1), "violet")
        self.hands.key("Return")
        self.levels = self.panel.levels()
        self.day.close(self.vyr, TITLE)
        check_log(self.vyr, EXPECTED_IN_LOG)

    def comes_back_the_next_morning(self):
        said = len(self.simulator.lines)
        self.come_in()
        self.panel.expect_mode("Idle")
        self.simulator.expect_received("mode", said)
        wait_until_equal(self.panel.levels, self.levels, "the levels of yesterday")
        wait_until_equal(lambda: self.panel.name(1).text, "violet", "the name of channel 1")
        wait_until_equal(self.panel.open_shutters, [False for _ in NUMBERS], "the shutters")
        self.panel.expect_same_as(self.simulator)
        self.day.close(self.vyr, TITLE)
        check_log(self.vyr, EXPECTED_IN_LOG)
        self.simulator.quit()


if __name__ == "__main__":
    live(lambda day: OperatorsDay(day).live())

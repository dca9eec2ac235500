#!/usr/bin/python3
"""A day at the service level: every page, the terminal, the loader, and the records of the device."""

import json

from person.day import check_log, live
from person.panel import TITLE, Panel
from person.programs import CHANNELS
from person.reader import CHECKED, FOCUSED
from person.waiting import check, wait_for, wait_until_equal

SETTINGS = "System Info & Settings"
NOT_IN_LOADER = "Device must be running loader for this command."
WRITTEN = "System configuration updated"
NECSEL = "Necsel Laser Configuration"
# The chosen port is opened anew; the loader knows no temperatures, which is noticed once.
EXPECTED_IN_LOG = ("Error setting idle mode", "Closing the previous port", "Write timeout error")
CONTROL_CHOICES = (("Intensity Control: External Analog", "int_mode=ext"),
                   ("Shutter Control: External Digital", "sh_mode=ext"), ("Despeckler: Off", "speckle=off"),
                   ("Despeckler: On", "speckle=on"), ("Intensity Control: Host USB", "int_mode=pc"),
                   ("Shutter Control: Host USB", "sh_mode=pc"))


class ServiceDay:
    def __init__(self, day):
        self.day = day
        self.hands = day.hands
        self.file = day.desk.home / "unit 42.json"
        self.simulator = day.simulator()
        self.simulator.tell("warmup 100", "log on", "restart-time 300", "hours 555 812.4")
        self.vyr = day.start("VYR", "-diag")
        self.panel = Panel(day)

    def live(self):
        for station in (self.opens_the_settings, self.chooses_the_port, self.reads_the_identity,
                        self.reads_the_hours, self.tries_the_control_modes, self.turns_a_ttl_input_round,
                        self.talks_at_the_terminal, self.edits_in_the_application, self.goes_to_the_loader,
                        self.writes_the_record, self.brings_the_file_back, self.writes_the_identity,
                        self.returns_to_the_application, self.reads_the_help, self.goes_home):
            station()
            self.day.station(station.__name__.replace("_", " "))

    def widget(self, name, role=None):
        return self.day.reader.find(SETTINGS, name, role)

    def labelled(self, description):
        return self.day.reader.labelled(SETTINGS, description)

    def page(self, name):
        tab = self.widget(name, "page tab")
        self.hands.click(tab)
        wait_until_equal(lambda: self.widget("Settings pages").has(FOCUSED) or tab.has(FOCUSED), True, "the page")

    def sends(self, act, line):
        """The act brings this line, once, to the device."""
        before = len(self.simulator.lines)
        act()
        self.simulator.expect_received("^" + line + "$", before)

    def opens_the_settings(self):
        self.panel.expect_mode("Idle")
        self.hands.click(self.panel.widget("Settings", "push button"))
        self.day.reader.window(SETTINGS)
        pages = [widget.name for widget in self.day.reader.window(SETTINGS).walk() if widget.role == "page tab"]
        check(pages == ["System Info", "System Config", "Operating Info", "Control Mode", "TTL Configuration",
                        "Update", "Service & Development"], "seven pages", pages)
        for name in pages:
            self.page(name)
            unnamed = [widget.outline() for widget in self.day.reader.window(SETTINGS).walk()
                       if widget.role in ("push button", "radio button", "check box", "combo box", "spin box", "table",
                                          "text") and not widget.name]
            check(not unnamed, f"a name for each control of {name}", unnamed)

    def chooses_the_port(self):
        said = len(self.vyr.errors)
        port = self.simulator.said_port()
        settings = self.day.reader.window(SETTINGS)
        box = wait_for(lambda: settings.find_role("combo box"), "the choice of ports", seen=settings.outline)
        wait_until_equal(lambda: box.name, port, "the port shown")
        self.hands.click(box)
        self.hands.key("Return")
        self.vyr.expect_said("Port Closed", said)
        self.vyr.expect_said("Successfully opened device", said)
        wait_until_equal(lambda: self.labelled("Connection"), f"Device connected on {port}", "the connection")

    def reads_the_identity(self):
        self.page("System Info")
        for name, text in (("VYR Serial Number", "VYR-00042"), ("Product Part Number", "VYR-8-0001"),
                           ("Control Board Hardware Revision", "01.02.00")):
            wait_until_equal(lambda name=name: self.widget(name, "text").text, text, name)
        wait_until_equal(lambda: self.labelled("Control Board Firmware Version"), "2.7.0", "the firmware's version")
        table = self.widget("Channel Configuration", "table")
        columns = [widget.name for widget in table.walk() if widget.role == "column header"]
        check(columns == list("12345678"), "eight columns of the channel table", columns)

    def reads_the_hours(self):
        self.page("Operating Info")
        for channel in CHANNELS:
            hours = "812 hrs" if channel == "555" else "0 hrs"
            wait_until_equal(lambda channel=channel: self.labelled(f"Operating hours at {channel} nm"), hours,
                             f"the hours at {channel} nm")

    def tries_the_control_modes(self):
        self.page("Control Mode")
        for choice, line in CONTROL_CHOICES:
            button = self.widget(choice, "radio button")
            self.sends(lambda button=button: self.hands.click(button), line)
            wait_until_equal(lambda button=button: button.has(CHECKED), True, choice)
        minutes = self.widget("Sleep Timer minutes", "spin box")
        self.sends(lambda: (self.hands.fill(minutes, "45"), self.hands.key("Tab")), "sleep=45")
        self.sends(lambda: self.hands.click(self.widget("Sleep Timer", "check box")), "sleep=0")
        self.sends(lambda: self.hands.click(self.widget("Sleep Timer", "check box")), "sleep=45")

    def turns_a_ttl_input_round(self):
        self.page("TTL Configuration")
        for choice, line in (("Closed", "ttl_invert:520=1"), ("Open", "ttl_invert:520=0")):
            button = self.widget(f"520 nm: {choice} while TTL is high", "radio button")
            self.sends(lambda button=button: self.hands.click(button), line)
            wait_until_equal(lambda button=button: button.has(CHECKED), True, choice)

    def talks_at_the_terminal(self):
        self.page("Service & Development")
        terminal = self.widget("Terminal Window", "text")
        before = len(self.simulator.lines)
        self.hands.click(terminal)
        self.hands.type("v")
        self.hands.key("Return")
        self.simulator.expect_received("^v$", before)
        wait_for(lambda: "VYRApp V2.7.0" in terminal.text.split("\n")[-3:], "the answer in the terminal",
                 seen=lambda: terminal.text[-200:])
        check(not self.simulator.received(r"f_mode\?", before), "the poll rests", self.simulator.lines[before:])

    def cell(self, table, row, column=0):
        return self.widget(table, "table").cell(row, column)

    def type_cell(self, table, row, column, text):
        self.hands.click(self.cell(table, row, column), count=2)
        self.hands.key("ctrl+a")
        self.hands.type(text)
        self.hands.key("Return")
        wait_until_equal(lambda: self.cell(table, row, column).name, text, f"cell {row} of {table}")

    def edits_in_the_application(self):
        self.page("System Config")
        wait_until_equal(lambda: self.cell(NECSEL, 0).name, "42.5", "the current that the device keeps")
        self.type_cell(NECSEL, 0, 0, "37.25")
        self.type_cell("Novalum Configuration", 2, 2, "-21")
        self.hands.click(self.widget("Set Config", "push button"))
        self.day.answer(NOT_IN_LOADER, "OK")

    def switch_image(self, running):
        self.page("Update")
        self.hands.click(self.widget("Loader Mode", "push button"))
        wait_for(lambda: self.labelled("Running firmware image").startswith(f"Running: {running} "),
                 f"the {running} runs", seen=lambda: self.labelled("Running firmware image"))

    def goes_to_the_loader(self):
        self.switch_image("loader")
        self.simulator.expect_status("image", "Loader")

    def writes_the_record(self):
        self.page("System Config")
        wait_until_equal(lambda: self.cell(NECSEL, 0).name, "37.25", "what was typed, after the restart")
        before = len(self.simulator.lines)
        self.hands.click(self.widget("Set Config", "push button"))
        self.day.answer(WRITTEN, "OK")
        check(self.simulator.received("^setsysconfigvalid", before), "the record is valid again")
        self.type_cell(NECSEL, 0, 0, "1")
        self.get_config()

    def get_config(self):
        """Reading again brings back what was written."""
        before = len(self.simulator.lines)
        self.hands.click(self.widget("Get Config", "push button"))
        self.simulator.expect_received("^rf:", before)
        wait_until_equal(lambda: self.cell(NECSEL, 0).name, "37.25", "the current read again")
        wait_until_equal(lambda: self.cell("Novalum Configuration", 2, 2).name, "-21", "the coefficient read again")

    def brings_the_file_back(self):
        self.hands.click(self.widget("Save Config", "push button"))
        for _ in range(2):  # it is asked for twice
            self.name_file()
        wait_for(self.file.exists, "the calibration file")
        saved = wait_for(lambda: self.file.stat().st_size and json.loads(self.file.read_text(encoding="utf-8")),
                         "its content")
        check("37.25" in json.dumps(saved), "the current in the file", saved)
        self.type_cell(NECSEL, 0, 0, "2.5")
        self.hands.click(self.widget("Load Config", "push button"))
        self.name_file()
        wait_until_equal(lambda: self.cell(NECSEL, 0).name, "37.25", "the current from the file")
        wait_until_equal(lambda: self.cell("Novalum Configuration", 2, 2).name, "-21", "the coefficient from the file")

    def name_file(self):
        """Types the path into the file dialog that opens."""
        title = wait_for(lambda: next((name for name in self.day.reader.titles()
                                       if name != SETTINGS and not name.startswith(TITLE)), None),
                         "the file dialog", seen=self.day.reader.titles)
        box = self.day.reader.window(title)
        self.hands.type(str(self.file))
        self.hands.key("Return")
        wait_for(lambda: not self.day.reader.is_there(box), "the file dialog goes", seen=self.day.reader.titles)

    def writes_the_identity(self):
        self.page("System Info")
        self.hands.fill(self.widget("VYR Serial Number", "text"), "VYR-00777")
        before = len(self.simulator.lines)
        self.hands.click(self.widget("Set Configuration Data", "push button"))
        self.day.answer("Device configuration updated", "OK")
        asked = self.simulator.received("^prod_config:.*VYR-00777", before)
        check(asked, "the serial number sent", self.simulator.lines[before:][:20])

    def returns_to_the_application(self):
        self.switch_image("application")
        self.page("System Info")
        wait_until_equal(lambda: self.widget("VYR Serial Number", "text").text, "VYR-00777", "the new serial number")

    def reads_the_help(self):
        self.page("TTL Configuration")
        self.hands.key("F1")
        manual = self.day.reader.window("TTL Configuration - VYR Help")
        page = manual.await_widget("Manual page")
        wait_for(lambda: "TTL High Shutter" in page.text, "the page's text", seen=lambda: page.text[:200])
        self.hands.key("Escape")
        wait_for(lambda: not self.day.reader.has_window("TTL Configuration - VYR Help"), "the help closes")

    def goes_home(self):
        self.hands.click(self.widget("Close", "push button"))
        self.day.close(self.vyr, TITLE)
        check_log(self.vyr, EXPECTED_IN_LOG)
        self.simulator.quit()


if __name__ == "__main__":
    live(lambda day: ServiceDay(day).live())

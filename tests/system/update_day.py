#!/usr/bin/python3
"""New firmware: canceled in the middle, with the cable pulled in the middle, and to the end."""

from person.day import check_log, live
from person.panel import TITLE, Panel
from person.waiting import check, wait_for, wait_until_equal

SETTINGS = "System Info & Settings"
CHOOSER = "Please select a firmware file archive."
BUTTON = "Update Control Board Firmware"
VERSION = "9.8.7"
# Large enough that a person gets hold of the Cancel button, small enough to wait for.
IMAGE_BYTES = "3000"
CABLE_PULLED = "-40007"
EXPECTED_IN_LOG = ("Error setting idle mode", "Serial port error", "FLASH line not written", "Write command error")


class UpdateDay:
    def __init__(self, day):
        self.day = day
        self.hands = day.hands
        self.archive = day.desk.home / "new release" / "VYR 9.7z"
        self.archive.parent.mkdir()
        day.tool("release_writer", str(self.archive), VERSION, IMAGE_BYTES)
        self.simulator = day.simulator()
        self.simulator.tell("warmup 100", "log on", "restart-time 300")
        self.vyr = day.start("VYR")
        self.panel = Panel(day)

    def live(self):
        for station in (self.opens_the_page, self.cancels_in_the_middle, self.pulls_the_cable_in_the_middle,
                        self.updates_to_the_end, self.works_with_the_new_version, self.goes_home):
            station()
            self.day.station(station.__name__.replace("_", " "))

    def widget(self, name, role=None):
        return self.day.reader.find(SETTINGS, name, role)

    def running_image(self):
        return self.day.reader.labelled(SETTINGS, "Running firmware image")

    def opens_the_page(self):
        self.panel.expect_mode("Idle")
        self.hands.click(self.panel.widget("Settings", "push button"))
        self.day.reader.window(SETTINGS)
        self.hands.click(self.widget("Update", "page tab"))
        wait_until_equal(self.running_image, "Running: application 2.7.0", "the running image")

    def choose_release(self):
        """By keyboard alone: the file dialog has the focus in the field of the name."""
        self.hands.click(self.widget(BUTTON, "push button"))
        self.day.reader.window(CHOOSER)
        self.hands.type(str(self.archive))
        self.hands.key("Return")

    def progress(self):
        """The box with the progress bar, as soon as a tenth of an image is written."""
        def find():
            box = self.day.reader.now("")
            bar = box and box.find_role("progress bar")
            return box if bar and bar.name.startswith("Programming the ") and bar.value >= 10 else None

        return wait_for(find, "a progress bar at 10 %", seen=self.day.reader.titles)

    def cancels_in_the_middle(self):
        self.choose_release()
        box = self.progress()
        self.hands.click(box.await_widget("Cancel", "push button"))
        self.end_with("User canceled programming.")
        self.day.reader.window(SETTINGS)  # where it was begun

    def pulls_the_cable_in_the_middle(self):
        self.simulator.tell("good")
        self.choose_release()
        self.progress()
        self.simulator.tell("unplug")
        self.end_with(CABLE_PULLED)
        said = len(self.vyr.errors)
        self.simulator.tell("plug")
        self.vyr.expect_said("Successfully opened device", said)

    def end_with(self, text):
        """One box that holds this text, and the run is over."""
        self.day.reader.box(text)
        self.hands.key("Return")
        wait_for(lambda: self.running_image() != "Firmware update in progress.", "the end of the run",
                 seen=lambda: self.running_image() + str(self.day.reader.titles()))

    def updates_to_the_end(self):
        self.choose_release()
        self.progress()
        self.day.answer("Update complete!", "OK")
        wait_until_equal(self.running_image, f"Running: application {VERSION}", "the running image")
        self.simulator.expect_status("image", "VYRApp")

    def works_with_the_new_version(self):
        self.hands.click(self.widget("System Info", "page tab"))
        wait_until_equal(lambda: self.day.reader.labelled(SETTINGS, "Control Board Firmware Version"), VERSION,
                         "the version on the page System Info")
        self.hands.click(self.widget("Close", "push button"))
        self.day.reader.window(TITLE)
        self.panel.expect_mode("Idle")
        self.hands.click(self.panel.widget("Laser on/off"))
        self.panel.expect_mode("Run")
        self.panel.drag(4, 50)
        self.hands.click(self.panel.shutter(4))
        self.panel.expect_shutter(4, True)
        self.panel.expect_same_as(self.simulator)

    def goes_home(self):
        kept = list((self.day.desk.home / "Documents/Tarnwick/VYR").glob("CalibrationConfig*"))
        check(kept, "the calibration kept beside the log", kept)
        self.day.close(self.vyr, TITLE)
        check_log(self.vyr, EXPECTED_IN_LOG)
        self.simulator.quit()


if __name__ == "__main__":
    live(lambda day: UpdateDay(day).live())

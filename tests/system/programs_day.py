#!/usr/bin/python3
"""The demo in the hands of a visitor, the simulator at a prompt, and how programs end."""

import signal

from person.day import check_log, live
from person.panel import TITLE, Panel
from person.waiting import check, wait_for, wait_until_equal

DEMO_PANEL = "Simulated Illuminator"
# What the demo leaves in its log: the start without a device, and a pulled cable.
EXPECTED_IN_LOG = ("Error setting idle mode", "Serial port error")
BAD_USAGE, SCRIPT_FAILED = 1, 3


class ProgramsDay:
    def __init__(self, day):
        self.day = day
        self.hands = day.hands

    def live(self):
        for station in (self.simulator_refuses_wrong_options, self.simulator_answers_at_a_prompt,
                        self.simulator_plays_a_script, self.simulator_ends_with_a_signal,
                        self.demo_warms_up_at_a_click, self.demo_shows_a_fault, self.demo_loses_its_cable,
                        self.demo_moves_by_its_inputs, self.demo_closes, self.program_closes_without_a_device):
            station()
            self.day.station(station.__name__.replace("_", " "))

    def simulator_refuses_wrong_options(self):
        for words, text in ((["--pacd"], "Unknown option"), (["one", "two"], "What is this for? one"),
                            (["--paced", "--unpaced"], "exclude each other"),
                            (["--image", "toaster"], "No such image: toaster")):
            simulator = self.day.run("vyr-simulator", *words)
            simulator.expect_end(BAD_USAGE)
            told = "\n".join(simulator.errors)
            check(text in told and "--help" in told, f"{text!r} and a hint at --help", told)
            check(not simulator.lines, "no output", simulator.lines)
        missing = self.day.run("vyr-simulator", "--script", str(self.day.desk.home / "none"))
        missing.expect_end(SCRIPT_FAILED)
        check("none" in "\n".join(missing.errors), "the name of the script", missing.errors)
        helping = self.day.run("vyr-simulator", "--help")
        helping.expect_end(0)
        check("--script" in "\n".join(helping.lines), "the options", helping.lines)

    def simulator_answers_at_a_prompt(self):
        simulator = self.day.simulator("--unpaced")
        port = simulator.said_port()
        simulator.tell("fault Laser fan stalled")
        check(simulator.status()["fault"].endswith("Laser fan stalled"), "the fault", simulator.status())
        simulator.tell("unplug")
        simulator.expect_status("port", "unplugged")
        simulator.write("plugg")
        wait_for(lambda: simulator.errors, "a complaint")
        check("unknown command \"plugg\"" in simulator.errors[0], "the unknown command named", simulator.errors)
        simulator.errors.clear()
        simulator.tell("plug")
        simulator.expect_status("port", port)
        simulator.end_input()
        simulator.expect_end(0)

    def simulator_plays_a_script(self):
        script = self.day.desk.home / "scene.txt"
        script.write_text("# a scene\nwarmup 0\nttl 405 high\nwait 50\nstatus\nquit\n", encoding="utf-8")
        simulator = self.day.run("vyr-simulator", "--script", str(script))
        simulator.expect_end(0)
        check("mode: idle" in simulator.lines, "the script's status", simulator.lines)
        script.write_text("status\nttl 406 high\nquit\n", encoding="utf-8")
        simulator = self.day.run("vyr-simulator", "--script", str(script))
        simulator.expect_end(SCRIPT_FAILED)
        check("406" in "\n".join(simulator.errors), "the wrong word named", simulator.errors)

    def simulator_ends_with_a_signal(self):
        simulator = self.day.simulator("--stay")
        simulator.end_input()
        simulator.send(signal.SIGTERM)
        simulator.expect_end(0)
        left = list((self.day.desk.home / "tmp").glob("vyr-*"))
        check(not left, "no port left over", left)

    def in_panel(self, name, role=None):
        return self.day.reader.find(DEMO_PANEL, name, role)

    def press(self, name):
        self.hands.click(self.in_panel(name, "push button"))

    def device_says(self, text):
        """The panel tells the state of the device in words."""
        def words():
            window = next((window for window in self.day.reader.application.children
                           if window.name == DEMO_PANEL), None)
            return window.labels if window else ""

        wait_for(lambda: text in words(), f"the demo's panel says {text!r}", seen=words)

    def demo_warms_up_at_a_click(self):
        self.demo = self.day.start("vyr-demo")
        self.panel = Panel(self.day)
        check(" - simulated illuminator" in self.day.reader.titles()[0], "the demo says what it is",
              self.day.reader.titles())
        self.device_says("warming up")
        self.panel.expect_mode("Warm-up")
        self.press("End Warm-up")
        self.panel.expect_mode("Idle")
        self.hands.click(self.panel.widget("Laser on/off"))
        self.panel.expect_mode("Run")
        self.device_says("run")
        self.panel.expect_lamps("Lit", "Lit")  # a fiber that was not reported yet counts as open
        self.panel.drag(2, 40)
        self.hands.click(self.panel.shutter(2))
        self.panel.expect_shutter(2, True)

    def demo_shows_a_fault(self):
        self.press("Cause Fault")
        self.panel.expect_mode("Fault")
        self.panel.expect_shutter(2, False)
        self.device_says("Fault: ")
        self.hands.click(self.panel.widget("Laser status"))
        self.panel.expect_mode("Idle")

    def demo_loses_its_cable(self):
        self.press("Unplug")
        self.panel.expect_mode("Disconnected")
        self.device_says("Not plugged in")
        self.press("Plug In")
        self.panel.expect_mode("Idle")
        check(round(self.panel.slider(2).value) == 40, "slider 2 as it was", self.panel.levels())

    def demo_moves_by_its_inputs(self):
        """The inputs have no effect while this computer is in control."""
        self.hands.click(self.in_panel("TTL input of 405", "check box"))
        self.hands.click(self.panel.shutter(1))
        self.panel.expect_shutter(1, True)
        wait_until_equal(self.panel.open_shutters, [True] + 7 * [False], "the shutters")
        self.hands.click(self.panel.shutter(1))
        self.panel.expect_shutter(1, False)

    def demo_closes(self):
        self.day.close(self.demo, TITLE)
        check_log(self.demo, EXPECTED_IN_LOG)
        kept = self.day.desk.home / ".local/share/vyr-demo"
        check(kept.is_dir(), "a folder of the demo's own")
        own = self.day.desk.home / ".config/Tarnwick"
        check(not own.exists(), "no settings of the program touched", own)

    def program_closes_without_a_device(self):
        program = self.day.start("VYR")
        self.day.close(program, TITLE)
        check_log(program, EXPECTED_IN_LOG)
        settings = self.day.desk.home / ".config/Tarnwick/VYR.conf"
        check(settings.exists(), "its settings")


if __name__ == "__main__":
    live(lambda day: ProgramsDay(day).live())

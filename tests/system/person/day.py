"""The frame of a day: it starts programs, tells its stations, and keeps what the one who mends it needs."""

import argparse
import pathlib
import re
import shutil
import sys
import time
import traceback

from .desk import Desk
from .hands import Hands
from .programs import Program, Simulator, kill_all
from .reader import Accessibility, Reader
from .waiting import Unexpected, check, wait_for

CLOSING = "alt+F4"  # of the window manager
# A window that closes while the window manager still moves it about is asked for its place once too often.
X_RACE = r"qt\.qpa\.xcb: QXcbConnection: XCB error: 3 \(BadWindow\)"
LOG_FILE = "Documents/Tarnwick/VYR/VYR_Log.txt"


class Day:
    def __init__(self, desk, programs, tools):
        self.desk = desk
        self.hands = Hands(desk.environment)
        self.reader = None
        self._folder = programs
        self._tools = tools
        self._running = []
        self._began = time.monotonic()

    def station(self, text):
        print(f"{time.monotonic() - self._began:6.1f} s  {text}", flush=True)

    def program(self, name):
        return self._folder / name

    def run(self, name, *arguments):
        """A program that shows no window."""
        program = Program(self.desk, self._folder / name, *arguments)
        self._running.append(program)
        return program

    def tool(self, name, *arguments):
        """A program of the tests; waits for its end."""
        program = Program(self.desk, self._tools / name, *arguments)
        self._running.append(program)
        program.expect_end(0)
        return program

    def simulator(self, *arguments):
        simulator = Simulator(self.desk, self._folder / "vyr-simulator", *arguments)
        self._running.append(simulator)
        return simulator

    def start(self, name, *arguments):
        """A program with windows; `reader` reads them from now on. It finds the simulator's port on its USB."""
        tmp = self.desk.environment["TMPDIR"]
        bus = self.desk.start_session_bus()
        # The sanitizers' library wants to be the first one; that it comes second does no harm.
        options = self.desk.environment.get("ASAN_OPTIONS", "")
        environment = {"LD_PRELOAD": str(self._tools / "libusb_ports.so"), "VYR_TEST_PORTS": tmp + "/vyr-*/tty*",
                       "ASAN_OPTIONS": ":".join(filter(None, [options, "verify_asan_link_order=0"])),
                       "DBUS_SESSION_BUS_ADDRESS": bus}
        program = Program(self.desk, self._folder / name, *arguments, environment=environment)
        self._running.append(program)
        wait_for(lambda: self.desk.shows_window_of(program.process), f"{name} shows a window",
                 seen=lambda: "\n".join(program.errors[-20:]))
        self.reader = Reader(Accessibility(bus), program.process)
        return program

    def close(self, program, title):
        """Closes the window by the window manager's key; the program ends well."""
        window = self.reader.window(title)
        for _ in range(3):  # a window manager that is busy with the last click may miss the key
            self.hands.key(CLOSING)
            try:
                wait_for(lambda: not program.runs() or not self.reader.is_there(window), "the window closes", 4)
                break
            except Unexpected:
                continue
        program.expect_end(0)

    def answer(self, text, button):
        """Waits for a box with this text and clicks its button."""
        box = self.reader.box(text)
        check(box.labels == text, f"a box that says {text!r}", box.labels)
        self.hands.click(box.await_widget(button, "push button"))
        wait_for(lambda: not self.reader.is_there(box), "the box goes")

    def keep_what_was_seen(self):
        self.desk.take_screenshot("failure")
        results = self.desk.results
        if self.reader:
            (results / "windows.txt").write_text(self.reader.outline(), encoding="utf-8")
        for number, program in enumerate(self._running):
            text = "\n".join(["-- output", *program.lines, "-- errors", *program.errors])
            (results / f"{number}-{program.name}.txt").write_text(text, encoding="utf-8")
        log = self.desk.home / LOG_FILE
        if log.exists():
            shutil.copy(log, results / log.name)

    def end(self):
        kill_all(self._running)
        return self.desk.close()


def check_log(program, expected):
    """The log holds no warning and no error but those that match one of `expected`."""
    allowed = (*expected, X_RACE)
    odd = [line for line in program.errors
           if not re.match(r"(INFO |TRACE|DEBUG)", line) and not any(re.search(text, line) for text in allowed)]
    check(not odd, "no unexpected line in the log of " + program.name, "\n" + "\n".join(odd))


def live(story):
    """Runs story(day) on a desktop of its own and ends the process with 0 when all was as it should be."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", type=pathlib.Path, required=True)
    parser.add_argument("--tools", type=pathlib.Path, required=True)
    parser.add_argument("--results", type=pathlib.Path, required=True)
    arguments = parser.parse_args()
    shutil.rmtree(arguments.results, ignore_errors=True)
    arguments.results.mkdir(parents=True)
    day = Day(Desk(arguments.results), arguments.programs, arguments.tools)
    try:
        story(day)
        all_well = True
    except Exception as error:  # whatever it is, the desktop must not stay behind
        all_well = False
        print(error if isinstance(error, Unexpected) else "", flush=True)
        traceback.print_exc(file=sys.stdout)
        day.keep_what_was_seen()
        print(f"Kept in {arguments.results}: the screen, the windows, the programs' output and the log.")
    if not day.end():
        print("Something was left over on the desktop.")
        all_well = False
    sys.exit(0 if all_well else 1)

"""The built programs as processes."""

import re
import signal
import subprocess
import threading

from .waiting import Unexpected, check, wait_for, wait_until_equal

CHANNELS = ("405", "445", "470", "520", "528", "555", "640", "730")


class Program:
    """A process and all that it writes, line by line."""

    def __init__(self, desk, path, *arguments, environment=None):
        self.name = path.name
        self.lines = []
        self.errors = []
        self._desk = desk
        self._process = subprocess.Popen([str(path), *arguments], env={**desk.environment, **(environment or {})},
                                         stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                         text=True, encoding="utf-8", errors="replace")
        self._readers = [threading.Thread(target=self._collect, args=pair, daemon=True)
                         for pair in ((self._process.stdout, self.lines), (self._process.stderr, self.errors))]
        for reader in self._readers:
            reader.start()

    @staticmethod
    def _collect(stream, lines):
        for line in stream:
            lines.append(line.rstrip("\n"))

    @property
    def process(self):
        return self._process.pid

    def runs(self):
        return self._process.poll() is None

    def write(self, line):
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()

    def end_input(self):
        self._process.stdin.close()

    def send(self, number):
        if self.runs():
            self._process.send_signal(number)

    def kill(self):
        self._process.kill()

    def expect_end(self, code=0, seconds=30):
        """Waits for the end by itself; nothing of it stays behind."""
        wait_for(lambda: not self.runs(), f"{self.name} ends", seconds)
        for reader in self._readers:
            reader.join(10)
        check(self._process.returncode == code, f"{self.name} ends with {code}",
              f"{self._process.returncode}\n" + "\n".join(self.errors[-20:]))
        left = {process: name for process, name in self._desk.processes().items() if name == self.name[:15]}
        check(not left, f"no {self.name} left over", left)

    def said(self, pattern, since=0):
        """What matched first in the lines of the log, from the line `since` on."""
        for line in self.errors[since:]:
            found = re.search(pattern, line)
            if found:
                return found
        return None

    def expect_said(self, pattern, since=0):
        return wait_for(lambda: self.said(pattern, since), f"{self.name} says {pattern!r}",
                        seen=lambda: "\n" + "\n".join(self.errors[since:][-20:]))


class Simulator(Program):
    """The simulated illuminator, driven by typed commands."""

    def __init__(self, desk, path, *arguments):
        super().__init__(desk, path, *arguments)
        wait_for(lambda: self.said_port(), "the simulator says its port", seen=lambda: self.errors)

    def said_port(self):
        return next((line[6:] for line in reversed(self.lines) if line.startswith("port: /")), None)

    def tell(self, *commands):
        """Types commands; what they would answer in error ends the test."""
        for command in commands:
            self.write(command)
        check(not self.errors, "no complaint of the simulator", self.errors)

    def status(self):
        """What "status" tells, by what stands before the colon."""
        before = len(self.lines)
        self.tell("status")
        fields = {}

        def is_complete():
            # The record of the line's traffic may stand between two of these.
            for line in self.lines[before:]:
                key, colon, value = line.partition(": ")
                if colon and not re.match(r"\d\d:\d\d:", line):
                    fields[key] = value
            return CHANNELS[-1] in fields and CHANNELS[0] in fields

        wait_for(is_complete, "the simulator's status", seen=lambda: self.errors)
        return fields

    def levels(self):
        status = self.status()
        return [round(float(status[channel].split(" ")[0])) for channel in CHANNELS]

    def open_shutters(self):
        status = self.status()
        return [status[channel].endswith("open") for channel in CHANNELS]

    def received(self, pattern, since=0):
        """The lines that came from the computer since then and match; needs "log on"."""
        arrived = [line.partition(" -> ")[2] for line in self.lines[since:] if " -> " in line]
        return [line for line in arrived if re.search(pattern, line)]

    def expect_received(self, pattern, since=0):
        return wait_for(lambda: self.received(pattern, since), f"the device is sent {pattern!r}",
                        seen=lambda: self.lines[since:][-12:])

    def expect_status(self, key, expected):
        wait_until_equal(lambda: self.status().get(key), expected, f"the simulator's {key!r}")

    def quit(self):
        self.tell("quit")
        self.expect_end(0)


def kill_all(programs):
    """Ends what a failed test has left running."""
    for program in programs:
        program.send(signal.SIGTERM)
    for program in programs:
        try:
            wait_for(lambda: not program.runs(), f"{program.name} ends", 10)
        except Unexpected:
            program.kill()

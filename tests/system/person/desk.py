"""A desktop of its own: X server, window manager, session buses and home, with nothing of the user's in it."""

import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import uuid

from .waiting import Unexpected, wait_for

SCREEN = "1600x1200x24"
# Whatever is started here inherits this, so that what is left over can be told from everything else.
MARK = "VYR_TEST_DESK"
TOOLS = ("Xvfb", "openbox", "dbus-daemon", "xdotool", "import")


class Desk:
    def __init__(self, results):
        missing = [tool for tool in TOOLS if not shutil.which(tool)]
        if missing:
            raise Unexpected("not installed: " + " ".join(missing))
        self.results = pathlib.Path(results)
        self._mark = uuid.uuid4().hex
        self._services = []
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="vyr-day-"))
        self.environment = self._environment()
        self._start_display()
        self._start_window_manager()

    def _environment(self):
        environment = dict(os.environ)
        for name in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS", "WAYLAND_DISPLAY", "QT_SCALE_FACTOR",
                     "XDG_DATA_HOME", "XDG_CACHE_HOME", "QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME"):
            environment.pop(name, None)
        for name, folder in (("HOME", "."), ("XDG_CONFIG_HOME", ".config"), ("XDG_RUNTIME_DIR", "run"),
                             ("TMPDIR", "tmp")):
            path = self.home / folder
            path.mkdir(mode=0o700, exist_ok=True)
            environment[name] = str(path)
        (self.home / "Documents").mkdir()
        environment.update({MARK: self._mark, "QT_QPA_PLATFORM": "xcb", "LC_ALL": "C.UTF-8",
                            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_FONT_DPI": "96"})
        return environment

    def _start(self, *command, **options):
        with open(self.results / (pathlib.Path(command[0]).name + ".log"), "ab") as log:
            service = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=log,
                                       stderr=subprocess.STDOUT, **options)
        self._services.append(service)
        return service

    def _start_telling(self, *command, option):
        """Starts a service that writes, once it is ready, one line to a file descriptor."""
        reading, writing = os.pipe()
        self._start(*command, option.format(writing), pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as told:
            line = told.readline().strip()
        if not line:
            raise Unexpected(command[0] + " did not start")
        return line

    def _start_display(self):
        number = self._start_telling("Xvfb", "-screen", "0", SCREEN, "-dpi", "96", "-nolisten", "tcp",
                                     "-displayfd", option="{}")
        self.environment["DISPLAY"] = ":" + number

    def _start_window_manager(self):
        """A window that is shown while the window manager starts may never be."""
        ready = self.home / "framing"
        self._start("openbox", "--sm-disable", "--startup", f"touch {ready}")
        wait_for(ready.exists, "a window manager that frames windows")

    def start_session_bus(self):
        """Starts a session bus and returns its address. What it activates knows nothing of the display.

        On a display, the accessibility bus would leave its address there as well, and a later program would
        go to that of an earlier one.
        """
        display = self.environment.pop("DISPLAY")
        try:
            return self._start_telling("dbus-daemon", "--session", "--nofork", option="--print-address={}")
        finally:
            self.environment["DISPLAY"] = display

    def shows_window_of(self, process):
        search = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(process)], env=self.environment,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False, timeout=30)
        return bool(search.stdout.strip())

    def take_screenshot(self, name):
        subprocess.run(["import", "-window", "root", str(self.results / (name + ".png"))],
                       env=self.environment, check=False, timeout=30)

    def processes(self):
        """Process id and program of everything that was started here and still runs."""
        found = {}
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if f"{MARK}={self._mark}\0".encode() in (entry / "environ").read_bytes():
                    found[int(entry.name)] = (entry / "comm").read_text().strip()
            except OSError:
                continue  # somebody else's, or just gone
        return found

    def close(self):
        """Ends everything; True when all of it went."""
        for service in reversed(self._services):
            service.terminate()
        for service in self._services:
            service.wait(20)
        try:
            wait_for(lambda: not self.processes(), "nothing left on the desktop", 5)
            all_gone = True
        except Unexpected:
            all_gone = False
            for process in self.processes():
                os.kill(process, signal.SIGKILL)
        shutil.rmtree(self.home, ignore_errors=True)
        return all_gone

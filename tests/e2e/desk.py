"""A desk for the program: a screen with a window manager, a bus, and a sound server with microphone and loudspeaker."""
import os
import subprocess
import threading
import time
import unittest

import numpy as np

import sound
from program import Beside, Home, Program, eventually

RATE = 16000  # of microphone and loudspeaker
# A bus that starts no services by itself.
BUS = """<busconfig><type>session</type><listen>unix:path={}/bus</listen><policy context="default">
<allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy></busconfig>"""


class Screen(Beside):
    """A display of its own, without a tray, so that the main window stays. Keys go to the window that has the focus."""

    SIZE = (1280, 800)
    PREFERENCES = "ShowTaskBar=0\n"  # of the window manager

    def __init__(self):
        super().__init__()
        (self.folder / ".icewm").mkdir()
        (self.folder / ".icewm" / "preferences").write_text(self.PREFERENCES)
        reader, writer = os.pipe()
        self.start("Xvfb", "-displayfd", str(writer), "-screen", "0", "{}x{}x24".format(*self.SIZE), "-nolisten", "tcp",
                   "-noreset", "-fbdir", self.folder, pass_fds=(writer,))
        os.close(writer)
        # Xvfb tells the number that it has found free, to the end of the line, or ends.
        with os.fdopen(reader) as told:
            self.display = ":" + told.readline().strip()
        self.start_manager()

    def start_manager(self):
        home = {"DISPLAY": self.display, "HOME": str(self.folder)}
        self.manager = self.start("icewm", env=os.environ | home)

    def environment(self):
        # The keyboard library of X11 copies by length out of a buffer with no end mark, which is right and which the
        # sanitizer's strict reading of strings takes for a fault.
        sanitizer = os.environ.get("ASAN_OPTIONS", "") + ":strict_string_checks=0"
        return {"DISPLAY": self.display, "QT_QPA_PLATFORM": "xcb", "HOME": str(self.folder), "ASAN_OPTIONS": sanitizer}

    def window(self, title):
        """The window of that title, once it is on the screen and has the focus."""
        window = self.visible(title)
        eventually(lambda: self._activated(window), f"the focus on {title}")
        return window

    def visible(self, title, but=None):
        """Waits for a window of that title on the screen, another one than `but`."""
        return eventually(lambda: [w for w in self.windows(title) if w != but], f"{title} on the screen")[-1]

    def no_window(self, title):
        eventually(lambda: not self.windows(title), f"{title} closed")

    def windows(self, title):
        """Those of that title that are on the screen now."""
        return self.xdotool("search", "--onlyvisible", "--name", f"^{title}$").split()

    def minimize(self, window):
        self.xdotool("windowminimize", window)

    def key(self, *keys):
        for key in keys:
            self.xdotool("key", "--clearmodifiers", key)
            time.sleep(0.05)

    def type(self, text):
        self.xdotool("type", "--delay", "20", text)

    def click(self, window, x, y):
        """At a place inside the window, in pixels; whichever window lies there."""
        self.xdotool("mousemove", "--window", window, str(x), str(y), "click", "1")

    def pixels(self, x=0, y=0, width=SIZE[0], height=SIZE[1], window=None):
        """What the screen shows, or a part of a window: rows of pixels, each with red, green and blue from 0 to 255."""
        left, top, *_ = self.place(window) if window else (0, 0)
        # The screen is a file in the format of the X window dump: a header of big-endian words, which counts its own
        # bytes (0), those of a row (12) and the colours (19, of 12 bytes each) before the picture.
        screen = (self.folder / "Xvfb_screen0").read_bytes()
        head = np.frombuffer(screen[:100], ">u4")
        rows = np.frombuffer(screen[head[0] + 12 * head[19] :], np.uint8)
        rows = rows[: len(rows) // head[12] * head[12]].reshape(-1, head[12] // 4, 4)
        return rows[top + y : top + y + height, left + x : left + x + width, 2::-1].astype(int)

    def active(self):
        """The window that has the focus."""
        return self.xdotool("getactivewindow").strip()

    def place(self, window):
        """Left, top, width and height in pixels; zeros of one that is gone."""
        told = dict(line.split("=") for line in self.xdotool("getwindowgeometry", "--shell", window).split())
        return tuple(int(told.get(name, 0)) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def xdotool(self, *words):
        return subprocess.run(["xdotool", *words], env=os.environ | {"DISPLAY": self.display},
                              capture_output=True, text=True, timeout=20).stdout

    def _activated(self, window):
        if self.active() == window:
            return True
        self.xdotool("windowactivate", window)
        return False


class Bus(Beside):
    """A session bus of the test's own."""

    def __init__(self):
        super().__init__()
        (self.folder / "bus.conf").write_text(BUS.format(self.folder))
        daemon = self.start("dbus-daemon", f"--config-file={self.folder}/bus.conf", "--nofork", "--nosyslog",
                            "--print-address", stdout=subprocess.PIPE, text=True)
        self.address = daemon.stdout.readline().strip()

    def environment(self):
        return {"DBUS_SESSION_BUS_ADDRESS": self.address}


class SoundDesk(Beside):
    """A sound server of the test's own. `speak` is what the microphone hears, `heard` what the loudspeaker plays."""

    def __init__(self):
        super().__init__()
        self._played = bytearray()
        self._over = threading.Event()
        self._to_say = b""
        self._said = threading.Event()
        self._lock = threading.Lock()
        surroundings = {name: str(self.folder) for name in ("HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME")}
        shape = f"format=s16le rate={RATE} channels=1"
        self.start(
            "pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
            f"--load=module-pipe-sink sink_name=speaker {shape} use_system_clock_for_timing=yes file={self.folder}/out",
            f"--load=module-pipe-source source_name=microphone {shape} file={self.folder}/in",
            f"--load=module-native-protocol-unix auth-anonymous=1 socket={self.folder}/socket",
            env=os.environ | surroundings)
        eventually(lambda: all((self.folder / name).exists() for name in ("out", "in", "socket")), "a sound server")
        for work in (self._hear, self._speak):
            thread = threading.Thread(target=work, daemon=True)
            thread.start()
            self.callback(thread.join, 2)
        self.callback(self._over.set)

    def environment(self):
        return {"PULSE_SERVER": f"unix:{self.folder}/socket"}

    def speak(self, samples):
        """Says samples of 8000 a second at the microphone, and returns when they are said."""
        twice = np.interp(np.arange(2 * len(samples)) / 2, np.arange(len(samples)), samples).astype("<i2")
        with self._lock:
            self._to_say = twice.tobytes()
            self._said.clear()
        assert self._said.wait(len(samples) / sound.RATE + 20), "the microphone didn't take all"

    def heard(self):
        """All that the loudspeaker has played so far, as samples of 8000 a second."""
        return sound.halve(bytes(self._played))

    def listeners(self):
        """How many programs have the microphone open."""
        told = subprocess.run(["pactl", "list", "short", "source-outputs"], env=os.environ | self.environment(),
                              capture_output=True, text=True, timeout=20, check=True).stdout
        return len(told.splitlines())

    def _hear(self):
        pipe = os.open(self.folder / "out", os.O_RDONLY | os.O_NONBLOCK)
        while not self._over.wait(0.01):
            try:
                self._played += os.read(pipe, 65536)
            except BlockingIOError:
                pass
        os.close(pipe)

    def _speak(self):
        """A microphone gives sound at its own pace, silence where nobody speaks."""
        pipe = os.open(self.folder / "in", os.O_WRONLY)
        step = RATE // 50 * 2
        due = time.monotonic()
        while not self._over.is_set():
            with self._lock:
                frame, self._to_say = self._to_say[:step], self._to_say[step:]
                if not self._to_say:
                    self._said.set()
            try:
                os.write(pipe, frame.ljust(step, b"\0"))
            except BrokenPipeError:
                break  # the server has ended
            due += 0.02
            self._over.wait(max(due - time.monotonic(), 0))
        os.close(pipe)


class ScreenTestCase(unittest.TestCase):
    """Test cases with a screen each, on which `start` runs the program."""

    def setUp(self):
        self.screen = self.enterContext(Screen())

    def start(self, surroundings=None, **home):
        self.home = self.enterContext(Home(**home))
        self.program = self.enterContext(
            Program(self.home, surroundings=self.screen.environment() | (surroundings or {})))


class SoundTestCase(ScreenTestCase):
    """With a microphone and a loudspeaker."""

    def setUp(self):
        super().setUp()
        self.desk = self.enterContext(SoundDesk())

    def start(self, **home):
        super().start(self.desk.environment(), **home)

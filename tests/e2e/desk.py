"""A desk for the program: a screen with a window manager, and a sound server with microphone and loudspeaker."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import threading
import time

import numpy as np

import sound
from program import eventually

RATE = 16000  # of microphone and loudspeaker


class Screen:
    """A display of its own, without a tray, so that the main window stays. Keys go to the window that has the focus."""

    def __init__(self):
        self._folder = tempfile.mkdtemp(prefix="kelmio-e2e-")
        (pathlib.Path(self._folder) / ".icewm").mkdir()
        (pathlib.Path(self._folder) / ".icewm" / "preferences").write_text("ShowTaskBar=0\n")
        self._processes = []
        reader, writer = os.pipe()
        self._start("Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-noreset",
                    "-fbdir", self._folder, fds=(writer,))
        os.close(writer)
        # Xvfb tells the number that it has found free, to the end of the line, or ends.
        with os.fdopen(reader) as told:
            self.display = ":" + told.readline().strip()
        self._start("icewm")

    def environment(self):
        # The keyboard library of X11 copies by length out of a buffer with no end mark, which is right and which the
        # sanitizer's strict reading of strings takes for a fault.
        sanitizer = os.environ.get("ASAN_OPTIONS", "") + ":strict_string_checks=0"
        return {"DISPLAY": self.display, "QT_QPA_PLATFORM": "xcb", "HOME": self._folder, "ASAN_OPTIONS": sanitizer}

    def close(self):
        for process in reversed(self._processes):
            process.terminate()
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        shutil.rmtree(self._folder, ignore_errors=True)

    def window(self, title, timeout=15):
        """The window of that title, once it is on the screen and has the focus."""

        def found():
            return self._xdotool("search", "--onlyvisible", "--name", f"^{title}$").split()

        window = eventually(found, f"a window named {title}", timeout)[-1]
        eventually(lambda: self._activated(window), f"the focus on {title}", timeout)
        return window

    def visible(self, title, but=None, timeout=15):
        """Waits for a window of that title on the screen, another one than `but`."""

        def found():
            return [w for w in self._xdotool("search", "--onlyvisible", "--name", f"^{title}$").split() if w != but]

        return eventually(found, f"{title} on the screen", timeout)[-1]

    def minimize(self, window):
        self._xdotool("windowminimize", window)

    def press(self, keys):
        """Whatever locks are on stay on."""
        self._xdotool("key", keys)

    def hold(self, key):
        self._xdotool("keydown", key)

    def let_go(self, key):
        self._xdotool("keyup", key)

    def set_layout(self, layout):
        """Of the keyboard, such as "us"."""
        subprocess.run(["setxkbmap", layout], env=os.environ | {"DISPLAY": self.display}, check=True, timeout=20)

    def sees(self, title):
        """Whether a window of that title is on the screen now."""
        return self._xdotool("search", "--onlyvisible", "--name", f"^{title}$") != ""

    def no_window(self, title):
        eventually(lambda: not self._xdotool("search", "--onlyvisible", "--name", f"^{title}$"), f"{title} closed")

    def key(self, *keys):
        for key in keys:
            self._xdotool("key", "--clearmodifiers", key)
            time.sleep(0.05)

    def click(self, window, x, y):
        """At a place inside the window, in pixels."""
        self._xdotool("mousemove", "--window", window, str(x), str(y), "click", "1")

    def pixels(self, window, x, y, width, height):
        """What a part of a window shows: rows of pixels, each with blue, green and red from 0 to 255."""
        geometry = self._xdotool("getwindowgeometry", "--shell", window)
        left, top = (int(re.search(rf"^{side}=(-?\d+)$", geometry, re.MULTILINE).group(1)) for side in "XY")
        # The screen is a file in the format of the X window dump: a header of big-endian words, which counts its own
        # bytes (0), those of a row (12) and the colours (19, of 12 bytes each) before the picture.
        screen = (pathlib.Path(self._folder) / "Xvfb_screen0").read_bytes()
        head = np.frombuffer(screen[:100], ">u4")
        rows = np.frombuffer(screen[head[0] + 12 * head[19] :], np.uint8)
        rows = rows[: len(rows) // head[12] * head[12]].reshape(-1, head[12] // 4, 4)
        return rows[top + y : top + y + height, left + x : left + x + width, :3]

    def click_at(self, x, y):
        """At a place of the screen, in pixels; whichever window lies there."""
        self._xdotool("mousemove", str(x), str(y), "click", "1")

    def active(self):
        """The window that has the focus."""
        return self._xdotool("getactivewindow").strip()

    def place(self, window):
        """Left, top, width and height in pixels."""
        told = dict(line.split("=") for line in self._xdotool("getwindowgeometry", "--shell", window).split())
        return tuple(int(told[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def type(self, text):
        self._xdotool("type", "--delay", "20", text)

    def _activated(self, window):
        if self._xdotool("getactivewindow").strip() == window:
            return True
        self._xdotool("windowactivate", window)
        return False

    def _xdotool(self, *words):
        done = subprocess.run(["xdotool", *words], env=os.environ | {"DISPLAY": self.display},
                              capture_output=True, text=True, timeout=20)
        return done.stdout

    def _start(self, *command, fds=()):
        display = {"DISPLAY": self.display} if command[0] != "Xvfb" else {}
        self._processes.append(subprocess.Popen(
            command, env=os.environ | {"HOME": self._folder} | display, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, pass_fds=fds))


class SoundDesk:
    """A sound server of the test's own. `speak` is what the microphone hears, `heard` what the loudspeaker plays."""

    def __init__(self):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="kelmio-e2e-"))
        self._played = bytearray()
        self._over = threading.Event()
        self._to_say = b""
        self._said = threading.Event()
        self._lock = threading.Lock()
        surroundings = {name: str(self._folder) for name in ("HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME")}
        shape = f"format=s16le rate={RATE} channels=1"
        self._server = subprocess.Popen(
            ["pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
             f"--load=module-pipe-sink sink_name=speaker {shape} use_system_clock_for_timing=yes file={self._folder}/out",
             f"--load=module-pipe-source source_name=microphone {shape} file={self._folder}/in",
             f"--load=module-native-protocol-unix auth-anonymous=1 socket={self._folder}/socket"],
            env=os.environ | surroundings, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        eventually(lambda: all((self._folder / name).exists() for name in ("out", "in", "socket")), "a sound server")
        self._threads = [threading.Thread(target=work, daemon=True) for work in (self._hear, self._speak)]
        for thread in self._threads:
            thread.start()

    def environment(self):
        return {"PULSE_SERVER": f"unix:{self._folder}/socket"}

    def close(self):
        self._over.set()
        for thread in self._threads:
            thread.join(2)
        self._server.kill()
        self._server.wait()
        shutil.rmtree(self._folder, ignore_errors=True)

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
        pipe = os.open(self._folder / "out", os.O_RDONLY | os.O_NONBLOCK)
        while not self._over.wait(0.01):
            try:
                self._played += os.read(pipe, 65536)
            except BlockingIOError:
                pass
        os.close(pipe)

    def _speak(self):
        """A microphone gives sound at its own pace, silence where nobody speaks."""
        pipe = os.open(self._folder / "in", os.O_WRONLY)
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

"""The real program, started with no display and a home of its own, and what it leaves on disk."""
import configparser
import contextlib
import os
import pathlib
import random
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import threading
import time
import unittest

import sound

WAITING = "Waiting for a call"
RECORDING = "Recording call..."

PROGRAM = os.environ.get("KELMIO_PROGRAM") or pathlib.Path(__file__).parents[2] / "build/release/bin/kelmio"


def eventually(condition, what, timeout=15):
    """The first true value of `condition`, which is asked again and again."""
    end = time.monotonic() + timeout
    while not (value := condition()):
        assert time.monotonic() < end, f"{what}: not within {timeout} s"
        time.sleep(0.02)
    return value


def free_port():
    """A port of the loopback that neither UDP nor TCP uses, below those that the system hands out by itself."""
    while True:
        address = ("127.0.0.1", random.randrange(20000, 32000, 2))
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp, socket.socket() as tcp:
            try:
                udp.bind(address)
                tcp.bind(address)
            except OSError:
                continue
            return address[1]


def read_ini(path):
    """Sections in the order of the file, each with its keys in order."""
    ini = configparser.RawConfigParser(delimiters="=", strict=False)
    ini.optionxform = str
    ini.read(path, encoding="utf-8")
    return {section: dict(ini[section]) for section in ini.sections()}


class Beside(contextlib.ExitStack):
    """Programs beside the one that is tested, and a folder for them, which all end with it."""

    def __init__(self):
        super().__init__()
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kelmio-e2e-"))
        self.callback(shutil.rmtree, self.folder, ignore_errors=True)

    def start(self, *command, **how):
        silent = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        process = subprocess.Popen(command, **silent | how)
        self.callback(self._end, process)
        return process

    @staticmethod
    def _end(process):
        process.terminate()
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
        for pipe in filter(None, (process.stdin, process.stdout)):
            pipe.close()


class Home(Beside):
    """A program's folder, settings and desktop configuration in a temporary place. `line` is text for its Lines.ini."""

    def __init__(self, settings=None, greeting=None, contacts="", line=""):
        super().__init__()
        self._line = line
        self.path = self.folder / "home"
        self.inbox = self.path / "Messages" / "Inbox"
        (self.path / "Sound").mkdir(parents=True)
        (self.folder / "config").mkdir()
        if greeting is not None:
            sound.write_wave(self.path / "Sound" / "Greeting.wav", greeting)
        if contacts:
            (self.path / "Contacts.ini").write_text(contacts, newline="\r\n")
        values = {"RecordingSilenceLength": 60000, "AutoAnswerRingCount": 2, "AutoStart": 0} | (settings or {})
        lines = "".join(f'"{name}"="{value}"\n' for name, value in values.items())
        (self.folder / "registry.reg").write_text(
            "Windows Registry Editor Version 5.00\n\n"
            f"[HKEY_LOCAL_MACHINE\\Software\\Ardelta\\Kelmio\\Settings]\n{lines}", newline="\r\n")

    remove = Beside.close

    def environment(self):
        return os.environ | {
            "KELMIO_HOME": str(self.path),
            "KELMIO_REGISTRY": str(self.folder / "registry.reg"),
            "XDG_CONFIG_HOME": str(self.folder / "config"),
            "QT_QPA_PLATFORM": "offscreen",
            "DBUS_SESSION_BUS_ADDRESS": "disabled:",  # calls of a test are no business of the desktop it runs on
            "LC_ALL": "C.UTF-8",
        }

    def set_line(self, port, ring_period):
        (self.path / "Lines.ini").write_text(
            f"[SIP]\nListen=127.0.0.1:{port}\nRingPeriod={ring_period}\n{self._line}", newline="\r\n")

    def setting(self, name):
        """A setting as it is stored; nothing for one that has its default."""
        text = (self.folder / "registry.reg").read_bytes().decode("utf-8", "replace")
        found = re.search(rf'^"{name}"="(.*)"\r?$', text, re.MULTILINE)
        return found.group(1) if found else None

    def messages(self):
        """The index of the inbox."""
        return read_ini(self.inbox / "Messages.ini")

    def complete_messages(self, count, timeout=15):
        """File names and records once there are `count` of them, all with their size filled in."""

        def complete():
            messages = self.messages()
            done = len(messages) >= count and all(int(m.get("Size", "-1")) > 0 for m in messages.values())
            return done and list(messages.items())

        found = eventually(complete, f"{count} complete messages", timeout)
        assert len(found) == count, f"{len(found)} messages, not {count}"
        return found

    def calls(self):
        """The log of calls: the fields of each entry."""
        return [value.split("|") for value in read_ini(self.path / "CallLog.ini").get("Calls", {}).values()]


class Program:
    """One run of the program on `home`. `log` is what it said, line by line.

    `surroundings` are variables of the environment beside those of the home, `within` is a command that runs another.
    """

    def __init__(self, home, ring_period=500, port=None, expect=WAITING, surroundings=None, within=()):
        self.home = home
        self.port = port or free_port()
        home.set_line(self.port, ring_period)
        self.log = []
        self._news = threading.Condition()
        self._process = subprocess.Popen(
            [*within, PROGRAM], env=home.environment() | (surroundings or {}), stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        try:
            self.wait_for_log(expect, timeout=30)
        except AssertionError:
            self.stop(signal.SIGKILL)
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    def mark(self):
        """A place in the log, for `wait_for_log` to look behind."""
        return len(self.log)

    def wait_for_log(self, text, since=0, timeout=20):
        def found():
            return any(text in line for line in self.log[since:])

        with self._news:
            told = self._news.wait_for(lambda: found() or self._process.poll() is not None, timeout)
        assert told and found(), f"no '{text}' in:\n" + "".join(self.log[since:])

    @property
    def pid(self):
        return self._process.pid

    def runs(self):
        return self._process.poll() is None

    def stop(self, how=signal.SIGTERM, timeout=30):
        """Ends the program; its exit status."""
        if self.runs():
            self._process.send_signal(how)
        try:
            status = self._process.wait(timeout)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
            raise AssertionError("the program does not end; its log:\n" + "".join(self.log)) from None
        self._reader.join(5)
        self._process.stderr.close()
        return status

    def _read(self):
        for line in self._process.stderr:
            with self._news:
                self.log.append(line.decode("utf-8", "replace"))
                self._news.notify_all()


class ProgramTestCase(unittest.TestCase):
    """Test cases that share one run of the program. `HOME` holds the arguments of its `Home`."""

    HOME = {}

    @classmethod
    def setUpClass(cls):
        cls.home = cls.enterClassContext(Home(**cls.HOME))
        cls.program = Program(cls.home)
        cls.addClassCleanup(cls._end)

    @classmethod
    def _end(cls):
        status = cls.program.stop()
        assert status == 0, f"exit status {status}; the log:\n" + "".join(cls.program.log)

    def setUp(self):
        self.assertTrue(self.program.runs(), "the program is gone:\n" + "".join(self.program.log))
        self.before = len(self.home.messages())
        self.mark = self.program.mark()

    def wait_for_log(self, text):
        """Of what was logged during this test case."""
        self.program.wait_for_log(text, self.mark)

    def new_message(self):
        """File name and record of the message that this test case has left, once it is complete."""
        self.before += 1
        name, record = self.home.complete_messages(self.before)[-1]
        # Two messages of one second bear one name, and the later one takes the place of the earlier.
        while time.strftime("%d%m%y%H%M%S") == name[3:15]:
            time.sleep(0.05)
        return name, record

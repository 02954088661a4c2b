"""The real program, started with no display and a home of its own, and what it leaves on disk."""
import os
import pathlib
import random
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import sound

WAITING = "Waiting for a call"
RECORDING = "Recording call..."

PROGRAM = os.environ.get("KELMIO_PROGRAM") or pathlib.Path(__file__).parents[2] / "build/release/bin/kelmio"

SKIPPED = 77  # SKIP_RETURN_CODE of the suite


def main():
    """Runs the test cases of the calling file; a file whose cases were all skipped says so to ctest."""
    result = unittest.main(exit=False, verbosity=2).result
    if result.wasSuccessful() and result.skipped and result.testsRun <= len(result.skipped):  # a whole class runs none
        sys.exit(SKIPPED)
    sys.exit(not result.wasSuccessful())


def eventually(condition, what, timeout=15):
    """The first true value of `condition`, which is asked again and again."""
    end = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        assert time.monotonic() < end, f"{what}: not within {timeout} s"
        time.sleep(0.02)


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
    sections = {}
    for line in path.read_bytes().decode("utf-8").splitlines() if path.exists() else ():
        if line.startswith("["):
            section = sections.setdefault(line[1 : line.index("]")], {})
        elif "=" in line:
            key, _, value = line.partition("=")
            section[key] = value
    return sections


class Home:
    """A program's folder, settings and desktop configuration in a temporary place."""

    def __init__(self, settings=None, greeting=None, contacts="", folder=None):
        self._folder = pathlib.Path(folder or tempfile.mkdtemp(prefix="kelmio-e2e-"))
        self.path = self._folder / "home"
        self.inbox = self.path / "Messages" / "Inbox"
        (self.path / "Sound").mkdir(parents=True)
        (self._folder / "config").mkdir()
        if greeting is not None:
            sound.write_wave(self.path / "Sound" / "Greeting.wav", greeting)
        if contacts:
            (self.path / "Contacts.ini").write_text(contacts, newline="\r\n")
        values = {"RecordingSilenceLength": 60000, "AutoAnswerRingCount": 2, "AutoStart": 0} | (settings or {})
        lines = "".join(f'"{name}"="{value}"\r\n' for name, value in values.items())
        (self._folder / "registry.reg").write_text(
            "Windows Registry Editor Version 5.00\r\n\r\n"
            f"[HKEY_LOCAL_MACHINE\\Software\\Ardelta\\Kelmio\\Settings]\r\n{lines}", newline="")

    def environment(self):
        return os.environ | {
            "KELMIO_HOME": str(self.path),
            "KELMIO_REGISTRY": str(self._folder / "registry.reg"),
            "XDG_CONFIG_HOME": str(self._folder / "config"),
            "QT_QPA_PLATFORM": "offscreen",
            "DBUS_SESSION_BUS_ADDRESS": "disabled:",  # calls of a test are no business of the desktop it runs on
            "LC_ALL": "C.UTF-8",
        }

    def remove(self):
        shutil.rmtree(self._folder, ignore_errors=True)

    def set_line(self, port, ring_period):
        (self.path / "Lines.ini").write_text(
            f"[SIP]\r\nListen=127.0.0.1:{port}\r\nRingPeriod={ring_period}\r\n", newline="")

    def setting(self, name):
        """A setting as it is stored; nothing for one that has its default."""
        text = (self._folder / "registry.reg").read_bytes().decode("utf-8", "replace")
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
            return list(messages.items()) if done else None

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
    RING_PERIOD = 500

    @classmethod
    def setUpClass(cls):
        cls.home = Home(**cls.HOME)
        cls.addClassCleanup(cls.home.remove)
        cls.program = Program(cls.home, cls.RING_PERIOD)
        cls.addClassCleanup(cls._end)

    @classmethod
    def _end(cls):
        if cls.program.runs():
            status = cls.program.stop()
            assert status == 0, f"exit status {status}; the log:\n" + "".join(cls.program.log)
        else:
            cls.program.stop()

    def setUp(self):
        self.assertTrue(self.program.runs(), "the program is gone:\n" + "".join(self.program.log))
        self.before = len(self.home.messages())
        self.mark = self.program.mark()

    def wait_for_log(self, text, timeout=20):
        """Of what was logged during this test case."""
        self.program.wait_for_log(text, self.mark, timeout)

    def new_message(self):
        """File name and record of the message that this test case has left, once it is complete."""
        name, record = self.home.complete_messages(self.before + 1)[-1]
        self._not_in_the_second_of_another(name)
        return name, record

    @staticmethod
    def _not_in_the_second_of_another(name):
        # Two messages of one second bear one name, and the later one takes the place of the earlier.
        while time.strftime("%d%m%y%H%M%S") == name[3:15]:
            time.sleep(0.05)

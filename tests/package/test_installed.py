"""Installs the build into a folder of its own, has Debian's checkers read what the desktop will, and runs it there."""
import configparser
import os
import pathlib
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
NOBODY = 65534


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="kelmio-package-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, True)
        cls.folder.chmod(0o755)
        cls.root = cls.folder / "root"
        subprocess.run([os.environ["KELMIO_CMAKE"], "--install", os.environ["KELMIO_BUILD"], "--strip", "--prefix",
                        cls.root], check=True, stdout=subprocess.DEVNULL)
        cls.share = cls.root / "share"
        cls.entry = cls.share / "applications" / "kelmio.desktop"

    def assert_passes(self, *command, **variables):
        variables = os.environ | {"LC_ALL": "C.UTF-8"} | variables
        done = subprocess.run(command, capture_output=True, text=True, env=variables)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done

    def test_the_checkers_have_nothing_to_say(self):
        told = self.assert_passes("desktop-file-validate", self.entry)
        self.assertEqual(told.stdout + told.stderr, "")
        told = self.assert_passes("appstreamcli", "validate", "--no-net", "--pedantic", "--no-color",
                                  *self.share.glob("metainfo/*"))
        self.assertNotRegex(told.stdout + told.stderr, r"(?m)^[EWIP]: ")
        pages = list(self.share.glob("man/man1/*.1"))
        self.assertTrue(pages)
        for page in pages:
            told = self.assert_passes("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", page)
            self.assertEqual(told.stderr, "")

    def test_the_entry_names_what_is_installed(self):
        entry = configparser.ConfigParser(interpolation=None)
        entry.read(self.entry)
        entry = entry["Desktop Entry"]
        self.assertTrue(os.access(self.root / "bin" / entry["Exec"], os.X_OK))
        self.assertIn(f'setDesktopFileName("{self.entry.stem}")', (TOP / "src/app/main.cpp").read_text())
        for size in (16, 22, 24, 32, 48, 64, 128, 256, 512):
            picture = self.share / f"icons/hicolor/{size}x{size}/apps/{entry['Icon']}.png"
            head = picture.read_bytes()[:24]
            self.assertEqual(struct.unpack(">II", head[16:]), (size, size), picture)
        self.assertTrue((self.share / f"icons/hicolor/scalable/apps/{entry['Icon']}.svg").exists())

    def test_one_version_everywhere(self):
        version = re.search(r"project\(kelmio VERSION (\S+)", (TOP / "CMakeLists.txt").read_text()).group(1)
        for file, pattern in ((TOP / "debian/changelog", r"kelmio \((.*?)\)"),
                              (self.share / "metainfo/org.example.kelmio.metainfo.xml", r'<release version="(.*?)"'),
                              (self.share / "man/man1/kelmio.1", r'"Kelmio (.*?)"')):
            self.assertEqual(re.search(pattern, file.read_text()).group(1), version, file)

    def test_runs_for_a_user_who_has_nothing_but_a_home(self):
        home = self.folder / "home"
        home.mkdir()
        # The user may not write beside the program, as in a folder of the system.
        (self.root / "bin").chmod(0o555)
        self.addCleanup((self.root / "bin").chmod, 0o755)
        become = []
        if os.geteuid() == 0:
            os.chown(home, NOBODY, NOBODY)
            become = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"]
        program = subprocess.Popen(
            [*become, self.root / "bin/kelmio"], cwd="/", stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.PIPE, text=True,
            env={"HOME": str(home), "PATH": "/usr/bin:/bin", "QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8"})
        guard = threading.Timer(30, program.kill)
        guard.start()
        try:
            told = ""
            for line in program.stderr:
                told += line
                if " Line: " in line:  # open, or closed where the port is another program's
                    break
            program.send_signal(signal.SIGTERM)
            self.assertEqual(program.wait(), 0, told)
        finally:
            guard.cancel()
            program.kill()
            program.wait()
            program.stderr.close()
        made = {str(path.relative_to(home)) for path in home.rglob("*") if path.is_file()}
        places = (".local/share/kelmio/", ".config/kelmio/", ".config/autostart/", ".cache/")
        stray = {path for path in made if not path.startswith(places)}
        self.assertIn(".local/share/kelmio/Lines.ini", made, told)
        self.assertEqual(stray, set())

    def test_knows_nothing_of_the_build(self):
        program = (self.root / "bin/kelmio").read_bytes()
        for path in (os.environ["KELMIO_BUILD"], str(TOP / "src")):
            self.assertFalse(path.encode() + b"/" in program, f"{path} is in the program")

    def test_imports_with_the_helper_that_came_along(self):
        self.assertFalse((self.root / "bin/kelmio-address-books").exists())
        self.assert_passes(sys.executable, "-B", TOP / "tests/e2e/run.py", "test_newcomer",
                           KELMIO_PROGRAM=str(self.root / "bin/kelmio"))


if __name__ == "__main__":
    unittest.main(verbosity=2)

"""The checker of the includes finds what it is there for."""
import pathlib
import tempfile
import unittest

from check_includes import faults_of_tree

# A file, and one include of it that must not be. What may be is told by the tree itself.
BROKEN = (
    ("core/settings.cpp", '"telephony/call.h"'),
    ("telephony/tapi_control/line.h", '"telephony/call.h"'),
    ("messages/list.cpp", '"contacts/editor.h"'),
    ("drivers/sip/line.cpp", '"drivers/voice_modem/modem.h"'),
    ("drivers/lines_ini.h", '"drivers/sip/line.h"'),
    ("fakes/line.h", '"shell/frmMain.h"'),
    ("shell/frmMain.cpp", '"fakes/line.h"'),
    ("shell/frmMain.cpp", "<QString>"),
    ("shell/frmMain.cpp", "<QtCore/QString>"),
    ("core/settings.cpp", "  # include <re/re.h>"),
    ("telephony/call.cpp", '"sndfile.h"'),
    ("core/settings.cpp", '"mIni.h"'),
    ("address_books/books.cpp", "<glib.h>"),
    ("attic/old.cpp", "<vector>"),
)


def faults(path, include):
    with tempfile.TemporaryDirectory() as top:
        file = pathlib.Path(top, path)
        file.parent.mkdir(parents=True)
        line = include if "include" in include else f"#include {include}"
        file.write_text(f"// A file.\n#include <string>\n{line}\n")
        return faults_of_tree(pathlib.Path(top))


class Checker(unittest.TestCase):
    def test_finds_each_kind_of_fault_at_its_line(self):
        for path, include in BROKEN:
            found = faults(path, include)
            self.assertTrue(found, (path, include))
            self.assertTrue(found[0].startswith(path), found)
            self.assertTrue(path.startswith("attic") or found[0].startswith(path + ":3:"), found)


if __name__ == "__main__":
    unittest.main()

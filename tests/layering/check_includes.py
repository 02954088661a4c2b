"""Walks the #include lines of a source tree and names every one that breaks the order of the house.

A folder stands on a level and includes only what lies below it; a library's headers stay in the folders made for it.
`check_includes.py SRC` prints the faults and fails when there are any.
"""
import pathlib
import re
import sys

# From the ground up; the folders of one line stand beside each other and don't include one another.
LEVELS = (
    ("platform",),
    ("controls",),
    ("core",),
    ("telephony/tapi_control",),
    ("drivers", "media", "address_books", "address_books/readers"),
    ("fakes",),  # stand-ins in memory, which only tests include
    ("messages/store", "contacts/store", "calls/log"),
    ("telephony",),
    ("messages", "contacts", "calls", "settings_ui"),
    ("shell",),
    ("qt",),
    ("app",),
)
LEVEL = {folder: level for level, folders in enumerate(LEVELS) for folder in folders}

# A kind of driver may use what all drivers share, and no other kind.
DRIVERS = re.compile(r"drivers/\w+$")

LIBRARIES = (
    ("Qt", re.compile(r"Qt?[A-Z]\w*(/.*)?$|ui_\w+\.h$|.*\.moc$"), ("qt", "app")),
    ("libre", re.compile(r"re(/|\.h|_)"), ("drivers/sip",)),
    ("OpenSSL", re.compile(r"openssl/"), ("drivers/sip",)),
    ("a sound library", re.compile(r"(sndfile|spandsp|samplerate|soxr|opus)\b"), ("media", "drivers/sip", "drivers/voice_modem")),
    ("the echo canceller", re.compile(r"webrtc/"), ("media",)),
    ("the sound system", re.compile(r"(pulse|alsa)/"), ("media",)),
    ("a library for address books", re.compile(r"(libebook|libebook-contacts|libedataserver)/|csv\.h"),
     ("address_books/readers",)),
    ("GLib", re.compile(r"(glib|gio|gobject)(/|\.h|-)"), ("address_books/readers",)),
    ("X11 or D-Bus", re.compile(r"(X11|xcb|dbus)/"), ("qt", "app")),
)

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def folder_of(path):
    """The folder that stands on a level (or a kind of driver), the longest that `path` lies in."""
    parts = path.split("/")[:-1]
    for count in range(len(parts), 0, -1):
        folder = "/".join(parts[:count])
        if folder in LEVEL or DRIVERS.match(folder):
            return folder
    return None


def may_include(folder, other):
    if folder in (other, "app") or (other == "drivers" and DRIVERS.match(folder)):
        return True
    level, other_level = (LEVEL.get(each, LEVEL["drivers"]) for each in (folder, other))
    return other != "fakes" and other_level < level


def faults_of(source, path, tree):
    """What is wrong with the includes of `source`, the text of the file `path` in the folders of `tree`."""
    faults = []
    folder = folder_of(path)
    if folder is None:
        return [f"{path}: stands in no folder that has a level"]
    for number, line in enumerate(source.splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        header = match.group(2)
        where = f"{path}:{number}: {header}"
        if header.split("/")[0] in tree:
            other = folder_of(header)
            if other is None or not may_include(folder, other):
                faults.append(f"{where}: {folder} must not include {other or 'it'}")
            continue
        for library, pattern, homes in LIBRARIES:
            if pattern.match(header) and folder not in homes:
                faults.append(f"{where}: {library} belongs in {' and '.join(homes)} only")
        if match.group(1) == '"' and "/" not in header and not header.startswith("ui_") and not header.endswith(".moc"):
            faults.append(f"{where}: our own headers are named from the top of the tree")
    return faults


def faults_of_tree(top):
    tree = {folder.split("/")[0] for folder in LEVEL}
    faults = []
    for path in sorted(p for p in top.rglob("*") if p.suffix in (".h", ".cpp")):
        faults += faults_of(path.read_text(encoding="utf-8"), path.relative_to(top).as_posix(), tree)
    return faults


if __name__ == "__main__":
    found = faults_of_tree(pathlib.Path(sys.argv[1]))
    print("\n".join(found) or "Every include runs downwards.")
    sys.exit(1 if found else 0)

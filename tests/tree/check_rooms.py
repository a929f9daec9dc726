"""The order of the rooms: no file includes a header of a room above its own. Exit 1 names each breach."""
import pathlib
import re
import sys

ORDER = ["common", "sensors", "link", "protocol", "data", "graph", "persistence", "resources", "instruments",
         "online", "firmware", "classroom", "simulation", "setup", "app", "web"]
# Rooms on one level do not know each other.
LEVELS = {"common": 0, "sensors": 1, "link": 1, "protocol": 2, "data": 3, "graph": 4, "persistence": 5,
          "resources": 5, "instruments": 5, "online": 5, "firmware": 3, "classroom": 6, "simulation": 6, "setup": 7, "app": 8, "web": 6}
# A plug-in, which has no code of another room in it: only the header that both sides know.
WEB_MAY_USE = "instruments/pageengine.h"
VIRTUAL_MAY_USE = {"virtual", "common", "sensors"}


def room_of(path):
    return max((room for room in ORDER + ["virtual"] if path.startswith(room + "/")), key=len, default=None)


def breaches(root):
    for file in sorted(root.rglob("*")):
        name = file.relative_to(root).as_posix()
        own = room_of(name)
        if own is None or file.suffix not in (".h", ".cpp"):
            continue
        for line, text in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            match = re.match(r'\s*#include\s+"([^"]+)"', text)
            other = room_of(match.group(1)) if match else None
            if other is None or other == own:
                continue
            if own == "virtual":
                allowed = other in VIRTUAL_MAY_USE
            elif own == "web" or other == "web":
                allowed = own == "web" and match.group(1) == WEB_MAY_USE
            else:
                allowed = other != "virtual" and LEVELS[other] < LEVELS[own]
            if not allowed:
                yield f"{name}:{line}: {own} must not include {match.group(1)}"


if __name__ == "__main__":
    found = list(breaches(pathlib.Path(sys.argv[1])))
    print("\n".join(found))
    sys.exit(1 if found else 0)

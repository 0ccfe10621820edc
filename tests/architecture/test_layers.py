#!/usr/bin/env python3
"""Every include of another subsystem's header follows a DEPENDS line of the
including folder's CMakeLists.txt, and no core folder uses Qt's GUI modules."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
LIBRARY = re.compile(r"kestrun_library\(\s*(\w+)(.*?)\)", re.S)
INCLUDE = re.compile(r'^#include "(\w+)/', re.M)
GUI = re.compile(r"^#include <(Qt(Gui|Widgets)/|Q(Widget|Painter|Font|Color|Pixmap|Icon|Application)\b)", re.M)


def folders(layer):
    """Folder name -> names of the folders of its layer it may include."""
    found = {}
    for cmake in sorted((ROOT / "src" / layer).glob("*/CMakeLists.txt")):
        match = LIBRARY.search(cmake.read_text())
        deps = match.group(2).split("DEPENDS", 1)[1].split() if match and "DEPENDS" in match.group(2) else []
        found[cmake.parent.name] = {d.removeprefix("kestrun_") for d in deps if d.startswith("kestrun_")}
    return found


def main():
    problems = []
    core = folders("core")
    ui = folders("ui")
    for layer, table in (("core", core), ("ui", ui)):
        for folder, allowed in table.items():
            for source in sorted((ROOT / "src" / layer / folder).glob("*.[hc]*")):
                text = source.read_text()
                for used in INCLUDE.findall(text):
                    # The interface may use any core folder; within a layer only what DEPENDS names.
                    ok = used == folder or used in allowed or (layer == "ui" and used in core)
                    if not ok:
                        problems.append(f"{source.relative_to(ROOT)} includes {used}/ but DEPENDS does not name it")
                if layer == "core" and GUI.search(text):
                    problems.append(f"{source.relative_to(ROOT)} uses a GUI header")
    for problem in problems:
        print(problem)
    print(f"{len(core)} core and {len(ui)} interface folders checked, {len(problems)} problem(s)")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

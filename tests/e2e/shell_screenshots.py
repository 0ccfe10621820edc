#!/usr/bin/env python3
"""Pictures of the application shell for docs/screenshots/: the home screen
fresh and part-way through, the sidebar with a module open, the settings
window, and the guidance when no Swift toolchain can be found.

    scripts/screenshots [OUTPUT_DIR]"""
import datetime
import json
import pathlib
import sys
import time

from desktop import ROOT, Session, wait_for

PROGRAM = ROOT / "build" / "src" / "kestrun"


def main():
    out = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "docs" / "screenshots")
    course = json.loads((ROOT / "Resources" / "course.json").read_text(encoding="utf-8"))
    lessons = [lesson for chapter in course["chapters"] for module in chapter["modules"] for lesson in module["lessons"]]

    with Session(PROGRAM, screenshots_mode=True) as session:
        session.wait(role="label", contains="on this computer")
        session.screenshot(out / "home-fresh.png")

        module = session.wait(role="table cell", name=course["chapters"][0]["modules"][1]["title"])
        session.click(module)
        lesson = session.wait(role="table cell", name=course["chapters"][0]["modules"][1]["lessons"][2]["title"])
        session.click(lesson)
        time.sleep(0.5)
        session.screenshot(out / "sidebar-module-open.png")

        session.key("ctrl+comma")
        settings = session.wait(role="dialog", name="Settings")
        time.sleep(0.5)
        session.screenshot(out / "settings.png", settings)

    # Part-way: the first module done and a few lessons further on.
    now = datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
    done = {lesson["id"]: now for lesson in lessons[:9]}
    done[lessons[10]["id"]] = now
    session = Session(PROGRAM, screenshots_mode=True)
    session.write_progress({"code": {}, "done": done, "ticks": {}})
    with session:
        session.wait(role="label", contains="lessons done")
        session.screenshot(out / "home-progress.png")

    # No toolchain: /opt, where Swift is installed here, hidden by a sandbox.
    with Session(PROGRAM, wrap=["bwrap", "--dev-bind", "/", "/", "--tmpfs", "/opt", "--"], screenshots_mode=True) as session:
        session.wait(role="label", contains="has no Swift compiler yet")
        session.screenshot(out / "no-toolchain.png")
    print(f"Wrote the shell's screenshots to {out}")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Goes through the preferences of the example host as a screen reader does:

    preferences_accessibility.py PROGRAM     PROGRAM is the example host

Ends with 1 and says what was otherwise than it should be.
"""
import os
import pathlib
import plistlib
import subprocess
import sys
import tempfile

import pyatspi

import accessibility as at

BOXES = {
    "Close the window when it is left": True,
    "Ask before a snippet is removed": True,
    "Reduce motion": False,
    "Start when a session begins": False,
    "Write a log, from the next start on": False,
}


def window_named(root, name):
    return at.wait_for(
        f"window {name!r}",
        lambda: next((each for each in root if each.name == name and at.has(each, pyatspi.STATE_SHOWING)), None),
    )


def open_preferences(root):
    at.wait_for(
        "active window of the program",
        lambda: next((each for each in root if at.has(each, pyatspi.STATE_ACTIVE)), None),
    )
    subprocess.run(["xdotool", "key", "ctrl+comma"], check=True)
    return window_named(root, "Preferences")


def check_boxes(preferences, home):
    for name, is_on in BOXES.items():
        box = at.find(preferences, "check box", name)
        usable = {pyatspi.STATE_ENABLED: True, pyatspi.STATE_FOCUSABLE: True, pyatspi.STATE_SHOWING: True}
        at.expect_states(box, usable | {pyatspi.STATE_CHECKED: is_on})
        at.press(box)
        at.wait_for(f"{name!r} {not is_on}", lambda: at.has(box, pyatspi.STATE_CHECKED) != is_on)
    entry = home / "config" / "autostart" / "org.vxkit.Snippets.desktop"
    at.expect("the file that starts the program", True, entry.is_file() and "--background" in entry.read_text())


def check_opacity(preferences, home):
    slider = at.find(preferences, "slider", "Opacity of the window")
    # The window no longer closes when it is left.
    at.wait_for("slider that can be moved", lambda: at.has(slider, pyatspi.STATE_ENABLED))
    value = slider.queryValue()
    at.expect("the range of the opacity", (50, 100), (value.minimumValue, value.maximumValue))
    at.expect("the opacity", 100, value.currentValue)
    value.currentValue = 70
    at.find(preferences, "label", "70 %")

    def kept():
        with open(home / "config" / "snippets" / "snippets.plist", "rb") as file:
            return plistlib.load(file).get("SnippetsWindowOpacity")

    at.wait_for("opacity in the user defaults", lambda: kept() is not None and abs(kept() - 0.7) < 1e-9)


def check_pages(preferences):
    for page, role, name in (("Sync", "text", "Address"), ("Database", "push button", "Use Standard Database")):
        at.press(at.find(preferences, "page tab", page))
        control = at.find(preferences, role, name)
        at.wait_for(f"page {page!r}", lambda: at.has(control, pyatspi.STATE_SHOWING))


def main():
    with tempfile.TemporaryDirectory() as folder:
        home = pathlib.Path(folder)
        os.environ["HOME"] = folder
        os.environ["XDG_CONFIG_HOME"] = str(home / "config")
        program = at.Program(sys.argv[1])
        try:
            root = at.wait_for("program on the accessibility bus", lambda: at.application("snippets"))
            preferences = open_preferences(root)
            check_boxes(preferences, home)
            check_opacity(preferences, home)
            check_pages(preferences)
            at.press(at.find(preferences, "push button", "Done"))
            at.expect("the running program", None, program.process.poll())
        finally:
            program.end()
    if at.failures:
        sys.exit("\n".join(at.failures))


main()

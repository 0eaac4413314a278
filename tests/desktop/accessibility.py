#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Works with the controls of a program through the accessibility bus, as a screen reader does:

    accessibility.py PROGRAM     PROGRAM is the one made of ControlsProgram.cpp

Ends with 1 and says what was otherwise than it should be.
"""
import subprocess
import sys
import threading
import time

import gi

gi.require_version("Atspi", "2.0")
import pyatspi
from gi.repository import Atspi, GLib

SECONDS_TO_WAIT = 10
NAME = "controls-program"

failures = []


def expect(what, wanted, got):
    if wanted != got:
        failures.append(f"{what}: expected {wanted!r}, got {got!r}")


def wait_for(what, condition):
    """What `condition` answers as soon as that is something; whoever is asked may be gone or not there yet."""
    deadline = time.monotonic() + SECONDS_TO_WAIT
    while time.monotonic() < deadline:
        try:
            result = condition()
        except (GLib.Error, LookupError, NotImplementedError, RuntimeError):
            result = None
        if result:
            return result
        time.sleep(0.02)
    sys.exit("\n".join([*failures, f"in {SECONDS_TO_WAIT} seconds: no {what}"]))


class Program:
    """The program, and the lines that it has told."""

    def __init__(self, path):
        self.process = subprocess.Popen([path], stdout=subprocess.PIPE, text=True)
        self.lines = []
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self.process.stdout:
            self.lines.append(line.rstrip("\n"))

    def await_line(self, line):
        wait_for(f"line {line!r} of the program (it told {self.lines})", lambda: line in self.lines)

    def end(self):
        self.process.terminate()
        self.process.wait()


def application(name=NAME):
    for each in pyatspi.Registry.getDesktop(0):
        if each and each.name == name:
            # Nothing remembered: all answers are the program's own, and new.
            each.set_cache_mask(Atspi.Cache.NONE)
            return each
    return None


def descendants(accessible):
    for child in accessible:
        if child:
            yield child
            yield from descendants(child)


def find(root, role, name):
    return wait_for(
        f"{role} named {name!r}",
        lambda: next((each for each in descendants(root) if each.getRoleName() == role and each.name == name), None),
    )


def has(accessible, state):
    return accessible.getState().contains(state)


def expect_states(accessible, wanted):
    for state, value in wanted.items():
        expect(f"{accessible.name}: {pyatspi.stateToString(state)}", value, has(accessible, state))


def press(accessible):
    actions = accessible.queryAction()
    names = [actions.getName(index) for index in range(actions.nActions)]
    for name in ("Press", "Toggle"):
        if name in names:
            actions.doAction(names.index(name))
            return
    failures.append(f"{accessible.name}: cannot be pressed, only {names}")


def check_buttons(program, window):
    usable = {
        pyatspi.STATE_ENABLED: True,
        pyatspi.STATE_SENSITIVE: True,
        pyatspi.STATE_FOCUSABLE: True,
        pyatspi.STATE_VISIBLE: True,
        pyatspi.STATE_SHOWING: True,
    }
    for name in ("Push", "Flat"):
        button = find(window, "push button", name)
        expect_states(button, usable | {pyatspi.STATE_CHECKED: False})
        press(button)
        program.await_line(f"pressed {name}")
    expect_states(
        find(window, "push button", "Unavailable"),
        {pyatspi.STATE_ENABLED: False, pyatspi.STATE_SENSITIVE: False, pyatspi.STATE_SHOWING: True},
    )

    box = find(window, "check box", "Check")
    expect_states(box, usable | {pyatspi.STATE_CHECKED: False})
    press(box)
    program.await_line("turned Check on")
    wait_for("checked box", lambda: has(box, pyatspi.STATE_CHECKED))
    press(box)
    program.await_line("turned Check off")
    wait_for("unchecked box", lambda: not has(box, pyatspi.STATE_CHECKED))

    daily = find(window, "radio button", "Daily")
    weekly = find(window, "radio button", "Weekly")
    expect_states(daily, usable | {pyatspi.STATE_CHECKED: True})
    expect_states(weekly, usable | {pyatspi.STATE_CHECKED: False})
    press(weekly)
    program.await_line("turned Weekly on")
    wait_for("other radio button", lambda: has(weekly, pyatspi.STATE_CHECKED))
    wait_for("end of the first radio button", lambda: not has(daily, pyatspi.STATE_CHECKED))


def content(field):
    return field.queryText().getText(0, -1)


def check_fields(program, window):
    editable = {pyatspi.STATE_EDITABLE: True, pyatspi.STATE_FOCUSABLE: True}
    field = find(window, "text", "Name of the snippet")
    expect_states(field, editable | {pyatspi.STATE_ENABLED: True})
    expect("the description of the field", "What it will be called", field.description)
    expect("the content of the field", "", content(field))
    editing = field.queryEditableText()
    editing.setTextContents("Address\nof the office")
    program.await_line("text Address of the office")
    expect("a text with a line break", "Address of the office", content(field))
    editing.insertText(0, "New\r\n", len("New\r\n"))
    program.await_line("text New Address of the office")
    editing.deleteText(0, len("New "))
    wait_for("deleted part", lambda: content(field) == "Address of the office")
    editing.setTextContents("")
    wait_for("empty field", lambda: not content(field))
    field.queryComponent().grabFocus()
    wait_for("focused field", lambda: has(field, pyatspi.STATE_FOCUSED))

    password = find(window, "password text", "Password")
    expect_states(password, editable)
    expect("the length of the password", len("sesame"), password.queryText().characterCount)
    if set(content(password)) & set("sesame"):
        failures.append(f"the password can be read: {content(password)!r}")
    password.queryEditableText().setTextContents("open\nup")
    wait_for("new password", lambda: password.queryText().characterCount == len("open up"))

    find(window, "label", "A text that can be selected")


def check_alert(program, root):
    press(find(find(root, "frame", "Controls"), "push button", "Ask"))
    alert = find(root, "dialog", "Remove “Address”?")
    expect("the description of the alert", "It cannot be brought back.", alert.description)
    expect_states(alert, {pyatspi.STATE_MODAL: True})
    find(alert, "label", "Remove “Address”?")
    find(alert, "label", "It cannot be brought back.")
    wait_for("active alert", lambda: has(alert, pyatspi.STATE_ACTIVE))
    find(alert, "push button", "Cancel")
    box = find(alert, "check box", "Do not ask again")
    press(box)
    wait_for("checked box of the alert", lambda: has(box, pyatspi.STATE_CHECKED))
    press(find(alert, "push button", "Remove"))
    program.await_line("answer 1, not again 1")
    wait_for(
        "end of the alert",
        lambda: not any(each.getRoleName() == "dialog" and has(each, pyatspi.STATE_SHOWING) for each in root),
    )


def check_reporter(program, root):
    press(find(find(root, "frame", "Controls"), "push button", "Report"))
    reporter = find(root, "dialog", "Problem Report")
    expect_states(reporter, {pyatspi.STATE_MODAL: True})
    words = find(reporter, "text", "What did you do when it happened?")
    expect_states(words, {pyatspi.STATE_EDITABLE: True, pyatspi.STATE_MULTI_LINE: True})
    find(reporter, "text", "Your e-mail address").queryEditableText().setTextContents("me@example.org")
    sent = find(reporter, "text", "What is sent besides")
    expect_states(sent, {pyatspi.STATE_EDITABLE: False, pyatspi.STATE_FOCUSABLE: True})
    if "There is no such snippet" not in content(sent):
        failures.append(f"what is sent does not tell the reason: {content(sent)!r}")
    expect_states(find(reporter, "push button", "Send Report"), {pyatspi.STATE_ENABLED: False})
    for name in ("Quit", "Copy"):
        find(reporter, "push button", name)
    press(find(reporter, "push button", "Ignore"))
    program.await_line("reported")


def main():
    program = Program(sys.argv[1])
    try:
        root = wait_for("program on the accessibility bus", application)
        window = find(root, "frame", "Controls")
        check_buttons(program, window)
        check_fields(program, window)
        check_alert(program, root)
        check_reporter(program, root)
        expect("the running program", None, program.process.poll())
    finally:
        program.end()
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()

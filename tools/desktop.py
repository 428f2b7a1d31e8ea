"""Drives the program on a real desktop, against the sandbox platform. Elements are found by their accessible names."""
import json
import os
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

TIME_LIMIT = 20  # seconds
BUTTON = Atspi.Role.PUSH_BUTTON
ENTRY = Atspi.Role.MENU_ITEM
LIST = Atspi.Role.LIST
ROW = Atspi.Role.LIST_ITEM
FOCUSED = Atspi.StateType.FOCUSED
SELECTED = Atspi.StateType.SELECTED


def until(what, probe, limit=TIME_LIMIT):
    """Waits until `probe` returns something true, and returns it."""
    end = time.monotonic() + limit
    while time.monotonic() < end:
        try:
            found = probe()
        except Exception:  # the tree changes while it is read
            found = None
        if found:
            return found
        time.sleep(0.05)
    sys.exit(f"timed out while waiting for: {what}")


def elements(node):
    """All accessible elements below `node`."""
    node.clear_cache()
    yield node
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is not None:
            yield from elements(child)


def has(element, state):
    return element.get_state_set().contains(state)


def showing(element):
    return has(element, Atspi.StateType.SHOWING)


def keys(*names):
    subprocess.run(["xdotool", "key", *names], check=True)


def words(text):
    subprocess.run(["xdotool", "type", "--delay", "20", text], check=True)


def descendants(process):
    """The ids of the processes below `process`, with their command lines."""
    parents, commands = {}, {}
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{pid}/stat", encoding="utf8", errors="replace") as stat:
                parents[int(pid)] = int(stat.read().rpartition(")")[2].split()[1])
            with open(f"/proc/{pid}/cmdline", encoding="utf8", errors="replace") as command:
                commands[int(pid)] = command.read().replace("\0", " ")
        except OSError:  # the process has ended meanwhile
            continue
    found, generation = {}, {process.pid}
    while generation:
        generation = {pid for pid, parent in parents.items() if parent in generation and pid in commands}
        found.update((pid, commands[pid]) for pid in generation)
    return found


def mounted(path):
    with open("/proc/self/mountinfo", encoding="utf8") as table:
        return any(line.split()[4].replace("\\040", " ") == path for line in table)


def choose_browser(identity):
    """Makes the desktop's browser one that chooses `identity` on the sign-in page."""
    applications = os.path.join(os.environ["XDG_DATA_HOME"], "applications")
    os.makedirs(applications, exist_ok=True)
    browser = os.path.join(os.environ["HOME"], "browser")  # desktop entries take no blanks in a program's path
    with open(browser, "w", encoding="utf8") as script:
        script.write('#!/usr/bin/env python3\nimport sys, urllib.request\n'
                     f'print(urllib.request.urlopen(sys.argv[1] + "&identity={identity}").read().decode())\n')
    os.chmod(browser, 0o700)
    with open(os.path.join(applications, "story.desktop"), "w", encoding="utf8") as entry:
        entry.write(f"[Desktop Entry]\nType=Application\nName=Story\nExec={browser} %u\n"
                    "MimeType=x-scheme-handler/http;x-scheme-handler/https;\n")
    with open(os.path.join(os.environ["XDG_CONFIG_HOME"], "mimeapps.list"), "w", encoding="utf8") as defaults:
        defaults.write("[Default Applications]\nx-scheme-handler/http=story.desktop\n")


class Platform:
    """The sandbox; ends with `close`."""

    def __init__(self, program, folder, *arguments):
        self.process = subprocess.Popen([program, "--folder", folder, *arguments], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        self.ready = json.loads(self.process.stdout.readline())

    def environment(self, home):
        return dict(os.environ, HARVELLON_HOME=home, HARVELLON_SERVER=self.ready["server"],
                    PATH=self.ready["bin"] + ":" + os.environ["PATH"])

    def close(self):
        self.process.stdin.close()
        self.process.wait(timeout=5)


class Program:
    """One run of the application."""

    def __init__(self, path, environment, log=None):
        self.process = subprocess.Popen([path], env=environment, stdout=log, stderr=log)
        until("the status item", lambda: subprocess.run(["xdotool", "search", "--class", "HarvellonConnect"],
                                                        capture_output=True).stdout)

    def tree(self):
        desktop = Atspi.get_desktop(0)
        children = [desktop.get_child_at_index(index) for index in range(desktop.get_child_count())]
        return next(c for c in children if c is not None and c.get_process_id() == self.process.pid)

    def finder(self, name, role=None, below=None):
        """A probe for the first visible element whose accessible name contains `name`."""
        def probe():
            return next((e for e in elements(below() if below else self.tree()) if name in e.get_name()
                         and (role is None or e.get_role() == role) and showing(e)), None)

        return probe

    def await_element(self, name, role=None):
        return until(name, self.finder(name, role))

    def press(self, name, below=None):
        until(f"button {name}", lambda: self.finder(name, BUTTON, below)().do_action(0))

    def focus(self):
        """What has the focus, by name and description: an element, and what it is in."""
        return [(e.get_name(), e.get_description()) for e in elements(self.tree()) if has(e, FOCUSED) and showing(e)]

    def tab_to(self, name):
        for _ in range(200):
            place = until("the focus", self.focus)
            if name in dict(place):
                return
            keys("Tab")
            until("the next focus", lambda left=place: self.focus() != left)
        sys.exit(f"Tab does not reach: {name}")

    def text_in(self, name):
        return Atspi.Text.get_text(self.finder(name)(), 0, -1)

    def rows(self):
        return [e.get_name() for e in elements(self.tree()) if e.get_role() == ROW and showing(e)]

    def open_panel(self):
        def probe():
            if self.finder("Domain suchen")():
                return True
            keys("197")
            time.sleep(0.5)
            return None

        until("the panel", probe)

    def finish(self, how):
        how()
        if self.process.wait(timeout=6) != 0:
            sys.exit(f"the program ended with {self.process.returncode}")

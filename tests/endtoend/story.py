#!/usr/bin/env python3
"""The whole story on a real desktop: sign in through the browser, find a project, mount it, save a file on the
server, disconnect, quit with a mount alive, and start again signed in. Things are found by the names people hear."""
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

PROGRAM, PLATFORM = sys.argv[1:3]
PATIENCE = 20  # seconds
PROJECT = "Alpenhof Buchung"
DOMAIN = "www.alpenhof.sandbox.test"


def until(what, probe, patience=PATIENCE):
    """Waits until `probe` yields something true, and yields it."""
    end = time.monotonic() + patience
    while time.monotonic() < end:
        try:
            found = probe()
        except Exception:  # the tree changes while it is read
            found = None
        if found:
            return found
        time.sleep(0.05)
    sys.exit(f"nothing came of: {what}")


def elements(node):
    """All that can be heard below `node`."""
    node.clear_cache()
    yield node
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is not None:
            yield from elements(child)


def application():
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        child = desktop.get_child_at_index(index)
        if child is not None and child.get_process_id() == app.pid:
            return child
    return None


def showing(element):
    return element.get_state_set().contains(Atspi.StateType.SHOWING)


def heard(name, role=None, below=None):
    def probe():
        root = below() if below else application()
        return next((e for e in elements(root) if name in e.get_name()
                     and (role is None or e.get_role() == role) and showing(e)), None)

    return probe


def press(name, below=None):
    until(f"button {name}", lambda: heard(name, Atspi.Role.PUSH_BUTTON, below)().do_action(0))


def row():
    return until(f"row {PROJECT}", heard(PROJECT, Atspi.Role.LIST_ITEM))


def mounted(path):
    with open("/proc/self/mountinfo", encoding="utf8") as table:
        return any(line.split()[4].replace("\\040", " ") == path for line in table)


def processes(text):
    return subprocess.run(["pgrep", "-f", text], capture_output=True, text=True).stdout.split()


def start():
    process = subprocess.Popen([PROGRAM], env=environment, stdout=log, stderr=log)
    until("the status item", lambda: subprocess.run(["xdotool", "search", "--class", "HarvellonConnect"],
                                                    capture_output=True, text=True).stdout)
    return process


def open_panel():
    def probe():
        if heard("Domain suchen")():
            return True
        subprocess.run(["xdotool", "key", "197"], check=True)
        time.sleep(0.5)
        return None

    until("the panel", probe)


def finish(process, how):
    how()
    if process.wait(timeout=6) != 0:
        sys.exit(f"the program ended with {process.returncode}")


folder = tempfile.mkdtemp(prefix="story ")
home = os.path.join(folder, "home")
point = os.path.join(home, "Harvellon", DOMAIN)
log = open(os.path.join(folder, "log"), "w+", encoding="utf8")
platform = subprocess.Popen([PLATFORM, "--folder", os.path.join(folder, "platform")], stdin=subprocess.PIPE,
                            stdout=subprocess.PIPE, text=True)
app = None
try:
    ready = json.loads(platform.stdout.readline())
    environment = dict(os.environ, HARVELLON_HOME=home, HARVELLON_SERVER=ready["server"],
                       PATH=ready["bin"] + ":" + os.environ["PATH"])
    # The default browser of this desktop is one that chooses an identity on the sign-in page.
    applications = os.path.join(os.environ["XDG_DATA_HOME"], "applications")
    os.makedirs(applications, exist_ok=True)
    browser = os.path.join(os.environ["HOME"], "browser")  # desktop entries take no blanks in a program's path
    with open(browser, "w", encoding="utf8") as script:
        script.write('#!/usr/bin/env python3\nimport sys, urllib.request\n'
                     'print(urllib.request.urlopen(sys.argv[1] + "&identity=erika").read().decode())\n')
    os.chmod(browser, 0o700)
    with open(os.path.join(applications, "story.desktop"), "w", encoding="utf8") as entry:
        entry.write(f"[Desktop Entry]\nType=Application\nName=Story\nExec={browser} %u\n"
                    "MimeType=x-scheme-handler/http;x-scheme-handler/https;\n")
    with open(os.path.join(os.environ["XDG_CONFIG_HOME"], "mimeapps.list"), "w", encoding="utf8") as defaults:
        defaults.write("[Default Applications]\nx-scheme-handler/http=story.desktop\n")

    app = start()
    open_panel()
    press("Mit Harvellon anmelden")
    until("the projects", heard("Erika Beispiel"))

    subprocess.run(["xdotool", "type", "--delay", "20", "alpenhof"], check=True)
    until("one hit", lambda: [e.get_name() for e in elements(application()) if e.get_role() == Atspi.Role.LIST_ITEM
                              and showing(e)] == [f"{PROJECT}, {DOMAIN}"])
    press("Verbinden und mounten", row)
    until("the mark", lambda: "Gemountet" in row().get_description())
    with open(os.path.join(point, "web", "gespeichert.txt"), "w", encoding="utf8") as file:
        file.write("vom Mount")
    server_side = os.path.join(folder, "platform", "hosts", DOMAIN, "web", "gespeichert.txt")
    with open(server_side, encoding="utf8") as file:
        assert file.read() == "vom Mount"
    press("Trennen", row)
    until("the end of the mark", lambda: "Nicht verbunden" in row().get_description())
    assert not mounted(point)

    press("Verbinden und mounten", row)
    until("the mount", lambda: mounted(point) and "Gemountet" in row().get_description())
    finish(app, lambda: press("Beenden"))
    assert not mounted(point) and not processes("sshfs.*" + DOMAIN)

    app = start()
    open_panel()
    until("signed in again", heard("Erika Beispiel"))
    subprocess.run(["xdotool", "type", "--delay", "20", "alpenhof"], check=True)
    press("Verbinden und mounten", row)
    until("the mount", lambda: mounted(point) and "Gemountet" in row().get_description())
    second = subprocess.run([PROGRAM], env=environment, timeout=5)
    assert second.returncode == 0 and app.poll() is None
    finish(app, lambda: app.send_signal(signal.SIGTERM))
    assert not mounted(point)

    log.seek(0)
    text = log.read()
    with open(os.path.join(home, ".local/share/HarvellonConnect/tokens.json"), encoding="utf8") as secrets:
        for secret in json.load(secrets).values():
            assert secret not in text
    assert "code=" not in text
finally:
    if app and app.poll() is None:
        app.kill()
    platform.stdin.close()
    platform.wait(timeout=5)
    log.seek(0)
    sys.stderr.write(log.read())
    if not mounted(point):
        shutil.rmtree(folder, ignore_errors=True)

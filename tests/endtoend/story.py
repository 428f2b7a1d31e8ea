#!/usr/bin/env python3
"""The whole story: sign in through the browser, find a project, pin it, mount it by its number, copy its folder, save a
file on the server, disconnect, quit with a mount alive, start again signed in, be killed, and start once more."""
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../tools"))
from desktop import ENTRY, ROW, Platform, Program, choose_browser, keys, mounted, until, words  # noqa: E402

PROGRAM, PLATFORM = sys.argv[1:3]
PROJECT = "Alpenhof Buchung"
DOMAIN = "www.alpenhof.sandbox.test"


def row():
    return app.await_element(PROJECT, ROW)


def says(text):
    return lambda: text in row().get_description()


def connect():
    app.press("Verbinden und mounten", row)
    until("the mark", says("Gemountet"))
    assert mounted(point)


folder = tempfile.mkdtemp(prefix="story ")
home = os.path.join(folder, "home")
point = os.path.join(home, "Harvellon", DOMAIN)
log = open(os.path.join(folder, "log"), "w+", encoding="utf8")
platform = Platform(PLATFORM, os.path.join(folder, "platform"))
app = None
try:
    environment = platform.environment(home)
    choose_browser("erika")

    app = Program(PROGRAM, environment, log)
    app.open_panel()
    app.press("Mit Harvellon anmelden")
    app.await_element("Erika Beispiel")

    words("alpn bchg")
    until("one hit", lambda: app.rows() == [f"{PROJECT}, {DOMAIN}"])
    keys("ctrl+p", "Escape")
    until("the pin", lambda: app.rows()[0].startswith(PROJECT) and says("angeheftet, Strg+1")())
    keys("ctrl+1")
    until("the mark", says("Gemountet"))
    assert mounted(point)
    keys("Down", "shift+F10")
    app.await_element("Ordner kopieren", ENTRY)
    keys("Down", "Return")
    until("the end of the menu", lambda: not app.finder("Ordner kopieren", ENTRY)())
    keys("ctrl+v")
    until("the copied folder in the search", lambda: app.text_in("Domain suchen") == point)
    keys("Escape")
    with open(os.path.join(point, "web", "gespeichert.txt"), "w", encoding="utf8") as file:
        file.write("vom Mount")
    server_side = os.path.join(folder, "platform", "hosts", DOMAIN, "web", "gespeichert.txt")
    with open(server_side, encoding="utf8") as file:
        assert file.read() == "vom Mount"
    app.press("Trennen", row)
    until("the end of the mark", says("Nicht verbunden"))
    assert not mounted(point)

    connect()
    app.finish(lambda: app.press("Beenden"))
    assert not mounted(point)
    assert not subprocess.run(["pgrep", "-f", "sshfs.*" + point], capture_output=True).stdout

    app = Program(PROGRAM, environment, log)
    app.open_panel()
    app.await_element("Erika Beispiel")
    words("alpenhof")
    connect()
    second = subprocess.run([PROGRAM], env=environment, timeout=5)
    assert second.returncode == 0 and app.process.poll() is None
    app.process.kill()
    app.process.wait()
    assert mounted(point)

    app = Program(PROGRAM, environment, log)
    until("the end of what was left mounted", lambda: not mounted(point))
    app.open_panel()
    app.await_element("Erika Beispiel")
    words("alpenhof")
    connect()
    app.finish(lambda: app.process.send_signal(signal.SIGTERM))
    assert not mounted(point)

    log.seek(0)
    text = log.read()
    with open(os.path.join(home, ".local/share/HarvellonConnect/tokens.json"), encoding="utf8") as secrets:
        for secret in json.load(secrets).values():
            assert secret not in text
    assert "code=" not in text
finally:
    if app and app.process.poll() is None:
        app.process.kill()
    platform.close()
    log.seek(0)
    sys.stderr.write(log.read())
    if not mounted(point):
        shutil.rmtree(folder, ignore_errors=True)

#!/usr/bin/python3
"""Takes the pictures in docs/screenshots: ./dev screenshots. Each state of the panel and the settings, light and dark, of the
real program against the sandbox platform. Words after the scale name the only states whose pictures are taken."""
import json
import os
import re
import signal
import struct
import subprocess
import sys
import tempfile
import time
import urllib.request

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from desktop import ROW, Platform, Program, choose_browser, descendants, keys, until, words  # noqa: E402

import gi  # noqa: E402

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

PROGRAM, PLATFORM, PICTURES, SCALE = sys.argv[1:5]
STATES = sys.argv[5:]
PORTAL = """<node><interface name='org.freedesktop.portal.Settings'>
<method name='Read'><arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='v' direction='out'/></method>
<signal name='SettingChanged'><arg type='s'/><arg type='s'/><arg type='v'/></signal></interface></node>"""
APPEARANCE = ("org.freedesktop.appearance", "color-scheme")
DARK, LIGHT = 1, 2


class Desktop:
    """Stands in for the portal that tells programs whether the user wants dark windows."""

    def __init__(self):
        self.scheme = LIGHT
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.bus.register_object("/org/freedesktop/portal/desktop", Gio.DBusNodeInfo.new_for_xml(PORTAL).interfaces[0],
                                 self.answer, None, None)
        Gio.bus_own_name_on_connection(self.bus, "org.freedesktop.portal.Desktop", Gio.BusNameOwnerFlags.NONE, None, None)
        self.turn(0.2)

    def answer(self, _bus, _sender, _path, _interface, _method, arguments, call):
        if tuple(arguments) == APPEARANCE:
            call.return_value(GLib.Variant("(v)", (GLib.Variant("v", GLib.Variant("u", self.scheme)),)))
        else:
            call.return_dbus_error("org.freedesktop.portal.Error.NotFound", "not here")

    def turn(self, seconds):
        """Handles bus messages for that time."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            GLib.MainContext.default().iteration(False)
            time.sleep(0.01)

    def choose(self, scheme):
        self.scheme = scheme
        self.bus.emit_signal(None, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged",
                             GLib.Variant("(ssv)", (*APPEARANCE, GLib.Variant("u", scheme))))
        self.turn(0.6)


def capture(window, file):
    """Writes what the window shows, in all its colours and with the transparency of its corners."""
    dump = subprocess.run(["xwd", "-silent", "-id", window], capture_output=True, check=True).stdout
    size, _, _, depth, width, height, *more = struct.unpack(">25I", dump[:100])
    pixels = bytearray(dump[size + 12 * more[13]:])  # behind the table of colours: blue, green, red, alpha
    for edge in re.finditer(rb"[^\x00\xff]", bytes(pixels[3::4] if depth == 32 else b"")):
        place, alpha = 4 * edge.start(), edge.group()[0]  # X has colours multiplied by alpha, PNG has not
        pixels[place:place + 3] = (min(255, part * 255 // alpha) for part in pixels[place:place + 3])
    subprocess.run(["convert", "-size", f"{width}x{height}", "-depth", "8", "bgra:-", "-alpha", "on" if depth == 32 else "off",
                    "-define", "png:compression-level=9", "-define", "png:compression-filter=1",
                    "-define", "png:exclude-chunks=date,time", f"PNG{depth}:{file}"], input=pixels, check=True)


def point_at(x, y, *more):
    """Moves the pointer to a place in the active window, in points. `more`: what xdotool does then."""
    place = (str(int(part * float(SCALE))) for part in (x, y))
    subprocess.run(["xdotool", "getactivewindow", "mousemove", "--window", "%1", *place, *more], check=True)


def picture(name, pointer=None):
    """Takes the light and the dark variant of the active window, with the pointer out of the way or where it is told."""
    if STATES and name not in STATES:
        return
    subprocess.run(["xdotool", "mousemove", "1", "1"], check=True)
    if pointer:
        point_at(*pointer)
        time.sleep(1)  # for the tip
    for variant, scheme in (("light", LIGHT), ("dark", DARK)):
        desktop.choose(scheme)
        window = subprocess.run(["xdotool", "getactivewindow"], capture_output=True, text=True, check=True).stdout.strip()
        suffix = "" if SCALE == "1" else f"@{SCALE}x"
        capture(window, f"{PICTURES}/{name}-{variant}{suffix}.png")
    desktop.choose(LIGHT)


def item(name):
    """Takes the tray with the status item, which the look of the panel and its scale do not change."""
    if SCALE == "1":
        time.sleep(0.5)
        tray = subprocess.run(["xdotool", "search", "--classname", "^panel$"], capture_output=True, text=True, check=True).stdout
        subprocess.run(["import", "-window", tray.split()[0], f"PNG8:{PICTURES}/status-{name}.png"], check=True)


def order(**faults):
    """Sets the faults of the platform."""
    request = urllib.request.Request(platform.ready["server"] + "/sandbox/faults", json.dumps(faults).encode(),
                                     {"Content-Type": "application/json"})
    urllib.request.urlopen(request).close()


def row(name):
    return lambda: app.await_element(name, ROW)


def sign_in(identity, name):
    choose_browser(identity)
    app.press("Mit Harvellon anmelden")
    app.await_element(name)
    time.sleep(0.5)


def pin_or_unpin(*names):
    for name in names:
        words(name)
        time.sleep(0.3)
        keys("ctrl+p", "Escape")
    time.sleep(0.3)


def start(*arguments, ssh=None, managed=""):
    """A platform and a program of their own, with an empty home. `ssh`: a script in the place of the ssh client. `managed`:
    what an administrator has laid down; only root can be one."""
    folder = tempfile.mkdtemp(prefix="pictures")
    made = Platform(PLATFORM, os.path.join(folder, "platform"), *arguments)
    home = os.path.join(folder, "home")
    client = made.ready["bin"] + "/ssh"
    if ssh:
        client = os.path.join(folder, "ssh")
        with open(client, "w", encoding="utf8") as script:
            script.write(ssh)
        os.chmod(client, 0o700)
    if managed:
        os.makedirs(os.path.join(folder, "harvellon.com"))
        with open(os.path.join(folder, "harvellon.com", "HarvellonConnect.conf"), "w", encoding="utf8") as file:
            file.write(managed)
    environment = dict(made.environment(home), HARVELLON_SSH=client, XDG_CONFIG_DIRS=folder)
    program = Program(PROGRAM, environment, subprocess.DEVNULL)
    program.open_panel()
    return made, program, home


def install_programs():
    """Puts programs that do nothing into the user's home folder."""
    folder = os.path.join(home, ".local", "bin")
    os.makedirs(folder)
    for program in ("phpstorm", "codium", "subl", "nvim", "kitty", "konsole", "mysql"):
        os.symlink("/bin/true", os.path.join(folder, program))


def make_higher(height):
    """Resizes the settings, so that more of them is seen."""
    window = subprocess.run(["xdotool", "getactivewindow"], capture_output=True, text=True, check=True).stdout.strip()
    size = (str(round(points * float(SCALE))) for points in (520, height))
    subprocess.run(["xdotool", "windowsize", "--sync", window, *size], check=True)


def end():
    app.finish(lambda: app.process.send_signal(signal.SIGTERM))
    platform.close()


os.environ["QT_SCALE_FACTOR"] = SCALE
os.makedirs(PICTURES, exist_ok=True)
desktop = Desktop()

platform, app, home = start()
picture("signed-out")
order(directory={"delay": 6000})
choose_browser("erika")
app.press("Mit Harvellon anmelden")
app.await_element("Erika Beispiel")
picture("loading")
order(directory={})
until("the rows", lambda: len(app.rows()) > 9)
picture("projects")
item("plain")
pin_or_unpin("praxis", "speiche")
picture("pinned")
picture("pin", pointer=(346, 297))
keys("Down", "Down", "Down", "shift+F10")
time.sleep(0.3)
picture("row-menu")
keys("Escape")
words("bsp shp")
time.sleep(0.3)
picture("search")
keys("Escape")
pin_or_unpin("praxis", "speiche")
words("gibtesnicht")
time.sleep(0.3)
picture("no-hit")
keys("Escape")

app.press("Verbinden und mounten", row("Fahrradladen Speiche"))
until("the mount", lambda: "Gemountet" in row("Fahrradladen Speiche")().get_description())
item("mounted")
sshd = [pid for pid, command in descendants(platform.process).items() if "sshd" in command and platform.process.args[2] in command]
for pid in sshd:
    os.kill(pid, signal.SIGSTOP)
app.press("Verbinden und mounten", row("Alpenhof Buchung"))
time.sleep(5)
picture("mounted-and-connecting")
item("connecting")
for pid in sshd:
    os.kill(pid, signal.SIGCONT)
until("the mount", lambda: "Gemountet" in row("Alpenhof Buchung")().get_description())
install_programs()
words("alpenhof")
keys("shift+F10", *["Down"] * 4, "Right")
time.sleep(0.5)
picture("open-with")
keys("Escape", "Escape", "Escape")
app.press("Anzeigen")
time.sleep(0.5)
picture("activity")
point_at(300, 575, "click", "1", "key", "shift+Up")
time.sleep(0.3)
picture("activity-selected")
app.press("Ausblenden")
order(directory={"status": 500})
keys("ctrl+r")
time.sleep(1)
picture("error")
order(directory={"body": json.dumps({"user": {"name": "Erika Beispiel", "coder": True}, "projects": []})})
keys("ctrl+r")
time.sleep(1)
picture("no-projects")
order(directory={})
keys("ctrl+r")
until("the rows", lambda: len(app.rows()) > 9)
keys("ctrl+comma")
time.sleep(1)
choose_browser("jonas")
app.press("Account hinzufügen")
app.await_element("Jonas Muster")
time.sleep(1)
picture("settings")
app.press("Account entfernen")
time.sleep(0.3)
picture("account-removal")
keys("alt+F4")
app.open_panel()
app.press("Anzeigen")
for pid, command in descendants(app.process).items():
    if "sshfs" in command and "speiche" in command.lower():
        os.kill(pid, signal.SIGKILL)
time.sleep(1)
picture("mount-ended")
item("trouble")
end()

platform, app, home = start("--projects", "10000")
sign_in("erika", "Erika Beispiel")
until("the rows", lambda: len(app.rows()) > 9)
keys("Down", "Down", "Down")
picture("ten-thousand")
end()

platform, app, home = start()
sign_in("redaktion", "Redaktion")
picture("editor")
end()

platform, app, home = start()
keys("ctrl+comma")
time.sleep(1)
picture("settings-signed-out")
keys("alt+F4")
install_programs()
app.open_panel()
keys("ctrl+comma")
time.sleep(1)
make_higher(840)
keys(*["Tab"] * 6)
keys("space")
time.sleep(0.5)
picture("settings-editors")
keys("End", "Return", "Tab")
words("emacsclient -c -n %f")
keys("Tab")
time.sleep(0.3)
picture("settings-programs")
end()

platform, app, home = start(managed="[General]\nServer=https://connect.firma.example\nUpdates=false\nStartsAtLogin=true\n"
                            "GlobalHotkeyEnabled=true\nEditor=phpstorm\nTerminal=own\nTerminalCommand=footclient\n")
install_programs()
keys("ctrl+comma")
time.sleep(1)
make_higher(930)
time.sleep(0.5)
picture("settings-managed")
end()

platform, app, home = start()
sign_in("erika", "Erika Beispiel")
until("the rows", lambda: len(app.rows()) > 9)
ssh_folder = os.path.join(platform.process.args[2], "ssh")
key, agent, ask = (os.path.join(home, name) for name in (".ssh/id_ed25519", "agent", "ask"))
os.mkdir(os.path.dirname(key), 0o700)
for ending in ("", ".pub"):  # to where users have theirs, whose paths are shown with ~
    os.rename(os.path.join(ssh_folder, "client_key" + ending), key + ending)
with open(platform.ready["ssh_config"], "r+", encoding="utf8") as config:
    lines = config.read().replace(os.path.join(ssh_folder, "client_key"), key)
    config.seek(0)
    config.write(lines.replace("IdentityAgent none", f"IdentityAgent {agent}"))
    config.truncate()
authorized = os.path.join(ssh_folder, "authorized_keys")
with open(authorized, encoding="utf8") as keys_file:
    accepted_keys = keys_file.read()
open(authorized, "w", encoding="utf8").close()
app.press("Verbinden und mounten", row("Fahrradladen Speiche"))
app.await_element("Hilfe zum Zugang")
time.sleep(0.5)
picture("access-offered")
app.press("Hilfe zum Zugang")
app.await_element("Schlüssel kopieren")
time.sleep(0.5)
picture("access-key")
app.press("Zugang prüfen")
app.await_element("Der Server kennt den angebotenen Schlüssel nicht")
time.sleep(0.5)
picture("access-refused")
with open(authorized, "w", encoding="utf8") as keys_file:
    keys_file.write(accepted_keys)
app.press("Zugang prüfen")
app.await_element("Der Zugang funktioniert")
time.sleep(0.5)
picture("access-works")
known = os.path.join(home, ".local/share/HarvellonConnect/known_hosts")
with open(known, encoding="utf8") as hosts:
    server = hosts.read().split()[0]
with open(key + ".pub", encoding="utf8") as other_key:
    other = " ".join(other_key.read().split()[:2])
with open(known, "w", encoding="utf8") as hosts:
    hosts.write(f"{server} {other}\n")
app.press("Zugang prüfen")
app.await_element("Neuen Schlüssel übernehmen")
time.sleep(0.5)
picture("access-changed")
app.press("Neuen Schlüssel übernehmen")
app.await_element("Wirklich übernehmen")
time.sleep(0.5)
picture("access-asked")
with open(ask, "w", encoding="utf8") as script:
    script.write("#!/bin/sh\nexec sleep 60\n")
os.chmod(ask, 0o700)
asking = subprocess.Popen(["ssh-agent", "-D", "-a", agent], env=dict(os.environ, SSH_ASKPASS=ask), stdout=subprocess.DEVNULL)
until("the agent", lambda: os.path.exists(agent))
subprocess.run(["ssh-add", "-q", "-c", key], env=dict(os.environ, SSH_AUTH_SOCK=agent), check=True)
app.press("Wirklich übernehmen")
app.await_element("wartet auf die Unterschrift")
picture("access-waiting")
asking.terminate()
end()

platform, app, home = start(ssh='#!/bin/sh\nexec /usr/bin/ssh -F /dev/null -o IdentityAgent=none "$@"\n')
sign_in("erika", "Erika Beispiel")
until("the rows", lambda: len(app.rows()) > 9)
open(os.path.join(platform.process.args[2], "ssh", "authorized_keys"), "w", encoding="utf8").close()
app.press("Verbinden und mounten", row("Fahrradladen Speiche"))
app.press("Hilfe zum Zugang")
app.await_element("Schlüssel anlegen")
time.sleep(0.5)
picture("access-no-key")
app.press("Schließen")
app.open_panel()
keys("ctrl+comma")
time.sleep(1)
keys("shift+Tab")  # the last button scrolls into sight
app.press("Diagnose kopieren")
app.await_element("Diagnose in die Zwischenablage kopiert")
time.sleep(0.5)
picture("settings-diagnosis")
end()

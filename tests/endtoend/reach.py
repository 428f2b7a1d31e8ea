#!/usr/bin/env python3
"""By names and keys alone: the first steps, a server that refuses the key, one with another key than before, an editor for
one project and a command for the others, lines of the log, a report without names, and an account that is not removed
after all."""
import os
import shutil
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from desktop import BUTTON, ENTRY, LIST, ROW, SELECTED, Platform, Program  # noqa: E402
from desktop import choose_browser, elements, has, keys, mounted, until, words  # noqa: E402

PROGRAM, PLATFORM = sys.argv[1:3]
PROJECT, DOMAIN = "Alpenhof Buchung", "www.alpenhof.sandbox.test"


def script(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("#!/bin/sh\n" + text, "utf8")
    path.chmod(0o700)


def opened():
    """The editor that was started since the last call, with its argument."""
    text = until("an editor", record.read_text)
    record.unlink()
    return text


def enter(text, name):
    """Presses Enter on the only hit."""
    app.open_panel()
    words(text)
    until("one hit", lambda: len(app.rows()) == 1 and app.rows()[0].startswith(name))
    keys("Return")

def fingerprint():
    told = subprocess.run(["ssh-keygen", "-lf", str(host_key)], capture_output=True, text=True, check=True).stdout
    return "ED25519 " + told.split()[1]



def selected_lines():
    return [f"{e.get_description()} {e.get_name()}" for e in elements(app.finder("Aktivitaet", LIST)())
            if e.get_role() == ROW and has(e, SELECTED)]


def pasted():
    """What has been copied, by way of the search."""
    app.open_panel()
    app.tab_to("Domain suchen")
    keys("ctrl+a", "BackSpace")
    until("an empty search", lambda: app.text_in("Domain suchen") == "")
    keys("ctrl+v")
    text = until("the copied text", lambda: app.text_in("Domain suchen"))
    keys("Escape")
    return text


folder = Path(tempfile.mkdtemp(prefix="reach "))
home, record, ssh, accepted = (folder / name for name in ("home", "record", "ssh", "platform/ssh/authorized_keys"))
point, key, host_key = home / "Harvellon" / DOMAIN, home / "key", folder / "platform/ssh/host_key"
platform = Platform(PLATFORM, str(folder / "platform"))
app = None
try:
    script(ssh, f"""case "$*" in *sandbox.test*) exec '{platform.ready["bin"]}/ssh' "$@" ;; esac
exec /usr/bin/ssh -F /dev/null -o IdentityAgent=none -o 'IdentityFile="{key}"' "$@"\n""")
    # A terminal in which nobody types a passphrase.
    script(Path(platform.ready["bin"], "xdg-terminal-exec"), 'SSH_ASKPASS=/bin/true SSH_ASKPASS_REQUIRE=force "$@"\n')
    for editor in (".local/bin/subl", "own editor"):
        script(home / editor, f"""echo "${{0##*/}} $*" >'{record}.new' && mv '{record}.new' '{record}'\n""")
    choose_browser("erika")
    environment = dict(platform.environment(str(home)), HARVELLON_SSH=str(ssh))
    if os.geteuid() == 0:  # the administrator's server is the one that counts
        managed = folder / "xdg/harvellon.com/HarvellonConnect.conf"
        managed.parent.mkdir(parents=True)
        managed.write_text(f"[General]\nServer={platform.ready['server']}\n", "utf8")
        environment |= {"XDG_CONFIG_DIRS": str(folder / "xdg"), "HARVELLON_SERVER": "http://127.0.0.1:9"}
    app = Program(PROGRAM, environment, sys.stderr)

    app.open_panel()
    for step in ("Anmelden, offen", "SSH-Schlüssel, offen", "sshfs, erledigt", "Schlüssel anlegen"):
        app.await_element(step)
    app.press("Schlüssel anlegen")
    until("the key", key.exists)
    keys("Escape")
    app.open_panel()
    app.await_element("SSH-Schlüssel, erledigt")
    app.press("Schlüssel kopieren")
    app.press("Anmelden")
    app.await_element("Erika Beispiel")
    assert pasted() == key.with_suffix(".pub").read_text().strip()

    accepted.rename(folder / "kept")
    enter("alpenhof", PROJECT)
    app.press("Hilfe zum Zugang")
    app.tab_to("Zugang prüfen")
    keys("Return")
    app.await_element("Der Server kennt den angebotenen Schlüssel nicht")
    (folder / "kept").rename(accepted)
    keys("Return")
    app.await_element("Der Zugang funktioniert")
    keys("Escape")

    former = fingerprint()
    host_key.unlink()
    subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", str(host_key)], check=True)
    os.kill(int((host_key.parent / "sshd.pid").read_text()), signal.SIGHUP)
    enter("alpenhof", PROJECT)
    app.press("Hilfe zum Zugang")
    app.tab_to("Zugang prüfen")
    keys("Return")
    app.await_element("Bisher: " + former)
    app.await_element("Jetzt: " + fingerprint())
    for button in ("Neuen Schlüssel übernehmen", "Wirklich übernehmen"):
        app.tab_to(button)
        keys("Return")
    app.await_element("Der Zugang funktioniert")
    keys("Escape")

    enter("alpenhof", PROJECT)
    until("the mount", lambda: "Gemountet" in app.finder(PROJECT, ROW)().get_description())
    keys("shift+F10")
    app.await_element("Öffnen mit …", ENTRY)
    keys(*["Down"] * 4, "Right")
    app.await_element("Sublime Text", ENTRY)
    for key_names in (("Down", "Return"), ("Return",)):  # the second time by itself
        keys(*key_names)
        assert opened() == f"subl {point}/web\n"

    keys("ctrl+comma")
    app.tab_to("Editor")
    keys("space", "End", "Return")
    app.tab_to("Editor: eigener Befehl")
    words(f'"{home}/own editor" --to=%f')
    keys("Escape")
    enter("speiche", "Fahrradladen Speiche")
    assert opened() == f"own editor --to={home}/Harvellon/shop.speiche.sandbox.test/web\n"

    app.press("Anzeigen")
    app.tab_to("Aktivitaet")
    keys("Home", "shift+Down", "ctrl+c")
    lines = until("two lines", lambda: len(selected_lines()) == 2 and selected_lines())
    assert pasted() == "\n".join(lines)

    keys("ctrl+comma")
    app.tab_to("Diagnose kopieren")
    keys("Return")
    app.await_element("Diagnose in die Zwischenablage kopiert")
    app.tab_to("Account entfernen")
    keys("Return")
    app.await_element("Entfernen", BUTTON)
    app.tab_to("Abbrechen")
    keys("Return")
    until("the end of the question", lambda: not app.finder("Entfernen", BUTTON)())
    keys("Escape")
    report = pasted()
    for secret in ("erika", "beispiel", "sandbox.test", "alpenhof", "speiche", str(folder)):
        assert secret not in report.lower(), report
    assert "~/Harvellon/projekt-" in report and "hinzugefuegt: name-1." in report
    app.await_element("Erika Beispiel")
    app.finish(lambda: app.process.send_signal(signal.SIGTERM))
    assert not mounted(str(point))
finally:
    if app and app.process.poll() is None:
        app.process.kill()
    platform.close()
    if not mounted(str(point)):
        shutil.rmtree(folder, ignore_errors=True)

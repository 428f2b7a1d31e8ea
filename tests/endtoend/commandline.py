#!/usr/bin/env python3
"""The command line against the built program: start it, list, connect, open, search, follow a link, disconnect; without a
display, with an interrupt, and as another user."""
import hashlib
import json
import os
import pty
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from types import SimpleNamespace

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../tools"))
from desktop import Platform, Program, choose_browser, descendants, keys, mounted, until  # noqa: E402

PROGRAM, PLATFORM, COMMAND, DESKTOP_FILE = sys.argv[1:5]
COMPLETION = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../packaging/completion")
DOMAIN, NAME = "www.alpenhof.sandbox.test", "Alpenhof Buchung"
PROBE = """import socket, sys
client = socket.socket(socket.AF_UNIX)
client.settimeout(5)
client.connect(sys.argv[1])
client.sendall(b'{"command":"status","version":1}\\n')
print(client.recv(1000))"""
# Each shell is given the words of a line and prints what it offers for the last one. zsh's own functions need a terminal.
SHELLS = {
    "bash": """source "$0/harvellon-connect.bash"
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _harvellon_connect; printf '%s\\n' "${COMPREPLY[@]}\"""",
    "zsh": """_describe() { print -rl -- ${${(P)2}%%:*} }; compadd() { print -rl -- ${(P)2} }
        _arguments() { [[ $* != *_projects* ]] || (( CURRENT > 2 )) || _harvellon_connect_projects }
        words=("$@"); CURRENT=$#; PREFIX=$words[-1]; source $0/_harvellon-connect""",
    "fish": "source $argv[1]/harvellon-connect.fish; complete -C (string join ' ' $argv[2..])"}


def run(*words, env=None, **options):
    return subprocess.run([COMMAND, *words], env=env or environment, capture_output=True, text=True, timeout=60, **options)


def expect(status, output, error, *words, env=None):
    ended = run(*words, env=env)
    found = (ended.returncode, ended.stdout, ended.stderr)
    assert found == (status, output, error and f"harvellon-connect: {error}\n"), (words, found)


def processes():
    """Of the program, in this test's home folder."""
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{pid}/environ", "rb") as variables:
                ours = b"HARVELLON_HOME=" + home.encode() + b"\0" in variables.read()
            if ours and os.readlink(f"/proc/{pid}/exe") == os.path.realpath(PROGRAM):
                yield int(pid)
        except OSError:
            continue


def recorder(name):
    """A program that writes its last argument to a file."""
    with open(os.path.join(tools, name), "w", encoding="utf8") as script:
        script.write(f'#!/bin/sh\nfor last; do :; done\nprintf %s "$last" >"{record}.new" && mv "{record}.new" "{record}"\n')
    os.chmod(script.name, 0o700)


def recorded():
    text = until("a program of the desktop", lambda: os.path.exists(record) and open(record, encoding="utf8").read())
    os.remove(record)
    return text


folder = tempfile.mkdtemp(prefix="commands ")
home, record = os.path.join(folder, "home"), os.path.join(folder, "record")
tools = tempfile.mkdtemp(prefix="tools")  # desktop entries take no blanks in a program's path
point = os.path.join(home, "Harvellon", DOMAIN)
applications = os.path.join(os.environ["XDG_DATA_HOME"], "applications")
servers = []  # that stand still
platform = Platform(PLATFORM, os.path.join(folder, "platform"))
try:
    environment = platform.environment(home)
    environment.update(PATH=tools + ":" + environment["PATH"], HARVELLON_SSH=platform.ready["bin"] + "/ssh")
    blind = {k: v for k, v in environment.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
    recorder("code")
    os.symlink(COMMAND, os.path.join(tools, "harvellon-connect"))
    choose_browser("erika")

    # Nothing runs yet.
    assert run("--help", env=blind).stdout.startswith("Aufruf: harvellon-connect")
    assert run("--version", env=blind).stdout == "Harvellon Connect 1.0.0\n"
    assert run("mount").returncode == 2
    expect(3, "", "Harvellon Connect läuft nicht.", "status")
    expect(3, "", "Harvellon Connect läuft nicht.", "list", "--no-start")
    expect(3, "", "Harvellon Connect braucht einen grafischen Desktop.", "list", env=blind)
    expect(3, "", "Bitte einloggen.", "list")
    program, = processes()
    assert os.readlink(f"/proc/{program}/cwd") == "/" and os.getsid(program) == program

    app = Program.__new__(Program)
    app.process = SimpleNamespace(pid=program)
    expect(0, "", "", "toggle")
    app.press("Mit Harvellon anmelden")
    app.await_element("Erika Beispiel")

    # Everything else needs no display.
    listed = run("list", env=blind)
    assert listed.returncode == 0 and f"{DOMAIN}\tNicht verbunden\t{NAME}\n" in listed.stdout
    times = []
    for _ in range(20):
        begin = time.perf_counter()
        run("list", env=blind)
        times.append(time.perf_counter() - begin)
    print(f"list: {sorted(times)[10] * 1000:.1f} ms, at best {min(times) * 1000:.1f} ms")
    expect(2, "", f"Kein Projekt heißt alpenhoff. Gemeint: {DOMAIN}?", "connect", "alpenhoff", env=blind)
    expect(2, "", f"{DOMAIN} ist nicht verbunden.", "search", "alpenhof", "x")

    # On a terminal a line tells what is waited for; an interrupt ends the waiting, not the mount.
    servers = [pid for pid, command in descendants(platform.process).items() if "sshd" in command]
    for pid in servers:
        os.kill(pid, signal.SIGSTOP)
    ours, theirs = pty.openpty()
    waiting = subprocess.Popen([COMMAND, "connect", "alpenhof"], env=blind, stdout=subprocess.PIPE, stderr=theirs)
    os.close(theirs)
    shown = ""
    while not shown.endswith("1 s"):
        shown += os.read(ours, 1000).decode()
    for pid in servers:
        os.kill(pid, signal.SIGCONT)
    waiting.send_signal(signal.SIGINT)
    assert waiting.communicate(timeout=5)[0] == b"" and waiting.returncode == 130
    shown += os.read(ours, 1000).decode()
    line = "\r\033[KVerbinde mit alpenhof ..."
    assert shown == f"{line}{line} 1 s\r\033[Kharvellon-connect: Das Verbinden mit alpenhof geht weiter.\r\n", shown
    os.close(ours)
    expect(0, point + "\n", "", "connect", "alpenhof")
    assert mounted(point) and not os.path.exists(record)  # no editor

    with open(os.path.join(point, "web", "notiz.txt"), "w", encoding="utf8") as file:
        file.write("eins\nein $(gesuchtes) Wort\n")
    expect(0, f"{point}/web/notiz.txt:2:ein $(gesuchtes) Wort\n", "", "search", "alpenhof", "$(gesuchtes)")
    expect(1, "", "", "search", "alpenhof", "steht nirgends")
    state = next(p for p in json.loads(run("list", "--json", env=blind).stdout) if p["domain"] == DOMAIN)
    assert state == {"domain": DOMAIN, "folder": point, "name": NAME, "state": "connected"}
    assert json.loads(run("status", "--json").stdout)["connections"] == [state]

    domains = [row.split("\t")[0] for row in run("list").stdout.splitlines()]
    completed = {"": re.findall("^  ([a-z]+) ", run("--help").stdout, re.M), "connect ww": [d for d in domains if d[:2] == "ww"],
                 "connect ": [d.removeprefix("www.") for d in domains], "disconnect ": [DOMAIN[4:]], "search alpenhof ": []}
    for shell, line in [(shell, line) for shell in SHELLS for line in completed]:
        if not shutil.which(shell):
            print(f"{shell} is not installed: {line!r} not completed")
            continue
        words = ["harvellon-connect", *line.split(" ")]
        output = subprocess.check_output([shell, "-c", SHELLS[shell], COMPLETION, *words], text=True, env=environment)
        offered = {text.split("\t")[0] for text in output.split("\n") if text.startswith(words[-1]) and text[:1] not in "-"}
        assert offered == set(completed[line]), (shell, line, output)

    expect(0, "", "", "open", "alpenhof")
    assert recorded().endswith(f"{DOMAIN}.code-workspace")
    expect(1, "", "Kein Programm öffnet Datenbank-Adressen (mysql:). Bitte einen Datenbank-Client installieren.", "open",
           "alpenhof", "--database")
    expect(0, "", "", "disconnect", "--all")
    expect(0, "", "", "disconnect", "alpenhof")
    assert not mounted(point)

    # A link, as the desktop opens it: selects, and waits for the key.
    with open(DESKTOP_FILE, encoding="utf8") as entry:
        text = entry.read()
    assert "\nExec=harvellon-connect %u\n" in text and "\nMimeType=x-scheme-handler/harvellon;\n" in text
    with open(os.path.join(applications, "link.desktop"), "w", encoding="utf8") as entry:
        entry.write(text.replace("Exec=", f"Exec={tools}/"))
    with open(os.path.join(os.environ["XDG_CONFIG_HOME"], "mimeapps.list"), "a", encoding="utf8") as defaults:
        defaults.write("x-scheme-handler/harvellon=link.desktop\n")
    expect(0, "", "", "toggle")  # hides
    for link in (f"harvellon:{DOMAIN}%20", "harvellon://root@x", f"harvellon://{DOMAIN.upper()}/?connect=1"):
        subprocess.run(["xdg-open", link], env=environment, timeout=20, check=True)
    app.await_element("Domain suchen")
    time.sleep(0.5)
    assert not mounted(point)
    keys("Return")
    until("the mount", lambda: mounted(point))

    # Another user: the folder is closed to him, and with a way around it the program refuses him.
    name = hashlib.sha256(os.path.join(home, ".local/share/HarvellonConnect").encode()).hexdigest()[:16]
    probe = ["/usr/bin/python3", "-c", PROBE, os.path.join(os.environ["XDG_RUNTIME_DIR"], "harvellon-ssh", name)]
    other = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
    passing = ["--inh-caps=+dac_override", "--ambient-caps=+dac_override"]
    assert "Erika" in subprocess.run(probe, capture_output=True, text=True).stdout
    assert "PermissionError" in subprocess.run(other + probe, capture_output=True, text=True).stderr
    refused = subprocess.run(other + passing + probe, capture_output=True, text=True)
    assert refused.stdout == "b''\n" or "Reset" in refused.stderr or "BrokenPipe" in refused.stderr, refused

    os.kill(program, signal.SIGTERM)
    until("the end", lambda: not list(processes()))
    assert not mounted(point)
finally:
    for pid in processes():
        os.kill(pid, signal.SIGKILL)
    for pid in servers:
        os.kill(pid, signal.SIGCONT)
    platform.close()
    for entry in ("link.desktop", "story.desktop"):
        if os.path.exists(os.path.join(applications, entry)):
            os.remove(os.path.join(applications, entry))
    shutil.rmtree(tools)
    if not mounted(point):
        shutil.rmtree(folder, ignore_errors=True)

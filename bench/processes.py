#!/usr/bin/python3
"""The memory of the program beside sirikali, another mounting tool in the tray, and how often it wakes up when idle."""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../tools"))
from desktop import Platform, Program, choose_browser, keys, until  # noqa: E402

PROGRAM, PLATFORM = sys.argv[1:3]
RUNS = 11
IDLE = 60  # seconds
SETTLING = 130  # seconds until the last network connection of the start is closed


def field(path, name):
    with open(path, encoding="utf8") as status:
        return int(next(line for line in status if line.startswith(name)).split()[1])


def resident(process):
    return field(f"/proc/{process.pid}/status", "VmRSS") / 1024


def proportional(process):
    return field(f"/proc/{process.pid}/smaps_rollup", "Pss:") / 1024


def switches(process):
    """How often each thread has gone to sleep, which is how often it was woken."""
    tasks = f"/proc/{process.pid}/task"
    return {task: field(f"{tasks}/{task}/status", "voluntary_ctxt") for task in os.listdir(tasks)}


def end(process):
    process.terminate()
    process.wait(timeout=10)


def figure(what, value, unit, limit=None, detail=""):
    """One line of ./dev bench, as bench/Measured.h prints it."""
    detail = detail and f"  ({detail})"
    judged = "" if limit is None else f"  at most {limit:.1f} {unit}: {'reached' if value <= limit else 'MISSED'}"
    print(f"{what:48} {value:8.1f} {unit:2}{detail}{judged}", flush=True)


folder = tempfile.mkdtemp()
platform = Platform(PLATFORM, folder + "/platform", "--projects", "200")
environment = platform.environment(folder + "/home")
try:
    choose_browser("erika")
    app = Program(PROGRAM, environment, subprocess.DEVNULL)
    app.open_panel()
    app.press("Mit Harvellon anmelden")
    until("the rows", lambda: len(app.rows()) > 9)
    end(app.process)

    # From here on without the accessibility bus, which needs memory of its own.
    environment.pop("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", None)
    ours, shared, theirs = [], [], []
    for run in range(RUNS):
        peer = subprocess.Popen(["sirikali"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(2)
        theirs.append(resident(peer))
        end(peer)
        app = Program(PROGRAM, environment, subprocess.DEVNULL)
        time.sleep(1)
        keys("197")
        time.sleep(6.5)  # until the update feed has been read and the TLS libraries are loaded
        ours.append(resident(app.process))
        shared.append(proportional(app.process))
        if run < RUNS - 1:
            end(app.process)
    figure("sirikali: resident memory with its window", statistics.median(theirs), "MB", detail=f"{RUNS} runs")
    figure("the program, shared pages in proportion", statistics.median(shared), "MB", detail=f"{RUNS} runs")
    figure("resident memory, 200 projects, one opened panel", statistics.median(ours), "MB",
           min(60, statistics.median(theirs)), f"{RUNS} runs")

    keys("197")
    time.sleep(SETTLING)
    before = switches(app.process)
    time.sleep(IDLE)
    after = switches(app.process)
    woken = sum(count - before.get(task, 0) for task, count in after.items())
    figure(f"wake-ups in {IDLE} s, panel closed", woken, "", 0)
    end(app.process)
finally:
    platform.close()
    shutil.rmtree(folder, ignore_errors=True)

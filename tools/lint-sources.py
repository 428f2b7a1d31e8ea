#!/usr/bin/python3
"""tools/lint-sources.py BUILD_FOLDER [FILE…]: runs clang-tidy, with the warnings of clang, on the project's sources.

Most of the time of a run goes into the headers of Qt, which are read and checked again for each source. So the sources
of one folder are joined into one text and checked together. They are joined, not included, because many checks look
only at the main file. Where two sources cannot share a text (the same name in both), or something is found, the group
is halved; what is found in a single source is printed.

Only groups that changed since they were last found clean are checked: their text, all headers, the compile options and
the rules count."""
import concurrent.futures
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = os.path.abspath(sys.argv[1])
WORK = os.path.join(BUILD, "joined")
CLEAN = os.path.join(ROOT, "build/lint-clean")
LARGEST_GROUP = 14  # sources; the last groups shall not leave a processor idle
MOC = subprocess.run(["pkg-config", "--variable=libexecdir", "Qt6Core"], capture_output=True, text=True,
                     check=True).stdout.strip() + "/moc"


def text_of(path):
    with open(path, encoding="utf8") as file:
        return file.read()


def options(command):
    """The definitions and include folders of a compile command; the rest is the same for all sources."""
    words = iter(shlex.split(command))
    for word in words:
        if word == "-isystem":
            yield word + next(words)
        elif word[:2] in ("-I", "-D"):
            yield word


def sources():
    """Our own sources that are compiled here, each with its options."""
    found = {}
    for entry in json.loads(text_of(os.path.join(BUILD, "compile_commands.json"))):
        path = os.path.relpath(entry["file"], ROOT)
        if not path.startswith(("build/", "..")):
            found.setdefault(path, list(options(entry["command"])))
    return found


def grouped(paths):
    folders = {}
    for path in sorted(paths):
        folders.setdefault("/".join(os.path.dirname(path).split("/")[:2]), []).append(path)
    for folder in folders.values():
        pieces = -(-len(folder) // LARGEST_GROUP)
        yield from (folder[piece::pieces] for piece in range(pieces))


def make_moc(path, flags):
    """The file NAME.moc that a source with classes of its own includes."""
    for name in re.findall(r'^#include "(\w+\.moc)"', text_of(path), re.M):
        subprocess.run([MOC, path, "-o", os.path.join(WORK, name), *(f for f in flags if f[:2] in ("-I", "-D"))], check=True)


class Group:
    def __init__(self, paths, flags):
        self.paths = paths
        self.flags = list(dict.fromkeys(flag for path in paths for flag in flags[path]))
        self.flags += dict.fromkeys("-iquote" + os.path.join(ROOT, os.path.dirname(path)) for path in paths)
        self.text, self.origins = "", []
        for number, path in enumerate(paths):
            part = text_of(path)
            self.text += f"#undef main\n#define main main{number}\n" if len(paths) > 1 else ""
            self.origins.append((self.text.count("\n"), path))
            self.text += part + "\n"

    def command(self):
        name = hashlib.sha256(self.text.encode()).hexdigest()[:16]
        self.file = os.path.join(WORK, name + ".cpp")
        with open(self.file, "w", encoding="utf8") as file:
            file.write(self.text)
        return ["-std=c++20", "-fPIC", "-I" + WORK, *WARNINGS, *self.flags]

    def stamp(self, common):
        return os.path.join(CLEAN, hashlib.sha256((self.text + repr(self.flags) + common).encode()).hexdigest())

    def located(self, output):
        """The output with the lines of the joined text turned into those of the sources."""
        def origin(match):
            line = int(match[1])
            start, path = next(o for o in reversed(self.origins) if o[0] < line)
            return f"{path}:{line - start}:"

        return re.sub(re.escape(self.file) + r":(\d+):", origin, output).replace(ROOT + "/", "")


def check(paths, flags, common):
    """Whether those sources are clean; prints what is found."""
    group = Group(paths, flags)
    stamp = group.stamp(common)
    if os.path.exists(stamp):
        return True
    arguments = group.command()
    if len(paths) == 1 or subprocess.run(["clang++", "-fsyntax-only", *arguments, group.file], cwd=ROOT,
                                         capture_output=True).returncode == 0:
        result = subprocess.run(["clang-tidy", "--quiet", "--config-file=" + os.path.join(ROOT, ".clang-tidy"), group.file,
                                 "--", *arguments], cwd=ROOT, capture_output=True, text=True)
        if result.returncode == 0:
            with open(stamp, "w", encoding="utf8"):
                return True
        if len(paths) == 1:
            print(group.located(result.stdout), flush=True)
            return False
    # A name of one source can disturb another one, so what is found counts only in the smaller text.
    middle = len(paths) // 2
    halves = [check(half, flags, common) for half in (paths[:middle], paths[middle:])]
    return all(halves)


def main():
    os.makedirs(WORK, exist_ok=True)
    os.makedirs(CLEAN, exist_ok=True)
    os.chdir(ROOT)
    flags = sources()
    wanted = sys.argv[2:] or flags
    for path in wanted:
        make_moc(path, flags[path])
    headers = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "--", "*.h", ".clang-tidy", __file__],
                             capture_output=True, text=True, check=True).stdout.split()
    common = hashlib.sha256("".join(text_of(h) for h in headers if os.path.exists(h)).encode()).hexdigest()
    groups = sorted(grouped(wanted), key=len, reverse=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        clean = list(pool.map(lambda paths: check(paths, flags, common), groups))
    sys.exit(not all(clean))


WARNINGS = re.search(r"target_compile_options\(harvellon_options INTERFACE\s+([^)]*)\)",
                     text_of(os.path.join(ROOT, "cmake/harvellon.cmake")))[1].split()
main()

#!/usr/bin/python3
"""tools/check-structure.py: checks how the program's sources are laid out.

- Includes point one way: Desktop, State, {SignIn, Directory, Mounting, Actions, Updates}, System. Mounting and Actions
  may include Directory; BrowserTab may include System, CommandLine all but Desktop. main and HarvellonMountApp may
  include everything.
- A folder of sources holds at most 25 files, a source at most 300 lines.
- A header shows at most 25 public operations. An operation is a public member function; constructors, destructors,
  operators, signals and const functions, which only read, do not count.
- Of the program's lines on macOS, less than 8 % are compiled there alone: no test on Linux reaches them."""
import collections
import os
import re
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
MOST_FILES, MOST_LINES, MOST_OPERATIONS = 25, 300, 25
MOST_FOR_MACOS = 8  # percent
MIDDLE = {"SignIn", "Directory", "Mounting", "Actions", "Updates"}
MAY_INCLUDE = {
    "System": set(),
    "SignIn": {"System"},
    "Directory": {"System"},
    "Mounting": {"System", "Directory"},
    "Actions": {"System", "Directory"},
    "Updates": {"System"},
    "State": {"System"} | MIDDLE,
    "Desktop": {"System", "State"} | MIDDLE,
    "CommandLine": {"System", "State"} | MIDDLE,
    "BrowserTab": {"System"},
}
# Comments, strings, characters, default values in braces and preprocessor lines.
IGNORED = re.compile(
    r"""R"\(.*?\)"|//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])'|=\s*\{[^{}]*\}|^[ \t]*\#(?:\\\n|[^\n])*""",
    re.S | re.M)


def listed(*patterns):
    found = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "--", *patterns], capture_output=True, text=True,
                           check=True).stdout.splitlines()
    return [path for path in found if os.path.exists(path)]


def text_of(path):
    with open(path, encoding="utf8") as file:
        return file.read()


def wrong_includes(path, text):
    parts = path.split("/")
    if parts[0] != "HarvellonConnect" or len(parts) < 3:
        return
    if parts[1] not in MAY_INCLUDE:
        yield f"{path}: {parts[1]} has no place in the include direction; give it one in tools/check-structure.py"
        return
    allowed = MAY_INCLUDE[parts[1]] | {parts[1]}
    for include in re.findall(r'^\s*#\s*include\s+"([^"]+)"', text, re.M):
        # A path is relative to HarvellonConnect or to the including file.
        target = os.path.normpath(os.path.join(os.path.dirname(path), include))
        if not os.path.exists(target):
            target = os.path.join("HarvellonConnect", include)
        folder = os.path.relpath(target, "HarvellonConnect").split("/")
        if os.path.exists(target) and (len(folder) < 2 or folder[0] not in allowed):
            yield f"{path}: {parts[1]} must not include {include}"


def is_operation(statement, name):
    """Whether the text of one member declaration declares a function that does something."""
    statement = re.sub(r"\[\[.*?\]\]|\bQ_[A-Z_]+\s*(\([^()]*\))?|\bQML_[A-Z_]+\s*(\([^()]*\))?", " ", statement).strip()
    statement = re.sub(r"^template\s*<[^;{}]*?>\s*(?=[\w\[])", "", statement)
    declared = re.match(r"[^()=]*?(~?\w+)\s*\(", statement)
    if not declared or re.match(r"(friend|using|typedef|enum|class|struct)\b", statement) or "operator" in statement:
        return False
    is_reader = re.search(r"\)\s*const\b", statement) is not None
    return declared[1].lstrip("~") != name and not is_reader


def public_operations(text):
    """How many operations the classes of a header show: walks through the braces and knows which section it is in."""
    count, statement, scopes = 0, "", [("namespace", "", True)]
    for token in re.findall(r"\b(?:public|protected|private|Q_SIGNALS)\b(?:\s+Q_SLOTS)?\s*:(?!:)|\w+|\s+|.",
                            IGNORED.sub(" ", text)):
        kind, name, public = scopes[-1]
        if kind == "body":
            if token in "{}":
                scopes.append(("body", "", False)) if token == "{" else scopes.pop()
            continue
        section = re.match(r"(public|protected|private|Q_SIGNALS)\b.*:$", token)
        if section and kind == "class":
            scopes[-1] = (kind, name, section[1] == "public")
            statement = ""
        elif token in "{;":
            count += kind == "class" and public and is_operation(statement, name)
            opened = re.search(r"\b(namespace|class|struct)\b\s*(?:\[\[.*?\]\]\s*)?(\w*)", statement)
            if token == "{" and opened and "(" not in statement and not re.search(r"\benum\b", statement):
                kind = "namespace" if opened[1] == "namespace" else "class"
                scopes.append((kind, opened[2], opened[1] != "class"))
            elif token == "{":
                scopes.append(("body", "", False))
            statement = ""
        elif token == "}":
            scopes.pop()
            statement = ""
        else:
            statement += token
    return count


def main():
    os.chdir(ROOT)
    faults = []
    sources = listed("*.cpp", "*.h", "*.mm", "*.qml")
    for path in sources:
        text = text_of(path)
        lines = text.count("\n")
        if lines > MOST_LINES:
            faults.append(f"{path}: {lines} lines, at most {MOST_LINES}")
        faults += wrong_includes(path, text)
        operations = public_operations(text) if path.endswith(".h") else 0
        if operations > MOST_OPERATIONS:
            faults.append(f"{path}: {operations} public operations, at most {MOST_OPERATIONS}")
    folders = collections.Counter(map(os.path.dirname, listed(*{os.path.dirname(path) for path in sources})))
    for folder in sorted({os.path.dirname(path) for path in sources}):
        if folders[folder] > MOST_FILES:
            faults.append(f"{folder}: {folders[folder]} files, at most {MOST_FILES}")
    program = {path: text_of(path).count("\n") for path in sources
               if path.startswith("HarvellonConnect/") and not re.search(r"_linux\.|/BrowserTab/", path)}
    for_macos = 100 * sum(program[path] for path in program if "_macos." in path) / sum(program.values())
    if for_macos >= MOST_FOR_MACOS:
        faults.append(f"{for_macos:.1f} % of the lines are compiled on macOS alone, less than {MOST_FOR_MACOS} % shall be")
    print("\n".join(faults), end="\n" if faults else "")
    sys.exit(bool(faults))


main()

#!/usr/bin/python3
"""packaging/linux/try-repository.py PACKAGES

Installs the Debian package in PACKAGES on a new Debian, from a repository made for it, with the lines of README.md; starts,
upgrades, removes and purges it, and has apt refuse what was tampered with. Needs root, for debootstrap and chroot. Of this
machine it changes build/try alone, which keeps Debian's packages for the next time."""
import datetime
import functools
import glob
import hashlib
import http.server
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
PUBLISHED = "https://connect.harvellon.example/apt"
NAME, USER = "harvellon-connect", "webdev"


class Failed(Exception):
    pass


def good(what, holds=True, seen=""):
    if not holds:
        raise Failed(f"{what}\n{seen}")
    print("good:", what, flush=True)


def call(*command, **more):
    """(exit status, standard output and error) of a command."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False, **more)
    return done.returncode, done.stdout


def must(*command, **more):
    status, output = call(*command, **more)
    if status:
        raise Failed(f"{' '.join(command)}\n{output[-3000:]}")
    return output


def until(seconds, holds):
    end = time.monotonic() + seconds
    while not holds():
        if time.monotonic() > end:
            return False
        time.sleep(0.2)
    return True


class Requests(http.server.SimpleHTTPRequestHandler):
    paths = []

    def log_message(self, *_words):
        self.paths.append(self.path)


class Debian:
    """A new Debian in a folder, such as people have: with sudo, curl and a user."""

    def __init__(self, folder, display):
        self.folder, self.display = folder, display
        self.environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "DEBIAN_FRONTEND": "noninteractive"}
        cache = os.path.join(ROOT, "build/try")
        os.makedirs(cache, exist_ok=True)
        mirror = must("apt-get", "indextargets", "--format", "$(REPO_URI)", "Codename: bookworm").split()[0]
        must("debootstrap", "--variant=minbase", "--include=ca-certificates,curl,sudo", f"--cache-dir={cache}", "bookworm",
             folder, mirror)
        must("mount", "-t", "proc", "proc", folder + "/proc")
        # Packages start no services here.
        with open(folder + "/usr/sbin/policy-rc.d", "w", encoding="utf8", opener=lambda p, f: os.open(p, f, 0o755)) as file:
            file.write("#!/bin/sh\nexit 101\n")
        # Nobody needs these files after a power failure.
        with open(folder + "/etc/dpkg/dpkg.cfg.d/try", "w", encoding="utf8") as file:
            file.write("force-unsafe-io\n")
        must("cp", "/etc/resolv.conf", "/etc/hosts", folder + "/etc/")
        self.run("useradd", "--create-home", "--uid", "1000", USER)
        self.run("install", "-d", "-m", "700", "-o", USER, "/run/user/1000")

    def command(self, *words):
        return ["chroot", self.folder, *words]

    def run(self, *words):
        return must(*self.command(*words), env=self.environment)

    def as_user(self, *words):
        return self.command("runuser", "-u", USER, "--", "env", f"HOME=/home/{USER}", "XDG_RUNTIME_DIR=/run/user/1000",
                            f"DISPLAY={self.display}", *words)

    def update(self, *options):
        return call(*self.command("apt-get", "update", "-o", "APT::Update::Error-Mode=any", *options), env=self.environment)

    def users_files(self):
        files = [path for path in glob.glob(self.folder + "/home/**", recursive=True, include_hidden=True) if os.path.isfile(path)]
        return {path: hashlib.sha256(open(path, "rb").read()).hexdigest() for path in files if "/.cache/" not in path}

    def start_and_end_program(self):
        program = subprocess.Popen(self.as_user(NAME), env=self.environment, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True)
        status = functools.partial(call, *self.as_user(NAME, "status"), env=self.environment)
        answered = until(20, lambda: "angemeldet" in status()[1])
        seen = status()
        os.killpg(program.pid, signal.SIGTERM)
        ended = until(10, lambda: program.poll() is not None)
        if not ended:
            os.killpg(program.pid, signal.SIGKILL)
        good(f"the program runs without a tray, answers “{seen[1].strip()}”, and ends", answered and ended, seen)


def publish(packages, repository):
    return call(HERE + "/make-repository.sh", packages, repository)


def new_key(folder, owner):
    os.makedirs(folder, mode=0o700)
    os.environ["GNUPGHOME"] = folder
    must("gpg", "--batch", "--quiet", "--passphrase", "", "--quick-generate-key", owner, "ed25519", "sign", "1d")


def newer_version(package, folder):
    """The same package with a higher version and one more file."""
    must("dpkg-deb", "--raw-extract", package, folder + "/content")
    must("sed", "-i", "s/^Version: .*/Version: 99.0-1/", folder + "/content/DEBIAN/control")
    with open(f"{folder}/content/usr/share/doc/{NAME}/news", "w", encoding="utf8") as file:
        file.write("of the higher version\n")
    must("dpkg-deb", "--root-owner-group", "--build", folder + "/content", folder)
    with open(folder + "/higher.cdx.json", "w", encoding="utf8") as file:
        file.write("{}\n")


def append(pattern):
    for path in glob.glob(pattern, recursive=True):
        if os.path.isfile(path):
            with open(path, "a", encoding="utf8") as file:
                file.write("\n")


def exchange(path, position):
    """Another byte at a position of a file."""
    with open(path, "r+b") as file:
        file.seek(position)
        byte = file.read(1)
        file.seek(position)
        file.write(bytes([byte[0] ^ 1]))


def sign_again(release, folder):
    new_key(folder, "Somebody else")
    must("gpg", "--batch", "--yes", "--clearsign", "--output", release + "/InRelease", release + "/Release")


def not_published(packages, repository, work):
    own = os.environ["GNUPGHOME"]
    with open(repository + "/dists/stable/InRelease", encoding="utf8") as file:
        before = file.read()
    shutil.copytree(packages, work + "/other-content")
    exchange(glob.glob(work + "/other-content/*.deb")[0], 5000)
    status, output = publish(work + "/other-content", repository)
    good("another content of the same version is not published", status != 0 and "another content" in output, output)
    new_key(work + "/third-key", "A third one")
    status, output = publish(packages, repository)
    good("nor is anything with another key", status != 0 and "another key" in output, output)
    os.environ["GNUPGHOME"] = own
    with open(repository + "/dists/stable/InRelease", encoding="utf8") as file:
        good("the repository is as it was", file.read() == before)


def refusals(debian, repository, work):
    release = repository + "/dists/stable"
    install = functools.partial(call, *debian.command("apt-get", "install", "--yes", "--reinstall", NAME), env=debian.environment)
    changed = [  # what, who changes it, who must refuse it, with which words
        ("a changed index", lambda: append(release + "/main/**"), debian.update, "unexpected size|Hash Sum mismatch"),
        ("a changed list of hashes", lambda: must("sed", "-i", "s/^Suite: .*/Suite: oldstable/", release + "/InRelease"),
         debian.update, "BADSIG"),
        ("the signature of another key", lambda: sign_again(release, work + "/other-key"), debian.update, "NO_PUBKEY"),
        ("a signature beyond its time", lambda: time.sleep(2), lambda: debian.update("-o", "Acquire::Max-ValidTime=1"),
         "is expired"),
        ("a changed package", lambda: [exchange(path, 5000) for path in glob.glob(repository + "/pool/**/*.deb", recursive=True)],
         lambda: (debian.update(), install())[1], "Hash Sum mismatch"),
    ]
    for what, change, attempt, words in changed:
        shutil.copytree(repository, work + "/true")
        for path in glob.glob(debian.folder + "/var/lib/apt/lists/127*") + glob.glob(debian.folder + f"/var/cache/apt/archives/{NAME}*"):
            os.remove(path)
        change()
        status, output = attempt()
        found = re.search(words, output)
        good(f"{what} is refused: {found and found[0]}", status != 0 and found is not None, output)
        shutil.rmtree(repository)
        os.rename(work + "/true", repository)
        good("the true repository is accepted again", debian.update()[0] == 0)


def tryout(packages, work):
    package = glob.glob(packages + "/*.deb")[0]
    version = must("dpkg-deb", "--field", package, "Version").strip()
    site, repository = work + "/site", work + "/site/apt"
    os.makedirs(work + "/no-key", mode=0o700)
    os.environ["GNUPGHOME"] = work + "/no-key"
    status, output = publish(packages, repository)
    good("without a key nothing is published: " + output.strip(), status != 0 and not os.path.exists(repository), output)
    new_key(work + "/key", "Harvellon (for a try)")
    status, output = publish(packages, repository)
    good("the repository is made", status == 0, output)
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Requests, directory=site))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    with open(ROOT + "/README.md", encoding="utf8") as file:
        lines = [line.strip() for line in file if PUBLISHED in line]
    good("README.md adds the repository in two lines", len(lines) == 2, lines)

    reading, writing = os.pipe()
    screen = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-ac", "-nolisten", "tcp"], pass_fds=[writing],
                              stderr=subprocess.DEVNULL)
    try:
        debian = Debian(work + "/debian", ":" + os.read(reading, 10).decode().strip())
        print(debian.run("sh", "-eux", "-c", "\n".join(lines).replace(PUBLISHED, f"http://127.0.0.1:{server.server_port}/apt")), end="")
        status, output = debian.update()
        good("apt accepts the signature", status == 0, output)
        good("it fetches the indexes by their hashes", any("/by-hash/SHA256/" in path for path in Requests.paths), Requests.paths)
        debian.run("apt-get", "install", "--yes", NAME)
        seen = must(*debian.as_user(NAME, "--version"), env=debian.environment)
        good("what is installed says its version: " + seen.strip(), version.split("-")[0] in seen, seen)
        debian.start_and_end_program()
        debian.run("install", "-D", "-o", USER, "/etc/hostname", f"/home/{USER}/.config/harvellon.com/of-the-user")
        files = debian.users_files()

        os.makedirs(work + "/higher")
        newer_version(package, work + "/higher")
        status, output = publish(work + "/higher", repository)
        good("a second version is added", status == 0, output)
        not_published(packages, repository, work)
        debian.update()
        seen = debian.run("apt", "list", "--upgradable")
        good("apt announces it", f"{NAME}/stable 99.0-1 " in seen and f"upgradable from: {version}" in seen, seen)
        seen = debian.run("apt-cache", "madison", NAME)
        good("the first version is still there", version in seen and "99.0-1" in seen, seen)
        debian.run("apt-get", "upgrade", "--yes")
        good("the upgrade is installed", debian.run("dpkg-query", "-f", "${Version}", "-W", NAME) == "99.0-1")
        debian.start_and_end_program()
        good(f"the user's {len(files)} files are as they were", debian.users_files() == files, (files, debian.users_files()))
        with open(repository + "/dists/stable/Release", encoding="utf8") as file:
            until_when = re.search(r"^Valid-Until: \w+, (.*) \d\d:", file.read(), re.M)[1]
        wanted = (datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(90)).strftime("%d %b %Y")
        good("the signature is valid until " + until_when, until_when == wanted, wanted)
        refusals(debian, repository, work)

        owned = [path for path in debian.run("dpkg-query", "-L", NAME).split("\n") if "harvellon" in path.lower()]
        good(f"{len(owned)} paths are the program's", len(owned) > 20)
        for how in ("remove", "purge"):
            debian.run("apt-get", how, "--yes", NAME)
            left = [path for path in owned if os.path.lexists(debian.folder + path)]
            left += [path for path in must("find", debian.folder + "/usr", debian.folder + "/etc", "-iname", "*harvellon*").split()
                     if not path.endswith(("/keyrings/harvellon.gpg", "/sources.list.d/harvellon.list"))]
            good(f"{how} leaves nothing below /usr and /etc", not left, left)
        good("the user's files are as they were", debian.users_files() == files)
    finally:
        screen.terminate()


def main():
    with tempfile.TemporaryDirectory(prefix="harvellon-try.", ignore_cleanup_errors=True) as work:
        try:
            tryout(os.path.abspath(sys.argv[1]), work)
        except Failed as failure:
            print("bad: ", failure, file=sys.stderr)
            return 1
        finally:
            call("umount", f"{work}/debian/proc")
            call("gpgconf", "--kill", "all")
    return 0


os.umask(0o022)
if os.geteuid() != 0:
    os.execvp("sudo", ["sudo", os.path.abspath(__file__), *sys.argv[1:]])
# Mounts in a name space of its own end with this program, whatever becomes of it.
if "HARVELLON_TRY" not in os.environ:
    os.environ["HARVELLON_TRY"] = "yes"
    os.execvp("unshare", ["unshare", "--mount", os.path.abspath(__file__), *sys.argv[1:]])
sys.exit(main())

#!/usr/bin/python3
"""packaging/linux/list-contents.py DEB COMMIT ADDRESS < names of the packages that the build needs

Prints a CycloneDX list of what is in a Debian package: the program, the libraries that its files are linked with, the
packages it needs or recommends, and, as excluded from what is delivered, those that have built it. Versions are those that
dpkg has installed here. The same package and the same versions give the same bytes. The other packages beside DEB are
named with their hashes."""
import datetime
import glob
import hashlib
import json
import os
import re
import subprocess
import sys
import tempfile
import urllib.parse
import uuid


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def sha256(path):
    with open(path, "rb") as file:
        return [{"alg": "SHA-256", "content": hashlib.sha256(file.read()).hexdigest()}]


def licences(copyright_file):
    """The short names of a copyright file in Debian's machine-readable format, else nothing."""
    try:
        with open(copyright_file, encoding="utf8") as file:
            text = file.read()
    except OSError:
        return []
    if not re.match(r"Format(-Specification)?:", text):
        return []
    found = set()
    for paragraph in re.split(r"\n\s*\n", text):
        fields = dict(re.findall(r"^([\w-]+):[ \t]*(.*)", paragraph, re.M))
        if "Files" in fields and fields["Files"].strip() != "debian/*" and fields.get("License"):
            found.add(fields["License"].strip())
    return sorted(found)


def alternatives(field):
    """[[name, ...], ...]: what a field such as Depends asks for, without versions."""
    return [[re.sub(r"[\s(:].*", "", name.strip()) for name in entry.split("|")] for entry in field.split(",") if entry.strip()]


def installed():
    """{name: (version, architecture)} of each installed package."""
    rows = output("dpkg-query", "-W", "-f", "${db:Status-Abbrev}\t${Package}\t${Version}\t${Architecture}\n").splitlines()
    return {name: (version, arch) for state, name, version, arch in (row.split("\t") for row in rows) if state.startswith("ii")}


def linked(package):
    """{library: package} for each library that a program in the package asks the loader for."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["dpkg-deb", "-x", package, folder], check=True)
        programs = [path for path in glob.glob(folder + "/usr/libexec/**", recursive=True) if os.path.isfile(path)]
        sonames = set(re.findall(r"NEEDED\s+(\S+)", output("objdump", "-p", *programs)))
    places = dict(re.findall(r"^\t(\S+) .*=> (\S+)$", output("/sbin/ldconfig", "-p"), re.M))
    owners = {}
    for soname in sonames:
        # dpkg may know the file by its name before /lib became a link.
        owner = re.search(r"^([^:\s]+)", output("dpkg-query", "-S", "*" + os.path.realpath(places[soname]).removeprefix("/usr")))
        owners[soname] = owner[1]
    return owners


def main(package, commit, address, tools):
    known = installed()
    with open("/etc/os-release", encoding="utf8") as file:
        distribution = dict(line.rstrip().replace('"', "").split("=", 1) for line in file if "=" in line)
    owners = linked(package)
    fields = dict(re.findall(r"^([\w-]+): (.*)", output("dpkg-deb", "--field", package), re.M))

    def component(name, scope):
        version, arch = known[name]
        entry = {
            "type": "library" if re.match("lib|qml6-|qt6-", name) else "application",
            "bom-ref": f"{name}={version}",
            "name": name,
            "version": version,
            "scope": scope,
            "purl": f"pkg:deb/{distribution['ID']}/{name}@{urllib.parse.quote(version, safe='')}"
                    f"?arch={arch}&distro={distribution['ID']}-{distribution['VERSION_ID']}",
        }
        words = licences(f"/usr/share/doc/{name}/copyright")
        if words:
            entry["licenses"] = [{"license": {"name": word}} for word in words]
        sonames = sorted(soname for soname, owner in owners.items() if owner == name)
        if sonames:
            entry["properties"] = [{"name": "harvellon:soname", "value": soname} for soname in sonames]
        return entry

    scopes = {}
    for scope, asked in (("excluded", [[name] for name in tools]), ("optional", alternatives(fields.get("Recommends", ""))),
                         ("required", alternatives(fields["Depends"]) + [[name] for name in owners.values()])):
        for names in asked:
            there = next((name for name in names if name in known), None)
            if there:
                scopes[there] = scope
            elif scope != "optional":
                sys.exit(f"{' or '.join(names)} is not installed, so its version is not known")
    name, version = fields["Package"], fields["Version"]
    program = {
        "type": "application",
        "bom-ref": f"{name}={version}",
        "name": name,
        "version": version,
        "supplier": {"name": "Harvellon", "url": [address]},
        "purl": f"pkg:deb/harvellon/{name}@{urllib.parse.quote(version, safe='')}?arch={fields['Architecture']}",
        "hashes": sha256(package),
        "licenses": [{"license": {"name": "proprietary"}}],
        "properties": [{"name": "harvellon:commit", "value": commit}],
        "components": [{"type": "file", "name": os.path.basename(path), "hashes": sha256(path)}
                       for path in sorted(glob.glob(os.path.dirname(package) + "/*")) if not path.endswith(".json")],
    }
    components = [component(name, scopes[name]) for name in sorted(scopes)]
    time = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    content = {
        "bomFormat": "CycloneDX",
        "specVersion": "1.5",
        "version": 1,
        "metadata": {"timestamp": time.strftime("%Y-%m-%dT%H:%M:%SZ"), "component": program},
        "components": components,
        "dependencies": [{"ref": program["bom-ref"],
                          "dependsOn": [entry["bom-ref"] for entry in components if entry["scope"] != "excluded"]}],
    }
    number = uuid.uuid5(uuid.NAMESPACE_URL, address + json.dumps(content, sort_keys=True))
    print(json.dumps({"serialNumber": f"urn:uuid:{number}", **content}, indent=2, ensure_ascii=False))


main(os.path.abspath(sys.argv[1]), sys.argv[2], sys.argv[3], sys.stdin.read().split())

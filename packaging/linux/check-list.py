#!/usr/bin/python3
"""packaging/linux/check-list.py PACKAGES [SCHEMA]

Checks the list of contents in PACKAGES against the packages beside it, against what dpkg says, and, where the folder of
CycloneDX's schemas is given, against the schema."""
import glob
import hashlib
import json
import subprocess
import sys

import jsonschema


class Sortable(dict):
    """jsonschema of Debian 12 sorts the items that it complains about."""

    def __lt__(self, other):
        return str(self) < str(other)


def main(packages, schemas):
    [path] = glob.glob(packages + "/*.cdx.json")
    with open(path, encoding="utf8") as file:
        content = json.load(file, object_hook=Sortable)
    wrong = []
    if schemas:
        found = {}
        for name in ("bom-1.5", "spdx", "jsf-0.82"):
            with open(f"{schemas}/{name}.SNAPSHOT.schema.json", encoding="utf8") as file:
                found[name] = json.load(file)
        resolver = jsonschema.RefResolver.from_schema(found["bom-1.5"], store={schema["$id"]: schema for schema in found.values()})
        checker = jsonschema.Draft7Validator(found["bom-1.5"], resolver=resolver, format_checker=jsonschema.FormatChecker())
        wrong += [f"{'/'.join(map(str, error.path))}: {error.message}" for error in checker.iter_errors(content)]
    program = content["metadata"]["component"]
    for listed in program["components"]:
        with open(f"{packages}/{listed['name']}", "rb") as file:
            if hashlib.sha256(file.read()).hexdigest() != listed["hashes"][0]["content"]:
                wrong.append(f"{listed['name']} has another hash")
    for listed in content["components"]:
        version = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", listed["name"]], capture_output=True, text=True,
                                 check=False).stdout
        if version != listed["version"]:
            wrong.append(f"{listed['name']} {listed['version']} is {version or 'not'} installed")
    print("\n".join(wrong))
    counts = {scope: sum(listed["scope"] == scope for listed in content["components"])
              for scope in ("required", "optional", "excluded")}
    print(f"{counts}, {sum(len(listed.get('properties', [])) for listed in content['components'])} linked libraries, "
          f"{sum('licenses' in listed for listed in content['components'])} with licences; schema: {schemas or 'not there'}")
    return bool(wrong)


sys.exit(main(sys.argv[1], sys.argv[2] if len(sys.argv) > 2 else None))

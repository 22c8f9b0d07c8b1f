#!/usr/bin/env python3
"""Copies the libraries that programs need, except the C library, and writes a bill of materials in the form SPDX 2.3.

    packaging/bundle.py NAME VERSION DIRECTORY BILL [PACKAGE ...]

The programs in DIRECTORY are read. The libraries that they need are copied to DIRECTORY/lib, and the copyright files
of the libraries' Debian packages to DIRECTORY/licences. PACKAGEs are further packages whose code is in the programs.
BILL is the file of the bill, which has the package, the version and the digests of every library. Prints the version of
the C library that everything in DIRECTORY needs. The same files give the same bytes.
"""

import datetime
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import uuid

C_LIBRARY = "libc6"  # the Debian package that is left out


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def libraries_of(programs):
    """The paths of all libraries that the programs need, by the names under which they are loaded."""
    found = {}
    for name, path in re.findall(r"^\t(\S+) => (/\S+|not found)", output("ldd", *programs), re.MULTILINE):
        if path == "not found":
            raise SystemExit(f"bundle: {name} is not installed")
        found[name] = os.path.realpath(path)
    return found


def owners_of(paths):
    """The Debian packages that files belong to, such as libpng16-16:amd64."""
    lines = subprocess.run(["dpkg", "-S", *paths, *[path.removeprefix("/usr") for path in paths]],
                           env=dict(os.environ, LC_ALL="C"), capture_output=True, text=True, check=False).stdout
    owners = {}
    for package, path in re.findall(r"^(\S+): (/.*)$", lines, re.MULTILINE):
        owners[os.path.realpath(path)] = package
    for path in paths:
        if path not in owners:
            raise SystemExit(f"bundle: no Debian package has {path}")
    return owners


def newest_c_library(files):
    """The newest symbol version of the C library that the files need."""
    versions = re.findall(r"\bGLIBC_(\d+(?:\.\d+)+)", output("objdump", "--private-headers", *files))
    return max(versions, key=lambda version: [int(part) for part in version.split(".")])


def plain(package):
    """The name of a package without its architecture."""
    return package.split(":")[0]


def copyright_file(package):
    return f"/usr/share/doc/{plain(package)}/copyright"


def licences_of(package):
    """The names of licences in a package's copyright file, where it has the form that machines read."""
    with open(copyright_file(package), encoding="utf-8", errors="replace") as file:
        text = file.read()
    if not re.match(r"Format(-Specification)?:", text):
        return "see its file in licences/"
    return ", ".join(sorted(set(re.findall(r"^License: *(\S.*?) *$", text, re.MULTILINE))))


def digest(path, kind):
    with open(path, "rb") as file:
        return hashlib.new(kind, file.read()).hexdigest()


def identifier(kind, name):
    name = plain(name) if kind == "Package" else name
    return f"SPDXRef-{kind}-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)


def package_entry(package):
    form = "${Version}\t${source:Package}\t${source:Version}\t${Architecture}"
    fields = output("dpkg-query", "-W", "-f", form, package)
    version, source, source_version, architecture = fields.split("\t")
    return {
        "name": plain(package), "SPDXID": identifier("Package", package), "versionInfo": version,
        "supplier": "Organization: Debian", "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
        "sourceInfo": f"built by Debian from {source} {source_version}",
        "licenseConcluded": "NOASSERTION", "licenseDeclared": "NOASSERTION",
        "licenseComments": f"in Debian's words: {licences_of(package)}", "copyrightText": "NOASSERTION",
        "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                          "referenceLocator": f"pkg:deb/debian/{plain(package)}@{version}?arch={architecture}"}]}


def file_entry(directory, name):
    path = os.path.join(directory, name)
    return {"fileName": "./" + name, "SPDXID": identifier("File", name),
            "checksums": [{"algorithm": kind.upper(), "checksumValue": digest(path, kind)}
                          for kind in ("sha1", "sha256")],
            "licenseConcluded": "NOASSERTION", "copyrightText": "NOASSERTION"}


def bill_of(name, version, directory, owners, extra):
    """OWNERS are the packages by the libraries' names in the directory."""
    own = {"name": name, "SPDXID": identifier("Package", name), "versionInfo": version,
           "downloadLocation": "NOASSERTION", "filesAnalyzed": False, "licenseConcluded": "NOASSERTION",
           "licenseDeclared": "MIT", "copyrightText": "Copyright (c) 2026 The Velm Nodes authors"}
    packages = sorted(set(owners.values()) | set(extra))
    programs = sorted(entry.name for entry in os.scandir(directory) if is_program(entry.path))
    files = [file_entry(directory, file) for file in programs + sorted(owners)]

    def relation(one, kind, other):
        return {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}

    relations = [relation("SPDXRef-DOCUMENT", "DESCRIBES", own["SPDXID"])]
    relations += [relation(own["SPDXID"], "CONTAINS", identifier("Package", package)) for package in packages]
    relations += [relation(own["SPDXID"], "CONTAINS", identifier("File", file)) for file in programs]
    relations += [relation(identifier("Package", owners[file]), "CONTAINS", identifier("File", file))
                  for file in sorted(owners)]
    epoch = int(os.environ.get("SOURCE_DATE_EPOCH", "0"))
    content = json.dumps(files).encode()
    return {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": f"{name}-{version}",
        "documentNamespace": f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, hashlib.sha256(content).hexdigest())}",
        "creationInfo": {
            "created": datetime.datetime.fromtimestamp(epoch, datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ"),
            "creators": ["Tool: bundle.py"]},
        "packages": [own] + [package_entry(package) for package in packages],
        "files": files, "relationships": relations}


def is_program(path):
    if not os.path.isfile(path):
        return False
    with open(path, "rb") as file:
        return file.read(4) == b"\x7fELF"


def main():
    name, version, directory, bill, *extra = sys.argv[1:]
    programs = sorted(entry.path for entry in os.scandir(directory) if is_program(entry.path))
    libraries = libraries_of(programs)
    owners = owners_of(sorted(set(libraries.values())))
    libraries = {name: path for name, path in libraries.items() if plain(owners[path]) != C_LIBRARY}
    os.makedirs(os.path.join(directory, "lib"))
    os.makedirs(os.path.join(directory, "licences"))
    for library, path in libraries.items():
        shutil.copyfile(path, os.path.join(directory, "lib", library))
    owners = {"lib/" + library: owners[path] for library, path in libraries.items()}
    for package in set(owners.values()) | set(extra):
        shutil.copyfile(copyright_file(package), os.path.join(directory, "licences", plain(package) + ".txt"))
    with open(bill, "w", encoding="utf-8") as file:
        json.dump(bill_of(name, version, directory, owners, extra), file, indent=1)
        file.write("\n")
    print(newest_c_library(programs + [os.path.join(directory, file) for file in owners]))


if __name__ == "__main__":
    main()

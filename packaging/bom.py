#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Writes two documents beside each package: a bill of materials (SPDX) and a vulnerability statement
(CycloneDX).

What a package is made of is looked up where it was built: in ROOT, the folder of a Debian. Listed
are the libraries that its programs are linked with, and theirs in turn, by the Debian packages that
they come from; what the package depends on; and what made it. What is only loaded by name at run
time is not: that depends on the device. The statement judges the package's own code alone; of the
rest it says where Debian does. The same package gives the same two documents.
"""
import argparse
import datetime
import hashlib
import json
import os
import re
import subprocess
import tempfile
import uuid

DEVELOPERS = "ZOR Network Manager developers"
PROJECT = "Organization: " + DEVELOPERS
DEBIAN = "Organization: Debian"
DOCUMENT = "SPDXRef-DOCUMENT"
TRACKER = "https://security-tracker.debian.org/tracker/"
# What is known of the package's own code: each an entry as CycloneDX has it, which affects PRODUCT.
VULNERABILITIES = []
PRODUCT = "product"
TOOLS = (r"g\+\+-\d+{cross}", r"binutils-{gnu}", "debhelper", "dpkg-dev", "meson", "ninja-build")


def lines_of(*command):
    """What a command prints."""
    done = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True)
    return done.stdout.splitlines()


def needed_by(path):
    """The names of the shared libraries that a program or library is linked with."""
    return re.findall(r"\(NEEDED\).*\[(.+)\]", "\n".join(lines_of("readelf", "--dynamic", path)))


class Debian:
    """The packages that are installed below a folder, and whose each shared library is."""

    def __init__(self, root, architecture):
        self.root = root
        self.architecture = architecture
        (multiarch,) = lines_of("dpkg-architecture", "-a", architecture, "-qDEB_HOST_MULTIARCH")
        self.installed = {}
        self.sources = {}
        for line in lines_of("dpkg-query", "--admindir", os.path.join(root, "var/lib/dpkg"), "-W",
                             "-f", "${db:Status-Status} ${Package} ${Architecture} ${Version} "
                                   "${source:Package}\n"):
            status, name, of, version, source = line.split()
            if status == "installed":
                self.installed[name, of] = version
                self.sources[name, of] = source
        self._libraries = {}
        library = re.compile(rf"(?:/usr)?/lib/{re.escape(multiarch)}/([^/]+\.so[.\d]*)")
        for name, of in self.installed:
            if of == architecture:
                self._note_libraries(name, library)

    def _note_libraries(self, name, pattern):
        info = os.path.join(self.root, "var/lib/dpkg/info")
        path = os.path.join(info, f"{name}:{self.architecture}.list")
        if not os.path.exists(path):
            path = os.path.join(info, f"{name}.list")
        with open(path, encoding="utf-8") as file:
            for line in file.read().splitlines():
                match = pattern.fullmatch(line)
                if match:
                    path = os.path.join(self.root, line.lstrip("/"))
                    self._libraries[match[1]] = (name, self.architecture), path

    def linked(self, paths):
        """Package -> packages of the libraries that it is linked with; the product is None."""
        edges, seen = {}, set()
        waiting = [(None, path) for path in paths]
        while waiting:
            package, path = waiting.pop()
            for library in needed_by(path):
                provider, provider_path = self._libraries[library]
                if provider != package:
                    edges.setdefault(package, set()).add(provider)
                if library not in seen:
                    seen.add(library)
                    waiting.append((provider, provider_path))
        return edges

    def tools(self):
        """What compiled, linked and packed it."""
        (gnu,) = lines_of("dpkg-architecture", "-a", self.architecture, "-qDEB_HOST_GNU_TYPE")
        gnu = gnu.replace("_", "-")
        (native,) = lines_of("dpkg", "--print-architecture")
        cross = "" if native == self.architecture else "-" + re.escape(gnu)
        pattern = re.compile("|".join(TOOLS).format(gnu=re.escape(gnu), cross=cross))
        return [(name, of) for name, of in self.installed
                if of in (native, "all") and pattern.fullmatch(name)]

    def licences(self, name):
        """What Debian's copyright file names, where it is written for machines."""
        try:
            with open(os.path.join(self.root, "usr/share/doc", name, "copyright"),
                      encoding="utf-8") as file:
                text = file.read()
        except FileNotFoundError:
            return []
        if not text.startswith("Format:"):
            return []
        return sorted(set(re.findall(r"^License: *(\S.*?) *$", text, re.M)))


def identifier(name, architecture):
    """A package's name within the document."""
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", lambda match: f"-x{ord(match[0]):x}-",
                               f"{name}-{architecture}")


def describe(name, architecture, version, supplier, **more):
    """An entry of the list of packages."""
    return {
        "SPDXID": identifier(name, architecture),
        "name": name,
        "versionInfo": version,
        "supplier": supplier,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": "NOASSERTION",
        "copyrightText": "NOASSERTION",
        "externalRefs": [{
            "referenceCategory": "PACKAGE-MANAGER",
            "referenceType": "purl",
            "referenceLocator": f"pkg:deb/debian/{name.replace('+', '%2B')}"
                                f"@{version.replace('+', '%2B')}?arch={architecture}"}],
        **more}


def describe_debian(debian, package):
    """The entry of a package of Debian's."""
    licences = debian.licences(package[0])
    more = {}
    if licences:
        more["licenseComments"] = "Its copyright file names: " + ", ".join(licences)
    entry = describe(*package, debian.installed[package], DEBIAN, **more)
    entry["externalRefs"].append({
        "referenceCategory": "SECURITY",
        "referenceType": "advisory",
        "referenceLocator": TRACKER + "source-package/" + debian.sources[package]})
    return entry


def urn_of(document):
    """A name that only the same content has."""
    content = hashlib.sha256(json.dumps(document, sort_keys=True).encode()).hexdigest()
    return uuid.uuid5(uuid.NAMESPACE_OID, content).urn


def bill(debian, deb, commit, created):
    """The document for one package."""
    fields = ("Package", "Version", "Depends")
    name, version, depends = (
        "".join(lines_of("dpkg-deb", "--field", deb, field)) for field in fields)
    with open(deb, "rb") as file:
        checksum = hashlib.file_digest(file, "sha256").hexdigest()
    product = describe(
        name, debian.architecture, version, PROJECT,
        packageFileName=os.path.basename(deb), sourceInfo=f"commit {commit}",
        checksums=[{"algorithm": "SHA256", "checksumValue": checksum}],
        licenseConcluded="MIT", licenseDeclared="MIT",
        copyrightText="2026 The ZOR Network Manager developers")
    del product["externalRefs"]  # it is no package of Debian's

    with tempfile.TemporaryDirectory() as folder:
        lines_of("dpkg-deb", "--extract", deb, folder)
        programs = []
        for place, _, names in os.walk(folder):
            for path in (os.path.join(place, name) for name in names):
                with open(path, "rb") as file:
                    if file.read(4) == b"\x7fELF":
                        programs.append(path)
        linked = debian.linked(programs)

    depended = [(direct, debian.architecture)
                for direct in re.findall(r"(?:^|, )([\w.+-]+)", depends)]
    tools = debian.tools()
    packages = {*linked[None], *depended, *tools}.union(*linked.values())

    def id_of(package):
        return product["SPDXID"] if package is None else identifier(*package)

    relations = {(DOCUMENT, "DESCRIBES", product["SPDXID"])}
    relations |= {(id_of(package), "DYNAMIC_LINK", id_of(library))
                  for package, libraries in linked.items() for library in libraries}
    relations |= {(id_of(None), "DEPENDS_ON", id_of(package)) for package in depended}
    relations |= {(id_of(tool), "BUILD_TOOL_OF", id_of(None)) for tool in tools}
    document = {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": DOCUMENT,
        "name": f"{name}_{version}_{debian.architecture}",
        "creationInfo": {
            "created": datetime.datetime.fromtimestamp(created, datetime.timezone.utc)
                       .strftime("%Y-%m-%dT%H:%M:%SZ"),
            "creators": [PROJECT]},
        "packages": [product] + [describe_debian(debian, package) for package in sorted(packages)],
        "relationships": [
            {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}
            for one, kind, other in sorted(relations)]}
    document["documentNamespace"] = urn_of(document)
    check(document)
    return document


def check(document):
    """Each thing has an identifier of its own, and is related to the rest."""
    names = [document["SPDXID"]] + [package["SPDXID"] for package in document["packages"]]
    assert len(names) == len(set(names)), names
    related = {relation[end] for relation in document["relationships"]
               for end in ("spdxElementId", "relatedSpdxElement")}
    assert related == set(names), related ^ set(names)
    kinds = {relation["relationshipType"] for relation in document["relationships"]}
    assert kinds == {"DESCRIBES", "DYNAMIC_LINK", "DEPENDS_ON", "BUILD_TOOL_OF"}, kinds


def statement(bill_document, bill_path):
    """The vulnerability statement of the package that a bill describes first."""
    product = bill_document["packages"][0]
    with open(bill_path, "rb") as file:
        checksum = hashlib.file_digest(file, "sha256").hexdigest()
    with open(os.path.join(os.path.dirname(__file__), "../SECURITY.md"), encoding="utf-8") as file:
        contact = re.search(r"<(\S+@\S+)>", file.read())[1]
    now = bill_document["creationInfo"]["created"]
    document = {
        "bomFormat": "CycloneDX",
        "specVersion": "1.6",
        "metadata": {
            "timestamp": now,
            "component": {
                "type": "application",
                "bom-ref": PRODUCT,
                "name": product["name"],
                "version": product["versionInfo"],
                "supplier": {"name": DEVELOPERS},
                "licenses": [{"license": {"id": product["licenseDeclared"]}}],
                "hashes": [{"alg": "SHA-256", "content": product["checksums"][0]["checksumValue"]}],
                "externalReferences": [
                    {"type": "bom", "url": os.path.basename(bill_path),
                     "hashes": [{"alg": "SHA-256", "content": checksum}]},
                    {"type": "security-contact", "url": "mailto:" + contact},
                    {"type": "advisories", "url": TRACKER + "data/json",
                     "comment": "of the Debian packages that the bill of materials names"}]}},
        "vulnerabilities": VULNERABILITIES,
        "annotations": [{
            "subjects": [PRODUCT],
            "annotator": {"organization": {"name": DEVELOPERS}},
            "timestamp": now,
            "text": "Listed is what its developers know of the package's own code. What it is linked "
                    "with, or depends on, comes from Debian and is not judged here: what is open in "
                    "that changes from day to day, and was not asked for when this was written."}]}
    document["serialNumber"] = urn_of(document)
    return document


def write(document, path):
    """Writes it for machines, and so that a person can read it."""
    with open(path, "w", encoding="utf-8") as file:
        json.dump(document, file, indent=2, ensure_ascii=False)
        file.write("\n")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", default="/", help="where the packages were built")
    parser.add_argument("--commit", required=True, help="what they were built from")
    parser.add_argument("--created", type=int, required=True, help="seconds since 1970")
    parser.add_argument("debs", nargs="+", metavar="DEB")
    arguments = parser.parse_args()
    for deb in arguments.debs:
        (architecture,) = lines_of("dpkg-deb", "--field", deb, "Architecture")
        document = bill(Debian(arguments.root, architecture), deb, arguments.commit,
                        arguments.created)
        bill_path = deb.removesuffix(".deb") + ".spdx.json"
        write(document, bill_path)
        write(statement(document, bill_path), deb.removesuffix(".deb") + ".cdx.json")


main()

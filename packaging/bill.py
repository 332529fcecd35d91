#!/usr/bin/python3
"""Writes the software bill of materials of an unpacked bundle, in the format SPDX 2.3: each file, the package of Debian that
it comes from, and that package's version, source and licence."""

from __future__ import annotations

import argparse
import dataclasses
import datetime
import hashlib
import json
import pathlib
import re

WEBSITE = "https://tarnwick.org"
MAKER = "Organization: The Tarnwick authors"
SYSTEM = "distro=debian-12"
PACKAGE = re.compile(r"(\S+) (\S+), from the source (\S+) (\S+)")
NOTHING = "NOASSERTION"
Entry = dict[str, object]


@dataclasses.dataclass(frozen=True)
class Origin:
    """A package of Debian."""

    name: str
    version: str
    source: str
    source_version: str
    licence: str  # the text


class Bundle:
    def __init__(self, folder: pathlib.Path) -> None:
        self._folder = folder
        self._documents = folder / "share/doc/tarnwick"
        self.version: str = json.loads((folder / "Information.json").read_text(encoding="utf-8"))["version"]
        self.licence = (self._documents / "LICENSE").read_text(encoding="utf-8")
        # By the file's path; what has none is our own.
        self.owners = dict(line.split() for line in (self._documents / "files").read_text(encoding="utf-8").splitlines())
        self.origins = [self._origin(line) for line in (self._documents / "libraries/packages").read_text(encoding="utf-8").splitlines()]

    def files(self) -> list[str]:
        """Their paths. A link is none."""
        found = (path for path in self._folder.rglob("*") if path.is_file() and not path.is_symlink())
        return sorted(str(path.relative_to(self._folder)) for path in found)

    def digest(self, file: str, kind: str) -> str:
        return hashlib.new(kind, (self._folder / file).read_bytes()).hexdigest()

    def _origin(self, line: str) -> Origin:
        named = PACKAGE.fullmatch(line)
        if not named:
            raise SystemExit(f"This names no package: {line}")
        licence = (self._documents / "libraries" / named[1]).read_text(encoding="utf-8", errors="replace")
        return Origin(named[1], named[2], named[3], named[4], licence)


def identifier(kind: str, name: str) -> str:
    """Only letters, digits, dots and hyphens may be in one."""
    return f"SPDXRef-{kind}-" + re.sub(r"[^A-Za-z0-9.-]", lambda letter: f"-{ord(letter[0]):x}-", name)


def licence_identifier(name: str) -> str:
    return "LicenseRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)


def relation(one: str, kind: str, other: str) -> Entry:
    return {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}


def file_entry(bundle: Bundle, file: str) -> Entry:
    return {
        "SPDXID": identifier("File", file),
        "fileName": f"./{file}",
        "checksums": [
            {"algorithm": kind.upper(), "checksumValue": bundle.digest(file, kind)} for kind in ("sha1", "sha256")
        ],
        "licenseConcluded": NOTHING,
        "licenseInfoInFiles": [NOTHING],
        "copyrightText": NOTHING,
    }


def verification_code(bundle: Bundle, files: list[str]) -> Entry:
    digests = sorted(bundle.digest(file, "sha1") for file in files)
    return {"packageVerificationCodeValue": hashlib.sha1("".join(digests).encode()).hexdigest()}


def contents_entry(bundle: Bundle, files: list[str]) -> Entry:
    """What a package's entry says of its files."""
    if not files:
        return {"filesAnalyzed": False}
    return {
        "filesAnalyzed": True,
        "packageVerificationCode": verification_code(bundle, files),
        "licenseInfoFromFiles": [NOTHING],
    }


def product_entry(bundle: Bundle, archive: pathlib.Path, files: list[str]) -> Entry:
    return {
        "SPDXID": "SPDXRef-Tarnwick",
        "name": "Tarnwick",
        "versionInfo": bundle.version,
        "supplier": MAKER,
        "packageFileName": archive.name,
        "checksums": [{"algorithm": "SHA256", "checksumValue": hashlib.sha256(archive.read_bytes()).hexdigest()}],
        "downloadLocation": NOTHING,
        "homepage": WEBSITE,
        "primaryPackagePurpose": "APPLICATION",
        "licenseConcluded": "MIT",
        "licenseDeclared": "MIT",
        "copyrightText": next(line for line in bundle.licence.splitlines() if line.startswith("Copyright")),
        **contents_entry(bundle, files),
    }


def origin_entry(bundle: Bundle, origin: Origin, files: list[str]) -> Entry:
    return {
        "SPDXID": identifier("Package", origin.name),
        "name": origin.name,
        "versionInfo": origin.version,
        "supplier": "Organization: Debian",
        "sourceInfo": f"built by Debian from the source package {origin.source} {origin.source_version}",
        "downloadLocation": NOTHING,
        "externalRefs": [
            {
                "referenceCategory": "PACKAGE-MANAGER",
                "referenceType": "purl",
                "referenceLocator": f"pkg:deb/debian/{origin.name}@{origin.version}?{SYSTEM}".replace("+", "%2B"),
            }
        ],
        "licenseConcluded": NOTHING,
        "licenseDeclared": licence_identifier(origin.name),
        "copyrightText": NOTHING,
        "comment": f"Licence and copyright: share/doc/tarnwick/libraries/{origin.name} in the bundle.",
        **contents_entry(bundle, files),
    }


def files_of(bundle: Bundle, package: str | None) -> list[str]:
    """None stands for our own."""
    return [file for file in bundle.files() if bundle.owners.get(file) == package]


def relations_of(bundle: Bundle, origin: Origin) -> list[Entry]:
    package = identifier("Package", origin.name)
    files = files_of(bundle, origin.name)
    # What has no file of its own is compiled into the programs.
    return [
        relation("SPDXRef-Tarnwick", "CONTAINS" if files else "STATIC_LINK", package),
        *(relation(package, "CONTAINS", identifier("File", file)) for file in files),
    ]


def bill(bundle: Bundle, archive: pathlib.Path, time: datetime.datetime) -> Entry:
    own = files_of(bundle, None)
    product = product_entry(bundle, archive, own)
    digest = hashlib.sha256(archive.read_bytes()).hexdigest()
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": archive.name,
        "documentNamespace": f"{WEBSITE}/spdx/{archive.name}-{digest}",
        "creationInfo": {
            "created": time.strftime("%Y-%m-%dT%H:%M:%SZ"),
            "creators": [MAKER, f"Tool: {pathlib.Path(__file__).name}-{bundle.version}"],
        },
        "packages": [product, *(origin_entry(bundle, origin, files_of(bundle, origin.name)) for origin in bundle.origins)],
        "files": [file_entry(bundle, file) for file in bundle.files()],
        "hasExtractedLicensingInfos": [
            {"licenseId": licence_identifier(origin.name), "name": origin.name, "extractedText": origin.licence}
            for origin in bundle.origins
        ],
        "relationships": [
            relation("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-Tarnwick"),
            *(relation("SPDXRef-Tarnwick", "CONTAINS", identifier("File", file)) for file in own),
            *(entry for origin in bundle.origins for entry in relations_of(bundle, origin)),
        ],
    }


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--archive", type=pathlib.Path, required=True, help="what the bundle was packed as")
    parser.add_argument("--time", type=int, required=True, help="when it was made: seconds since 1970")
    parser.add_argument("bundle", type=pathlib.Path)
    parser.add_argument("bill", type=pathlib.Path)
    options = parser.parse_args()
    time = datetime.datetime.fromtimestamp(options.time, datetime.timezone.utc)
    document = bill(Bundle(options.bundle), options.archive, time)
    options.bill.write_text(json.dumps(document, indent=1, ensure_ascii=False) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()

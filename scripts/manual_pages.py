#!/usr/bin/env python3
"""Makes the manual pages from the documents, which are their one source.

    manual_pages.py --version VERSION --output DIRECTORY [--compress]

Writes DIRECTORY/man1/TaVekUtil.1 and so on; with --compress TaVekUtil.1.gz, as Debian installs them. The date of the pages is that of the version in CHANGELOG.md.
"""

import argparse
import datetime
import gzip
import pathlib
import re
import sys
from dataclasses import dataclass

from markdown_to_mdoc import Converter

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent


@dataclass(frozen=True)
class Page:
    name: str
    section: int
    documents: tuple
    about: str

    @property
    def path(self):
        return f"man{self.section}/{self.name}.{self.section}"


PAGES = (
    Page("TaVekUtil", 1, ("docs/command-line.md", "docs/exit-status.md"), "edit sensor upgrade archives"),
    Page("TaVekInspect", 1, ("docs/inspect.md",), "look into sensor upgrade archives"),
    Page(
        "TaVekUtil-configuration", 5, ("docs/configuration.md",), "configuration of a batch run of TaVekUtil"
    ),
    Page("TaVekUtil-package", 5, ("docs/addon-packages.md",), "add-on packages and their manifest"),
    Page("TaVekUtil-manifest", 5, ("docs/unified-manifest.md",), "manifest of the packages in an archive"),
    Page("TaVekUtil-script", 5, ("docs/startup-script.md",), "start-up script of an upgrade archive"),
    Page("TaVekUtil-container", 5, ("docs/container.md",), "upgrade archives as ZIP files"),
    Page("TaVekUtil-failures", 7, ("docs/failures.md",), "how TaVekUtil behaves on failure"),
    Page("TaVekUtil-messages", 7, ("docs/messages.md",), "messages of TaVekUtil, with cause and cure"),
    Page("TaVekUtil-performance", 7, ("docs/performance.md",), "what TaVekUtil takes in time and memory"),
    Page("TaVekUtil-security", 7, ("SECURITY.md", "docs/signing.md"), "what TaVekUtil trusts, and signing"),
)


def release_date(version):
    """The date behind the version's heading in the list of changes; today's for one that is not released."""
    changes = (REPOSITORY / "CHANGELOG.md").read_text()
    heading = re.search(rf"^## {re.escape(version)} - (\d{{4}}-\d\d-\d\d)$", changes, re.M)
    date = datetime.date.fromisoformat(heading.group(1)) if heading else datetime.date.today()
    return f"{date:%B} {date.day}, {date.year}"


def references(page, pages):
    """The pages to see also, in the order of section and name."""
    others = sorted(
        (other for other in pages if other is not page), key=lambda other: (other.section, other.name)
    )
    lines = [f".Xr {other.name} {other.section} ," for other in others]
    return [".Sh SEE ALSO", *lines[:-1], lines[-1].removesuffix(" ,")]


def render(page, pages, version):
    """The page as mdoc."""
    lines = [
        f'.\\" Made from {" and ".join(page.documents)} by scripts/manual_pages.py; change those.',
        f".Dd {release_date(version)}",
        f".Dt {page.name.upper()} {page.section}",
        f".Os TaVekUtil {version}",
        ".Sh NAME",
        f".Nm {page.name}",
        f".Nd {page.about}",
    ]
    others = [other for other in pages if other is not page]
    links = {document.rsplit("/", 1)[-1]: other for other in others for document in other.documents}
    for document in page.documents:
        text = (REPOSITORY / document).read_text()
        title = text.partition("\n")[0].removeprefix("# ")
        headings = {"Mind": "Notes"} | ({title: "Description"} if document == page.documents[0] else {})
        lines += Converter(links, headings).convert(text)
    return "\n".join([*lines, *references(page, pages)]) + "\n"


def main():
    parser = argparse.ArgumentParser(description="Makes the manual pages.")
    parser.add_argument("--version", required=True)
    parser.add_argument("--output", required=True, type=pathlib.Path)
    parser.add_argument("--compress", action="store_true")
    options = parser.parse_args()
    pages = [page for page in PAGES if all((REPOSITORY / name).exists() for name in page.documents)]
    for page in pages:
        target = options.output / page.path
        target.parent.mkdir(parents=True, exist_ok=True)
        content = render(page, pages, options.version).encode()
        if options.compress:
            target.with_name(target.name + ".gz").write_bytes(gzip.compress(content, mtime=0))
        else:
            target.write_bytes(content)
    return 0


if __name__ == "__main__":
    sys.exit(main())

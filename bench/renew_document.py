"""Puts a measured report into docs/benchmarks.md.

    renew_document.py DOCUMENT REPORT PUBLIC-HEADER

The document keeps one section for each version of the library, the newest first, between a pair of marker lines. A
report for a version that has a section replaces it; a new version's goes on top.
"""

import datetime
import re
import sys


def version_of(header_text):
    parts = re.findall(r"#define ORVA_FD_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", header_text)
    if len(parts) != 3:
        sys.exit("the public header does not state a version")
    return ".".join(parts)


def section(version, report):
    today = datetime.datetime.now(datetime.timezone.utc).date()
    return (
        f"<!-- measured {version} -->\n## {version}, measured on {today}\n\n{report.strip()}\n<!-- end of {version} -->\n"
    )


def renewed(document, version, report):
    text = section(version, report)
    old = re.compile(
        rf"<!-- measured {re.escape(version)} -->\n.*?<!-- end of {re.escape(version)} -->\n", re.DOTALL
    )
    if old.search(document):
        return old.sub(lambda _: text, document, count=1)
    first = document.find("<!-- measured ")
    if first < 0:
        return document.rstrip("\n") + "\n\n" + text
    return document[:first] + text + "\n" + document[first:]


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    document_path, report_path, header_path = sys.argv[1:]
    with open(document_path, encoding="utf-8") as file:
        document = file.read()
    with open(report_path, encoding="utf-8") as file:
        report = file.read()
    with open(header_path, encoding="utf-8") as file:
        version = version_of(file.read())
    with open(document_path, "w", encoding="utf-8") as file:
        file.write(renewed(document, version, report))


if __name__ == "__main__":
    main()

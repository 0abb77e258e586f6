#!/usr/bin/env python3
"""Fails when a user-visible text in the code has no finished translation in a shipped .ts file.

lupdate extracts the texts (Localizable::tr calls and QT_TRANSLATE_NOOP marks) from the source
folders into a scratch file; every one must stand, translated, in each translations/gaugewell_*.ts.
"""
import pathlib
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

FOLDERS = ["UsageDomain", "Platform", "ProviderKit", "CodexProvider", "ClaudeProvider", "UsageCoordinator",
           "UsagePresentation", "GaugewellUI", "app"]


def messages(ts_file: pathlib.Path) -> dict:
    found = {}
    for context in ElementTree.parse(ts_file).getroot().iter("context"):
        name = context.findtext("name")
        for message in context.iter("message"):
            translation = message.find("translation")
            finished = translation is not None and translation.get("type") not in ("unfinished", "obsolete", "vanished")
            text = (translation.text or "") if translation is not None else ""
            found[(name, message.findtext("source"))] = finished and bool(text.strip())
    return found


def main() -> int:
    lupdate, root = sys.argv[1], pathlib.Path(sys.argv[2])
    with tempfile.TemporaryDirectory() as scratch:
        extracted_file = pathlib.Path(scratch) / "extracted.ts"
        subprocess.run([lupdate, "-silent", "-locations", "none", *[str(root / folder) for folder in FOLDERS],
                        "-ts", str(extracted_file)], check=True)
        extracted = messages(extracted_file)
    problems = []
    contexts = {context for context, _ in extracted}
    if contexts - {"Localizable"}:
        problems.append(f"texts outside the Localizable context: {sorted(contexts - {'Localizable'})}")
    shipped = sorted((root / "translations").glob("gaugewell_*.ts"))
    if not shipped:
        problems.append("no translations/gaugewell_*.ts")
    for ts_file in shipped:
        present = messages(ts_file)
        for key in sorted(extracted):
            if key not in present:
                problems.append(f"{ts_file.name}: missing {key[1]!r}")
            elif not present[key]:
                problems.append(f"{ts_file.name}: not translated {key[1]!r}")
    for problem in problems:
        print(problem)
    print(f"translations: {len(extracted)} texts, {len(problems)} problem(s)")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

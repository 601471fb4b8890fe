#!/usr/bin/env python3
"""Fails when a text the program translates has no finished entry in every
translation table.

Texts are found in the sources the way lupdate would read them: NARV_TR("...")
and QT_TRANSLATE_NOOP("Narv", "...") in C++, qsTranslate("Ctx", "...") and
qsTr("...") (context: the file's name) in QML. A finished entry has a non-empty
translation that is not marked unfinished, obsolete or vanished.

    check_complete.py SOURCE_DIR TS_FILE...
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as ET

STRING = r'"((?:[^"\\]|\\.)*)"'
PATTERNS = [
    (re.compile(r'\bNARV_TR\(\s*' + STRING + r'\s*\)'), lambda m, f: ("Narv", m.group(1))),
    (re.compile(r'\bQT_TRANSLATE_NOOP\(\s*' + STRING + r'\s*,\s*' + STRING), lambda m, f: (m.group(1), m.group(2))),
    (re.compile(r'\bqsTranslate\(\s*' + STRING + r'\s*,\s*' + STRING), lambda m, f: (m.group(1), m.group(2))),
    (re.compile(r'\bqsTr\(\s*' + STRING), lambda m, f: (f.stem, m.group(1))),
]


def unescape(text):
    return bytes(text, "utf-8").decode("unicode_escape").encode("latin-1").decode("utf-8")


def source_texts(root):
    found = {}
    for path in sorted(root.rglob("*")):
        if path.suffix not in (".cpp", ".h", ".qml"):
            continue
        code = path.read_text(encoding="utf-8")
        for pattern, key in PATTERNS:
            for match in pattern.finditer(code):
                context, text = key(match, path)
                found.setdefault((context, unescape(text)), f"{path.relative_to(root)}")
    return found


def finished_entries(ts_path):
    entries = set()
    for context in ET.parse(ts_path).getroot().iter("context"):
        name = context.findtext("name")
        for message in context.iter("message"):
            translation = message.find("translation")
            if translation is None:
                continue
            kind = translation.get("type", "")
            if kind in ("unfinished", "obsolete", "vanished"):
                continue
            if not (translation.text or "").strip() and not list(translation):
                continue
            entries.add((name, message.findtext("source")))
    return entries


def main():
    root = pathlib.Path(sys.argv[1])
    texts = source_texts(root)
    if not texts:
        print("no translatable texts found: the patterns are out of date")
        return 1
    failed = 0
    for ts in sys.argv[2:]:
        entries = finished_entries(ts)
        missing = sorted(set(texts) - entries)
        for context, text in missing:
            print(f"{pathlib.Path(ts).name}: no translation of {text!r} (context {context}, {texts[(context, text)]})")
        failed += bool(missing)
    tables = len(sys.argv) - 2
    print(f"{len(texts)} texts checked against {tables} tables")
    print(f"translations: {tables - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

"""The tests that docs/hardening.md names are there: dangers_test.py PROJECT_ROOT.

A name is Suite.Test of GoogleTest, or "folder: name" of a test that is registered with ctest.
"""

import pathlib
import re
import sys

LEAST = {"What is tried": 10, "Known dangers": 13}  # rows


def rows_of(text):
    """Of each heading, the last cell of every row of its table."""
    found = {}
    heading = None
    for line in text.splitlines():
        if line.startswith("## "):
            heading = line[3:]
        elif line.startswith("|"):
            found.setdefault(heading, []).append(line.strip("|").split("|")[-1])
    return {heading: cells[2:] for heading, cells in found.items()}  # behind the head and the rule


def google_tests(root):
    pattern = re.compile(r"^(?:TEST|TEST_F|TEST_P)\((\w+), *(\w+)\)", re.MULTILINE)
    return {".".join(names) for path in root.glob("tests/*/*.cpp") for names in pattern.findall(path.read_text())}


def is_registered(root, name):
    """By its whole name, or as a word of a list of scripts."""
    folder, _, word = name.partition(": ")
    lists = root / "tests" / folder / "CMakeLists.txt"
    if not word or not lists.exists():
        return False
    text = lists.read_text()
    return f'"{name}"' in text or ((lists.parent / f"{word}_test.py").exists() and re.search(rf"\b{word}\b", text) is not None)


def main():
    root = pathlib.Path(sys.argv[1])
    known = google_tests(root)
    wrong = []
    tables = rows_of((root / "docs" / "hardening.md").read_text())
    for heading, least in LEAST.items():
        cells = tables.get(heading, [])
        if len(cells) < least:
            wrong.append(f"'{heading}' has {len(cells)} rows, not {least} or more")
        for cell in cells:
            names = re.findall(r"`([^`]+)`", cell)
            if not names:
                wrong.append(f"no test is named in '{cell.strip()}'")
            wrong += [f"there is no test {name}" for name in names if name not in known and not is_registered(root, name)]
    if wrong:
        sys.exit("docs/hardening.md: " + "\n".join(wrong))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Text that must not stand in the project: paths of one machine, unfinished work, references to planning papers.

    check_text.py ROOT
"""
import os
import re
import subprocess
import sys

root = sys.argv[1]
me = os.path.basename(__file__)
FORBIDDEN = [
    (re.compile(r"\bParts? [1-9]\.[0-9]\b"), "planning papers"),
    (re.compile(r"\b[Tt]he spec\b|\b[Ss]pecification (says|document|requires)|spec\.md|\bissue #?[0-9]+\b"),
     "planning papers"),
    (re.compile(r"/(wor" r"k|ho" r"me/[a-z]+|tm" r"p/[a-z_]*jobs)/"), "path of one machine"),
    (re.compile(r"\b(TOD" r"O|FIXM" r"E|XX" r"X)\b"), "unfinished work"),
]

try:
    tracked = subprocess.run(["git", "-C", root, "ls-files", "-co", "--exclude-standard"], capture_output=True, text=True)
    names = [name for name in tracked.stdout.split("\n") if name]
except FileNotFoundError:
    names = []
if not names:  # no git here, or an unpacked archive
    for path, folders, files_here in os.walk(root):
        folders[:] = [f for f in folders if f not in ("build", ".git")]
        names += [os.path.relpath(os.path.join(path, f), root) for f in files_here]
faults, files = [], 0
for name in names:
    if not name or os.path.basename(name) == me:
        continue
    try:
        text = open(os.path.join(root, name), encoding="utf-8").read()
    except (OSError, UnicodeDecodeError):
        continue
    files += 1
    for number, line in enumerate(text.split("\n"), 1):
        for pattern, why in FORBIDDEN:
            if pattern.search(line):
                faults.append(f"{name}:{number}: {why}: {line.strip()[:100]}")

print(f"{files} files, {len(faults)} faults")
for fault in faults:
    print(fault)
sys.exit(1 if faults or files == 0 else 0)

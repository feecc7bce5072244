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

tracked = subprocess.run(["git", "-C", root, "ls-files", "-co", "--exclude-standard"], capture_output=True, text=True)
names = tracked.stdout.split("\n") if tracked.returncode == 0 else []
if not [n for n in names if n]:  # an unpacked archive
    names = [os.path.relpath(os.path.join(p, n), root) for p, d, f in os.walk(root) for n in f
             if "/build" not in p and "/.git" not in p]
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

#!/usr/bin/env python3
"""Includes point downwards only.

    check_includes.py ROOT

foundation < storage < multiply < numbers, digits < series < compute, tools < shell. The console is the one named
exception: any folder may include it. Quoted includes are written from the root and name a file that exists.
"""
import os
import re
import sys

LEVEL = {"foundation": 0, "storage": 1, "multiply": 2, "numbers": 3, "digits": 3, "series": 4, "compute": 5,
         "tools": 5, "shell": 6}
CONSOLE = "shell/console.hpp"

root = sys.argv[1]
faults = []
files = 0
for folder in LEVEL:
    for path, _, names in os.walk(os.path.join(root, folder)):
        for name in names:
            if not name.endswith((".cpp", ".hpp", ".inc")):
                continue
            files += 1
            full = os.path.join(path, name)
            here = os.path.relpath(full, root)
            console = re.match(r"shell/console[a-z_]*\.", here)
            level = 0 if console else LEVEL[folder]
            for number, line in enumerate(open(full, encoding="utf-8"), 1):
                include = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
                if not include:
                    continue
                target = include.group(1)
                where = f"{here}:{number}: {target}"
                if not os.path.isfile(os.path.join(root, target)):
                    faults.append(f"{where}: no such file from the root")
                    continue
                if target == CONSOLE or (console and target.startswith("shell/console")):
                    continue
                other = target.split("/")[0]
                if other not in LEVEL:
                    faults.append(f"{where}: not a folder of the house")
                elif other != folder and LEVEL[other] >= level and not (console and other == "foundation"):
                    faults.append(f"{where}: points upwards or sideways")

print(f"{files} files, {len(faults)} faults")
for fault in faults:
    print(fault)
sys.exit(1 if faults or files == 0 else 0)

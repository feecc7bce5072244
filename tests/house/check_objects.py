#!/usr/bin/env python3
"""Kernel objects and baseline objects stay apart.

    check_objects.py BUILD_FOLDER NM OBJDUMP

1. Only objects of *_kernel.cpp files hold instructions beyond baseline x86-64, so that the start-up check can run
   on an older machine.
2. Kernel objects define no weak symbols: the linker could otherwise keep an inline function compiled with wide
   instructions for the whole program.
"""
import os
import re
import subprocess
import sys

build, nm, objdump = sys.argv[1:4]
WIDE = re.compile(r"\t(v[a-z0-9]+ .*%[xyz]mm|(mulx|shlx|shrx|sarx|rorx|bzhi|pdep|pext|andn|blsr|blsi|blsmsk|bextr|"
                  r"lzcnt|popcnt|adcx|adox)[lq]? )")

faults, kernels, baseline = [], 0, 0
for path, _, names in os.walk(build):
    if "/zelmar" not in path:
        continue
    for name in names:
        if not name.endswith(".cpp.o"):
            continue
        full = os.path.join(path, name)
        here = os.path.relpath(full, build)
        if name.endswith("_kernel.cpp.o"):
            kernels += 1
            out = subprocess.run([nm, "-C", "--defined-only", full], capture_output=True, text=True, check=True).stdout
            for line in out.split("\n"):
                if re.match(r"[0-9a-f]* [WVu] ", line) and "DW.ref" not in line:
                    faults.append(f"{here}: weak symbol: {line.strip()}")
        else:
            baseline += 1
            out = subprocess.run([objdump, "-d", "--no-show-raw-insn", full], capture_output=True, text=True,
                                 check=True).stdout
            wide = [line.strip() for line in out.split("\n") if WIDE.search(line)]
            if wide:
                faults.append(f"{here}: {len(wide)} instructions beyond baseline, first: {wide[0]}")

print(f"{kernels} kernel objects, {baseline} baseline objects, {len(faults)} faults")
for fault in faults:
    print(fault)
sys.exit(1 if faults or baseline == 0 or kernels == 0 else 0)

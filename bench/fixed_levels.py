#!/usr/bin/env python3
"""Writes DIR/lv.csv and DIR/lv.gmx: 3,000 records of y ~ f + (1|g), a fixed
factor f of 1,000 levels (each on 3 records) and 100 subjects g of 30
records, y = 10 + f_l + g_s + e with f_l, g_s and e standard normal.

    python3 bench/fixed_levels.py /tmp/lv
    build/src/app/glmixfit -q --no-text -o /tmp/out /tmp/lv/lv.gmx
"""
import os
import random
import sys

LEVELS, SUBJECTS, PER_SUBJECT = 1000, 100, 30


def main(directory):
    os.makedirs(directory, exist_ok=True)
    draw = random.Random(1000)
    level_effect = [draw.gauss(0.0, 1.0) for _ in range(LEVELS)]
    subject_effect = [draw.gauss(0.0, 1.0) for _ in range(SUBJECTS)]
    with open(os.path.join(directory, "lv.csv"), "w") as out:
        out.write("y,f,g\n")
        for r in range(SUBJECTS * PER_SUBJECT):
            level, subject = r % LEVELS, r // PER_SUBJECT
            y = 10.0 + level_effect[level] + subject_effect[subject] + draw.gauss(0.0, 1.0)
            out.write(f"{y!r},{level + 1},{subject + 1}\n")
    with open(os.path.join(directory, "lv.gmx"), "w") as out:
        out.write(f"LOAD '{os.path.abspath(directory)}/lv.csv'.\n")
        out.write("GLMIXFIT y BY f g /FIXED f /RANDOM INTERCEPT SUBJECTS=g.\n")


if __name__ == "__main__":
    main(sys.argv[1] if len(sys.argv) > 1 else "/tmp/lv")

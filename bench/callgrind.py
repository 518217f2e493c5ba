"""Runs sipcode_count under callgrind and reads its dumps."""

import os
import pathlib
import re
import subprocess
import tempfile

COUNTED_RUNS = 1000  # as in count.cc

# The C library zeroes and copies large blocks with one repeated instruction, which callgrind counts once per byte. With
# these thresholds it uses a loop of vector stores instead, which takes the same time and is counted as it is.
TUNABLES = "glibc.cpu.x86_rep_stosb_threshold=1000000:glibc.cpu.x86_rep_movsb_threshold=1000000"


def dumps(program, *arguments):
    """Yields name and text of each dump, in the order of the runs."""
    with tempfile.TemporaryDirectory() as directory:
        callgrind = ["valgrind", "--quiet", "--tool=callgrind", f"--callgrind-out-file={directory}/out"]
        subprocess.run([*callgrind, program, *arguments], check=True, stdout=subprocess.DEVNULL,
                       env=os.environ | {"GLIBC_TUNABLES": TUNABLES})
        files = sorted(pathlib.Path(directory).glob("out.*"), key=lambda path: int(path.suffix[1:]))
        for text in (file.read_text() for file in files):
            if name := re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.M):
                yield name[1], text


def total(dump):
    return int(re.search(r"^summary: (\d+)", dump, re.M)[1])


def instructions(program, *cases):
    """Instructions of one run by case. Without arguments, all cases are counted."""
    return {name: round(total(dump) / COUNTED_RUNS) for name, dump in dumps(program, *cases)}

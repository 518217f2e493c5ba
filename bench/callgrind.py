"""Runs the counting program under callgrind and reads what it dumps."""

import os
import pathlib
import re
import subprocess
import tempfile

COUNTED_RUNS = 1000  # as in count.cc

# The C library zeroes and copies large blocks by one repeated instruction, which the processor counts once and callgrind
# once per byte. This makes it take its loop of vector stores instead: that needs the same time, and its instructions are
# counted as they are, for all stacks alike.
TUNABLES = "glibc.cpu.x86_rep_stosb_threshold=1000000:glibc.cpu.x86_rep_movsb_threshold=1000000"


def dumps(program, *arguments):
    """The text of each dump by its name, in the order of the runs."""
    with tempfile.TemporaryDirectory() as directory:
        subprocess.run(["valgrind", "--quiet", "--tool=callgrind", f"--callgrind-out-file={directory}/out", program, *arguments],
                       check=True, stdout=subprocess.DEVNULL, env=os.environ | {"GLIBC_TUNABLES": TUNABLES})
        files = sorted(pathlib.Path(directory).glob("out.*"), key=lambda path: int(path.suffix[1:]))
        for text in (file.read_text() for file in files):
            if name := re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.M):
                yield name[1], text


def total(dump):
    return int(re.search(r"^summary: (\d+)", dump, re.M)[1])


def instructions(program, *cases):
    """Instructions of one run of each case; of all cases without a name."""
    return {name: round(total(dump) / COUNTED_RUNS) for name, dump in dumps(program, *cases)}

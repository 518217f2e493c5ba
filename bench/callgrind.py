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

# The builds of the library: directories from which the loader has no choice.
BUILDS = {"x86-64": "baseline", "x86-64-v3": "glibc-hwcaps/x86-64-v3"}


def runs_here(build):
    return build == "x86-64" or " avx2 " in pathlib.Path("/proc/cpuinfo").read_text()


def dumps(program, *arguments, build=None):
    """Yields name and text of each dump, in the order of the runs. By default the loader chooses the build."""
    environment = os.environ | {"GLIBC_TUNABLES": TUNABLES}
    if build is not None:
        libraries = pathlib.Path(program).resolve().parent.parent / "Lib_Base/lib_code"
        environment["LD_LIBRARY_PATH"] = str(libraries / BUILDS[build])
    with tempfile.TemporaryDirectory() as directory:
        callgrind = ["valgrind", "--quiet", "--tool=callgrind", f"--callgrind-out-file={directory}/out"]
        subprocess.run([*callgrind, program, *arguments], check=True, stdout=subprocess.DEVNULL, env=environment)
        files = sorted(pathlib.Path(directory).glob("out.*"), key=lambda path: int(path.suffix[1:]))
        for text in (file.read_text() for file in files):
            if name := re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.M):
                yield name[1], text


def total(dump):
    return int(re.search(r"^summary: (\d+)", dump, re.M)[1])


def instructions(program, *cases, build=None):
    """Instructions of one run by case. Without cases, all are counted."""
    return {name: round(total(dump) / COUNTED_RUNS) for name, dump in dumps(program, *cases, build=build)}

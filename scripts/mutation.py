#!/usr/bin/env python3
"""Sampled mutation testing with fresh builds.

Runs the sampled mutation tool (by default ../shared/tools/mutants.py beside
this repository; QUILLON_MUTANTS names another) with every argument passed on,
and one change around it: a source file put back after its mutant gets a
fresh modification time. The tool puts the file back with its old time, so
ninja would keep the object built from the mutant, and every later mutant
would run with all earlier ones still in the programs: a survivor would then
show as caught.

    ./scripts/mutation.py --count 40 --seed 1 --ctest-args=-j2
"""
import os
import runpy
import shutil
import sys

tool = os.environ.get("QUILLON_MUTANTS") or os.path.join(
    os.path.dirname(os.path.abspath(__file__)), "..", "..", "shared", "tools", "mutants.py")
if not os.path.isfile(tool):
    sys.exit("mutation.py: no mutation tool at %s (set QUILLON_MUTANTS)" % tool)

_move = shutil.move


def move(src, dst, *args, **kwargs):
    result = _move(src, dst, *args, **kwargs)
    if str(src).endswith(".mutant-backup"):
        os.utime(dst, None)
    return result


shutil.move = move
sys.argv = [tool] + sys.argv[1:]
runpy.run_path(tool, run_name="__main__")

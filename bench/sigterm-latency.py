#!/usr/bin/env python3
"""How long quillon-cli takes to end after SIGTERM during a dry run of a
million outputs (10,000 empty input files x 100 frames, one sample filter),
with the signal sent at several moments: during the input listing, the
planning, the checks of the plan and the listing of the outputs.

    bench/sigterm-latency.py [BUILD]      (BUILD defaults to build/)
"""
import os
import signal
import subprocess
import sys
import tempfile
import time

root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
build = sys.argv[1] if len(sys.argv) > 1 else os.path.join(root, "build")
cli = os.path.join(build, "src", "quillon-cli")
definition = os.path.join(root, "data", "filters", "AlphaFade.ffxml")

with tempfile.TemporaryDirectory() as work:
    inputs = os.path.join(work, "in")
    os.mkdir(inputs)
    os.mkdir(os.path.join(work, "out"))
    for i in range(10000):
        open(os.path.join(inputs, "img-%d.png" % i), "w").close()
    for listing in ([], ["--json"]):
        args = [cli, "--filter", definition, "--tool", "/bin/true", "--output", os.path.join(work, "out"),
                "--input-dir", inputs, "--frames", "100", "--dry-run"] + listing
        started = time.monotonic()
        subprocess.run(args, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        print("dry run%s, 1,000,000 outputs, to the end: %.2f s" % (" --json" if listing else "",
                                                                    time.monotonic() - started))
        for delay in (0.05, 0.2, 0.5, 1.0, 2.0, 4.0):
            process = subprocess.Popen(args, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(delay)
            sent = time.monotonic()
            process.send_signal(signal.SIGTERM)
            code = process.wait()
            print("  SIGTERM after %.2f s: exit %d, %.1f ms after the signal" % (
                delay, code, (time.monotonic() - sent) * 1000))

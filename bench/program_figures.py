#!/usr/bin/python3
"""Measures the whole program: start, idle, a recorded call, and a ring as its caller sees it.

    KELMIO_PROGRAM=build/release/bin/kelmio bench/program_figures.py [SECONDS]

SECONDS is how long the idle program and the recorded call are watched, 60 unless told.
"""
import os
import pathlib
import statistics
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "e2e"))

import sip_caller  # noqa: E402
import sound  # noqa: E402
from program import RECORDING, Home, Program  # noqa: E402

STARTS = 10
RINGS = 10


def cpu_seconds(pid):
    """User and system time so far."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def memory_mb(pid):
    """Proportional set size: shared libraries count in part."""
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
        if line.startswith("Pss:"):
            return int(line.split()[1]) / 1024
    return float("nan")


def show(what, seconds, unit="ms", scale=1000):
    figures = sorted(value * scale for value in seconds)
    print(f"{what}: median {statistics.median(figures):.1f} {unit}, {figures[0]:.1f} to {figures[-1]:.1f}")


def measure_starts():
    times = []
    for _ in range(STARTS):
        home = Home()
        begin = time.monotonic()
        with Program(home):
            times.append(time.monotonic() - begin)
        home.remove()
    show('start to "Waiting for a call"', times)


def watch(program, seconds):
    before = cpu_seconds(program.pid)
    time.sleep(seconds)
    return (cpu_seconds(program.pid) - before) * 60 / seconds


def measure_idle_and_call(seconds):
    home = Home()
    with Program(home, ring_period=100) as program:
        time.sleep(2)
        print(f"idle: {watch(program, seconds):.2f} s of CPU a minute, {memory_mb(program.pid):.1f} MB")
        with sip_caller.Call(program.port) as call:
            call.answered()
            call.voice.begin_to_say(sound.voice(seconds + 5))
            program.wait_for_log(RECORDING)
            print(f"recorded call: {watch(program, seconds):.2f} s of CPU a minute, {memory_mb(program.pid):.1f} MB")
            call.hang_up()
    home.remove()


def measure_rings():
    home = Home(settings={"AutoAnswerRingCount": 1})
    ringing, answered = [], []
    with Program(home) as program:
        for _ in range(RINGS):
            begin = time.monotonic()
            with sip_caller.Call(program.port) as call:
                call.wait_for(180)
                ringing.append(time.monotonic() - begin)
                call.answered()
                answered.append(time.monotonic() - begin)
                call.hang_up()
            time.sleep(0.5)
    home.remove()
    show("INVITE to 180, with the caller's own time", ringing)
    show("INVITE to 200 on the first ring, with the caller's own time", answered)


def main():
    seconds = float(sys.argv[1]) if len(sys.argv) > 1 else 60
    measure_starts()
    measure_rings()
    measure_idle_and_call(seconds)


main()

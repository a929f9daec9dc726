"""From process start to the window mapped on the screen: the program against an empty main window.

usage: start.py PROGRAM EMPTY_WINDOW (on a display without a window manager, such as Xvfb)
The two are started in turns; the figures are medians of 15 starts each, after one that is not counted.
"""
import os
import statistics
import subprocess
import sys
import tempfile
import time

ROUNDS = 15


def start_time(watcher, program):
    """Seconds until a window of the process appears; windows that are not shown as top levels don't count."""
    with tempfile.TemporaryDirectory() as folder:
        begin = time.monotonic()
        process = subprocess.Popen([program], cwd=folder, stderr=subprocess.DEVNULL)
        for line in watcher.stdout:
            if line.startswith("MapNotify event"):
                break
        taken = time.monotonic() - begin
        process.terminate()
        process.wait()
    return taken


def main():
    programs = sys.argv[1:3]
    watcher = subprocess.Popen(["xev", "-root", "-event", "substructure"], stdout=subprocess.PIPE, text=True,
                               bufsize=1)
    time.sleep(0.5)
    times = {program: [] for program in programs}
    for program in programs:
        start_time(watcher, program)
    for _ in range(ROUNDS):
        for program in programs:
            time.sleep(0.2)
            times[program].append(start_time(watcher, program))
    watcher.terminate()
    medians = [statistics.median(times[program]) for program in programs]
    for program, median in zip(programs, medians):
        worst = max(times[program])
        print(f"{os.path.basename(program):24} {median * 1000:7.0f} ms to the window on screen (slowest {worst * 1000:.0f})")
    print(f"{'ratio':24} {medians[0] / medians[1]:7.2f}")


if __name__ == "__main__":
    main()

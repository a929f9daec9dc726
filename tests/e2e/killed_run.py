"""kill -9 at random moments of live runs: each next start offers the run, and at most a second of it is missing.

usage: killed_run.py PELLANDRA VIRTUAL_LOGGERS [ROUNDS]
Reads the journals by docs/journal-format.md, and not with the program's own reader.
"""
import os
import pathlib
import random
import struct
import subprocess
import sys
import tempfile
import time
import zlib

LOGGERS = 4
PATIENCE = 20  # seconds that anything may take


def wait(condition, what):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        if condition():
            return
        time.sleep(0.02)
    sys.exit(f"no {what} in {PATIENCE} s")


def blocks(data):
    assert data.startswith(b"PLNDRJ1\n"), "no journal"
    at = 8
    while at + 8 < len(data):
        length, checksum = struct.unpack_from("<II", data, at)
        body = data[at + 8:at + 8 + length]
        if len(body) < length or zlib.crc32(body) != checksum:
            return
        yield body[0], body[1:]
        at += 8 + length


def period_of(payload):
    at = 5
    for _ in range(2):  # the names
        length = struct.unpack_from(">i", payload, at)[0]
        at += 4 + max(0, length)
    return struct.unpack_from(">d", payload, at)[0]


def kept(journal):
    """The numbers of the samples that the journal has, by logger."""
    periods, numbers = {}, {}
    for kind, payload in blocks(journal.read_bytes()):
        if kind == 2:
            periods[payload[0]] = period_of(payload)
            numbers[payload[0]] = set()
        elif kind == 3:
            slot, _, rows = struct.unpack_from("<BHI", payload)
            times = struct.unpack_from(f"<{rows}d", payload, 7)
            numbers[slot].update(round(t / periods[slot]) for t in times)
    return numbers


class Round:
    def __init__(self, program, loggers, folder):
        self.program = program
        self.folder = pathlib.Path(folder)
        for name in ("config/Quellmark", "run", "links"):
            (self.folder / name).mkdir(parents=True)
        (self.folder / "run").chmod(0o700)
        self.environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", XDG_CONFIG_HOME=str(self.folder / "config"),
                                XDG_STATE_HOME=str(self.folder / "state"), XDG_RUNTIME_DIR=str(self.folder / "run"))
        self.frames = self.folder / "frames"
        self.loggers = subprocess.Popen(
            [loggers, "--count", str(LOGGERS), "--directory", str(self.folder / "links"), "--rate", "100/Sec",
             "--samples", "10000", "--record", str(self.folder / "record"), "--log", str(self.frames)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, env=self.environment)
        ports = []
        for line in self.loggers.stdout:
            if line.startswith("ready"):
                break
            ports.append(line.split()[1])
        settings = ["[BT]"] + [f"logger{i + 1}={port}\nname{i + 1}=Group {i + 1}" for i, port in enumerate(ports)]
        settings += ["[colab]", f"num_defined={LOGGERS}", ""]
        (self.folder / "config/Quellmark/Tembrin.conf").write_text("\n".join(settings))

    def start(self):
        self.told = open(self.folder / "told", "wb")
        return subprocess.Popen([self.program], cwd=self.folder, env=self.environment, stdout=subprocess.DEVNULL,
                                stderr=self.told)

    def run_and_kill(self):
        program = self.start()
        wait(lambda: self.frames.read_text().lower().count("47 14 cc") >= LOGGERS, "class")
        self.loggers.stdin.write("press-start all\n")
        self.loggers.stdin.flush()
        time.sleep(random.uniform(0.3, 4))
        program.kill()
        killed = time.monotonic_ns()
        program.wait()
        self.loggers.communicate("quit\n")
        return killed

    def lost(self, killed):
        """Seconds before the end from which on a sample is missing."""
        journals = list((self.folder / "state/pellandra").glob("*.journal"))
        numbers = kept(journals[0]) if journals else {}
        first_missing = killed
        for line in (self.folder / "record").read_text().splitlines():
            logger, _, sample, written, _ = line.split(" ")
            if int(written) < first_missing and int(sample) not in numbers.get(int(logger) - 1, ()):
                first_missing = int(written)
        return (killed - first_missing) / 1e9

    def is_offered(self):
        program = self.start()
        path = self.folder / "told"
        wait(lambda: b"offered" in path.read_bytes() or program.poll() is not None, "offer")
        program.terminate()
        program.wait()
        return f"was not saved: {LOGGERS} group".encode() in path.read_bytes()


def main():
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 3
    worst, total = 0, 0
    for number in range(rounds):
        with tempfile.TemporaryDirectory() as folder:
            one = Round(sys.argv[1], sys.argv[2], folder)
            lost = one.lost(one.run_and_kill())
            worst, total = max(worst, lost), total + lost
            if lost > 1 or not one.is_offered():
                sys.exit(f"round {number + 1}: {lost:.3f} s lost, or no offer")
    print(f"{rounds} runs killed, each offered; lost {total / rounds:.3f} s on average, {worst:.3f} s at most")


if __name__ == "__main__":
    main()

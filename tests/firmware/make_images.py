#!/usr/bin/env python3
"""Writes firmware images with two other programs, srec_cat and intelhex, and beside each what intelhex reads in it: the
pages ("F" or "E", address, bytes) and the two sums. make_images.py FOLDER"""

import random
import subprocess
import sys
from pathlib import Path

from intelhex import IntelHex

FLASH, EEPROM = range(0x1000, 0x20000), range(0xF00000, 0xF00400)


def expected(image):
    cells = image.todict()
    cells.pop("start_addr", None)
    pages = {}
    for address, byte in cells.items():
        kind, at, size = ("F", address, 128) if address in FLASH else ("E", address - 0xF00000, 16)
        if address in FLASH or address in EEPROM:
            page = pages.setdefault((kind, at // size * size), bytearray(b"\xff" * size))
            page[at % size] = byte
    flash = sum(sum(pages.get(("F", a), b"\xff" * 128)) for a in range(0x1000, 0x20000, 0x80))
    eeprom = sum(sum(pages.get(("E", a), b"\xff" * 16)) for a in range(0, 0x400, 0x10)) & 0xFF
    lines = [f"{kind} {address:x} {bytes(page).hex()}" for (kind, address), page in sorted(pages.items())]
    return "\n".join(lines + [f"S {flash} {eeprom}"]) + "\n"


def main(folder):
    chance = random.Random(7)
    image = IntelHex()
    for address in FLASH[: 453 * 128]:
        image[address] = chance.randrange(256)
    for address in EEPROM[:64]:
        image[address] = chance.randrange(256)
    holes = IntelHex()
    for start in chance.sample(range(0x1000, 0x1FF00), 200):
        for address in range(start, start + chance.randrange(1, 90)):
            holes[address] = chance.randrange(256)
    holes[0x300000] = 1  # in no memory of a logger
    images = {"whole": image, "holes": holes}
    for name, source in images.items():
        for count in (1, 7, 16, 32, 61, 255):
            source.write_hex_file(folder / f"{name}-{count}.hex", byte_count=count)
    plain = folder / "whole-32.hex"
    srec = ["srec_cat", plain, "-intel", "-o"]
    subprocess.run([*srec, folder / "srec-44.hex", "-intel", "-obs=44"], check=True)
    subprocess.run(["srec_cat", folder / "holes-16.hex", "-intel", "-crop", "0x1000", "0x20000",
                    "-o", folder / "segments.hex", "-intel", "-address-length=3"], check=True)
    # Out of order, each record under an offset of its own; with CR LF; and without the last line feed.
    text = plain.read_text().split("\n")
    offset, records = "", []
    for line in text:
        if line[7:9] == "04":
            offset = line
        elif line[7:9] == "00":
            records.append((offset, line))
    chance.shuffle(records)
    shuffled = [line for pair in records for line in pair] + [":00000001FF"]
    (folder / "shuffled.hex").write_text("\n".join(shuffled) + "\n")
    (folder / "crlf.hex").write_bytes("\r\n".join(text).encode())
    (folder / "noend.hex").write_text("\n".join(text).rstrip("\n"))
    for path in folder.glob("*.hex"):
        path.with_suffix(".pages").write_text(expected(IntelHex(str(path))))


main(Path(sys.argv[1]))

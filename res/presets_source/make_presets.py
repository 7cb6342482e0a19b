#!/usr/bin/env python3
"""Writes the shipped equalizer presets, res/presets/<name>.eqf, from the
table in presets.txt (next to this script).

A preset file is 31 bytes: the name in 20 zero-padded bytes, then ten band
values and the preamp value, one byte each, on the scale where 31 is the
centre and 0 the strongest boost. The table holds steps from the slider's
centre; a slider position is 14 minus the step, and the byte written is the
smallest value that the player reads back as that position (position 14 is
written as 31).

Usage: make_presets.py   (run it again after changing the table; it
replaces the folder's .eqf files)
"""
import pathlib

HERE = pathlib.Path(__file__).resolve().parent
TABLE = HERE / "presets.txt"
OUT = HERE.parent / "presets"

SLIDER_MAX = 27
SLIDER_CENTRE = 14
EQF_CENTRE = 31
EQF_TOP = 62
NAME_BYTES = 20


def eqf_value(step):
    position = SLIDER_CENTRE - step
    if not 0 <= position <= SLIDER_MAX:
        raise ValueError(f"step {step} is off the slider")
    if position == SLIDER_CENTRE:
        return EQF_CENTRE
    return (position * EQF_TOP + SLIDER_MAX - 1) // SLIDER_MAX


def read_table():
    for line in TABLE.read_text(encoding="utf-8").splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        cells = [cell.strip() for cell in line.split("|")]
        name, steps = cells[0], [int(cell) for cell in cells[1:]]
        if len(steps) != 11:
            raise ValueError(f"{name}: expected the preamp and ten bands")
        preamp, bands = steps[0], steps[1:]
        yield name, bands, preamp


def main():
    OUT.mkdir(exist_ok=True)
    for old in OUT.glob("*.eqf"):
        old.unlink()
    for name, bands, preamp in read_table():
        encoded = name.encode("utf-8")[:NAME_BYTES]
        head = encoded + bytes(NAME_BYTES - len(encoded))
        values = bytes(eqf_value(step) for step in bands + [preamp])
        (OUT / f"{name}.eqf").write_bytes(head + values)


if __name__ == "__main__":
    main()

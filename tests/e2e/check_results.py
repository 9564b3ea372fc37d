#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Judges one aspect of an end-to-end run by what it left behind. usage: check_results.py FOLDER ASPECT"""
import json
import pathlib
import subprocess
import sys

CAN, LIN, DEVICE = 1, 5, 15
OPEN, CLOSE, SET, RESISTOR = 0x10, 0x20, 0x60, 0x30


def u32(value):
    return list(value.to_bytes(4, "little"))


def requests_of(box):
    """(protocol, command, channel, param, payload) in the order of arrival, as the simulator tells it."""
    result = []
    for entry in box["requests"]:
        payload = entry["payload"]
        if isinstance(payload, str):
            payload = list(bytes.fromhex(payload))
        result.append((entry["protocol"], entry["command"], entry["channel"], entry["param"], payload))
    return result


def open_can_fd(channel):
    """What opening a CAN FD channel with the default settings asks of a box, in this order."""
    parameters = [(1, 500000), (39, 31), (40, 8), (38, 2000000), (41, 15), (42, 4)]
    return (
        [(CAN, OPEN, channel, 0, u32(500000))]
        + [(CAN, SET, channel, 2, [key] + u32(value)) for key, value in parameters]
        + [(DEVICE, RESISTOR, channel, 0, [1]), (CAN, SET, channel, 5, [])]
    )


def check_order(folder, box):
    expected = (
        [(DEVICE, 0x60, 0, 0, [1]), (DEVICE, 0x40, 0, 0, [1])]
        + open_can_fd(0)
        + open_can_fd(1)
        + [(LIN, OPEN, 0, 0, [0] + u32(19200))]
        + [(CAN, CLOSE, 0, 0, []), (CAN, CLOSE, 1, 0, []), (LIN, CLOSE, 0, 0, [])]
    )
    seen = requests_of(box)
    for index, (want, got) in enumerate(zip(expected, seen)):
        if want != got:
            return f"request {index}: wanted {want}, got {got}"
    return None if len(seen) == len(expected) else f"{len(seen)} requests, wanted {len(expected)}"


def check_saved(folder, box):
    saved = json.loads((folder / "work/config/vci/vci_config.json").read_text())
    devices = {entry["deviceIndex"]: entry for entry in saved["devices"]}
    if saved["currentDeviceIndex"] != 0 or sorted(devices) != [0, 1]:
        return f"devices {sorted(devices)}"
    channel = devices[0]["canChannels"][0]
    wanted = {"baudRate": "500000", "fdBaudRate": "2000000", "type": "CANFD", "terminalResistorEnabled": True}
    return None if channel == wanted and len(devices[0]["linChannels"]) == 2 else f"channel {channel}"


def check_flowing(folder, box):
    sent = [box["can"][0]["framesSent"], box["can"][1]["framesSent"], box["lin"][0]["framesSent"]]
    return None if sent[0] > 500 and sent[1] > 500 and sent[2] > 50 else f"frames sent {sent}"


def check_closed(folder, box):
    return None if box["openChannels"] == 0 else f"{box['openChannels']} channels are open"


def check_picture(folder, box):
    """Rows of live traffic are dark text on the white of the views: an empty view is all white there."""
    command = ["import", "-window", "root", "-crop", "700x200+10+250", "-depth", "8", "pgm:-"]
    picture = subprocess.run(command, capture_output=True, check=True).stdout
    pixels = picture[-700 * 200:]
    white = sum(pixel > 160 for pixel in pixels) / len(pixels)
    return None if 0.5 < white < 0.995 else f"white share {white}"


def main():
    folder, aspect = pathlib.Path(sys.argv[1]), sys.argv[2]
    box = json.loads((folder / "stats.json").read_text())["boxes"][0]
    problem = globals()[f"check_{aspect}"](folder, box)
    if problem:
        print(f"{aspect}: {problem}")
        sys.exit(1)


main()

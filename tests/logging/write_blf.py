#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes a BLF log with python3-can of the CAN frames on standard input, one a line:
seconds channel id extended remote error fd switched esi received length data"""
import sys

import can

with can.BLFWriter(sys.argv[1]) as writer:
    for line in sys.stdin:
        seconds, channel, identifier, *flags, length, data = line.split()
        extended, remote, error, fd, switched, esi, received = (flag == "1" for flag in flags)
        writer.on_message_received(can.Message(
            timestamp=float(seconds), channel=int(channel), arbitration_id=int(identifier, 16),
            is_extended_id=extended, is_remote_frame=remote, is_error_frame=error, is_fd=fd,
            bitrate_switch=switched, error_state_indicator=esi, is_rx=received,
            dlc=int(length), data=None if remote else bytes.fromhex(data[1:]), check=True))

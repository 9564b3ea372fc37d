#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Prints the CAN frames of an ASC log as python3-can understands them, one a line:
seconds channel id extended remote error fd switched esi received length data"""
import sys

import can

for message in can.ASCReader(sys.argv[1], relative_timestamp=True):
    print("%.6f" % message.timestamp, message.channel, "%x" % message.arbitration_id,
          *(int(flag) for flag in (message.is_extended_id, message.is_remote_frame, message.is_error_frame,
                                   message.is_fd, message.bitrate_switch, message.error_state_indicator,
                                   message.is_rx)),
          message.dlc, "-" + bytes(message.data or b"").hex())

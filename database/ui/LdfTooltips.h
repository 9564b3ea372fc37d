// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct LdfFrame;
struct LdfSignal;

// Tool tips in rich text that tell a frame and a signal of an LDF file. UI thread only. What the file says is shown as
// plain text, whatever marks it holds.

QString buildFrameTooltip(const LdfFrame &frame);
QString buildSignalTooltip(const LdfSignal &signal);

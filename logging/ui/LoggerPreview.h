// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace Common {

/// The sample texts that the recorder windows show for a format. They are fixed and made of no real data. Pure
/// functions.
namespace LoggerPreview {

struct CanOptions
{
    bool csv = false;
    bool errorFrames = true;
    bool extraInfo = false;
};
QString can(const CanOptions &options);

struct LinOptions
{
    bool csv = false;
    bool absoluteTime = true;
    bool extraInfo = false;
};
QString lin(const LinOptions &options);

} // namespace LoggerPreview
} // namespace Common

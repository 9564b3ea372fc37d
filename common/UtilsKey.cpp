// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Utils.h"

namespace Common {

namespace {
// From the top: 16 bits kind, 16 bits channel, 32 bits discriminator.
constexpr unsigned kindShift = 48;
constexpr unsigned channelShift = 32;
} // namespace

unsigned long long Utils::makeUtilsKey(unsigned short kind, unsigned short channel, unsigned int discriminator)
{
    return static_cast<unsigned long long>(kind) << kindShift |
           static_cast<unsigned long long>(channel) << channelShift | discriminator;
}

void Utils::parseUtilsKey(unsigned long long key, unsigned short &kind, unsigned short &channel)
{
    kind = static_cast<unsigned short>(key >> kindShift);
    channel = static_cast<unsigned short>(key >> channelShift);
}

} // namespace Common

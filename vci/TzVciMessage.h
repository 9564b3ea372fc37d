// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciCanDataType.h"
#include "vci/TzVciLinDataType.h"

#include <QMetaType>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#pragma pack(push, 4)
/// The unit delivered to subscribers: one CAN or one LIN frame with its origin. Copied by value.
///
/// The record does not tell its family: that follows from the subscription which delivered it, and the two are never
/// mixed in one vector. Whoever fills a LIN message does so by setLin(), after which frame.lin may be read and changed.
struct TzVciMessage
{
    /// A CAN frame, or a LIN frame followed by zeroes.
    union Frame
    {
        TzVciCanDataType can;
        TzVciLinDataType lin;
        constexpr Frame() noexcept
            : can{}
        {
        }
    };

    std::uint8_t deviceIndex = 0;  ///< 0 to 15
    std::uint8_t channelIndex = 0; ///< counted from 0
    std::uint64_t timestamp = 0;   ///< device time in 0.1 microsecond; both halves of the frame's own time joined
    Frame frame;

    /// Makes the frame a LIN frame followed by zeroes. By value: it may be the record's own frame.lin.
    void setLin(TzVciLinDataType lin) noexcept
    {
        frame = Frame();
        std::construct_at(&frame.lin, lin); // an assignment alone would write to what is still a CAN frame
    }
};
#pragma pack(pop)
static_assert(std::is_trivially_copyable_v<TzVciMessage>, "queued and recorded byte for byte");
static_assert(sizeof(TzVciMessage) == 92 && alignof(TzVciMessage) == 4, "the layout is fixed");
static_assert(offsetof(TzVciMessage, timestamp) == 4 && offsetof(TzVciMessage, frame) == 12);

Q_DECLARE_METATYPE(std::vector<TzVciMessage>)

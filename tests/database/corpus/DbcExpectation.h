// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcMessage.h"
#include "tests/database/corpus/DbcGolden.h"
#include "tests/database/corpus/DbcText.h"
#include "tests/database/corpus/RuleBook.h"

#include <vector>

namespace tzcorpus {

/// A message that the reader is to find, with the results that tell what it looks like.
struct ExpectedMessage
{
    DbcMessage message;                    ///< without attributes and start values
    const GoldenMessage *golden = nullptr; ///< null where the independent tools gave none
    const TextMessage *text = nullptr;
};

/// What the reader is to make of a file: what the independent tools make of it (what they don't tell is taken from the
/// text), changed by the rules that hold each deliberate difference with its reason. Counts the rules' use
/// on demand.
/// Golden and text must outlive the result.
std::vector<ExpectedMessage> expectedMessages(const DbcGolden &golden, const DbcText &text,
                                              RuleBook::Counting counting);

} // namespace tzcorpus

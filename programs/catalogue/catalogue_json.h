// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/card_store.h"
#include "catalogue/records.h"
#include "catalogue/search.h"
#include "console/value.h"

#include <string>
#include <vector>

/// What the commands tell, as values.
namespace nqp2::catalogue {

/// "2026-11-22T08:09:10Z".
std::string DateText(std::int64_t seconds);

tool::Record CardValue(const CardRecord& card);
tool::Record OutcomeValue(const StoreOutcome& outcome);
tool::Record ClipValue(const FoundClip& clip);
tool::List TextList(const std::vector<std::string>& texts);

/// A document of that format.
tool::Record Document(std::string format, tool::Record members);

template <class Items, class ValueOf>
tool::List ListOfEach(const Items& items, ValueOf valueOf) {
    tool::List list;
    for (const auto& item : items) {
        list.emplace_back(valueOf(item));
    }
    return list;
}

} // namespace nqp2::catalogue

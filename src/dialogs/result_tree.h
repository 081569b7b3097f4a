#pragma once

#include "lookups/address_list.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quorvex::dialogs {

// With this many records or more every heading of the results tree starts collapsed.
inline constexpr std::int32_t kCollapseFromRecords = 99;

struct ResultNode {
    std::wstring key; // "k" and a number for a heading, the address identifier for a line
    std::wstring text;
    int parent = -1; // position of the line's heading; -1 for a root
    bool heading = false;
    bool expanded = false;
};

// The nodes of an advanced search in tree order, from its lines up to the first empty one. A line before any heading
// becomes a root of its own. headingCounter goes on counting over searches, so that keys stay unique in one dialog.
std::vector<ResultNode> ReadResultTree(const std::function<lookups::AdvancedLine()>& nextLine, std::int32_t recordCount,
                                       int& headingCounter);

} // namespace quorvex::dialogs

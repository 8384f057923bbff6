// Lists of what is wrong with a placement, as text: a line for each fault, cut when long.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "report/Text.h"

namespace korvel {

// The lines of one kind of fault under their heading, the first 20, and how many there are beyond
// those listed; `number` may count more than are in the list. Empty if it is 0.
template <typename Fault, typename RowOf>
std::string faultList(const std::string& heading, const std::vector<Fault>& faults,
                      std::size_t number, RowOf rowOf) {
    constexpr std::size_t kMostLines = 20;
    if (number == 0) {
        return "";
    }
    Rows rows;
    for (std::size_t at = 0; at < std::min(faults.size(), kMostLines); ++at) {
        rows.push_back(rowOf(faults[at]));
        rows.back().insert(rows.back().begin(), "");
    }
    const std::string text = "\n" + heading + "\n" + aligned(rows, "lllll");
    const std::size_t more = number - rows.size();
    return more == 0 ? text : text + "  and " + std::to_string(more) + " more\n";
}

template <typename Fault, typename RowOf>
std::string faultList(const std::string& heading, const std::vector<Fault>& faults, RowOf rowOf) {
    return faultList(heading, faults, faults.size(), rowOf);
}

}  // namespace korvel

// Reports on a placement for people: aligned lines of text.
#pragma once

#include <string>
#include <vector>

#include "design/Placement.h"
#include "judge/Judge.h"

namespace korvel {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

// Ten digits at most, without trailing zeros: what a length has of use to a reader.
std::string numberText(double number);

// A part of a whole in percent: with so many decimals, such as "12.5 %", or with three digits that
// matter, such as "0.0001 %".
std::string percentText(double part, int decimals);
std::string percentText(double part);

// "1 die", "2 dies".
std::string countText(std::size_t number, const std::string& one, const std::string& many);

// One row per line, the columns two blanks apart. `sides` says for each column whether it is set to
// the left, 'l', or to the right, 'r'.
std::string aligned(const Rows& rows, const std::string& sides);

// Rows of two columns: design and area.
Rows designRows(const Design& design, Region region);

// The same, then utilization, wirelength and extent.
Rows summaryRows(const Design& design, Region region, const Judgement& judgement);

// A line per die: name, x, y, orientation, size as it lies; with a heading.
std::string diesTable(const Design& design, const Placement& placement);

// Such as "2 overlaps, 1 die outside"; empty for a legal one.
std::string faultCounts(const Judgement& judgement);

// What is wrong with the placement, a line each and the worst first, at most 20 of a kind. Empty
// for a legal one.
std::string faultsText(const Design& design, const Placement& placement,
                       const Judgement& judgement);

}  // namespace korvel

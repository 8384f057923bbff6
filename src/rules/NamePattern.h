// Names of dies as rules give them: plain, or patterns in which * stands for any characters and ?
// for one; and what a misspelt name was meant to be.
#pragma once

#include <string_view>
#include <vector>

namespace korvel {

bool isPattern(std::string_view name);

// ? stands for a whole UTF-8 character. Time: at most the product of the lengths.
bool matches(std::string_view pattern, std::string_view name);

// The candidate with the least changes, insertions and removals of bytes; of equals the first.
// Empty without candidates. Of long texts only the beginning is compared.
std::string_view nearestTo(std::string_view word, const std::vector<std::string_view>& candidates);

}  // namespace korvel

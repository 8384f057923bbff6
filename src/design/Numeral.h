// Numbers as text.
#pragma once

#include <cstddef>
#include <string>

namespace korvel {

// The shortest decimal form that reads back as the same double; whole numbers as such, without an
// exponent up to 1e15.
std::string numeral(double value);

// As in "1 pin" and "2 pins".
std::string counted(std::size_t number, const std::string& thing);

}  // namespace korvel

// Numbers as text.
#pragma once

#include <string>

namespace korvel {

// The shortest decimal form that reads back as the same double; whole numbers as such, without an
// exponent up to 1e15.
std::string numeral(double value);

}  // namespace korvel

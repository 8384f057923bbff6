#include "design/Numeral.h"

#include <array>
#include <charconv>
#include <cmath>

namespace korvel {

std::string numeral(double value) {
    if (value == 0.0) {
        return "0";  // the negative one too
    }
    const double size = std::abs(value);
    const bool plain = size >= 1e-5 && size <= 1e15;
    std::array<char, 64> text;
    const auto end = plain ? std::to_chars(text.data(), text.data() + text.size(), value,
                                           std::chars_format::fixed)
                           : std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end.ptr};
}

std::string counted(std::size_t number, const std::string& thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

}  // namespace korvel

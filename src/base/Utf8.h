// Characters of UTF-8 text. Stateless.
#pragma once

#include <cstddef>
#include <string_view>

namespace korvel {

struct Utf8Character {
    unsigned code;       // point
    std::size_t length;  // in bytes; 0: none that is well-formed
};

// The one that the text begins with.
Utf8Character firstCharacter(std::string_view text);

}  // namespace korvel

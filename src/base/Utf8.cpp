#include "base/Utf8.h"

#include <array>

namespace korvel {

Utf8Character firstCharacter(std::string_view text) {
    const auto byteAt = [text](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    const unsigned lead = byteAt(0);
    if (lead < 0x80) {
        return {lead, text.empty() ? 0U : 1U};
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    unsigned code = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0U) != 0x80) {
            return {0, 0};
        }
        code = code << 6 | (byteAt(i) & 0x3FU);
    }
    // By length: smaller codes have a shorter form.
    constexpr std::array<unsigned, 5> kFirst{0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool isCode = lead >= 0xC2 && code >= kFirst[length] && code <= 0x10FFFF && !isSurrogate;
    return {code, isCode && lead <= 0xF4 ? length : 0};
}

}  // namespace korvel

#include "base/BasicStructs.h"

#include <array>

namespace korvel {

namespace {

constexpr std::array<const char*, 8> kOrientTexts = {"N", "E", "S", "W", "FN", "FE", "FS", "FW"};
constexpr std::array<const char*, 5> kTopologyTexts = {"L", "R", "A", "B", "LAST"};
constexpr std::array<const char*, 8> kDirectionTexts = {"N", "E", "S", "W", "NW", "NE", "SE", "SW"};

// The text at the enum's value, or "-1" outside the table.
template <typename Enum, std::size_t Size>
std::string textOf(const std::array<const char*, Size>& texts, Enum value) {
    const auto index = static_cast<std::size_t>(static_cast<std::uint32_t>(value));
    return index < Size ? texts[index] : "-1";
}

}  // namespace

const std::map<std::string, Orient> OrientConverter::mapStringOrient = {
    {"N", Orient::N},   {"E", Orient::E},   {"S", Orient::S},
    {"W", Orient::W},   {"FN", Orient::FN}, {"FE", Orient::FE},
    {"FS", Orient::FS}, {"FW", Orient::FW}, {"-1", Orient::Undefined},
};

Orient OrientConverter::StringToOrient(const std::string& text, std::ostream& out) {
    const auto found = mapStringOrient.find(text);
    if (found != mapStringOrient.end()) {
        return found->second;
    }
    out << std::endl
        << "ERROR: by converting string value to Orient enum value (BasicStructs)" << std::endl;
    return Orient::Undefined;
}

std::string OrientConverter::OrientToString(Orient orient) {
    return textOf(kOrientTexts, orient);
}

Orient OrientConverter::rotation(Orient orient, unsigned quarterTurns, std::ostream& out) {
    const auto value = static_cast<std::uint32_t>(orient);
    if (value < kUnmirroredOrients) {
        return static_cast<Orient>((value + quarterTurns) % kUnmirroredOrients);
    }
    for (unsigned turn = 0; turn < quarterTurns; ++turn) {
        out << "ERROR (OrientConverter::rotation): Undefined orientation!" << std::endl;
    }
    return orient;
}

std::string TopologyConverter::TopologyToString(Topology topology) {
    return textOf(kTopologyTexts, topology);
}

std::string DirectionConverter::DirectionToString(Direction direction) {
    return textOf(kDirectionTexts, direction);
}

}  // namespace korvel

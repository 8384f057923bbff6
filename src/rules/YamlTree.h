// YAML as a tree of plain values with their lines, so that only one source knows the YAML library.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "design/Diagnostics.h"

namespace korvel {

struct YamlNode {
    // Unusable: something that has been reported already, and is passed over.
    enum class Kind { kNothing, kText, kList, kMap, kUnusable };

    Kind kind = Kind::kNothing;
    unsigned line = 1;
    std::string text;             // of a text: what it says, without quotes
    std::vector<YamlNode> items;  // of a list; of a map, keys and values in turn

    bool is(Kind wanted) const { return kind == wanted; }
};

// What was found, for a message: "nothing", "'text'", "a list", "a map".
std::string described(const YamlNode& node);

// The only document of a stream, which may be empty: nothing. Errors, with file and line: what is
// no UTF-8 text, no YAML, a second document, aliases (they could stand for endless amounts of
// text), and files that are too large or cannot be read. After a syntax error there is nothing to
// go on with: unusable.
YamlNode readYaml(std::istream& in, const std::string& file, Diagnostics& diagnostics);

}  // namespace korvel

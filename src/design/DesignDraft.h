// A design while its files are read: what they have said so far, and where.
#pragma once

#include <iosfwd>
#include <string>
#include <unordered_map>

#include "design/Design.h"
#include "design/Diagnostics.h"
#include "design/RecordFile.h"

namespace korvel {

struct DesignDraft {
    enum class Kind { kDie, kTerminal, kOther };
    struct Body {
        Kind kind;
        unsigned index;  // among the dies or the terminals
        unsigned line;
        unsigned placedLine = 0;  // in .pl; 0: not there
        bool hasNet = false;
    };

    DesignDraft(Region region, Diagnostics& diagnostics);

    // Whether there has been no error.
    bool isSound() const { return diagnostics.getErrorNum() == errorsBefore; }

    // The body that a line begins with. Null if the name is not known, which is an error the
    // first time, unless there was no .blocks file to know it from.
    Body* find(RecordFile& file);

    Region region;
    bool hasRegion;  // a usable one
    Diagnostics& diagnostics;
    std::size_t errorsBefore;  // in the diagnostics, which may be older
    Design design;
    std::string blocksFile;                        // empty: could not be opened
    std::unordered_map<std::string, Body> bodies;  // by name; also those with errors
};

// The readers of .blocks and .nets files, each in the source of its name. `name` is the file's in
// findings; the dies and terminals come first.
void readBlocks(std::istream& in, const std::string& name, DesignDraft& draft);
void readNets(std::istream& in, const std::string& name, DesignDraft& draft);

// As in "2.5 x 10".
std::string times(Extent size);

// A length that is finite and above 0.
bool isUsable(double length);

}  // namespace korvel

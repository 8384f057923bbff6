#include "design/DesignReader.h"

#include <array>
#include <filesystem>
#include <fstream>

#include "base/Tolerances.h"
#include "design/DesignDraft.h"
#include "design/InputFile.h"
#include "design/Numeral.h"
#include "design/PlacementFile.h"

namespace korvel {

namespace {

bool isInside(Spot at, Region region) {
    return at.x >= 0.0 && at.x <= region.width * (1.0 + kFitting) && at.y >= 0.0 &&
           at.y <= region.height * (1.0 + kFitting);
}

// Warns once for all, as a wrong area or a turned one has many terminals outside.
void checkTerminalsAreInside(RecordFile& file, const DesignDraft& draft) {
    std::size_t outsideNum = 0;
    const Design::Terminal* first = nullptr;
    for (const Design::Terminal& terminal : draft.design.terminals) {
        if (!isInside(terminal.at, draft.region) && outsideNum++ == 0) {
            first = &terminal;
        }
    }
    if (first != nullptr) {
        file.warning(draft.bodies.at(first->name).placedLine,
                     "found " + counted(outsideNum, "terminal") +
                         ", expected none outside the area of " + times(draft.region) +
                         "; the first is " + shown(first->name) + " at " + numeral(first->at.x) +
                         ", " + numeral(first->at.y));
    }
}

// One error for all, as the list is often missing as a whole.
void checkTerminalsArePlaced(RecordFile& file, const DesignDraft& draft) {
    std::size_t missingNum = 0;
    const Design::Terminal* first = nullptr;
    for (const Design::Terminal& terminal : draft.design.terminals) {
        if (draft.bodies.at(terminal.name).placedLine == 0 && missingNum++ == 0) {
            first = &terminal;
        }
    }
    if (first != nullptr) {
        file.error(0, "found no line of " + counted(missingNum, "terminal") +
                          ", expected the position of every one; the first is " +
                          shown(first->name));
    }
}

void readPosition(RecordFile& file, DesignDraft& draft) {
    DesignDraft::Body* const body = draft.find(file);
    if (body == nullptr) {
        return;
    }
    const auto record = readPlacementRecord(file, body->placedLine);
    if (record && body->kind == DesignDraft::Kind::kTerminal) {
        draft.design.terminals[body->index].at = record->at;
    }
}

// Dies may stand there too, anywhere: they are still to be placed.
void readPositions(std::istream& in, const std::string& name, DesignDraft& draft) {
    RecordFile file(in, name, draft.diagnostics);
    while (file.next()) {
        readPosition(file, draft);
    }
    checkTerminalsArePlaced(file, draft);
    if (draft.isSound()) {
        checkTerminalsAreInside(file, draft);
    }
}

void checkDiesHaveNets(const DesignDraft& draft) {
    for (const Design::Die& die : draft.design.dies) {
        const DesignDraft::Body& body = draft.bodies.at(die.name);
        if (!body.hasNet) {
            draft.diagnostics.warning(
                draft.blocksFile, body.line,
                "die " + shown(die.name) + ": found in no net, expected in one or more");
        }
    }
}

struct DesignFile {
    std::string extension;
    void (*read)(std::istream& in, const std::string& name, DesignDraft& draft);
};

// In the order in which they have to be read.
const std::array<DesignFile, 3> kFiles{
    {{".blocks", readBlocks}, {".pl", readPositions}, {".nets", readNets}}};

std::string withoutExtension(const std::string& path) {
    for (const auto& [extension, read] : kFiles) {
        if (path.size() > extension.size() && path.ends_with(extension)) {
            return path.substr(0, path.size() - extension.size());
        }
    }
    return path;
}

std::optional<Design> finish(DesignDraft& draft, const std::string& name) {
    if (!draft.isSound()) {
        return std::nullopt;
    }
    checkDiesHaveNets(draft);
    draft.design.name = name;
    return std::move(draft.design);
}

}  // namespace

std::optional<Design> readDesign(const std::string& path, Region region, Diagnostics& diagnostics) {
    const std::string stem = withoutExtension(path);
    DesignDraft draft(region, diagnostics);
    for (const auto& [extension, read] : kFiles) {
        const std::string name = stem + extension;
        std::ifstream in;
        if (openInput(in, name, diagnostics)) {
            read(in, name, draft);
        }
    }
    return finish(draft, std::filesystem::path(stem).filename().string());
}

std::optional<Design> readDesign(DesignStreams files, const std::string& name, Region region,
                                 Diagnostics& diagnostics) {
    DesignDraft draft(region, diagnostics);
    readBlocks(files.blocks, name + ".blocks", draft);
    readPositions(files.placement, name + ".pl", draft);
    readNets(files.nets, name + ".nets", draft);
    return finish(draft, name);
}

}  // namespace korvel

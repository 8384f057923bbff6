#include "design/PlacementFile.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <ostream>
#include <unordered_map>

#include "base/Tolerances.h"
#include "design/InputFile.h"
#include "design/Numeral.h"
#include "design/PlacementRecord.h"
#include "design/RecordFile.h"

namespace korvel {

namespace {

// A file with so many is a placement of something else.
constexpr std::size_t kMaxUnknown = 10000;

bool isNear(double a, double b) {
    return std::abs(a - b) <= kPrintedSize * std::max(std::abs(a), std::abs(b));
}

bool isNear(Extent a, Extent b) {
    return isNear(a.width, b.width) && isNear(a.height, b.height);
}

std::string pair(double a, double b) {
    return "(" + numeral(a) + ", " + numeral(b) + ")";
}

class PlacementReader {
public:
    PlacementReader(const Design& design, RecordFile& file);
    ReadPlacement read();

private:
    struct Body {
        unsigned index;
        unsigned line = 0;  // 0: not in the file yet
    };

    void readBody(Body& body);
    void readDie(unsigned die, const PlacementRecord& record);
    bool checkDims(const Design::Die& die, const PlacementRecord& record);
    void checkTerminal(const Design::Terminal& terminal, Spot at);

    const Design& design;
    RecordFile& file;
    std::unordered_map<std::string, Body> bodies;
    ReadPlacement result;
};

PlacementReader::PlacementReader(const Design& design, RecordFile& file)
    : design(design), file(file) {
    unsigned index = 0;
    for (const Design::Die& die : design.dies) {
        bodies.try_emplace(die.name, Body{index++});
    }
    for (const Design::Terminal& terminal : design.terminals) {
        bodies.try_emplace(terminal.name, Body{index++});
    }
    result.dies.resize(design.dies.size());
}

ReadPlacement PlacementReader::read() {
    while (file.next()) {
        const auto body = bodies.find(file.getWord());
        if (body == bodies.end()) {
            result.unknown.push_back({file.getWord(), file.getLine()});
            if (result.unknown.size() == kMaxUnknown) {
                file.error("found too many unknown names to read on");
                break;
            }
        } else if (body->second.line != 0) {
            file.errorAgain(body->second.line);
        } else {
            readBody(body->second);
        }
    }
    return std::move(result);
}

void PlacementReader::readBody(Body& body) {
    body.line = file.getLine();
    const auto record = readPlacementRecord(file, "position of " + shown(file.getWord()));
    if (!record) {
        return;
    }
    if (design.isDie(body.index)) {
        readDie(body.index, *record);
    } else {
        checkTerminal(design.terminalOf(body.index), record->at);
    }
}

void PlacementReader::readDie(unsigned die, const PlacementRecord& record) {
    if (checkDims(design.dies[die], record)) {
        result.dies[die] = PlacedDie{record.at, record.orient};
    }
}

// Dimensions are those of the die as it lies. Some tools write those of orientation N instead: the
// orientation counts then. Others mean another die.
bool PlacementReader::checkDims(const Design::Die& die, const PlacementRecord& record) {
    const Extent size = turned(die.size, record.orient);
    if (!record.dims || isNear(*record.dims, size)) {
        return true;
    }
    const bool isUnturned = isNear(*record.dims, die.size);
    const std::string text = "die " + shown(die.name) + ": found dimensions of " +
                             pair(record.dims->width, record.dims->height) + ", expected " +
                             pair(size.width, size.height) + " in orientation " +
                             OrientConverter::OrientToString(record.orient);
    if (isUnturned) {
        file.warning(text + "; the orientation is what counts");
    } else {
        file.error(text);
    }
    return isUnturned;
}

void PlacementReader::checkTerminal(const Design::Terminal& terminal, Spot at) {
    if (at.x != terminal.at.x || at.y != terminal.at.y) {
        file.warning("terminal " + shown(terminal.name) + ": found " + pair(at.x, at.y) +
                     ", expected " + pair(terminal.at.x, terminal.at.y) +
                     " as in the design, which is what counts");
    }
}

}  // namespace

std::vector<std::string> ReadPlacement::missing(const Design& design) const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < dies.size(); ++i) {
        if (!dies[i]) {
            names.push_back(design.dies[i].name);
        }
    }
    return names;
}

std::optional<Placement> ReadPlacement::whole() const {
    Placement placement;
    for (const std::optional<PlacedDie>& die : dies) {
        if (!die) {
            return std::nullopt;
        }
        placement.push_back(*die);
    }
    return placement;
}

ReadPlacement readPlacement(std::istream& in, const std::string& file, const Design& design,
                            Diagnostics& diagnostics) {
    RecordFile records(in, file, diagnostics);
    return PlacementReader(design, records).read();
}

ReadPlacement readPlacement(const std::string& path, const Design& design,
                            Diagnostics& diagnostics) {
    std::ifstream in;
    if (openInput(in, path, diagnostics)) {
        return readPlacement(in, path, design, diagnostics);
    }
    ReadPlacement nothing;
    nothing.dies.resize(design.dies.size());
    return nothing;
}

void writePlacement(std::ostream& out, const Design& design, const Placement& placement) {
    out << "UCLA pl 1.0\n\n";
    for (std::size_t i = 0; i < placement.size(); ++i) {
        const PlacedDie& placed = placement[i];
        const Extent size = turned(design.dies[i].size, placed.orient);
        out << design.dies[i].name << " " << numeral(placed.at.x) << " " << numeral(placed.at.y)
            << " DIMS = " << pair(size.width, size.height) << " : "
            << OrientConverter::OrientToString(placed.orient) << "\n";
    }
    for (const Design::Terminal& terminal : design.terminals) {
        out << terminal.name << " " << numeral(terminal.at.x) << " " << numeral(terminal.at.y)
            << "\n";
    }
}

}  // namespace korvel

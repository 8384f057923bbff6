#include "design/PlacementFile.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <ostream>
#include <unordered_map>

#include "base/Tolerances.h"
#include "design/InputFile.h"
#include "design/Numeral.h"
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

std::optional<Orient> orientOf(const std::string& text) {
    for (int i = static_cast<int>(Orient::N); i <= static_cast<int>(Orient::FW); ++i) {
        if (OrientConverter::OrientToString(static_cast<Orient>(i)) == text) {
            return static_cast<Orient>(i);
        }
    }
    return std::nullopt;
}

// What may stand behind the position: nothing, an orientation, or dimensions and an orientation.
bool readTurn(RecordFile& file, PlacementRecord& record, const std::string& subject) {
    BookshelfScanner& scanner = file.scanner;
    const std::string piece(scanner.nextPiece());
    if (piece.empty()) {
        return true;
    }
    if (piece == "DIMS") {
        scanner.token();
        const Corner<double> dims = scanner.corner<double>("=");
        scanner.skipPast(':');
        record.dims = Extent{dims.x, dims.y};
    } else if (piece[0] == ':') {
        scanner.skipPast(':');
    } else {
        file.error(subject + ": found " + shown(piece) +
                   ", expected ': ORIENTATION', 'DIMS = (W, H) : ORIENTATION' or the end of the "
                   "line");
        return false;
    }
    const std::string text = scanner.token("an orientation");
    const std::optional<Orient> orient = orientOf(text);
    if (scanner && !orient) {
        file.error(subject + ": found " + shown(text) +
                   ", expected an orientation: N, E, S, W, FN, FE, FS or FW");
        return false;
    }
    record.orient = orient.value_or(Orient::N);
    return true;
}

struct Body {
    unsigned index;
    unsigned line = 0;  // 0: not in the file yet
};

// By name.
std::unordered_map<std::string, Body> bodiesOf(const Design& design) {
    std::unordered_map<std::string, Body> bodies;
    unsigned index = 0;
    for (const Design::Die& die : design.dies) {
        bodies.try_emplace(die.name, Body{index++});
    }
    for (const Design::Terminal& terminal : design.terminals) {
        bodies.try_emplace(terminal.name, Body{index++});
    }
    return bodies;
}

// Dimensions are those of the die as it lies. Some tools write those of orientation N instead:
// the orientation counts then. Others mean another die.
bool checkDims(RecordFile& file, const Design::Die& die, const PlacementRecord& record) {
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

void checkTerminal(RecordFile& file, const Design::Terminal& terminal, Spot at) {
    if (at.x != terminal.at.x || at.y != terminal.at.y) {
        file.warning("terminal " + shown(terminal.name) + ": found " + pair(at.x, at.y) +
                     ", expected " + pair(terminal.at.x, terminal.at.y) +
                     " as in the design, which is what counts");
    }
}

}  // namespace

std::optional<PlacementRecord> readPlacementRecord(RecordFile& file, unsigned& firstLine) {
    if (firstLine != 0) {
        file.errorAgain(firstLine);
        return std::nullopt;
    }
    firstLine = file.getLine();
    const std::string subject = "position of " + shown(file.getWord());
    PlacementRecord record;
    const Corner<double> at = file.scanner.position<double>();
    record.at = {at.x, at.y};
    if ((file.scanner && !readTurn(file, record, subject)) || file.reportSlip(subject)) {
        return std::nullopt;
    }
    file.passOverRest(subject);
    return record;
}

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

ReadPlacement readPlacement(std::istream& in, const std::string& name, const Design& design,
                            Diagnostics& diagnostics) {
    RecordFile file(in, name, diagnostics);
    std::unordered_map<std::string, Body> bodies = bodiesOf(design);
    ReadPlacement result;
    result.dies.resize(design.dies.size());
    while (file.next()) {
        const auto body = bodies.find(file.getWord());
        if (body == bodies.end()) {
            result.unknown.push_back({file.getWord(), file.getLine()});
            if (result.unknown.size() == kMaxUnknown) {
                file.error("found too many unknown names to read on");
                break;
            }
            continue;
        }
        auto& [index, line] = body->second;
        const auto record = readPlacementRecord(file, line);
        if (record && !design.isDie(index)) {
            checkTerminal(file, design.terminalOf(index), record->at);
        } else if (record && checkDims(file, design.dies[index], *record)) {
            result.dies[index] = PlacedDie{record->at, record->orient};
        }
    }
    return result;
}

ReadPlacement readPlacement(const std::string& path, const Design& design,
                            Diagnostics& diagnostics) {
    std::ifstream in;
    openInput(in, path, diagnostics);  // else there is nothing to read
    return readPlacement(in, path, design, diagnostics);
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

#include "design/DesignReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <unordered_map>

#include "design/InputFile.h"
#include "design/Numeral.h"
#include "design/PlacementRecord.h"
#include "design/RecordFile.h"

namespace korvel {

namespace {

enum BlocksHeader { kSoftNum, kHardNum, kTerminalNum };
enum NetsHeader { kNetNum, kPinNum };

// Sums and differences of decimal fractions are off by a little.
constexpr double kSlack = 1.0 + 1e-9;
// Offsets are often rounded to a few digits.
constexpr double kFarthestPercent = 50.0 + 0.01;

std::string times(Extent size) {
    return numeral(size.width) + " x " + numeral(size.height);
}

bool isUsable(double length) {
    return std::isfinite(length) && length > 0.0;
}

bool fits(Extent size, Region region) {
    const auto within = [region](double width, double height) {
        return width <= region.width * kSlack && height <= region.height * kSlack;
    };
    return within(size.width, size.height) || within(size.height, size.width);
}

// From any corner on, either way round.
bool isRectangle(const std::array<Corner<double>, 4>& c) {
    const auto goesRound = [&c](std::size_t first) {
        const auto at = [&](std::size_t i) { return c[(first + i) % 4]; };
        return at(0).x == at(1).x && at(1).y == at(2).y && at(2).x == at(3).x && at(3).y == at(0).y;
    };
    return goesRound(0) || goesRound(1);
}

class DesignReader {
public:
    DesignReader(Region region, Diagnostics& diagnostics);

    // In this order; any of them may be left out, which is an error of the caller's to report.
    void readBlocks(std::istream& in, const std::string& file);
    void readPlacement(std::istream& in, const std::string& file);
    void readNets(std::istream& in, const std::string& file);

    Design take() { return std::move(design); }

private:
    enum class Kind { kDie, kTerminal, kOther };
    struct Body {
        Kind kind;
        unsigned index;  // among the dies or the terminals
        unsigned line;
        unsigned placedLine = 0;  // in .pl; 0: not there
        bool hasNet = false;
    };
    struct OpenNet {
        unsigned line = 0;  // 0: none yet
        std::optional<unsigned> degree;
        std::size_t pinNum = 0;
    };

    void readBody(RecordFile& file, FileHeaders& headers);
    void readDie(RecordFile& file);
    Extent readSize(RecordFile& file, const std::string& subject);
    void checkSize(RecordFile& file, const std::string& subject, Extent size);
    void refuseKind(RecordFile& file, const FileHeaders& headers, const std::string& kind);
    void addBody(RecordFile& file, Kind kind, std::size_t index);
    void checkBlocks(RecordFile& file, const FileHeaders& headers);
    void checkTotalArea(RecordFile& file);

    Body* findBody(RecordFile& file);
    void checkTerminals(RecordFile& file);

    void openNet(RecordFile& file);
    void closeNet(RecordFile& file);
    void readPin(RecordFile& file, const FileHeaders& headers);
    void readOffset(RecordFile& file, Body& body, const std::string& subject);
    void passOverTerminalOffset(RecordFile& file, const std::string& subject);
    void refuseEarlyLine(RecordFile& file, const FileHeaders& headers);
    void checkNets(RecordFile& file, const FileHeaders& headers);
    void checkDiesHaveNets();

    Region region;
    bool hasRegion;
    Diagnostics& diagnostics;
    Design design;

    bool blocksRead = false;  // without them no name is known
    std::string blocksFile;
    std::unordered_map<std::string, Body> bodies;
    std::size_t dieNum = 0;       // lines, sound or not
    std::size_t terminalNum = 0;  // the same
    std::size_t otherNum = 0;     // lines of no known kind, and soft blocks

    OpenNet net;
    std::size_t pinNum = 0;
    std::size_t shortNetNum = 0;
    unsigned firstShortNet = 0;  // its line
    bool saidEarlyLine = false;
};

DesignReader::DesignReader(Region region, Diagnostics& diagnostics)
    : region(region),
      hasRegion(isUsable(region.width) && isUsable(region.height)),
      diagnostics(diagnostics) {
    if (!hasRegion) {
        diagnostics.error({}, 0,
                          "found an area of " + times({region.width, region.height}) +
                              ", expected a width and a height above 0");
    }
}

// --- .blocks ---------------------------------------------------------------------------------

void DesignReader::readBlocks(std::istream& in, const std::string& name) {
    blocksRead = true;
    blocksFile = name;
    RecordFile file(in, name, diagnostics);
    FileHeaders headers{"NumSoftRectangularBlocks", "NumHardRectilinearBlocks", "NumTerminals"};
    while (file.next()) {
        if (!headers.take(file)) {
            readBody(file, headers);
        }
    }
    headers.reportMissing(file);
    checkBlocks(file, headers);
}

void DesignReader::readBody(RecordFile& file, FileHeaders& headers) {
    const std::string kind(file.scanner.nextPiece());
    if (kind == "hardrectilinear") {
        headers.endHere();
        readDie(file);
    } else if (kind == "terminal") {
        headers.endHere();
        file.scanner.token();
        file.passOverRest("terminal " + shown(file.getWord()));
        ++terminalNum;
        addBody(file, Kind::kTerminal, design.terminals.size());
    } else {
        refuseKind(file, headers, kind);
    }
}

void DesignReader::refuseKind(RecordFile& file, const FileHeaders& headers,
                              const std::string& kind) {
    const std::string& name = file.getWord();
    if (kind == "softrectangular") {
        // One error says it for all if the header has it.
        if (headers.countOf(kSoftNum).value_or(0) == 0) {
            file.error("found the soft block " + shown(name) +
                       ", expected hard ones: only these can be placed");
        }
    } else if (bodies.empty() && otherNum == 0 && !headers.areComplete()) {
        file.warning("found " + shown(name) + ", expected a header; the line is passed over");
        return;
    } else {
        file.error("block " + shown(name) + ": found " +
                   (kind.empty() ? "the end of the line" : shown(kind)) +
                   ", expected hardrectilinear or terminal");
    }
    ++otherNum;
    addBody(file, Kind::kOther, 0);
}

// A name that is taken or cannot be used keeps what it has.
void DesignReader::addBody(RecordFile& file, Kind kind, std::size_t index) {
    const std::string& name = file.getWord();
    if (!isPrintable(name)) {
        file.error("found the name " + shown(name) + ", expected characters that can be printed");
    } else if (name == "NetDegree" || name == "DIMS") {
        file.error("found the name " + shown(name) +
                   ", expected none that is a word of the format");
    }
    const auto [body, isNew] =
        bodies.try_emplace(name, Body{kind, static_cast<unsigned>(index), file.getLine()});
    if (!isNew) {
        file.error("found the name " + shown(name) + " again, expected it once (line " +
                   std::to_string(body->second.line) + " has it first)");
    } else if (kind == Kind::kTerminal) {
        design.terminals.push_back({name, {}});
    }
}

void DesignReader::readDie(RecordFile& file) {
    ++dieNum;
    const std::string& name = file.getWord();
    const std::size_t index = design.dies.size();
    addBody(file, Kind::kDie, index);
    const Extent size = readSize(file, "die " + shown(name));
    if (bodies.at(name).line == file.getLine()) {
        design.dies.push_back({name, size});
    }
}

// Zero by zero after an error.
Extent DesignReader::readSize(RecordFile& file, const std::string& subject) {
    file.scanner.token();
    const Outline<double> outline = file.scanner.outline<double>();
    const bool four = outline.cornerNum == 4;
    if (four || outline.cornerNum == 0) {
        file.scanner.skipPast(')');
        if (file.reportSlip(subject)) {
            return {};
        }
    }
    if (!four) {
        file.error(subject + ": found " + std::to_string(outline.cornerNum) +
                   " corners, expected the 4 of a rectangle");
        return {};
    }
    const auto& corners = outline.corners;
    if (!isRectangle(corners)) {
        file.error(subject + ": found corners that make no rectangle along the axes");
        return {};
    }
    file.passOverRest(subject);
    const Extent size{std::abs(corners[2].x - corners[0].x), std::abs(corners[2].y - corners[0].y)};
    checkSize(file, subject, size);
    return size;
}

void DesignReader::checkSize(RecordFile& file, const std::string& subject, Extent size) {
    const std::string found = subject + ": found a size of " + times(size) + ", expected ";
    if (!isUsable(size.width) || !isUsable(size.height)) {
        file.error(found + "a width and a height above 0");
    } else if (hasRegion && !fits(size, region)) {
        file.error(found + "one that fits into the area of " +
                   times({region.width, region.height}));
    }
}

// Counts are not judged when some lines could not be counted.
void DesignReader::checkBlocks(RecordFile& file, const FileHeaders& headers) {
    const unsigned softNum = headers.countOf(kSoftNum).value_or(0);
    if (softNum > 0) {
        file.error(headers.lineOf(kSoftNum), "found " + std::to_string(softNum) +
                                                 " soft blocks, expected none: only hard ones can "
                                                 "be placed");
    }
    if (otherNum == 0) {
        const std::string dies = headers.disagreement(kHardNum, dieNum, "hard blocks");
        const std::string terminals = headers.disagreement(kTerminalNum, terminalNum, "terminals");
        if (!dies.empty()) {
            file.error(headers.lineOf(kHardNum), dies);
        }
        if (!terminals.empty()) {
            file.error(headers.lineOf(kTerminalNum), terminals);
        }
        if (dieNum == 0) {
            file.error(0, "found no dies, expected at least one");
        }
    }
    checkTotalArea(file);
}

void DesignReader::checkTotalArea(RecordFile& file) {
    double total = 0.0;
    for (const Design::Die& die : design.dies) {
        total += die.size.width * die.size.height;
    }
    const double available = region.width * region.height;
    if (hasRegion && total > available * kSlack) {
        file.error(0, "found dies that cover " + numeral(total) +
                          " in all, expected no more than "
                          "the " +
                          numeral(available) + " of the area");
    }
}

// --- .pl -------------------------------------------------------------------------------------

// Null if the name is not known, which is an error unless no name is.
DesignReader::Body* DesignReader::findBody(RecordFile& file) {
    const auto body = bodies.find(file.getWord());
    if (body != bodies.end()) {
        return &body->second;
    }
    if (blocksRead) {
        file.error("found the name " + shown(file.getWord()) +
                   ", expected a block or terminal of " + blocksFile);
    }
    return nullptr;
}

// Dies may stand here too, anywhere.
void DesignReader::readPlacement(std::istream& in, const std::string& name) {
    RecordFile file(in, name, diagnostics);
    while (file.next()) {
        Body* const body = findBody(file);
        if (body == nullptr) {
            continue;
        }
        if (body->placedLine != 0) {
            file.error("found the name " + shown(file.getWord()) +
                       " again, expected it once (line " + std::to_string(body->placedLine) +
                       " has it first)");
            continue;
        }
        body->placedLine = file.getLine();
        const auto record = readPlacementRecord(file, shown(file.getWord()));
        if (record && body->kind == Kind::kTerminal) {
            design.terminals[body->index].at = record->at;
        }
    }
    checkTerminals(file);
}

void DesignReader::checkTerminals(RecordFile& file) {
    std::size_t outside = 0;
    const Design::Terminal* first = nullptr;
    for (const Design::Terminal& terminal : design.terminals) {
        const Spot at = terminal.at;
        const bool isInside = at.x >= 0.0 && at.x <= region.width * kSlack && at.y >= 0.0 &&
                              at.y <= region.height * kSlack;
        if (bodies.at(terminal.name).placedLine == 0) {
            file.error(
                0, "found no line of terminal " + shown(terminal.name) + ", expected its position");
        } else if (hasRegion && !isInside && outside++ == 0) {
            first = &terminal;
        }
    }
    if (first != nullptr) {
        file.warning(
            bodies.at(first->name).placedLine,
            "terminal " + shown(first->name) + ": found " + numeral(first->at.x) + ", " +
                numeral(first->at.y) + ", expected a place in the area of " +
                times({region.width, region.height}) +
                (outside > 1 ? " (" + std::to_string(outside) + " terminals are outside)" : ""));
    }
}

// --- .nets -----------------------------------------------------------------------------------

void DesignReader::readNets(std::istream& in, const std::string& name) {
    RecordFile file(in, name, diagnostics);
    FileHeaders headers{"NumNets", "NumPins"};
    while (file.next()) {
        if (headers.take(file)) {
            continue;
        }
        if (file.getWord() == "NetDegree") {
            headers.endHere();
            closeNet(file);
            openNet(file);
        } else {
            readPin(file, headers);
        }
    }
    closeNet(file);
    headers.reportMissing(file);
    checkNets(file, headers);
    checkDiesHaveNets();
}

void DesignReader::openNet(RecordFile& file) {
    design.nets.emplace_back();
    net = {file.getLine(), std::nullopt, 0};
    const std::string subject = "net " + std::to_string(design.nets.size());
    const unsigned degree = file.scanner.countAfterColon();
    if (!file.reportSlip(subject)) {
        net.degree = degree;
        file.passOverRest(subject);
    }
}

void DesignReader::closeNet(RecordFile& file) {
    if (net.line == 0) {
        return;
    }
    if (net.degree && *net.degree != net.pinNum) {
        file.error(net.line, "net " + std::to_string(design.nets.size()) + ": found " +
                                 std::to_string(net.pinNum) + " pins, expected " +
                                 std::to_string(*net.degree) + " as NetDegree says");
    } else if (net.pinNum < 2 && shortNetNum++ == 0) {
        firstShortNet = net.line;
    }
}

void DesignReader::readPin(RecordFile& file, const FileHeaders& headers) {
    ++pinNum;
    if (net.line == 0) {
        refuseEarlyLine(file, headers);
        return;
    }
    ++net.pinNum;
    Body* const body = findBody(file);
    if (body == nullptr) {
        return;
    }
    body->hasNet = true;
    const std::string subject = "pin of " + shown(file.getWord());
    file.scanner.character("a direction, such as B");
    if (file.reportSlip(subject)) {
        return;
    }
    if (body->kind == Kind::kDie) {
        readOffset(file, *body, subject);
    } else if (body->kind == Kind::kTerminal) {
        passOverTerminalOffset(file, subject);
        const std::size_t index = design.dies.size() + body->index;
        design.nets.back().pins.push_back({static_cast<unsigned>(index), {}});
    }
}

void DesignReader::readOffset(RecordFile& file, Body& body, const std::string& subject) {
    const Corner<double> percents = file.scanner.percents<double>();
    if (file.reportSlip(subject)) {
        return;
    }
    if (std::max(std::abs(percents.x), std::abs(percents.y)) > kFarthestPercent) {
        file.error(subject + ": found the offset %" + numeral(percents.x) + " %" +
                   numeral(percents.y) + ", expected one on the die, from %-50 to %50");
        return;
    }
    file.passOverRest(subject);
    const Extent size = design.dies[body.index].size;
    const Spot offset{(percents.x + 50.0) / 100.0 * size.width,
                      (percents.y + 50.0) / 100.0 * size.height};
    design.nets.back().pins.push_back({body.index, offset});
}

// Some files give terminals an offset, which is none if it is zero.
void DesignReader::passOverTerminalOffset(RecordFile& file, const std::string& subject) {
    if (file.scanner.nextPiece() != ":") {
        file.passOverRest(subject);
        return;
    }
    const Corner<double> percents = file.scanner.percents<double>();
    if (file.reportSlip(subject)) {
        return;
    }
    if (percents.x != 0.0 || percents.y != 0.0) {
        file.warning(subject + ": found an offset, expected none at a terminal; it is passed over");
    }
    file.passOverRest(subject);
}

// Such lines come in numbers or not at all, so only the first is reported.
void DesignReader::refuseEarlyLine(RecordFile& file, const FileHeaders& headers) {
    if (saidEarlyLine) {
        return;
    }
    saidEarlyLine = true;
    const std::string& name = file.getWord();
    if (headers.areComplete() || bodies.count(name) > 0) {
        file.error("found a pin of " + shown(name) + ", expected 'NetDegree : COUNT' before it");
    } else {
        file.warning("found " + shown(name) + ", expected a header; the line is passed over");
    }
}

void DesignReader::checkNets(RecordFile& file, const FileHeaders& headers) {
    const std::string nets = headers.disagreement(kNetNum, design.nets.size(), "nets");
    const std::string pins = headers.disagreement(kPinNum, pinNum, "pins");
    if (!nets.empty()) {
        file.error(headers.lineOf(kNetNum), nets);
    }
    if (!pins.empty()) {
        file.warning(headers.lineOf(kPinNum), pins);
    }
    if (shortNetNum > 0) {
        file.warning(firstShortNet,
                     "found a net of less than 2 pins, which has no length" +
                         (shortNetNum > 1 ? " (" + std::to_string(shortNetNum) + " nets are such)"
                                          : std::string()));
    }
}

void DesignReader::checkDiesHaveNets() {
    for (const Design::Die& die : design.dies) {
        const Body& body = bodies.at(die.name);
        if (!body.hasNet) {
            diagnostics.warning(
                blocksFile, body.line,
                "die " + shown(die.name) + ": found in no net, so it may lie anywhere");
        }
    }
}

// --- The files -------------------------------------------------------------------------------

constexpr std::array kExtensions{".blocks", ".pl", ".nets"};

std::string withoutExtension(const std::string& path) {
    for (const std::string extension : kExtensions) {
        if (path.size() > extension.size() &&
            path.compare(path.size() - extension.size(), extension.size(), extension) == 0) {
            return path.substr(0, path.size() - extension.size());
        }
    }
    return path;
}

}  // namespace

std::optional<Design> readDesign(const std::string& path, Region region, Diagnostics& diagnostics) {
    const std::string stem = withoutExtension(path);
    const std::size_t errorsBefore = diagnostics.getErrorNum();
    DesignReader reader(region, diagnostics);
    const auto read = [&](const char* extension, auto parse) {
        const std::string name = stem + extension;
        std::ifstream in;
        if (openInput(in, name, diagnostics)) {
            (reader.*parse)(in, name);
        }
    };
    read(".blocks", &DesignReader::readBlocks);
    read(".pl", &DesignReader::readPlacement);
    read(".nets", &DesignReader::readNets);
    if (diagnostics.getErrorNum() > errorsBefore) {
        return std::nullopt;
    }
    Design design = reader.take();
    design.name = std::filesystem::path(stem).filename().string();
    return design;
}

std::optional<Design> readDesign(DesignStreams files, const std::string& name, Region region,
                                 Diagnostics& diagnostics) {
    const std::size_t errorsBefore = diagnostics.getErrorNum();
    DesignReader reader(region, diagnostics);
    reader.readBlocks(files.blocks, name + ".blocks");
    reader.readPlacement(files.placement, name + ".pl");
    reader.readNets(files.nets, name + ".nets");
    if (diagnostics.getErrorNum() > errorsBefore) {
        return std::nullopt;
    }
    Design design = reader.take();
    design.name = name;
    return design;
}

}  // namespace korvel

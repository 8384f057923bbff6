// The benchmark reader: three files of whitespace-separated tokens. What it tolerates and what it
// rejects is the base interface's contract, exit status 0 included.

#include <fstream>
#include <istream>

#include "IO.h"
#include "Invariant.h"
#include "ProcessEnd.h"

namespace korvel {

namespace {

constexpr int kInputError = 0;
constexpr std::streamsize kMaxSkipped = 512;
constexpr unsigned kRectangleVertices = 4;

void skipLine(std::istream& in) {
    in.ignore(kMaxSkipped, '\n');
}

void skipPast(std::istream& in, char mark) {
    in.ignore(kMaxSkipped, mark);
}

std::string nextToken(std::istream& in) {
    std::string token;
    in >> token;
    return token;
}

// A token where a record is expected that starts none: the rest of its line is to be skipped.
bool startsNoRecord(const std::string& token) {
    return token.empty() || token[0] == '#';
}

// Passes over everything up to the keyword and the colon behind it.
void skipToHeader(std::istream& in, const std::string& keyword) {
    std::string token;
    while (in >> token && token != keyword) {
    }
    in >> token;
}

// The count behind a header keyword; 0 when there is none.
unsigned readHeaderCount(std::istream& in, const std::string& keyword) {
    skipToHeader(in, keyword);
    unsigned count = 0;
    if (!(in >> count)) {
        count = 0;
        if (!in.eof()) {
            in.clear();
        }
    }
    return count;
}

// Offsets are percent from the block's centre in the file, fractions from its corner in the model.
float fractionOfPercent(float percent) {
    return static_cast<float>((percent + 50.0) / 100.0);
}

}  // namespace

struct IO::PinRecord {
    Entry owner;
    char direction;
    Point offset;
};

struct IO::NetRecord {
    unsigned degree;
    std::vector<PinRecord> pins;
};

Block& IO::blockOf(Entry entry) {
    Netlist& netlist = placer.netlist;
    return entry.terminal ? netlist.terminals[entry.position] : netlist.blocks[entry.position];
}

void IO::endOnInput(const std::string& error) {
    placer.report() << error << std::endl;
    throw ProcessEnd{kInputError};
}

void IO::parseInput() {
    placer.report() << std::endl << "===   Parsing Input Files   ===" << std::endl << std::endl;
    const auto open = [this](const char* extension, const char* error) {
        std::ifstream in(placer.params.getInputName() + extension);
        if (!in) {
            endOnInput(error);
        }
        return in;
    };
    std::ifstream blocks = open(".blocks", "ERROR: .blocks file could not be opened successfully");
    parseBlocks(blocks);
    std::ifstream placement = open(".pl", "ERROR: .pl file could not be opened successfully");
    parsePlacement(placement);
    // The text names the other file, on purpose.
    std::ifstream nets = open(".nets", "ERROR: .pl file could not be opened successfully");
    parseNets(nets);
    for (Block& block : placer.netlist.blocks) {
        block.findNetsIndexes(placer.report());
    }
    printParsingStatistic();
}

void IO::parseBlocks(std::istream& in) {
    skipToHeader(in, "NumSoftRectangularBlocks");
    if (nextToken(in) != "0") {
        endOnInput("ERROR: .blocks contains soft blocks -- this tool cannot work with soft blocks");
    }
    placer.setBlockNum(readHeaderCount(in, "NumHardRectilinearBlocks"));
    placer.setTermNum(readHeaderCount(in, "NumTerminals"));

    unsigned bIndex = 0;  // hard blocks read
    unsigned tIndex = 0;  // entries read: hard blocks and terminals
    while (in) {
        const std::string name = nextToken(in);
        if (startsNoRecord(name)) {
            skipLine(in);
            continue;
        }
        const std::string type = nextToken(in);
        if (type == "hardrectilinear") {
            placer.netlist.blocks.push_back(readHardBlock(in, name, bIndex));
            blockPositions.emplace(name, bIndex);
            ++bIndex;
            ++tIndex;
        } else if (type == "terminal") {
            placer.netlist.terminals.emplace_back(static_cast<int>(tIndex), name, 0.0F, 0.0F);
            terminalPositions.emplace(name, tIndex - bIndex);
            ++tIndex;
        } else if (type == "softrectangular") {
            placer.report() << "ERROR by parsing: .blocks contains soft blocks -- this tool cannot "
                               "work with soft blocks"
                            << std::endl;
        } else {
            endOnInput("ERROR by parsing: .blocks contains unreadable block type");
        }
    }
    KORVEL_INVARIANT(placer.getBlockNum() == bIndex, "placer.getBlockNum() == bIndex");
    KORVEL_INVARIANT(placer.getTermNum() == tIndex - bIndex,
                     "placer.getTermNum() == tIndex-bIndex");
}

// Vertices 0 and 2 are opposite corners; the others do not matter.
Block IO::readHardBlock(std::istream& in, const std::string& name, unsigned index) {
    unsigned vertexNum = 0;
    in >> vertexNum;
    if (in && vertexNum > kRectangleVertices) {
        placer.report()
            << "ERROR in parsing .blocks file: rectilinear blocks can be only rectangles for now"
            << std::endl;
    }
    std::array<Point, 3> corners;
    for (unsigned i = 0; in && i < vertexNum; ++i) {
        Point vertex;
        skipPast(in, '(');
        in >> vertex.x;
        skipPast(in, ',');
        in >> vertex.y;
        if (i < corners.size()) {
            corners[i] = vertex;
        }
    }
    if (!in || vertexNum < corners.size()) {
        endOnInput("ERROR by .blocks file parsing: cannot read the vertices of block " + name);
    }
    nextToken(in);
    return Block(static_cast<int>(index), name, corners[2].x - corners[0].x,
                 corners[2].y - corners[0].y);
}

void IO::parsePlacement(std::istream& in) {
    std::string token = nextToken(in);
    while (in || !token.empty()) {
        if (startsNoRecord(token) || token == "UCLA" || token == "UMICH") {
            skipLine(in);
            token = nextToken(in);
            continue;
        }
        const std::string name = token;
        Point coord;
        const bool hasCoord = static_cast<bool>(in >> coord.x >> coord.y);
        // Without dimensions the token already belongs to the next record.
        Orient orient = Orient::N;
        token = nextToken(in);
        if (token == "DIMS") {
            skipPast(in, ':');
            orient = OrientConverter::StringToOrient(nextToken(in), placer.report());
            token = nextToken(in);
        }
        const Entry entry = findEntry(name);
        if (!entry.found) {
            endOnInput("ERROR by .pl file parsing: cannot find a block with name " + name +
                       " in map");
        }
        if (!hasCoord) {
            endOnInput("ERROR by .pl file parsing: cannot read the position of " + name);
        }
        placeEntry(entry, coord, orient);
    }
}

// Blocks come first: a terminal of the same name is never found.
IO::Entry IO::findEntry(const std::string& name) const {
    const auto block = blockPositions.find(name);
    if (block != blockPositions.end()) {
        return {true, false, block->second};
    }
    const auto terminal = terminalPositions.find(name);
    if (terminal != terminalPositions.end()) {
        return {true, true, terminal->second};
    }
    return {};
}

void IO::placeEntry(Entry entry, Point coord, Orient orient) {
    if (!entry.terminal && coord.x == 0 && coord.y == 0 && orient == Orient::N) {
        return;  // where a block stands from the start
    }
    blockOf(entry).updateBlockState(coord, orient, false);
}

void IO::parseNets(std::istream& in) {
    placer.setNetNum(readHeaderCount(in, "NumNets"));
    placer.setPinNum(readHeaderCount(in, "NumPins"));

    std::vector<NetRecord> nets;
    std::size_t pinNum = 0;
    while (in) {
        const std::string token = nextToken(in);
        if (startsNoRecord(token)) {
            skipLine(in);
            continue;
        }
        if (token == "NetDegree") {
            nextToken(in);
            NetRecord net{};
            if (!(in >> net.degree)) {
                endOnInput("ERROR by .nets file parsing: cannot read the degree of a net");
            }
            nets.push_back(std::move(net));
        } else {
            const PinRecord pin = readPin(in, token);
            if (nets.empty()) {
                endOnInput("ERROR by .nets file parsing: pin of " + token +
                           " comes before the first NetDegree");
            }
            nets.back().pins.push_back(pin);
            ++pinNum;
        }
    }
    buildNets(nets, pinNum);

    const std::size_t nIndex = nets.size();
    KORVEL_INVARIANT(placer.getNetNum() == nIndex, "placer.getNetNum() == nIndex");
    if (pinNum != placer.getPinNum()) {
        placer.report() << "CRITICAL WARNING by .nets file parsing: number of parsed pins and "
                           "given number of pins are not same!"
                        << std::endl
                        << "Parsed pin number: " << pinNum
                        << ", Given pin number: " << placer.getPinNum() << std::endl
                        << std::endl;
    }
}

IO::PinRecord IO::readPin(std::istream& in, const std::string& name) {
    PinRecord pin{};
    in >> pin.direction;
    pin.owner = findEntry(name);
    if (!pin.owner.found) {
        endOnInput("ERROR by .nets file parsing: cannot find a block with name " + name +
                   " in  blocks or hash maps");
    }
    if (pin.owner.terminal) {
        return pin;
    }
    Point percent;
    skipPast(in, '%');
    in >> percent.x;
    skipPast(in, '%');
    if (!(in >> percent.y)) {
        endOnInput("ERROR by .nets file parsing: cannot read the pin offsets of block " + name);
    }
    const Point pOffsets{fractionOfPercent(percent.x), fractionOfPercent(percent.y)};
    // Checked on the fractions, so that only offsets far outside the block are refused: on purpose.
    KORVEL_INVARIANT(pOffsets.x <= 50.0 && pOffsets.x >= -50.0,
                     "pOffsets.x <= 50.0 && pOffsets.x >=-50.0");
    KORVEL_INVARIANT(pOffsets.y <= 50.0 && pOffsets.y >= -50.0,
                     "pOffsets.y <= 50.0 && pOffsets.y >=-50.0");
    pin.offset = pOffsets;
    return pin;
}

// All counts are known here, so that no array grows while others point into it.
void IO::buildNets(const std::vector<NetRecord>& records, std::size_t pinNum) {
    std::vector<Net>& nets = placer.netlist.nets;
    std::vector<Pin>& pins = placer.netlist.pins;
    nets.reserve(records.size());
    pins.reserve(pinNum);
    for (const NetRecord& record : records) {
        Net& net = nets.emplace_back(static_cast<unsigned>(nets.size()), record.degree);
        for (const PinRecord& pinRecord : record.pins) {
            const bool terminal = pinRecord.owner.terminal;
            Block& owner = blockOf(pinRecord.owner);
            Pin& pin = pins.emplace_back(static_cast<int>(pins.size()), pinRecord.direction,
                                         terminal ? owner.getCoord() : Point{}, pinRecord.offset,
                                         terminal, owner.getWidth(), owner.getHeight(),
                                         static_cast<unsigned>(owner.getIndex()), &net);
            if (terminal) {
                pin.setPlaced();
            }
            owner.addPin(&pin);
            net.addPin(&pin);
        }
    }
}

void IO::printParsingStatistic() {
    placer.report() << "Statistic information: " << std::endl
                    << "Blocks number: " << placer.getBlockNum() << std::endl
                    << "Terms number: " << placer.getTermNum() << std::endl
                    << "Nets number: " << placer.getNetNum() << std::endl
                    << "Pins number: " << placer.getPinNum() << std::endl;
}

}  // namespace korvel

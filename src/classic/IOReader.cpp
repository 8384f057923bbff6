// The benchmark reader: three files of whitespace-separated tokens. What it tolerates and what it
// rejects is the classic interface's contract, exit status 0 included.

#include <fstream>

#include "base/Invariant.h"
#include "classic/IO.h"
#include "classic/ProcessEnd.h"
#include "classic/netlist/NetlistBuilder.h"
#include "format/BookshelfScanner.h"

namespace korvel {

namespace {

constexpr int kInputError = 0;
constexpr unsigned kRectangleCorners = 4;

// Passes over everything up to the keyword.
void skipToHeader(BookshelfScanner& in, const std::string& keyword) {
    std::string token;
    do {
        token = in.token();
    } while (in && token != keyword);
}

// The count behind a header keyword; 0 when there is none.
unsigned readHeaderCount(BookshelfScanner& in, const std::string& keyword) {
    skipToHeader(in, keyword);
    const unsigned count = in.countAfterColon();
    if (in) {
        return count;
    }
    in.recover();
    return 0;
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
    std::size_t firstPin;  // of its pins, which come up to those of the next net
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
    printParsingStatistic();
}

void IO::parseBlocks(std::istream& file) {
    BookshelfScanner in(file, BookshelfScanner::Records::kAcrossLines);
    skipToHeader(in, "NumSoftRectangularBlocks");
    in.token();
    if (in.token() != "0") {
        endOnInput("ERROR: .blocks contains soft blocks -- this tool cannot work with soft blocks");
    }
    placer.setBlockNum(readHeaderCount(in, "NumHardRectilinearBlocks"));
    placer.setTermNum(readHeaderCount(in, "NumTerminals"));

    unsigned bIndex = 0;  // hard blocks read
    unsigned tIndex = 0;  // entries read: hard blocks and terminals
    while (in) {
        const std::string name = in.token();
        if (BookshelfScanner::startsNoRecord(name)) {
            in.skipLine();
            continue;
        }
        const std::string type = in.token();
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

// Corners 0 and 2 are opposite; the others do not matter.
Block IO::readHardBlock(BookshelfScanner& in, const std::string& name, unsigned index) {
    const Outline<float> outline = in.outline<float>();
    if (outline.cornerNum > kRectangleCorners) {
        placer.report()
            << "ERROR in parsing .blocks file: rectilinear blocks can be only rectangles for now"
            << std::endl;
    }
    const auto& corners = outline.corners;
    if (!in || outline.cornerNum < 3) {
        endOnInput("ERROR by .blocks file parsing: cannot read the vertices of block " + name);
    }
    in.token();
    return Block(static_cast<int>(index), name, corners[2].x - corners[0].x,
                 corners[2].y - corners[0].y);
}

void IO::parsePlacement(std::istream& file) {
    BookshelfScanner in(file, BookshelfScanner::Records::kAcrossLines);
    std::string token = in.token();
    while (in || !token.empty()) {
        if (BookshelfScanner::startsNoRecord(token) || token == "UCLA" || token == "UMICH") {
            in.skipLine();
            token = in.token();
            continue;
        }
        const std::string name = token;
        const Corner<float> coord = in.position<float>();
        const bool hasCoord = static_cast<bool>(in);
        // Without dimensions the token already belongs to the next record.
        Orient orient = Orient::N;
        token = in.token();
        if (token == "DIMS") {
            in.skipPast(':');
            orient = OrientConverter::StringToOrient(in.token(), placer.report());
            token = in.token();
        }
        const Entry entry = findEntry(name);
        if (!entry.found) {
            endOnInput("ERROR by .pl file parsing: cannot find a block with name " + name +
                       " in map");
        }
        if (!hasCoord) {
            endOnInput("ERROR by .pl file parsing: cannot read the position of " + name);
        }
        placeEntry(entry, {coord.x, coord.y}, orient);
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

void IO::parseNets(std::istream& file) {
    BookshelfScanner in(file, BookshelfScanner::Records::kAcrossLines);
    placer.setNetNum(readHeaderCount(in, "NumNets"));
    placer.setPinNum(readHeaderCount(in, "NumPins"));

    std::vector<NetRecord> nets;
    std::vector<PinRecord> pins;
    while (in) {
        const std::string token = in.token();
        if (BookshelfScanner::startsNoRecord(token)) {
            in.skipLine();
            continue;
        }
        if (token == "NetDegree") {
            const unsigned degree = in.countAfterColon();
            if (!in) {
                endOnInput("ERROR by .nets file parsing: cannot read the degree of a net");
            }
            nets.push_back({degree, pins.size()});
        } else {
            const PinRecord pin = readPin(in, token);
            if (nets.empty()) {
                endOnInput("ERROR by .nets file parsing: pin of " + token +
                           " comes before the first NetDegree");
            }
            pins.push_back(pin);
        }
    }
    buildNets(nets, pins);

    const std::size_t nIndex = nets.size();
    const std::size_t pinNum = pins.size();
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

IO::PinRecord IO::readPin(BookshelfScanner& in, const std::string& name) {
    PinRecord pin{};
    pin.direction = in.character("a direction");
    pin.owner = findEntry(name);
    if (!pin.owner.found) {
        endOnInput("ERROR by .nets file parsing: cannot find a block with name " + name +
                   " in  blocks or hash maps");
    }
    if (pin.owner.terminal) {
        return pin;
    }
    const Corner<float> percent = in.percents<float>();
    if (!in) {
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

void IO::buildNets(const std::vector<NetRecord>& nets, const std::vector<PinRecord>& pins) {
    NetlistBuilder builder(placer.netlist, nets.size(), pins.size());
    for (std::size_t n = 0; n < nets.size(); ++n) {
        const std::size_t begin = nets[n].firstPin;
        const std::size_t end = n + 1 < nets.size() ? nets[n + 1].firstPin : pins.size();
        builder.addNet(nets[n].degree, end - begin);
        for (std::size_t p = begin; p < end; ++p) {
            const PinRecord& pin = pins[p];
            if (pin.owner.terminal) {
                builder.addTerminalPin(blockOf(pin.owner), pin.direction);
            } else {
                builder.addBlockPin(blockOf(pin.owner), pin.direction, pin.offset);
            }
        }
    }
    builder.finish(placer.report());
}

void IO::printParsingStatistic() {
    placer.report() << "Statistic information: " << std::endl
                    << "Blocks number: " << placer.getBlockNum() << std::endl
                    << "Terms number: " << placer.getTermNum() << std::endl
                    << "Nets number: " << placer.getNetNum() << std::endl
                    << "Pins number: " << placer.getPinNum() << std::endl;
}

}  // namespace korvel

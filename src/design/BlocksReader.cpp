// Reads .blocks files: dies and terminals.
#include <array>
#include <cmath>

#include "base/Tolerances.h"
#include "design/DesignDraft.h"
#include "design/Numeral.h"

namespace korvel {

namespace {

// In the order in which the constructor gives them.
enum Header { kSoftNum, kHardNum, kTerminalNum };

bool fits(Extent size, Region region) {
    const auto within = [region](double width, double height) {
        return width <= region.width * (1.0 + kFitting) &&
               height <= region.height * (1.0 + kFitting);
    };
    return within(size.width, size.height) || within(size.height, size.width);
}

// From any corner on, either way round.
bool isRectangle(const std::array<Corner<double>, 4>& corners) {
    const auto goesRound = [&corners](std::size_t first) {
        const auto at = [&](std::size_t i) { return corners[(first + i) % 4]; };
        return at(0).x == at(1).x && at(1).y == at(2).y && at(2).x == at(3).x && at(3).y == at(0).y;
    };
    return goesRound(0) || goesRound(1);
}

class BlocksReader {
public:
    BlocksReader(std::istream& in, const std::string& name, DesignDraft& draft)
        : draft(draft),
          file(in, name, draft.diagnostics),
          headers{"NumSoftRectangularBlocks", "NumHardRectilinearBlocks", "NumTerminals"} {
        draft.blocksFile = name;
    }

    void read() {
        while (file.next()) {
            if (!headers.take(file)) {
                readBody();
            }
        }
        headers.reportMissing(file);
        checkCounts();
        checkTotalArea();
    }

private:
    void readBody() {
        const std::string kind(file.scanner.nextPiece());
        if (kind == "hardrectilinear") {
            headers.endHere();
            readDie();
        } else if (kind == "terminal") {
            headers.endHere();
            ++terminalNum;
            file.scanner.token();
            file.passOverRest("terminal " + shown(file.getWord()));
            if (addBody(DesignDraft::Kind::kTerminal, draft.design.terminals.size())) {
                draft.design.terminals.push_back({file.getWord(), {}});
            }
        } else {
            refuseKind(kind);
        }
    }

    void refuseKind(const std::string& kind) {
        const std::string name = shown(file.getWord());
        if (kind == "softrectangular") {
            // If the header has soft blocks, its error says it for all.
            if (headers.countOf(kSoftNum).value_or(0) == 0) {
                file.error("found the soft block " + name +
                           ", expected hard ones only, as others cannot be placed");
            }
        } else if (draft.bodies.empty() && !headers.areComplete()) {
            file.warning("found " + name + ", expected a header; the line is passed over");
            return;
        } else {
            file.error("block " + name + ": found " +
                       (kind.empty() ? "the end of the line" : shown(kind)) +
                       ", expected hardrectilinear or terminal");
        }
        ++otherNum;
        addBody(DesignDraft::Kind::kOther, 0);
    }

    // Says whether the name is new; if not, it keeps what it has.
    bool addBody(DesignDraft::Kind kind, std::size_t index) {
        checkName();
        const auto [body, isNew] = draft.bodies.try_emplace(
            file.getWord(), DesignDraft::Body{kind, static_cast<unsigned>(index), file.getLine()});
        if (!isNew) {
            file.errorAgain(body->second.line);
        }
        return isNew;
    }

    void checkName() {
        const std::string& name = file.getWord();
        const std::string found = "found the name " + shown(name) + ", expected ";
        if (!isPrintable(name)) {
            file.error(found + "characters that can be printed");
        } else if (name == "NetDegree" || name == "DIMS") {
            file.error(found + "none that is a word of the format");
        }
    }

    void readDie() {
        ++dieNum;
        const bool isNew = addBody(DesignDraft::Kind::kDie, draft.design.dies.size());
        const Extent size = readSize("die " + shown(file.getWord()));
        if (isNew) {
            draft.design.dies.push_back({file.getWord(), size});
        }
    }

    // Zero by zero after an error that hides the size.
    Extent readSize(const std::string& subject) {
        file.scanner.token();
        const Outline<double> outline = file.scanner.outline<double>();
        const auto& corners = outline.corners;
        const bool hasCount = file.scanner || outline.cornerNum > 0;
        const auto refused = [&](const std::string& text) {
            file.error(subject + ": found " + text);
            return Extent{};
        };
        if (hasCount && outline.cornerNum != corners.size()) {
            return refused(counted(outline.cornerNum, "corner") +
                           ", expected the 4 of a rectangle");
        }
        if (file.reportSlip(subject)) {
            return {};
        }
        if (file.scanner.nextPiece().starts_with('(')) {
            return refused("a corner too many, expected the 4 of a rectangle");
        }
        if (!isRectangle(corners)) {
            return refused("corners of no rectangle, expected one along the axes");
        }
        file.passOverRest(subject);
        const Extent size{std::abs(corners[2].x - corners[0].x),
                          std::abs(corners[2].y - corners[0].y)};
        checkSize(subject, size);
        return size;
    }

    void checkSize(const std::string& subject, Extent size) {
        const std::string found = subject + ": found a size of " + times(size) + ", expected ";
        if (!isUsable(size.width) || !isUsable(size.height)) {
            file.error(found + "a width and a height above 0");
        } else if (draft.hasRegion && !fits(size, draft.region)) {
            file.error(found + "one that fits into the area of " + times(draft.region));
        }
    }

    // Lines of unknown kinds may be what is missing elsewhere.
    void checkCounts() {
        const unsigned softNum = headers.countOf(kSoftNum).value_or(0);
        if (softNum > 0) {
            file.error(headers.lineOf(kSoftNum),
                       "found " + counted(softNum, "soft block") +
                           ", expected hard ones only, as others cannot be "
                           "placed");
        }
        if (otherNum > 0 || !file.isWhole()) {
            return;
        }
        headers.checkCount(file, kHardNum, dieNum, "hard block");
        headers.checkCount(file, kTerminalNum, terminalNum, "terminal");
        if (dieNum == 0) {
            file.error(0, "found no dies, expected at least one");
        }
    }

    void checkTotalArea() {
        double total = 0.0;
        for (const Design::Die& die : draft.design.dies) {
            total += die.size.width * die.size.height;
        }
        const double available = draft.region.width * draft.region.height;
        if (draft.hasRegion && total > available * (1.0 + kFitting)) {
            file.error(0, "found dies of " + numeral(total) +
                              " in all, expected no more than the " + numeral(available) +
                              " of the area");
        }
    }

    DesignDraft& draft;
    RecordFile file;
    FileHeaders headers;
    // Lines of each kind, sound or not. Other: of no known kind, and soft blocks.
    std::size_t dieNum = 0;
    std::size_t terminalNum = 0;
    std::size_t otherNum = 0;
};

}  // namespace

void readBlocks(std::istream& in, const std::string& name, DesignDraft& draft) {
    BlocksReader(in, name, draft).read();
}

}  // namespace korvel

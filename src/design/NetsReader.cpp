// Reads .nets files: nets and where their pins are.
#include <algorithm>
#include <cmath>

#include "design/DesignDraft.h"
#include "design/Numeral.h"

namespace korvel {

namespace {

// In the order in which the constructor gives them.
enum Header { kNetNum, kPinNum };

// Offsets are often rounded to a few digits.
constexpr double kFarthestPercent = 50.0 + 0.01;

class NetsReader {
public:
    NetsReader(std::istream& in, const std::string& name, DesignDraft& draft)
        : draft(draft), file(in, name, draft.diagnostics), headers{"NumNets", "NumPins"} {}

    void read() {
        while (file.next()) {
            if (headers.take(file)) {
                continue;
            }
            if (file.getWord() == "NetDegree") {
                headers.endHere();
                closeNet();
                openNet();
            } else {
                readPin();
            }
        }
        closeNet();
        headers.reportMissing(file);
        checkCounts();
    }

private:
    std::string subjectOfNet() const { return "net " + std::to_string(draft.design.nets.size()); }

    void openNet() {
        draft.design.nets.emplace_back();
        net = {file.getLine(), std::nullopt, 0};
        const unsigned degree = file.scanner.countAfterColon();
        if (file.reportSlip(subjectOfNet())) {
            return;
        }
        net.degree = degree;
        // Some files name their nets.
        if (!file.scanner.nextPiece().empty()) {
            file.scanner.token();
        }
        file.passOverRest(subjectOfNet());
    }

    void closeNet() {
        if (net.line == 0) {
            return;
        }
        if (net.degree && *net.degree != net.pinNum) {
            file.error(net.line, subjectOfNet() + ": found " + counted(net.pinNum, "pin") +
                                     ", expected " + std::to_string(*net.degree) +
                                     " as NetDegree says");
        } else if (net.pinNum < 2 && shortNetNum++ == 0) {
            firstShortNet = net.line;
        }
    }

    // Such lines come in numbers or not at all, so only the first is reported.
    void refuseEarlyLine() {
        if (refusedEarlyLine) {
            return;
        }
        refusedEarlyLine = true;
        const std::string& name = file.getWord();
        if (headers.areComplete() || draft.bodies.contains(name)) {
            file.error("found a pin of " + shown(name) +
                       ", expected 'NetDegree : COUNT' before it");
        } else {
            file.warning("found " + shown(name) + ", expected a header; the line is passed over");
        }
    }

    void readPin() {
        if (net.line == 0) {
            refuseEarlyLine();
            return;
        }
        ++pinNum;
        ++net.pinNum;
        DesignDraft::Body* const body = draft.find(file);
        if (body == nullptr) {
            return;
        }
        body->hasNet = true;
        const std::string subject = "pin of " + shown(file.getWord());
        file.scanner.character("a direction, such as B");
        if (file.reportSlip(subject)) {
            return;
        }
        if (body->kind == DesignDraft::Kind::kDie) {
            readDiePin(*body, subject);
        } else if (body->kind == DesignDraft::Kind::kTerminal) {
            passOverOffset(subject);
            const std::size_t index = draft.design.dies.size() + body->index;
            draft.design.nets.back().pins.push_back({static_cast<unsigned>(index), {}});
        }
    }

    void readDiePin(const DesignDraft::Body& die, const std::string& subject) {
        const Corner<double> percents = file.scanner.percents<double>();
        if (file.reportSlip(subject)) {
            return;
        }
        if (std::max(std::abs(percents.x), std::abs(percents.y)) > kFarthestPercent) {
            file.error(subject + ": found %" + numeral(percents.x) + " %" + numeral(percents.y) +
                       ", expected a place on the die, from %-50 to %50");
            return;
        }
        file.passOverRest(subject);
        const Extent size = draft.design.dies[die.index].size;
        const Spot offset{(percents.x + 50.0) / 100.0 * size.width,
                          (percents.y + 50.0) / 100.0 * size.height};
        draft.design.nets.back().pins.push_back({die.index, offset});
    }

    // Some files give the pins of terminals an offset. If it is zero, it says nothing.
    void passOverOffset(const std::string& subject) {
        if (file.scanner.nextPiece() == ":") {
            const Corner<double> percents = file.scanner.percents<double>();
            if (file.reportSlip(subject)) {
                return;
            }
            if (percents.x != 0.0 || percents.y != 0.0) {
                file.warning(subject + ": found %" + numeral(percents.x) + " %" +
                             numeral(percents.y) +
                             ", expected no offset at a terminal; it is passed over");
            }
        }
        file.passOverRest(subject);
    }

    void checkCounts() {
        if (file.isWhole()) {
            headers.checkCount(file, kNetNum, draft.design.nets.size(), "net");
        }
        headers.checkCount(file, kPinNum, pinNum, "pin", Diagnostics::kWarning);
        if (shortNetNum > 0) {
            file.warning(firstShortNet,
                         "found " + counted(shortNetNum, "net") +
                             " of less than 2 pins, expected 2 or more; the first is "
                             "here");
        }
    }

    struct OpenNet {
        unsigned line = 0;  // 0: none yet
        std::optional<unsigned> degree;
        std::size_t pinNum = 0;
    };

    DesignDraft& draft;
    RecordFile file;
    FileHeaders headers;
    OpenNet net;
    std::size_t pinNum = 0;
    std::size_t shortNetNum = 0;
    unsigned firstShortNet = 0;  // its line
    bool refusedEarlyLine = false;
};

}  // namespace

void readNets(std::istream& in, const std::string& name, DesignDraft& draft) {
    NetsReader(in, name, draft).read();
}

}  // namespace korvel

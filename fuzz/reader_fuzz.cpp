// Feeds any bytes to the diagnosing readers and checks what they promise: no crash, no error
// without a message that can be printed, and whole designs whose placements go through a file
// unharmed.
//
// An input is four files, each ended by a line of the marker: .blocks, .pl, .nets and a placement.

#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string_view>

#include "design/DesignReader.h"
#include "design/PlacementFile.h"

namespace korvel {
namespace {

constexpr std::string_view kMarker = "====\n";
constexpr Region kRegion{100.0, 80.0};
constexpr std::size_t kLongestLine = 400;

void expect(bool holds, const char* what) {
    if (!holds) {
        std::cerr << "Broken: " << what << std::endl;
        std::abort();
    }
}

std::array<std::string, 4> split(std::string_view input) {
    std::array<std::string, 4> files;
    for (std::string& file : files) {
        const std::size_t end = input.find(kMarker);
        file = input.substr(0, end);
        input.remove_prefix(end == std::string_view::npos ? input.size() : end + kMarker.size());
    }
    return files;
}

void checkPrinted(const Diagnostics& diagnostics) {
    std::ostringstream out;
    diagnostics.print(out);
    std::istringstream lines(out.str());
    for (std::string line; std::getline(lines, line);) {
        expect(isPrintable(line), "findings can be printed");
        expect(line.size() < kLongestLine, "findings are short");
    }
    expect(diagnostics.getFindings().size() <= 2 * Diagnostics::kMaxKept, "findings are few");
}

void checkDesign(const Design& design) {
    const std::size_t bodies = design.dies.size() + design.terminals.size();
    for (const Design::Die& die : design.dies) {
        expect(die.size.width > 0.0 && die.size.height > 0.0, "dies have a size");
        expect(!die.name.empty() && isPrintable(die.name), "dies have a name");
    }
    for (const Design::Net& net : design.nets) {
        for (const Design::Pin& pin : net.pins) {
            expect(pin.body < bodies, "pins belong to a body");
        }
    }
}

void checkRoundTrip(const Design& design) {
    Placement placement;
    for (std::size_t i = 0; i < design.dies.size(); ++i) {
        const auto n = static_cast<double>(i);
        placement.push_back({{n / 3.0, -1.1 * n}, static_cast<Orient>(i % 8)});
    }
    std::stringstream file;
    writePlacement(file, design, placement);
    Diagnostics diagnostics;
    const ReadPlacement read = readPlacement(file, "out.pl", design, diagnostics);
    expect(!diagnostics.hasErrors() && read.unknown.empty(), "what is written can be read");
    for (std::size_t i = 0; i < placement.size(); ++i) {
        expect(read.dies[i] && read.dies[i]->at.x == placement[i].at.x &&
                   read.dies[i]->at.y == placement[i].at.y &&
                   read.dies[i]->orient == placement[i].orient,
               "what is written comes back");
    }
}

void run(std::string_view input) {
    const auto files = split(input);
    std::istringstream blocks(files[0]);
    std::istringstream places(files[1]);
    std::istringstream nets(files[2]);
    Diagnostics diagnostics;
    const auto design = readDesign({blocks, places, nets}, "d", kRegion, diagnostics);
    expect(design.has_value() != diagnostics.hasErrors(), "a design or an error");
    if (design) {
        checkDesign(*design);
        checkRoundTrip(*design);
        std::istringstream placement(files[3]);
        readPlacement(placement, "p.pl", *design, diagnostics);
    }
    checkPrinted(diagnostics);
}

}  // namespace
}  // namespace korvel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    korvel::run({reinterpret_cast<const char*>(data), size});
    return 0;
}

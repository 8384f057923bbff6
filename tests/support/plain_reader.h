// A design's files read by a few lines that share nothing with the program's readers, and files
// written from a design.
#pragma once

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/front_door.h"
#include "support/helpers.h"

namespace korvel::test {

inline void writeDesign(const FrontDoor& door, const Design& design) {
    door.write("d.blocks", design.blocksFile());
    door.write("d.pl", design.placementFile());
    door.write("d.nets", design.netsFile());
}

// The words of each line, without comments and whatever stands around figures.
inline std::vector<std::vector<std::string>> wordsOfLines(const std::string& text) {
    std::vector<std::vector<std::string>> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        line = line.substr(0, line.find('#'));
        std::replace_if(
            line.begin(), line.end(),
            [](char c) { return std::string("(),:%").find(c) != std::string::npos; }, ' ');
        std::istringstream words(line);
        std::vector<std::string> found;
        for (std::string word; words >> word;) {
            found.push_back(word);
        }
        if (!found.empty()) {
            lines.push_back(found);
        }
    }
    return lines;
}

// Without an area.
inline Design readPlainly(const std::string& path) {
    Design design;
    for (const auto& line : wordsOfLines(contentsOf(path + ".blocks"))) {
        if (line.size() == 11 && line[1] == "hardrectilinear") {
            design.dies.push_back({line[0], std::stod(line[7]), std::stod(line[8])});
        } else if (line.size() == 2 && line[1] == "terminal") {
            design.terminals.push_back({line[0], 0, 0});
        }
    }
    for (const auto& line : wordsOfLines(contentsOf(path + ".pl"))) {
        for (Terminal& terminal : design.terminals) {
            if (line[0] == terminal.name) {
                terminal.x = std::stod(line.at(1));
                terminal.y = std::stod(line.at(2));
            }
        }
    }
    for (const auto& line : wordsOfLines(contentsOf(path + ".nets"))) {
        if (line[0] == "NetDegree") {
            design.nets.emplace_back();
        } else if (!design.nets.empty()) {
            const bool isOnDie = line.size() == 4;
            design.nets.back().push_back(
                {line[0], isOnDie ? std::stod(line[2]) : 0, isOnDie ? std::stod(line[3]) : 0});
        }
    }
    return design;
}

inline Placement readPlacedPlainly(const std::string& text) {
    Placement placement;
    for (const auto& line : wordsOfLines(text)) {
        if (line.size() >= 4 && line[0] != "UCLA") {
            placement[line[0]] = {line.back(), std::stod(line[1]), std::stod(line[2])};
        }
    }
    return placement;
}

// All of a design turned clockwise by a quarter, and seen in a mirror. Its shortest placements are
// the images of those of the design, so they are as long.
inline Design turnedDesign(Design design) {
    const double width = design.area.width;
    std::swap(design.area.width, design.area.height);
    for (Die& die : design.dies) {
        std::swap(die.width, die.height);
    }
    for (Terminal& terminal : design.terminals) {
        terminal.x = std::exchange(terminal.y, width - terminal.x);
    }
    for (auto& net : design.nets) {
        for (PinAt& pin : net) {
            pin.x = std::exchange(pin.y, -pin.x);
        }
    }
    return design;
}

inline Design mirroredDesign(Design design) {
    for (Terminal& terminal : design.terminals) {
        terminal.x = design.area.width - terminal.x;
    }
    for (auto& net : design.nets) {
        for (PinAt& pin : net) {
            pin.x = -pin.x;
        }
    }
    return design;
}

}  // namespace korvel::test

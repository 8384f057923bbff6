// The classic interface: its command line and its benchmark reader. It writes to the engine's
// report stream; every error is written there first and then ends the run by throwing ProcessEnd
// with the exit status (1 for the command line, 0 for the benchmark files).
#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "classic/Placer.h"

namespace korvel {

class BookshelfScanner;

class IO {
public:
    explicit IO(Placer& placer) : placer(placer) {}

    // Fills the engine's parameters and flags and prints the summary. A number that is none makes
    // the standard conversion throw, which nothing catches.
    void parseCommandLineParams(const int& argc, const char* const argv[]);

    // Reads the three benchmark files into the engine's netlist.
    void parseInput();

    // The readers of the three files, in the order in which they are to be called. The last one
    // makes the netlist whole.
    void parseBlocks(std::istream& file);
    void parsePlacement(std::istream& file);
    void parseNets(std::istream& file);

private:
    // A name's block or terminal: its position in the engine's list of them.
    struct Entry {
        bool found = false;
        bool terminal = false;
        unsigned position = 0;
    };
    struct PinRecord;
    struct NetRecord;

    void printHelp(const char* program);
    [[noreturn]] void endOnCommandLine(const std::string& error, const char* program);
    void printSummary();

    [[noreturn]] void endOnInput(const std::string& error);
    Block readHardBlock(BookshelfScanner& in, const std::string& name, unsigned index);
    Entry findEntry(const std::string& name) const;
    Block& blockOf(Entry entry);
    void placeEntry(Entry entry, Point coord, Orient orient);
    PinRecord readPin(BookshelfScanner& in, const std::string& name);
    void buildNets(const std::vector<NetRecord>& nets, const std::vector<PinRecord>& pins);
    void printParsingStatistic();

    Placer& placer;
    // Position in the engine's block and terminal lists by name; the first of a name counts.
    std::map<std::string, unsigned> blockPositions;
    std::map<std::string, unsigned> terminalPositions;
};

}  // namespace korvel

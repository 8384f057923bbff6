// What a user sees of a run while it works: on a terminal one line that is written again and again
// and is gone in the end; and lines about improvements, which stay, for those who ask for them.
#pragma once

#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <thread>

#include "run/PlaceRun.h"

namespace korvel {

// A stream with a last line that can be replaced. Nobody else writes to it while this lives.
//
// Shared between threads: `mutex` guards the stream and what is shown. It is the last one to be
// locked: improvements are told while the incumbent is, and nothing is locked from here.
class StatusLine {
public:
    // Where it is no terminal, only what is said is written.
    StatusLine(std::ostream& out, bool isTerminal) : out(out), terminal(isTerminal) {}
    ~StatusLine() { show(""); }
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    // A line that stays.
    void say(const std::string& line);
    // In place of what was shown before, cut at the terminal's right edge.
    void show(const std::string& status);

private:
    void erase();

    std::ostream& out;
    const bool terminal;
    std::mutex mutex;
    bool shown = false;
};

// Shows how a run stands, four times a second on the thread returned, until that ends. Both must
// outlive it.
std::jthread showStatus(const PlaceRun& run, StatusLine& line);

// Phase, time, best length, work done; without what is not known.
std::string statusText(const PlaceRun& run);

std::string improvementText(const Found& found);

}  // namespace korvel

// How an error ends the run: its message is written first, then this is thrown, and main turns it
// into the exit status. The libraries themselves never call exit while workers are running.
#pragma once

namespace korvel {

struct ProcessEnd {
    int status;
};

}  // namespace korvel

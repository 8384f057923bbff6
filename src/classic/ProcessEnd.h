// How an error of the user ends the run: its message is written first, then this is thrown, and
// main turns it into the exit status.
#pragma once

namespace korvel {

struct ProcessEnd {
    int status;
};

}  // namespace korvel

// Checks of what the code itself promises. Unlike the standard assertion they stay on in every
// build, and the text they report is written down beside the condition, so that reformatting the
// condition cannot change a report that users may have learned to search for.
#pragma once

namespace korvel {

// Writes "file:line: function: Assertion `text' failed." to standard error and aborts.
[[noreturn]] void invariantBroken(const char* text, const char* file, int line,
                                  const char* function);

}  // namespace korvel

#define KORVEL_INVARIANT(holds, text) \
    ((holds) ? static_cast<void>(0)   \
             : korvel::invariantBroken(text, __FILE__, __LINE__, __PRETTY_FUNCTION__))

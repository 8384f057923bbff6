// What is wrong or odd about the input: collected while it is read, printed at the end, so that the
// user sees everything at once. Texts say what was found and what was expected.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

class Diagnostics {
public:
    enum Severity : std::uint8_t { kError, kWarning };
    struct Finding {
        Severity severity;
        std::string file;  // empty: about no file, such as the area
        unsigned line;     // from 1; 0: about the file as a whole
        std::string text;
    };
    // So many of each severity are kept and printed; the others are only counted.
    static constexpr std::size_t kMaxKept = 20;

    void report(Severity severity, const std::string& file, unsigned line, const std::string& text);
    void error(const std::string& file, unsigned line, const std::string& text) {
        report(kError, file, line, text);
    }
    void warning(const std::string& file, unsigned line, const std::string& text) {
        report(kWarning, file, line, text);
    }

    bool hasErrors() const { return getErrorNum() > 0; }
    std::size_t getErrorNum() const { return numbers[kError]; }
    // Those kept, in the order in which they were found.
    const std::vector<Finding>& getFindings() const { return findings; }

    // A line each, such as `d.nets:7: error: found 'x', expected a number`, and how many more there
    // are if not all are kept.
    void print(std::ostream& out) const;

private:
    std::vector<Finding> findings;
    std::array<std::size_t, 2> numbers{};  // by severity
};

// A piece of the input for a message: in quotes, what cannot be printed as \xNN, cut when long.
std::string shown(std::string_view piece);

// Whether a text is UTF-8 without control characters, so that any output format can carry it.
bool isPrintable(std::string_view text);

}  // namespace korvel

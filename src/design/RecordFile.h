// One input file as the diagnosing readers go through it: a record per line, each finding with its
// line. It owns the scanner.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "design/Diagnostics.h"
#include "format/BookshelfScanner.h"

namespace korvel {

class RecordFile {
public:
    // `file` is the name in findings.
    RecordFile(std::istream& source, std::string file, Diagnostics& diagnostics);

    // Moves on to the next line that has something on it besides a comment; false at the end.
    // A file that is too large or all wrong, or cannot be read to its end, ends early, with an
    // error that says so.
    bool next();
    // Whether next() has come to the end of the whole file.
    bool isWhole() const { return whole; }
    // The first word of the line.
    const std::string& getWord() const { return word; }
    unsigned getLine() const { return scanner.getLine(); }

    BookshelfScanner scanner;  // behind the word

    void report(Diagnostics::Severity severity, unsigned line, const std::string& text);
    void error(unsigned line, const std::string& text) { report(Diagnostics::kError, line, text); }
    void error(const std::string& text) { error(getLine(), text); }
    // The line's name has come before.
    void errorAgain(unsigned firstLine);
    void warning(unsigned line, const std::string& text) {
        report(Diagnostics::kWarning, line, text);
    }
    void warning(const std::string& text) { warning(getLine(), text); }
    // Reports the slip in what has been read of the line, if there is one; says whether.
    // `subject`: what the line is about, such as "die 'a'"; may be empty.
    bool reportSlip(const std::string& subject);
    // Warns about what is left of the line.
    void passOverRest(const std::string& subject);

private:
    bool isWorthReading();
    void endEarly(const std::string& text);

    std::istream& source;
    std::string file;
    Diagnostics& diagnostics;
    std::string word;
    std::size_t errorNum = 0;
    bool whole = true;
};

// The lines `KEYWORD : COUNT` that a file begins with.
class FileHeaders {
public:
    explicit FileHeaders(std::initializer_list<const char*> keywords);

    // Takes the line if it is one of them.
    bool take(RecordFile& file);
    // Whether every one of them has come.
    bool areComplete() const;
    // A record has come: from now on, headers are too late.
    void endHere() { ended = true; }
    // The errors about those that never came.
    void reportMissing(RecordFile& file) const;

    // None if it is missing or unreadable.
    std::optional<unsigned> countOf(std::size_t which) const { return headers[which].count; }
    unsigned lineOf(std::size_t which) const { return headers[which].line; }
    // Reports, say, "found 2 pins, expected 3 as NumPins says"; nothing if it says 2, or nothing.
    void checkCount(RecordFile& file, std::size_t which, std::size_t found, const char* thing,
                    Diagnostics::Severity severity = Diagnostics::kError) const;

private:
    struct Header {
        std::string keyword;
        unsigned line = 0;  // 0: not yet
        std::optional<unsigned> count;
    };
    void read(RecordFile& file, Header& header) const;

    std::vector<Header> headers;
    bool ended = false;
};

}  // namespace korvel

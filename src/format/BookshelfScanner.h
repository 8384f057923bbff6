// The grammar of the benchmark files below the level of records: tokens, numbers, corners, offsets
// and positions, and the lines that they stand on. Both readers read with it and differ in what
// they tolerate. The classic reader takes records that run across lines, passes over what it does
// not know, and reads 32-bit floats; how it goes on after a slip is its contract. So records
// themselves are each reader's own.
#pragma once

#include <array>
#include <istream>
#include <limits>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// A stream's characters line by line, in a buffer of a fixed size.
class LineBuffer : public std::streambuf {
public:
    // What is read from it ends with the line, or it goes on with the next one.
    LineBuffer(std::istream& source, bool endsWithLine);

    // Moves on to the next line; false when there is none.
    bool nextLine();
    // From 1; 0 before the first line.
    unsigned getLine() const { return line; }
    // Of the source, so far.
    std::size_t getByteNum() const { return byteNum; }
    // Whether the line fits the buffer; if it does not, its rest is lost.
    bool isLineWhole() const { return lineWhole; }
    // What is still to be read of the line.
    std::string_view getRest() const {
        return {gptr(), static_cast<std::size_t>(egptr() - gptr())};
    }
    // So many characters of it are read.
    void skip(std::size_t number) { gbump(static_cast<int>(number)); }

protected:
    int_type underflow() override;

private:
    bool fill();
    void dropRestOfLine();

    std::istream& source;
    bool endsWithLine;
    std::vector<char> buffer;
    unsigned line = 0;
    std::size_t byteNum = 0;
    bool lineWhole = true;
};

// The first thing in a record that is not as it should be.
struct Slip {
    std::string found;  // as it stands in the file; empty: the end of the line
    std::string expected;
};

template <class Number>
struct Corner {
    Number x{};
    Number y{};
};

// Corners beyond the fourth are read and counted but not kept.
template <class Number>
struct Outline {
    unsigned cornerNum = 0;
    std::array<Corner<Number>, 4> corners;
};

class BookshelfScanner {
public:
    enum class Records {
        kAcrossLines,  // a line end is a blank like others
        kOnOneLine     // a record ends with its line; reading stops at its first slip
    };
    BookshelfScanner(std::istream& source, Records records);

    // Whether everything since the start (kOnOneLine: of the line) could be read.
    explicit operator bool() const { return !in.fail(); }
    // After a failure: goes on, unless the end of the file was the reason.
    void recover();

    // A token where a record is expected that starts none: the rest of its line is to be skipped.
    static bool startsNoRecord(const std::string& token) {
        return token.empty() || token[0] == '#';
    }
    std::string token(const char* expected = "more");
    char character(const char* expected);
    template <class Number>
    Number number();
    unsigned count();
    // The count behind a keyword and its colon.
    unsigned countAfterColon();
    // The number of corners, then so many of the form (x, y).
    template <class Number>
    Outline<Number> outline();
    template <class Number>
    Corner<Number> corner(const char* passing = "");
    // A pin's offset, %x %y.
    template <class Number>
    Corner<Number> percents();
    template <class Number>
    Corner<Number> position();

    void skipLine();
    // Up to the mark and past it. On one line there may only be blanks and characters of `passing`
    // before it.
    void skipPast(char mark, const char* passing = "");

    // The following are of use with kOnOneLine only.

    bool nextLine();
    unsigned getLine() const { return lines.getLine(); }
    std::size_t getByteNum() const { return lines.getByteNum(); }
    const std::optional<Slip>& getSlip() const { return slip; }
    // What comes next on the line, up to a blank; empty at its end and before a comment. Blanks and
    // characters of `passing` before it are left out.
    std::string_view nextPiece(std::string_view passing = "") const;

private:
    bool isStrict() const { return records == Records::kOnOneLine; }
    std::string_view ahead();
    template <class Number>
    Number plainNumber();
    void skipPastMark(char mark);
    void noteSlip(std::string_view found, const char* expected);
    void expectMore(const char* expected);

    Records records;
    LineBuffer lines;
    std::istream in;
    std::optional<Slip> slip;
};

}  // namespace korvel

#include "format/BookshelfScanner.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <type_traits>

namespace korvel {

namespace {

constexpr std::size_t kBufferSize = 16384;
constexpr std::streamsize kMaxDropped = std::streamsize{1} << 26;
constexpr std::streamsize kMaxSkipped = 512;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr const char* kBlanks = " \t\n\v\f\r";
constexpr const char* kNumberEnds = " \t\n\v\f\r(),%:#";

// Areas and wirelengths of many nets still fit into 32-bit floats.
constexpr double kLargestNumber = 1e15;

constexpr bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::size_t lengthOfWord(std::string_view text) {
    return static_cast<std::size_t>(std::find_if(text.begin(), text.end(), isBlank) - text.begin());
}
std::size_t lengthOfDigits(std::string_view text) {
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) -
                                    text.begin());
}

// Length of a number of digits only, with a point in between and a sign if Number can have them;
// 0 for other forms, and where what follows does not certainly end it.
template <class Number>
std::size_t lengthOfPlainNumber(std::string_view text) {
    constexpr std::size_t kMostDigits = 9;  // far from any limit
    constexpr std::string_view kEnds = " \t\n\v\f\r%,)";
    std::size_t length = 0;
    const auto takeDigits = [&] {
        const std::size_t digits = lengthOfDigits(text.substr(length, kMostDigits + 1));
        length += digits;
        return digits > 0 && digits <= kMostDigits;
    };
    const auto isNext = [&](char c) { return length < text.size() && text[length] == c; };
    constexpr bool kHasFraction = std::is_floating_point_v<Number>;
    length += kHasFraction && isNext('-') ? 1 : 0;
    if (!takeDigits()) {
        return 0;
    }
    if (kHasFraction && isNext('.')) {
        ++length;
        if (!takeDigits()) {
            return 0;
        }
    }
    const bool isEnded = length < text.size() && kEnds.find(text[length]) != std::string_view::npos;
    return isEnded ? length : 0;
}

}  // namespace

LineBuffer::LineBuffer(std::istream& source, bool endsWithLine)
    : source(source), endsWithLine(endsWithLine), buffer(kBufferSize) {}

bool LineBuffer::nextLine() {
    if (!lineWhole) {
        dropRestOfLine();
    }
    if (!fill()) {
        return false;
    }
    if (line == 1 && getRest().substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        gbump(static_cast<int>(kByteOrderMark.size()));
    }
    return true;
}

LineBuffer::int_type LineBuffer::underflow() {
    if (gptr() == egptr() && (endsWithLine || !fill())) {
        return traits_type::eof();
    }
    return traits_type::to_int_type(*gptr());
}

// Goes by the stream's own functions, which turn errors of the system into states.
bool LineBuffer::fill() {
    const bool startsLine = lineWhole;
    source.getline(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    const auto got = static_cast<std::size_t>(source.gcount());
    if (got == 0) {
        setg(nullptr, nullptr, nullptr);
        return false;
    }
    lineWhole = source.good() || source.eof();
    if (source.good()) {
        buffer[got - 1] = '\n';
    } else if (!source.eof() && !source.bad()) {
        source.clear();  // the line is longer than the buffer
    }
    line += startsLine ? 1 : 0;
    byteNum += got;
    setg(buffer.data(), buffer.data(), buffer.data() + got);
    return true;
}

void LineBuffer::dropRestOfLine() {
    source.ignore(kMaxDropped, '\n');
    byteNum += static_cast<std::size_t>(source.gcount());
    lineWhole = true;
}

BookshelfScanner::BookshelfScanner(std::istream& source, Records records)
    : records(records), lines(source, isStrict()), in(&lines) {}

void BookshelfScanner::recover() {
    if (!in.eof()) {
        in.clear();
    }
}

bool BookshelfScanner::nextLine() {
    in.clear();
    slip.reset();
    if (!lines.nextLine()) {
        return false;
    }
    if (!lines.isLineWhole()) {
        noteSlip(nextPiece(), "a line of less than 16 KiB");
    }
    return true;
}

void BookshelfScanner::noteSlip(std::string_view found, const char* expected) {
    if (isStrict() && !slip) {
        slip = Slip{std::string(found), expected};
        in.setstate(std::ios::failbit);
    }
}

std::string_view BookshelfScanner::nextPiece(std::string_view passing) const {
    std::string_view rest = lines.getRest();
    const std::string passed = std::string(kBlanks).append(passing);
    rest.remove_prefix(std::min(rest.find_first_not_of(passed), rest.size()));
    return !rest.empty() && rest[0] == '#' ? std::string_view()
                                           : rest.substr(0, rest.find_first_of(kBlanks));
}

// What is next in the buffer, past blanks; empty where only the stream knows how it goes on. Most
// of a file is plain, and is read from here; the stream's own functions, which read the same a
// hundred times slower, have to be asked for all that is not.
std::string_view BookshelfScanner::ahead() {
    while (in.good()) {
        const std::string_view rest = lines.getRest();
        const auto start = std::find_if_not(rest.begin(), rest.end(), isBlank);
        lines.skip(static_cast<std::size_t>(start - rest.begin()));
        if (start != rest.end()) {
            return lines.getRest();
        }
        if (lines.sgetc() == LineBuffer::traits_type::eof()) {
            break;
        }
    }
    return {};
}

void BookshelfScanner::expectMore(const char* expected) {
    if (isStrict() && nextPiece().empty()) {
        noteSlip({}, expected);
    }
}

std::string BookshelfScanner::token(const char* expected) {
    expectMore(expected);
    const std::string_view rest = ahead();
    if (const std::size_t length = lengthOfWord(rest); length < rest.size()) {
        lines.skip(length);
        return std::string(rest.substr(0, length));
    }
    std::string token;
    in >> token;
    return token;
}

char BookshelfScanner::character(const char* expected) {
    expectMore(expected);
    if (const std::string_view rest = ahead(); !rest.empty()) {
        lines.skip(1);
        return rest[0];
    }
    char character = 0;
    in >> character;
    return character;
}

template <class Number>
Number BookshelfScanner::plainNumber() {
    Number value{};
    const std::string_view rest = ahead();
    if (const std::size_t length = lengthOfPlainNumber<Number>(rest); length != 0) {
        std::from_chars(rest.data(), rest.data() + length, value);
        lines.skip(length);
    } else {
        in >> value;
    }
    return value;
}

// On one line, the whole text up to a blank or a mark has to be the number. A count has digits
// only: streams take a sign in front of it, and wrap around.
template <class Number>
Number BookshelfScanner::number() {
    if (!isStrict()) {
        return plainNumber<Number>();
    }
    constexpr bool kIsCount = std::is_unsigned_v<Number>;
    const std::string piece(nextPiece());
    const std::string text = piece.substr(0, piece.find_first_of(kNumberEnds));
    in >> std::ws;
    const std::size_t before = lines.getRest().size();
    const auto value = plainNumber<Number>();
    const bool isPlain = kIsCount ? lengthOfDigits(text) == text.size()
                                  : std::abs(static_cast<double>(value)) <= kLargestNumber;
    if (!in || before - lines.getRest().size() != text.size() || !isPlain) {
        noteSlip(text.empty() ? piece : text, kIsCount ? "a count" : "a number up to 1e15");
    }
    return value;
}

unsigned BookshelfScanner::count() {
    return number<unsigned>();
}

unsigned BookshelfScanner::countAfterColon() {
    const std::string colon = token("a colon and a count");
    if (colon != ":") {
        noteSlip(colon, "a colon and a count");
    }
    return count();
}

template <class Number>
Corner<Number> BookshelfScanner::corner(const char* passing) {
    Corner<Number> corner;
    skipPast('(', passing);
    corner.x = number<Number>();
    skipPast(',');
    corner.y = number<Number>();
    if (isStrict()) {
        skipPast(')');  // what the classic reader never looks for
    }
    return corner;
}

template <class Number>
Outline<Number> BookshelfScanner::outline() {
    Outline<Number> outline;
    const unsigned cornerNum = count();
    outline.cornerNum = in ? cornerNum : 0;
    for (unsigned i = 0; in && i < cornerNum; ++i) {
        const Corner<Number> next = corner<Number>();
        if (i < outline.corners.size()) {
            outline.corners[i] = next;
        }
    }
    return outline;
}

template <class Number>
Corner<Number> BookshelfScanner::percents() {
    Corner<Number> percents;
    skipPast('%', ":");
    percents.x = number<Number>();
    skipPast('%');
    percents.y = number<Number>();
    return percents;
}

template <class Number>
Corner<Number> BookshelfScanner::position() {
    Corner<Number> position;
    position.x = number<Number>();
    position.y = number<Number>();
    return position;
}

void BookshelfScanner::skipLine() {
    skipPastMark('\n');
}

void BookshelfScanner::skipPast(char mark, const char* passing) {
    if (isStrict()) {
        const std::string_view piece = nextPiece(passing);
        if (piece.empty() || piece[0] != mark) {
            noteSlip(piece, (std::string("'") + mark + "'").c_str());
        }
    }
    skipPastMark(mark);
}

void BookshelfScanner::skipPastMark(char mark) {
    const std::string_view near = lines.getRest().substr(0, kMaxSkipped);
    const std::size_t before = near.find(mark);
    if (in.good() && before != std::string_view::npos) {
        lines.skip(before + 1);
    } else {
        in.ignore(kMaxSkipped, mark);
    }
}

template Outline<float> BookshelfScanner::outline<float>();
template Outline<double> BookshelfScanner::outline<double>();
template Corner<double> BookshelfScanner::corner<double>(const char*);
template Corner<float> BookshelfScanner::percents<float>();
template Corner<double> BookshelfScanner::percents<double>();
template Corner<float> BookshelfScanner::position<float>();
template Corner<double> BookshelfScanner::position<double>();

}  // namespace korvel

#include "BookshelfScanner.h"

#include <algorithm>
#include <cmath>

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
constexpr const char* kNumber = "a number up to 1e15";
constexpr const char* kCount = "a count";

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

std::string BookshelfScanner::token(const char* expected) {
    if (isStrict() && nextPiece().empty()) {
        noteSlip({}, expected);
    }
    std::string token;
    in >> token;
    return token;
}

char BookshelfScanner::character(const char* expected) {
    if (isStrict() && nextPiece().empty()) {
        noteSlip({}, expected);
    }
    char character = 0;
    in >> character;
    return character;
}

// The whole text up to a blank or a mark has to be the number.
template <class Number>
Number BookshelfScanner::checkedNumber(bool (*isPlain)(const std::string& text, Number value),
                                       const char* expected) {
    const std::string piece(nextPiece());
    const std::string text = piece.substr(0, piece.find_first_of(kNumberEnds));
    Number value{};
    in >> std::ws;
    const std::size_t before = lines.getRest().size();
    in >> value;
    if (!in || before - lines.getRest().size() != text.size() || !isPlain(text, value)) {
        noteSlip(text.empty() ? piece : text, expected);
    }
    return value;
}

template <class Number>
Number BookshelfScanner::number() {
    if (isStrict()) {
        return checkedNumber<Number>(
            [](const std::string&, Number value) { return std::abs(value) <= kLargestNumber; },
            kNumber);
    }
    Number value{};
    in >> value;
    return value;
}

// Streams take a sign in front of a count, and wrap around; on one line there are digits only.
unsigned BookshelfScanner::count() {
    if (isStrict()) {
        return checkedNumber<unsigned>(
            [](const std::string& text, unsigned) {
                return text.find_first_not_of("0123456789") == std::string::npos;
            },
            kCount);
    }
    unsigned value = 0;
    in >> value;
    return value;
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
        skipPast(')');  // what the base reader never looks for
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
    in.ignore(kMaxSkipped, '\n');
}

void BookshelfScanner::skipPast(char mark, const char* passing) {
    if (isStrict()) {
        const std::string_view piece = nextPiece(passing);
        if (piece.empty() || piece[0] != mark) {
            noteSlip(piece, (std::string("'") + mark + "'").c_str());
        }
    }
    in.ignore(kMaxSkipped, mark);
}

template Outline<float> BookshelfScanner::outline<float>();
template Outline<double> BookshelfScanner::outline<double>();
template Corner<double> BookshelfScanner::corner<double>(const char*);
template Corner<float> BookshelfScanner::percents<float>();
template Corner<double> BookshelfScanner::percents<double>();
template Corner<float> BookshelfScanner::position<float>();
template Corner<double> BookshelfScanner::position<double>();

}  // namespace korvel

#include "design/RecordFile.h"

#include <algorithm>
#include <utility>

#include "design/Numeral.h"

namespace korvel {

namespace {

// What is read stays in memory, at several times its size.
constexpr std::size_t kMaxBytes = std::size_t{32} << 20;
constexpr std::size_t kMaxErrors = 10000;

// How a file may begin that says which format it is in.
bool isFormatLine(const std::string& word) {
    return word == "UCSC" || word == "UCLA" || word == "UMICH";
}

std::string prefix(const std::string& subject) {
    return subject.empty() ? subject : subject + ": ";
}

}  // namespace

RecordFile::RecordFile(std::istream& source, std::string file, Diagnostics& diagnostics)
    : scanner(source, BookshelfScanner::Records::kOnOneLine),
      source(source),
      file(std::move(file)),
      diagnostics(diagnostics) {}

bool RecordFile::next() {
    while (scanner.nextLine() && isWorthReading()) {
        if (reportSlip({}) || scanner.nextPiece().empty()) {
            continue;
        }
        word = scanner.token();
        if (!isFormatLine(word)) {
            return true;
        }
    }
    if (source.bad()) {
        endEarly("found a file that cannot be read to its end");
    }
    return false;
}

bool RecordFile::isWorthReading() {
    if (scanner.getByteNum() > kMaxBytes) {
        endEarly("found a file of more than 32 MiB, expected a smaller one");
    } else if (errorNum >= kMaxErrors) {
        endEarly("found too many errors to read on");
    }
    return whole;
}

void RecordFile::endEarly(const std::string& text) {
    error(0, text);
    whole = false;
}

void RecordFile::report(Diagnostics::Severity severity, unsigned line, const std::string& text) {
    errorNum += severity == Diagnostics::kError ? 1 : 0;
    diagnostics.report(severity, file, line, text);
}

void RecordFile::errorAgain(unsigned firstLine) {
    error("found the name " + shown(word) + " again, expected it once (first on line " +
          std::to_string(firstLine) + ")");
}

bool RecordFile::reportSlip(const std::string& subject) {
    const auto& slip = scanner.getSlip();
    if (slip) {
        const std::string found = slip->found.empty() ? "the end of the line" : shown(slip->found);
        error(prefix(subject) + "found " + found + ", expected " + slip->expected);
    }
    return slip.has_value();
}

void RecordFile::passOverRest(const std::string& subject) {
    const std::string_view rest = scanner.nextPiece();
    if (!rest.empty()) {
        warning(prefix(subject) + "found " + shown(rest) +
                ", expected the end of the line; what follows is passed over");
    }
}

FileHeaders::FileHeaders(std::initializer_list<const char*> keywords) {
    for (const char* keyword : keywords) {
        headers.push_back({keyword, 0, std::nullopt});
    }
}

bool FileHeaders::take(RecordFile& file) {
    const std::string& word = file.getWord();
    const auto header = std::find_if(headers.begin(), headers.end(), [&](const Header& candidate) {
        return word == candidate.keyword || word.rfind(candidate.keyword + ":", 0) == 0;
    });
    if (header == headers.end()) {
        return false;
    }
    if (header->line != 0) {
        file.error("found " + header->keyword + " again, expected it once (first on line " +
                   std::to_string(header->line) + ")");
    } else {
        read(file, *header);
    }
    return true;
}

void FileHeaders::read(RecordFile& file, Header& header) const {
    header.line = file.getLine();
    if (ended) {
        file.error("found " + header.keyword + " behind a record, expected it before the first");
    }
    if (file.getWord() != header.keyword) {
        file.error("found " + shown(file.getWord()) + ", expected '" + header.keyword +
                   " : COUNT'");
        return;
    }
    const unsigned count = file.scanner.countAfterColon();
    if (!file.reportSlip(header.keyword)) {
        header.count = count;
        file.passOverRest(header.keyword);
    }
}

bool FileHeaders::areComplete() const {
    return std::all_of(headers.begin(), headers.end(),
                       [](const Header& header) { return header.line != 0; });
}

void FileHeaders::reportMissing(RecordFile& file) const {
    for (const Header& header : headers) {
        if (header.line == 0 && file.isWhole()) {
            file.error(0, "found no line that begins with " + header.keyword + ", expected '" +
                              header.keyword + " : COUNT'");
        }
    }
}

void FileHeaders::checkCount(RecordFile& file, std::size_t which, std::size_t found,
                             const char* thing, Diagnostics::Severity severity) const {
    const auto& [keyword, line, count] = headers[which];
    if (count && *count != found) {
        file.report(severity, line,
                    "found " + counted(found, thing) + ", expected " + std::to_string(*count) +
                        " as " + keyword + " says");
    }
}

}  // namespace korvel

// The scanner of the benchmark files, against a stream.

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <sstream>
#include <string>

#include "format/BookshelfScanner.h"

namespace korvel::test {
namespace {

// The scanner has ways of its own for what is plain, and a stream's for the rest; together they
// read as a stream does, whatever the order of what is asked for, up to where both have failed.
TEST(BookshelfScanner, ReadsAsAStreamDoes) {
    const char* const pieces[] = {
        "12",    "-3.25", "+4",       "0.1",        "007",         "1.",
        ".5",    "1e3",   "-",        "4294967295", "-0.0",        "1234567890.123456789",
        "3e39",  "2.5%",  "%7,",      "(1,",        "a1",          "b:",
        "#",     " ",     "\t",       "\r\n",       "\n",          "\n\n",
        "12abc", "0x1p3", "16777217", "999999999",  "0.000000001", "\v",
        "1-2",   "5)",    ":",        "%-50.00001 "};
    std::mt19937 random(3);
    for (unsigned round = 0; round < 3000; ++round) {
        std::string text;
        for (auto n = random() % 30; n > 0; --n) {
            text += pieces[random() % std::size(pieces)];
            text += random() % 2 == 0 ? " " : "";
        }
        text += random() % 50 == 0 ? std::string(20000, '7') + " 8" : "";
        SCOPED_TRACE(text);
        std::istringstream plain(text);
        std::istringstream source(text);
        BookshelfScanner scanner(source, BookshelfScanner::Records::kAcrossLines);
        while (plain) {
            switch (random() % 5) {
                case 0: {
                    std::string token;
                    plain >> token;
                    ASSERT_EQ(scanner.token(), token);
                    break;
                }
                case 1: {
                    char character = 0;
                    plain >> character;
                    ASSERT_EQ(scanner.character(""), character);
                    break;
                }
                case 2: {
                    Corner<float> position;
                    plain >> position.x >> position.y;
                    const auto scanned = scanner.position<float>();
                    ASSERT_EQ(scanned.x, position.x);
                    ASSERT_EQ(scanned.y, position.y);
                    break;
                }
                case 3: {
                    unsigned count = 0;
                    plain >> count;
                    ASSERT_EQ(scanner.count(), count);
                    break;
                }
                default:
                    plain.ignore(512, '%');
                    scanner.skipPast('%');
            }
            ASSERT_EQ(static_cast<bool>(scanner), static_cast<bool>(plain));
        }
    }
}

}  // namespace
}  // namespace korvel::test

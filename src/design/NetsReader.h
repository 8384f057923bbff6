// The diagnosing reader of .nets files.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "design/DesignDraft.h"

namespace korvel {

class NetsReader {
public:
    // `file` is the name in findings. The draft has its dies and terminals.
    NetsReader(std::istream& in, const std::string& file, DesignDraft& draft);

    // To be called once.
    void read();

private:
    struct OpenNet {
        unsigned line = 0;  // 0: none yet
        std::optional<unsigned> degree;
        std::size_t pinNum = 0;
    };

    void openNet();
    void closeNet();
    std::string subjectOfNet() const;
    void refuseEarlyLine();
    void readPin();
    void readDiePin(const DesignDraft::Body& die, const std::string& subject);
    void passOverOffset(const std::string& subject);
    void checkCounts();

    DesignDraft& draft;
    RecordFile file;
    FileHeaders headers;
    OpenNet net;
    std::size_t pinNum = 0;
    std::size_t shortNetNum = 0;
    unsigned firstShortNet = 0;  // its line
    bool refusedEarlyLine = false;
};

}  // namespace korvel

// The diagnosing reader of .blocks files: dies and terminals.
#pragma once

#include <iosfwd>
#include <string>

#include "design/DesignDraft.h"

namespace korvel {

class BlocksReader {
public:
    // `file` is the name in findings.
    BlocksReader(std::istream& in, const std::string& file, DesignDraft& draft);

    // To be called once.
    void read();

private:
    void readBody();
    void readDie();
    Extent readSize(const std::string& subject);
    void checkSize(const std::string& subject, Extent size);
    void refuseKind(const std::string& kind);
    bool addBody(DesignDraft::Kind kind, std::size_t index);
    void checkName();
    void checkCounts();
    void checkTotalArea();

    DesignDraft& draft;
    RecordFile file;
    FileHeaders headers;
    // Lines of each kind, sound or not. Other: of no known kind, and soft blocks.
    std::size_t dieNum = 0;
    std::size_t terminalNum = 0;
    std::size_t otherNum = 0;
};

}  // namespace korvel

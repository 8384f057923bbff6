#include "rules/YamlTree.h"

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/parser.h>

#include <algorithm>
#include <array>
#include <istream>
#include <sstream>
#include <string_view>
#include <utility>

namespace korvel {

namespace {

using Kind = YamlNode::Kind;

// The library takes many times the size of the file.
constexpr std::size_t kMaxBytes = std::size_t{4} << 20;

constexpr const char* kStarHint = "; names with * have to stand in quotes";

unsigned lineOf(const YAML::Mark& mark) {
    return mark.line < 0 ? 0U : static_cast<unsigned>(mark.line) + 1U;
}

// Builds the tree from what the parser comes upon. The nodes that are open wait on a stack.
class TreeBuilder : public YAML::EventHandler {
public:
    TreeBuilder(const std::string& file, Diagnostics& diagnostics)
        : file(file), diagnostics(diagnostics) {}

    // Of the first document.
    YamlNode takeRoot() { return std::move(root); }
    unsigned getDocumentNum() const { return documentNum; }

    void OnDocumentStart(const YAML::Mark& mark) override {
        if (++documentNum == 2) {
            diagnostics.error(file, lineOf(mark), "found a second document, expected one");
        }
    }
    void OnDocumentEnd() override {}
    void OnNull(const YAML::Mark& mark, YAML::anchor_t /*anchor*/) override {
        close({Kind::kNothing, lineOf(mark), {}, {}});
    }
    void OnAlias(const YAML::Mark& mark, YAML::anchor_t /*anchor*/) override {
        diagnostics.error(file, lineOf(mark),
                          std::string("found an alias, expected the value itself") + kStarHint);
        close({Kind::kUnusable, lineOf(mark), {}, {}});
    }
    void OnScalar(const YAML::Mark& mark, const std::string& /*tag*/, YAML::anchor_t /*anchor*/,
                  const std::string& value) override {
        close({Kind::kText, lineOf(mark), value, {}});
    }
    void OnSequenceStart(const YAML::Mark& mark, const std::string& /*tag*/,
                         YAML::anchor_t /*anchor*/, YAML::EmitterStyle::value /*style*/) override {
        open.push_back({Kind::kList, lineOf(mark), {}, {}});
    }
    void OnSequenceEnd() override { closeLast(); }
    void OnMapStart(const YAML::Mark& mark, const std::string& /*tag*/, YAML::anchor_t /*anchor*/,
                    YAML::EmitterStyle::value /*style*/) override {
        open.push_back({Kind::kMap, lineOf(mark), {}, {}});
    }
    void OnMapEnd() override { closeLast(); }

private:
    void closeLast() {
        YamlNode node = std::move(open.back());
        open.pop_back();
        close(std::move(node));
    }
    void close(YamlNode node) {
        if (!open.empty()) {
            open.back().items.push_back(std::move(node));
        } else if (documentNum == 1) {
            root = std::move(node);
        }
    }

    const std::string& file;
    Diagnostics& diagnostics;
    std::vector<YamlNode> open;
    YamlNode root;
    unsigned documentNum = 0;
};

// At most a block more than may be read.
std::string contentOf(std::istream& in) {
    std::string content;
    std::array<char, 4096> block;
    while (content.size() <= kMaxBytes &&
           (in.read(block.data(), block.size()) || in.gcount() > 0)) {
        content.append(block.data(), static_cast<std::size_t>(in.gcount()));
    }
    return content;
}

// Whether every line is text; each one that is not is an error. Looked at first, since some bytes
// make the library loop for ever.
bool isText(const std::string& content, const std::string& file, Diagnostics& diagnostics) {
    const std::size_t errorsBefore = diagnostics.getErrorNum();
    std::istringstream stream(content);
    unsigned number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        std::replace(line.begin(), line.end(), '\t', ' ');
        const std::string_view ended(line.data(), line.size() - (line.ends_with('\r') ? 1 : 0));
        if (!isPrintable(ended)) {
            diagnostics.error(file, number, "found " + shown(ended) + ", expected text in UTF-8");
        }
    }
    return diagnostics.getErrorNum() == errorsBefore;
}

// The library's words, and behind a colon a piece of the file.
std::string syntaxFault(const YAML::Exception& fault) {
    const std::size_t colon = fault.msg.find(": ");
    const std::string piece =
        colon == std::string::npos ? "" : " " + shown(fault.msg.substr(colon + 2));
    const bool isAboutAlias = fault.msg.find("alias") != std::string::npos ||
                              fault.msg.find("anchor") != std::string::npos;
    return "found what is no YAML: " + fault.msg.substr(0, colon) + piece +
           (isAboutAlias ? kStarHint : "");
}

YamlNode parse(const std::string& content, const std::string& file, Diagnostics& diagnostics) {
    std::istringstream stream(content);
    TreeBuilder builder(file, diagnostics);
    try {
        YAML::Parser parser(stream);
        // A second document is an error already, and after some slips the library finds documents
        // for ever.
        while (builder.getDocumentNum() < 2 && parser.HandleNextDocument(builder)) {
        }
    } catch (const YAML::Exception& fault) {
        diagnostics.error(file, lineOf(fault.mark), syntaxFault(fault));
        return {Kind::kUnusable, 1, {}, {}};
    }
    return builder.takeRoot();
}

}  // namespace

std::string described(const YamlNode& node) {
    switch (node.kind) {
        case Kind::kText:
            return shown(node.text);
        case Kind::kList:
            return "a list";
        case Kind::kMap:
            return "a map";
        default:
            return "nothing";
    }
}

YamlNode readYaml(std::istream& in, const std::string& file, Diagnostics& diagnostics) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    std::string content = contentOf(in);
    if (content.starts_with(kByteOrderMark)) {
        content.erase(0, kByteOrderMark.size());
    }
    if (in.bad()) {
        diagnostics.error(file, 0, "found a file that cannot be read to its end");
    } else if (content.size() > kMaxBytes) {
        diagnostics.error(file, 0, "found a file of more than 4 MiB, expected a smaller one");
    } else if (isText(content, file, diagnostics)) {
        return parse(content, file, diagnostics);
    }
    return {Kind::kUnusable, 1, {}, {}};
}

}  // namespace korvel

#include "rules/RulesReader.h"

#include <fstream>

#include "design/InputFile.h"
#include "rules/RulesParser.h"
#include "rules/RulesResolver.h"
#include "rules/YamlTree.h"

namespace korvel {

namespace {

void override(RulesDraft& draft, const RuleOverrides& overrides) {
    if (const auto spacing = overrides.spacing) {
        draft.spacing = {*spacing, 0};
    }
    if (const auto edge = overrides.edge) {
        draft.edge = {{*edge, *edge, *edge, *edge}, 0};
    }
}

}  // namespace

std::optional<Rules> readRules(std::istream& in, const std::string& file,
                               const RuleOverrides& overrides, const Design& design, Region region,
                               Diagnostics& diagnostics) {
    const std::size_t errorsBefore = diagnostics.getErrorNum();
    RulesDraft draft = parseRules(readYaml(in, file, diagnostics), file, diagnostics);
    override(draft, overrides);
    std::optional<Rules> rules = resolveRules(draft, design, region, diagnostics);
    return diagnostics.getErrorNum() == errorsBefore ? rules : std::nullopt;
}

std::optional<Rules> readRules(const std::optional<std::string>& path,
                               const RuleOverrides& overrides, const Design& design, Region region,
                               Diagnostics& diagnostics) {
    if (!path) {
        RulesDraft draft;
        override(draft, overrides);
        return resolveRules(draft, design, region, diagnostics);
    }
    std::ifstream in;
    return openInput(in, *path, diagnostics)
               ? readRules(in, *path, overrides, design, region, diagnostics)
               : std::nullopt;
}

}  // namespace korvel

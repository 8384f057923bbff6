// From a YAML tree to what its entries say: knows the keys of a rules file and the form of their
// values, but no design.
#pragma once

#include "rules/RulesDraft.h"
#include "rules/YamlTree.h"

namespace korvel {

// What is wrong with keys and values is an error each; the draft has the rest.
RulesDraft parseRules(const YamlNode& root, const std::string& file, Diagnostics& diagnostics);

}  // namespace korvel

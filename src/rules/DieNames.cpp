#include "rules/DieNames.h"

#include "design/Diagnostics.h"
#include "rules/NamePattern.h"

namespace korvel {

DieNames::DieNames(const Design& design) : design(design) {
    for (unsigned die = 0; die < design.dies.size(); ++die) {
        byName.emplace(design.dies[die].name, die);
    }
}

std::vector<unsigned> DieNames::matching(const std::string& name) const {
    std::vector<unsigned> found;
    if (isPattern(name)) {
        for (unsigned die = 0; die < design.dies.size(); ++die) {
            if (matches(name, design.dies[die].name)) {
                found.push_back(die);
            }
        }
    } else if (const auto die = byName.find(name); die != byName.end()) {
        found.push_back(die->second);
    }
    return found;
}

std::string DieNames::noMatch(const std::string& name) const {
    if (isPattern(name)) {
        return "found the pattern " + shown(name) + ", expected one that matches a die";
    }
    std::vector<std::string_view> names;
    for (const Design::Die& die : design.dies) {
        names.emplace_back(die.name);
    }
    return "found the name " + shown(name) + ", expected that of a die; the nearest is " +
           shown(nearestTo(name, names));
}

}  // namespace korvel

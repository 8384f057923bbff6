#include "anneal/DieGroups.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace korvel {

namespace {

// Merges dies to ever larger clusters.
class Merging {
public:
    explicit Merging(const NetModel& nets);

    // What the merge made, if there was anything left to merge.
    struct Cluster {
        DieGroups::Group dies;
        unsigned kind;
        double outside;  // nets to other clusters
    };
    const Cluster* mergeNext(std::size_t mostDies);
    const std::vector<Cluster>& clusters() const { return open; }

private:
    // Equal for clusters that are made of clusters of the same two kinds, joined by as many nets.
    struct Making {
        double joints;
        std::pair<unsigned, unsigned> parts;
        auto operator<=>(const Making&) const = default;
    };

    void addNets(const NetModel& nets);
    double affinity(std::size_t a, std::size_t b) const;
    void merge(std::size_t a, std::size_t b);

    std::vector<Cluster> open;
    std::vector<std::vector<double>> joints;  // nets between two of them
    std::map<Making, unsigned> kinds;         // of clusters of more than one die
    unsigned kindNum = 0;
};

Merging::Merging(const NetModel& nets)
    : joints(nets.dieNum(), std::vector<double>(nets.dieNum(), 0.0)) {
    addNets(nets);
    std::map<std::pair<double, double>, unsigned> kindsOfDies;
    for (unsigned die = 0; die < nets.dieNum(); ++die) {
        const auto [kind, isNew] = kindsOfDies.try_emplace(
            {nets.size(die, kX, Orient::N), nets.size(die, kY, Orient::N)}, kindNum);
        kindNum += isNew ? 1 : 0;
        double outside = 0.0;
        for (const double joint : joints[die]) {
            outside += joint;
        }
        open.push_back({{die}, kind->second, outside});
    }
}

// A net of many dies counts as much as one of two, in shares.
void Merging::addNets(const NetModel& nets) {
    const auto add = [this, &nets](unsigned a, unsigned b, double count) {
        if (a != nets.ground() && b != nets.ground()) {
            joints[a][b] += count;
            joints[b][a] += count;
        }
    };
    for (const auto& [a, b, weight] : nets.bundles()) {
        add(a, b, weight);
    }
    for (const NetModel::WideNet& net : nets.wideNets()) {
        const double share =
            net.weight * 2.0 /
            (static_cast<double>(net.members.size()) * static_cast<double>(net.members.size() - 1));
        for (std::size_t a = 0; a < net.members.size(); ++a) {
            for (std::size_t b = 0; b < a; ++b) {
                add(net.members[a].body, net.members[b].body, share);
            }
        }
    }
}

// How much of its nets the one that has fewer of them has with the other; less if that is large,
// or else it would draw in everything.
double Merging::affinity(std::size_t a, std::size_t b) const {
    const double larger = static_cast<double>(std::max(open[a].dies.size(), open[b].dies.size()));
    return joints[a][b] / (std::min(open[a].outside, open[b].outside) * std::sqrt(larger));
}

const Merging::Cluster* Merging::mergeNext(std::size_t mostDies) {
    double closest = 0.0;
    std::pair<std::size_t, std::size_t> best;
    for (std::size_t a = 0; a < open.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b) {
            if (joints[a][b] > 0.0 && open[a].dies.size() + open[b].dies.size() <= mostDies &&
                affinity(a, b) > closest) {
                closest = affinity(a, b);
                best = {a, b};
            }
        }
    }
    if (closest == 0.0) {
        return nullptr;
    }
    // Parts of equal groups correspond if those of the lower kind come first.
    if (open[best.first].kind > open[best.second].kind) {
        std::swap(best.first, best.second);
    }
    merge(best.first, best.second);
    return &open[best.first];
}

void Merging::merge(std::size_t a, std::size_t b) {
    const auto [kind, isNew] =
        kinds.try_emplace({joints[a][b], {open[a].kind, open[b].kind}}, kindNum);
    kindNum += isNew ? 1 : 0;
    open[a].kind = kind->second;
    open[a].outside += open[b].outside - 2.0 * joints[a][b];
    open[a].dies.insert(open[a].dies.end(), open[b].dies.begin(), open[b].dies.end());
    open[b] = {{}, 0, 0.0};
    for (std::size_t other = 0; other < open.size(); ++other) {
        joints[a][other] += joints[b][other];
        joints[other][a] = joints[a][other];
        joints[b][other] = joints[other][b] = 0.0;
    }
    joints[a][a] = 0.0;
}

}  // namespace

DieGroups::DieGroups(const NetModel& nets) {
    Merging merging(nets);
    std::map<unsigned, std::vector<Group>> byKind;
    for (const Merging::Cluster& die : merging.clusters()) {
        byKind[die.kind].push_back(die.dies);
    }
    while (const Merging::Cluster* cluster = merging.mergeNext(nets.dieNum() / 2)) {
        all.push_back(cluster->dies);
        byKind[cluster->kind].push_back(cluster->dies);
    }
    for (auto& [kind, groups] : byKind) {
        if (groups.size() > 1) {
            kinds.push_back(std::move(groups));
        }
    }
}

}  // namespace korvel

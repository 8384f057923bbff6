#include "anneal/DieGroups.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <tuple>
#include <utility>

namespace korvel {

namespace {

// Clusters dies from the bottom up: merges the two closest clusters, again and again.
class Clustering {
public:
    explicit Clustering(const NetModel& nets);

    // What the merge made, if there was anything left to merge.
    struct Cluster {
        DieGroups::Group dies;
        unsigned kind;
        double connections;  // nets to other clusters
    };
    const Cluster* mergeNext(std::size_t mostDies);
    const std::vector<Cluster>& clusters() const { return open; }

private:
    // Nets, and the two kinds that they join: equal for clusters that were merged alike.
    using Composition = std::tuple<double, unsigned, unsigned>;

    void addNets(const NetModel& nets);
    double closeness(std::size_t a, std::size_t b) const;
    void merge(std::size_t a, std::size_t b);

    std::vector<Cluster> open;
    std::vector<std::vector<double>> netsBetween;  // two clusters
    std::map<Composition, unsigned> kinds;         // of clusters of more than one die
    unsigned kindNum = 0;
};

Clustering::Clustering(const NetModel& nets)
    : netsBetween(nets.dieNum(), std::vector<double>(nets.dieNum(), 0.0)) {
    addNets(nets);
    std::map<std::pair<double, double>, unsigned> kindsOfDies;
    for (unsigned die = 0; die < nets.dieNum(); ++die) {
        const auto [kind, isNew] = kindsOfDies.try_emplace(
            {nets.size(die, kX, Orient::N), nets.size(die, kY, Orient::N)}, kindNum);
        kindNum += isNew ? 1 : 0;
        open.push_back({{die},
                        kind->second,
                        std::accumulate(netsBetween[die].begin(), netsBetween[die].end(), 0.0)});
    }
}

// A net of many dies counts as much as one of two, divided evenly among its pairs of dies.
void Clustering::addNets(const NetModel& nets) {
    const auto add = [this, &nets](unsigned a, unsigned b, double count) {
        if (a != nets.ground() && b != nets.ground()) {
            netsBetween[a][b] += count;
            netsBetween[b][a] += count;
        }
    };
    for (const auto& [a, b, weight] : nets.bundles()) {
        add(a, b, weight);
    }
    for (const NetModel::WideNet& net : nets.wideNets()) {
        const double perPair =
            net.weight * 2.0 /
            (static_cast<double>(net.members.size()) * static_cast<double>(net.members.size() - 1));
        for (std::size_t a = 0; a < net.members.size(); ++a) {
            for (std::size_t b = 0; b < a; ++b) {
                add(net.members[a].body, net.members[b].body, perPair);
            }
        }
    }
}

// Of the cluster with fewer nets, the part of them that it has with the other one; less for large
// clusters, or else one would draw in everything.
double Clustering::closeness(std::size_t a, std::size_t b) const {
    const double larger = static_cast<double>(std::max(open[a].dies.size(), open[b].dies.size()));
    return netsBetween[a][b] /
           (std::min(open[a].connections, open[b].connections) * std::sqrt(larger));
}

const Clustering::Cluster* Clustering::mergeNext(std::size_t mostDies) {
    double closest = 0.0;
    std::pair<std::size_t, std::size_t> best;
    for (std::size_t a = 0; a < open.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b) {
            if (netsBetween[a][b] > 0.0 && open[a].dies.size() + open[b].dies.size() <= mostDies &&
                closeness(a, b) > closest) {
                closest = closeness(a, b);
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

void Clustering::merge(std::size_t a, std::size_t b) {
    const auto [kind, isNew] =
        kinds.try_emplace({netsBetween[a][b], open[a].kind, open[b].kind}, kindNum);
    kindNum += isNew ? 1 : 0;
    open[a].kind = kind->second;
    open[a].connections += open[b].connections - 2.0 * netsBetween[a][b];
    open[a].dies.insert(open[a].dies.end(), open[b].dies.begin(), open[b].dies.end());
    open[b] = {{}, 0, 0.0};
    for (std::size_t other = 0; other < open.size(); ++other) {
        netsBetween[a][other] += netsBetween[b][other];
        netsBetween[other][a] = netsBetween[a][other];
        netsBetween[b][other] = netsBetween[other][b] = 0.0;
    }
    netsBetween[a][a] = 0.0;
}

}  // namespace

DieGroups::DieGroups(const NetModel& nets) {
    Clustering merging(nets);
    std::map<unsigned, std::vector<Group>> byKind;
    for (const Clustering::Cluster& die : merging.clusters()) {
        byKind[die.kind].push_back(die.dies);
    }
    while (const Clustering::Cluster* cluster = merging.mergeNext(nets.dieNum() / 2)) {
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

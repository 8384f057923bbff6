#include "anneal/Coarsening.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvel {

namespace {

// Of all dies, what may be left for the coarse design to be worth its time.
constexpr double kMostLeft = 0.7;

constexpr unsigned kNone = std::numeric_limits<unsigned>::max();

double areaOf(Extent size) {
    return size.width * size.height;
}

// By die, the larger one that it hangs on; kNone if there is none.
std::vector<unsigned> hostsOf(const NetModel& nets, const std::vector<Extent>& sizes) {
    std::vector<unsigned> partner(nets.dieNum() + 1, kNone);
    std::vector<unsigned> partnerNum(nets.dieNum() + 1, 0);
    for (const auto& [a, b, weight] : nets.bundles()) {
        partner[a] = b;
        partner[b] = a;
        ++partnerNum[a];
        ++partnerNum[b];
    }
    for (const NetModel::WideNet& net : nets.wideNets()) {
        for (const BodyPins& member : net.members) {
            partnerNum[member.body] += 2;
        }
    }
    std::vector<unsigned> hosts(nets.dieNum(), kNone);
    for (unsigned die = 0; die < nets.dieNum(); ++die) {
        const unsigned host = partner[die];
        if (partnerNum[die] == 1 && host != nets.ground() &&
            areaOf(sizes[die]) < areaOf(sizes[host])) {
            hosts[die] = host;
        }
    }
    return hosts;
}

// By how much both sides of a die have to grow for it to gain that area.
double marginFor(Extent size, double area) {
    // (width + margin) (height + margin) = width height + area
    const double sum = size.width + size.height;
    return (std::sqrt(sum * sum + 4.0 * area) - sum) / 2.0;
}

}  // namespace

Coarsening::Coarsening(const Design& design, const NetModel& nets) {
    for (const Design::Die& die : design.dies) {
        sizes.push_back(die.size);
    }
    findHosts(hostsOf(nets, sizes));
    smaller.name = design.name;
    smaller.terminals = design.terminals;
    for (const Host& host : hosts) {
        const auto& [width, height] = sizes[host.die];
        smaller.dies.push_back(
            {design.dies[host.die].name, {width + host.margin, height + host.margin}});
    }
    keepNets(design);
}

void Coarsening::findHosts(const std::vector<unsigned>& hostOfDies) {
    coarseOf.assign(sizes.size(), kNone);
    for (unsigned die = 0; die < sizes.size(); ++die) {
        if (hostOfDies[die] == kNone) {
            coarseOf[die] = static_cast<unsigned>(hosts.size());
            hosts.push_back({die, 0.0, {}});
        }
    }
    for (unsigned die = 0; die < sizes.size(); ++die) {
        if (hostOfDies[die] != kNone) {
            hosts[coarseOf[hostOfDies[die]]].satellites.push_back(die);
        }
    }
    for (Host& host : hosts) {
        double area = 0.0;
        for (const unsigned satellite : host.satellites) {
            area += areaOf(sizes[satellite]);
        }
        host.margin = marginFor(sizes[host.die], area);
    }
}

// Those that are on no satellite.
void Coarsening::keepNets(const Design& design) {
    const auto leftOut = static_cast<unsigned>(sizes.size() - hosts.size());
    for (const Design::Net& net : design.nets) {
        Design::Net kept;
        for (const auto& [body, offset] : net.pins) {
            if (!design.isDie(body)) {
                kept.pins.push_back({body - leftOut, offset});
            } else if (coarseOf[body] != kNone) {
                const double shift = hosts[coarseOf[body]].margin / 2.0;
                kept.pins.push_back({coarseOf[body], {offset.x + shift, offset.y + shift}});
            }
        }
        if (kept.pins.size() == net.pins.size()) {
            smaller.nets.push_back(std::move(kept));
        }
    }
}

bool Coarsening::isWorthwhile() const {
    return static_cast<double>(hosts.size()) < kMostLeft * static_cast<double>(sizes.size());
}

// At first around its host a satellite is on one of the four sides in turn, its centre on the
// host's.
Layout::Snapshot Coarsening::expand(const Layout::Snapshot& start) const {
    Layout::Snapshot whole{SequencePair(static_cast<unsigned>(sizes.size())),
                           Placement(sizes.size())};
    for (const auto which : SequencePair::kBoth) {
        unsigned rank = 0;
        const auto putSatellites = [&](const Host& host, bool areBefore) {
            for (unsigned place = 0; place < host.satellites.size(); ++place) {
                const bool isBefore = (place >> unsigned{which}) % 2 == 0;
                if (isBefore == areBefore) {
                    whole.orders.put(which, host.satellites[place], rank++);
                }
            }
        };
        for (const unsigned coarse : start.orders.order(which)) {
            putSatellites(hosts[coarse], true);
            whole.orders.put(which, hosts[coarse].die, rank++);
            putSatellites(hosts[coarse], false);
        }
    }
    for (unsigned coarse = 0; coarse < hosts.size(); ++coarse) {
        const auto& placed = start.placement[coarse];
        const Extent around = turned(smaller.dies[coarse].size, placed.orient);
        const auto put = [&](unsigned die) {
            const Extent size = turned(sizes[die], placed.orient);
            whole.placement[die] = {{placed.at.x + (around.width - size.width) / 2.0,
                                     placed.at.y + (around.height - size.height) / 2.0},
                                    placed.orient};
        };
        put(hosts[coarse].die);
        std::for_each(hosts[coarse].satellites.begin(), hosts[coarse].satellites.end(), put);
    }
    return whole;
}

}  // namespace korvel

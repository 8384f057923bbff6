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

// By die, the only body that nets join it to; kNone if there are none or more.
std::vector<unsigned> onlyPartners(const NetModel& nets) {
    std::vector<unsigned> only(nets.dieNum() + 1, kNone);
    std::vector<unsigned> partnerNum(nets.dieNum() + 1, 0);
    for (const auto& [a, b] : nets.pairs()) {
        only[a] = b;
        only[b] = a;
        ++partnerNum[a];
        ++partnerNum[b];
    }
    for (const NetModel::WideNet& net : nets.wideNets()) {
        for (const NetModel::Member& member : net.members) {
            partnerNum[member.body] += 2;
        }
    }
    for (unsigned die = 0; die < nets.dieNum(); ++die) {
        if (partnerNum[die] != 1 || only[die] == nets.ground()) {
            only[die] = kNone;
        }
    }
    return only;
}

}  // namespace

Coarsening::Coarsening(const Design& design, const NetModel& nets) {
    const std::vector<unsigned> only = onlyPartners(nets);
    for (const Design::Die& die : design.dies) {
        sizes.push_back(die.size);
    }
    const auto hangsOn = [&](unsigned die) {
        return only[die] != kNone && areaOf(sizes[die]) < areaOf(sizes[only[die]]) ? only[die]
                                                                                   : kNone;
    };
    std::vector<unsigned> coarseOf(design.dies.size(), kNone);
    for (unsigned die = 0; die < design.dies.size(); ++die) {
        if (hangsOn(die) == kNone) {
            coarseOf[die] = static_cast<unsigned>(hosts.size());
            hosts.push_back({die, {}});
        }
    }
    for (unsigned die = 0; die < design.dies.size(); ++die) {
        if (hangsOn(die) != kNone) {
            hosts[coarseOf[hangsOn(die)]].satellites.push_back(die);
        }
    }
    smaller.name = design.name;
    smaller.terminals = design.terminals;
    std::vector<double> margins;
    for (const auto& [die, satellites] : hosts) {
        const Extent size = sizes[die];
        double area = 0.0;
        for (const unsigned satellite : satellites) {
            area += areaOf(sizes[satellite]);
        }
        // (w + m) (h + m) = w h + area
        const double sum = size.width + size.height;
        const double margin = (std::sqrt(sum * sum + 4.0 * area) - sum) / 2.0;
        margins.push_back(margin);
        smaller.dies.push_back(
            {design.dies[die].name, {size.width + margin, size.height + margin}});
    }
    const auto shift = static_cast<unsigned>(design.dies.size() - hosts.size());
    for (const Design::Net& net : design.nets) {
        Design::Net left;
        for (const Design::Pin& pin : net.pins) {
            if (!design.isDie(pin.body)) {
                left.pins.push_back({pin.body - shift, pin.offset});
            } else if (coarseOf[pin.body] != kNone) {
                const double half = margins[coarseOf[pin.body]] / 2.0;
                left.pins.push_back(
                    {coarseOf[pin.body], {pin.offset.x + half, pin.offset.y + half}});
            }
        }
        if (left.pins.size() == net.pins.size()) {
            smaller.nets.push_back(std::move(left));
        }
    }
}

bool Coarsening::isWorthwhile() const {
    return static_cast<double>(hosts.size()) < kMostLeft * static_cast<double>(sizes.size());
}

Start Coarsening::expand(const Start& start) const {
    Start whole{SequencePair(static_cast<unsigned>(sizes.size())), Placement(sizes.size())};
    for (const auto which : SequencePair::kBoth) {
        unsigned rank = 0;
        for (const unsigned coarse : start.orders.order(which)) {
            const Host& host = hosts[coarse];
            // Around the host: the four sides in turn.
            const auto putSide = [&](bool isBefore) {
                for (unsigned place = 0; place < host.satellites.size(); ++place) {
                    const bool before =
                        which == SequencePair::Upper ? (place & 1U) == 0 : (place & 2U) == 0;
                    if (before == isBefore) {
                        whole.orders.put(which, host.satellites[place], rank++);
                    }
                }
            };
            putSide(true);
            whole.orders.put(which, host.die, rank++);
            putSide(false);
        }
    }
    for (unsigned coarse = 0; coarse < hosts.size(); ++coarse) {
        const PlacedDie& placed = start.placement[coarse];
        const Extent around = turned(smaller.dies[coarse].size, placed.orient);
        const auto putAtCentre = [&](unsigned die) {
            const Extent size = turned(sizes[die], placed.orient);
            whole.placement[die] = {{placed.at.x + (around.width - size.width) / 2.0,
                                     placed.at.y + (around.height - size.height) / 2.0},
                                    placed.orient};
        };
        putAtCentre(hosts[coarse].die);
        for (const unsigned satellite : hosts[coarse].satellites) {
            putAtCentre(satellite);
        }
    }
    return whole;
}

}  // namespace korvel

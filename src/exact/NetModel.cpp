#include "exact/NetModel.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

namespace korvel {

namespace {

using Member = NetModel::Member;
using Bend = NetModel::Bend;

constexpr std::array kOrients{Orient::N, Orient::E, Orient::S, Orient::W};

Member memberAt(unsigned body) {
    Member member{body, {}};
    for (auto& byOrient : member.reach) {
        byOrient.fill(
            {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()});
    }
    return member;
}

void widen(Member& member, Axis axis, Orient orient, double at) {
    NetModel::Reach& reach = member.reach[axis][orientIndex(orient)];
    reach = {std::min(reach.low, at), std::max(reach.high, at)};
}

bool alike(const std::vector<Member>& some, const std::vector<Member>& others) {
    const auto sameMember = [](const Member& one, const Member& other) {
        if (one.body != other.body) {
            return false;
        }
        for (unsigned axis = 0; axis < 2; ++axis) {
            for (unsigned orient = 0; orient < kUnmirroredOrients; ++orient) {
                const auto& a = one.reach[axis][orient];
                const auto& b = other.reach[axis][orient];
                if (a.low != b.low || a.high != b.high) {
                    return false;
                }
            }
        }
        return true;
    };
    return std::equal(some.begin(), some.end(), others.begin(), others.end(), sameMember);
}

// Each net is max(d + highA, highB) - min(d + lowA, lowB): far left it falls by one per unit, and
// it turns by one where the high ends change places and where the low ends do.
std::vector<Bend> sumOf(const std::vector<std::pair<Member, Member>>& nets, Axis axis, Orient ofA,
                        Orient ofB) {
    std::vector<double> turns;
    double farLeft = 0.0;
    for (const auto& [a, b] : nets) {
        const auto& reachA = a.reach[axis][orientIndex(ofA)];
        const auto& reachB = b.reach[axis][orientIndex(ofB)];
        turns.push_back(reachB.high - reachA.high);
        turns.push_back(reachB.low - reachA.low);
        farLeft += reachB.high - reachA.low;
    }
    std::sort(turns.begin(), turns.end());
    std::vector<Bend> bends;
    auto slope = -static_cast<double>(nets.size());
    for (const double at : turns) {
        if (bends.empty()) {
            bends.push_back({at, farLeft + slope * at, slope, 0.0});
        } else if (at > bends.back().at) {
            bends.push_back({at, bends.back().value + slope * (at - bends.back().at), slope, 0.0});
        }
        slope += 1.0;
        bends.back().slope = slope;
        bends.back().turn += 1.0;
    }
    bends.shrink_to_fit();
    return bends;
}

}  // namespace

double NetModel::value(std::span<const Bend> bends, double distance) {
    if (bends.empty()) {
        return 0.0;
    }
    const auto next = std::upper_bound(bends.begin(), bends.end(), distance,
                                       [](double at, const Bend& bend) { return at < bend.at; });
    if (next == bends.begin()) {
        return next->value + (next->slope - next->turn) * (distance - next->at);
    }
    const Bend& last = *(next - 1);
    return last.value + last.slope * (distance - last.at);
}

NetModel::NetModel(const Design& design) {
    for (const Design::Die& die : design.dies) {
        sizes.push_back(die.size);
    }
    std::map<std::pair<unsigned, unsigned>, std::vector<std::pair<Member, Member>>> byPair;
    for (const Design::Net& net : design.nets) {
        std::vector<Member> members = membersOf(design, net);
        if (members.size() == 2) {
            byPair[{members[0].body, members[1].body}].emplace_back(members[0], members[1]);
        } else if (members.size() > 2) {
            addWide(std::move(members));
        }
    }
    tables.resize(byPair.size() * 2 * kUnmirroredOrients * kUnmirroredOrients);
    for (const auto& [bodies, nets] : byPair) {
        joined.push_back({bodies.first, bodies.second});
        fillTables(joined.size() - 1, nets);
    }
}

std::vector<Member> NetModel::membersOf(const Design& design, const Design::Net& net) const {
    std::map<unsigned, Member> members;
    for (const Design::Pin& pin : net.pins) {
        const bool onDie = design.isDie(pin.body);
        const unsigned body = onDie ? pin.body : ground();
        Member& member = members.try_emplace(body, memberAt(body)).first->second;
        for (const Orient orient : kOrients) {
            const Spot at =
                onDie ? turned(pin.offset, sizes[body], orient) : design.terminalOf(pin.body).at;
            widen(member, kX, orient, at.x);
            widen(member, kY, orient, at.y);
        }
    }
    std::vector<Member> inOrder;
    for (const auto& [body, member] : members) {
        inOrder.push_back(member);
    }
    return inOrder;
}

// Equal nets of one design mostly follow one another.
void NetModel::addWide(std::vector<Member> members) {
    if (!wide.empty() && alike(wide.back().members, members)) {
        wide.back().count += 1.0;
    } else {
        wide.push_back({std::move(members), 1.0});
    }
}

void NetModel::fillTables(std::size_t pair, const std::vector<std::pair<Member, Member>>& nets) {
    for (const Axis axis : {kX, kY}) {
        for (const Orient ofA : kOrients) {
            for (const Orient ofB : kOrients) {
                tables[tableIndex(pair, axis, ofA, ofB)] = sumOf(nets, axis, ofA, ofB);
            }
        }
    }
}

}  // namespace korvel

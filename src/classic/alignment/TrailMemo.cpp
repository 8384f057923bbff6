#include "classic/alignment/TrailMemo.h"

#include <algorithm>
#include <bit>

namespace korvel {

namespace {

constexpr std::size_t kKeptBytes = std::size_t{1} << 18;
constexpr std::size_t kFewestEntries = 16;
constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15;  // 2^64 by the golden ratio

std::size_t entryNum(std::size_t mostTrails) {
    return std::bit_floor(std::max(kFewestEntries, kKeptBytes / (mostTrails * sizeof(Trail))));
}

}  // namespace

Trail::Trail(Orient orient, float start) : start(start), orient(orient) {
    mix(static_cast<std::uint32_t>(orient));
    mix(std::bit_cast<std::uint32_t>(start));
}

void Trail::add(float move) {
    if (moveNum < moves.size()) {
        moves[moveNum] = move;
    }
    ++moveNum;
    mix(std::bit_cast<std::uint32_t>(move));
}

void Trail::mix(std::uint32_t bits) {
    hash = std::rotl((hash ^ bits) * kSpread, 29);
}

TrailMemo::TrailMemo(std::size_t mostTrails)
    : mostTrails(std::max<std::size_t>(mostTrails, 1)),
      entries(entryNum(this->mostTrails)),
      trails(entries.size() * this->mostTrails) {
    askedTrails.reserve(this->mostTrails);
}

bool TrailMemo::ask(std::uint32_t question, std::size_t effort, std::size_t trailNum) {
    asked = question;
    hash = question;
    askedTrails.clear();
    isAnswerable = effort >= trailNum;
    return isAnswerable;
}

void TrailMemo::add(const Trail& trail) {
    hash = std::rotl(hash, 5) + trail.getHash();
    isAnswerable = isAnswerable && trail.isWhole();
    askedTrails.push_back(&trail);
}

const float* TrailMemo::known() {
    entryAt = static_cast<std::size_t>(hash * kSpread >> 32U) % entries.size();
    const Entry& entry = entries[entryAt];
    const bool same = isAnswerable && entry.hash == hash && entry.question == asked &&
                      std::equal(askedTrails.begin(), askedTrails.end(), trailsOf(entryAt),
                                 [](const Trail* a, const Trail& b) { return *a == b; });
    return same ? &entry.answer : nullptr;
}

void TrailMemo::keep(float answer) {
    if (!isAnswerable) {
        return;
    }
    entries[entryAt] = {hash, asked, answer};
    std::transform(askedTrails.begin(), askedTrails.end(), trailsOf(entryAt),
                   [](const Trail* trail) { return *trail; });
}

}  // namespace korvel

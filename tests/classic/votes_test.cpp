// The vote of many nets about one step, and the same from lists whose order is known.

#include "classic/alignment/StepVotes.h"
#include "support/helpers.h"

namespace korvel::test {
namespace {

// Free to move that far in the direction, and a little in the others.
offsetCalcReturn freeWithin(unsigned direction, float distance) {
    offsetCalcReturn advice;
    advice.inside = allLanes(-1);
    advice.freeDistances = allLanes(0.5F);
    advice.freeDistances[direction] = distance;
    return advice;
}

// A list of pairs that want these steps, with estimates that are wrong by up to the tolerance.
class List {
public:
    List(const std::vector<WeightedStep>& wishes, double tolerance, std::mt19937& random,
         bool isSecond = false)
        : tolerance(tolerance), sign(isSecond ? -1.0F : 1.0F) {
        for (const auto [step, weight] : wishes) {
            const double wrong = (static_cast<double>(random() % 2001) / 1000 - 1) * tolerance;
            const auto track = static_cast<unsigned>(tracks.size());
            tracks.push_back(sign * step);
            entries.push_back({static_cast<float>(step + wrong - kShift), weight, 0, track});
        }
        std::sort(entries.begin(), entries.end(),
                  [](const SortedPair& a, const SortedPair& b) { return a.gap < b.gap; });
        unsigned before = 0;
        for (SortedPair& entry : entries) {
            before += std::exchange(entry.weightBefore, before);
        }
        entries.push_back({0.0F, before, 0, 0});
    }

    // Gaps are floats too.
    ShiftedList shifted() const {
        return {entries, tracks.data(), sign, kShift, tolerance * 1.001 + 0.001};
    }

private:
    static constexpr double kShift = 77.5;
    double tolerance;
    float sign;
    std::vector<float> tracks = {0.0F};
    std::vector<SortedPair> entries;
};

struct Step {
    std::vector<float> wanted;  // in the direction, or negative against it
    std::vector<float> free;    // in the direction
    unsigned stays;
    float lower;  // middle
    float upper;
};
const Step kSteps[] = {
    {{}, {1}, 0, 0, 0},
    {{5}, {}, 0, 5, 5},
    {{5, 1, 2}, {}, 0, 2, 2},
    {{6, 2}, {}, 0, 2, 6},
    {{4, 3, 2, 1}, {}, 0, 2, 3},
    {{5, -1}, {}, 0, 0, 0},        // a draw
    {{5, -1, 3, 1}, {}, 0, 1, 3},  // two of the three count
    {{5, 3}, {}, 2, 0, 0},         // as many stay as win
    {{1, 2, 5, 9}, {}, 1, 2, 2},   // three of the four count
    {{1, 2, 5}, {2, 7}, 0, 2, 2},  // free as far as wanted
    {{5}, {9, 2}, 0, 2, 2},        // a majority of one stops at once
    {{4, 6}, {3}, 0, 4, 4},        // one distance passed, the last
    {{4, 6}, {5}, 0, 4, 5},        // upper: the new middle, 4, is below 5
    {{4, 6, 8}, {1}, 0, 4, 6},     // the lower middle of three that shrink is the first
    {{4, 6, 8}, {2, 1}, 0, 4, 4},  // upper: 6, then from a majority of two
    {{1, 6, 8}, {2}, 0, 2, 6},     // lower: between the middles 6 and 1
    {{3, 4, 9}, {1, 3.5F}, 0, 3, 3.5F},
    {{5, 6, 7, 8}, {1, 1, 1, 1}, 0, 1, 1},  // the majority is used up
};

TEST(Votes, TheStepIsTheMiddleOfTheMajorityCutByFreeDistances) {
    for (const Step& s : kSteps) {
        for (const unsigned direction : {kRight, kUp, kLeft, kDown}) {
            SCOPED_TRACE(testing::Message() << &s - kSteps << ", direction " << direction);
            const Axis axis = direction % 2 == 0 ? kX : kY;
            const float sign = direction < kLeft ? 1.0F : -1.0F;
            StepVotes votes;
            votes.clear(s.wanted.size() + s.free.size() + 1);
            for (const float wanted : s.wanted) {
                votes.add(adviceForPair(quadOf({sign * wanted, sign * wanted})));
            }
            for (const float distance : s.free) {
                votes.addWithFree(freeWithin(direction, distance));
            }
            votes.add(adviceToStay(), static_cast<std::int32_t>(s.stays));
            EXPECT_EQ(votes.step(axis, Middle::Lower), sign * s.lower);
            EXPECT_EQ(votes.step(axis, Middle::Upper), sign * s.upper);
        }
    }
}

// Equal wishes, many of them, and long lists of free distances; one by one and from
// lists.
TEST(Votes, LargeVotesAreThoseOfSortedLists) {
    std::mt19937 random(1);
    StepVotes votes;
    for (unsigned round = 0; round < 300; ++round) {
        std::vector<float> wanted;
        std::vector<float> free;
        std::vector<WeightedStep> listed;
        std::size_t stays = 0;
        votes.clear(100);
        for (unsigned i = 0; i < 1 + round % 60; ++i) {
            const auto offset = static_cast<float>(1 + random() % (round % 2 == 0 ? 10 : 1000));
            const auto weight = static_cast<unsigned>(1 + random() % 4);
            if (random() % 8 < round % 8) {
                const bool isStay = random() % 4 == 0;
                listed.push_back({isStay ? 0.0F : offset, weight});
                if (isStay) {
                    stays += weight;
                    continue;
                }
            } else {
                votes.add(adviceForPair(quadOf({0, offset})), static_cast<std::int32_t>(weight));
            }
            wanted.insert(wanted.end(), weight, offset);
        }
        const List list(listed, 0.1, random);
        votes.addAlong(kY, list.shifted());
        for (auto i = random() % 8; i > 0; --i) {
            free.push_back(static_cast<float>(random() % 500));
            votes.addWithFree(freeWithin(kUp, free.back()));
        }
        const std::size_t moreStays = random() % (wanted.size() + 1);
        votes.add(adviceToStay(), static_cast<int>(moreStays));
        stays += moreStays;
        std::sort(wanted.begin(), wanted.end());
        std::sort(free.begin(), free.end());
        free.resize(200, kInfinity);
        const Middle middle = random() % 2 == 0 ? Middle::Lower : Middle::Upper;
        const float plain = stays >= wanted.size()
                                ? 0.0F
                                : selectStep([&](unsigned i) { return wanted.at(i); },
                                             [&](unsigned i) { return free.at(i); },
                                             static_cast<unsigned>(wanted.size() - stays), middle);
        ASSERT_EQ(votes.step(kY, middle), plain) << "round " << round;
    }
}

// Wishes on both sides and around the middle, many of them nearly equal; up to three lists, seen
// from either body, and votes beside them. Tolerances that say nothing leave all to the positions.
TEST(Votes, ListsAnswerForEveryRankAsPositionsDo) {
    std::mt19937 random(2);
    const double tolerances[] = {0.0, 0.004, 1.5, kInfinity,
                                 std::numeric_limits<double>::quiet_NaN()};
    SortedVotes votes;
    votes.reserve(400);
    for (unsigned round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        const double tolerance = tolerances[round % 5];
        const float coarseness = round % 3 == 0 ? 0.25F : 0.003F;
        std::vector<float> sides[2];
        unsigned stays = 0;
        std::vector<List> lists;
        for (auto n = random() % 4; n > 0; --n) {
            std::vector<WeightedStep> wishes;
            const auto from = static_cast<float>(random() % 40) - 25.0F;
            for (auto i = random() % 80; i > 0; --i) {
                const bool isOnTheEdge = random() % 20 == 0;
                const float wish = isOnTheEdge
                                       ? (random() % 2 == 0 ? kSamePosition : -kSamePosition)
                                       : from + coarseness * static_cast<float>(random() % 50);
                const auto weight = static_cast<unsigned>(1 + random() % 3);
                wishes.push_back({wish, weight});
                const float size = std::fabs(wish);
                stays += size > kSamePosition ? 0 : weight;
                sides[wish < 0].insert(sides[wish < 0].end(), size > kSamePosition ? weight : 0,
                                       size);
            }
            lists.emplace_back(wishes, std::isfinite(tolerance) ? tolerance : 0.0, random,
                               random() % 2 == 0);
        }
        votes.clear();
        for (const List& list : lists) {
            ShiftedList shifted = list.shifted();
            shifted.tolerance = std::isfinite(tolerance) ? shifted.tolerance : tolerance;
            votes.add(shifted);
        }
        ASSERT_EQ(votes.getForward(), sides[0].size());
        ASSERT_EQ(votes.getBackward(), sides[1].size());
        ASSERT_EQ(votes.getStays(), stays);
        for (const bool isForward : {true, false}) {
            std::vector<float>& steps = sides[isForward ? 0 : 1];
            StepList others;
            others.reserve(4);
            for (auto i = random() % 4; i > 0; --i) {
                others.add({coarseness * 100, 2});
                steps.insert(steps.end(), 2, coarseness * 100);
            }
            std::sort(steps.begin(), steps.end());
            votes.chooseSide(isForward, others);
            for (unsigned rank = 0; rank < steps.size(); ++rank) {
                ASSERT_EQ(votes.stepAt(rank), steps[rank]) << isForward << ' ' << rank;
            }
        }
    }
}

}  // namespace
}  // namespace korvel::test

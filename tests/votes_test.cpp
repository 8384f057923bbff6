// The vote of many nets about one step.

#include "StepVotes.h"
#include "helpers.h"

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
            for (std::size_t i = 0; i < s.wanted.size(); ++i) {
                const float offset = sign * s.wanted[i];
                if (i % 2 == 0) {
                    votes.addAlong(axis, offset, 1);
                } else {
                    votes.add(adviceForPair(quadOf({offset, offset})));
                }
            }
            for (const float distance : s.free) {
                votes.addWithFree(freeWithin(direction, distance));
            }
            votes.addAlong(axis, 0.001F, s.stays);
            EXPECT_EQ(votes.step(axis, Middle::Lower), sign * s.lower);
            EXPECT_EQ(votes.step(axis, Middle::Upper), sign * s.upper);
        }
    }
}

// Bundles of equal wishes, many of them, and long lists of free distances.
TEST(Votes, LargeVotesAreThoseOfSortedLists) {
    std::mt19937 random(1);
    StepVotes votes;
    for (unsigned round = 0; round < 300; ++round) {
        std::vector<float> wanted;
        std::vector<float> free;
        votes.clear(100);
        for (unsigned i = 0; i < 1 + round % 60; ++i) {
            const auto offset = static_cast<float>(1 + random() % (round % 2 == 0 ? 10 : 1000));
            const auto weight = static_cast<unsigned>(1 + random() % 4);
            votes.addAlong(kY, offset, weight);
            wanted.insert(wanted.end(), weight, offset);
        }
        for (auto i = random() % 8; i > 0; --i) {
            free.push_back(static_cast<float>(random() % 500));
            votes.addWithFree(freeWithin(kUp, free.back()));
        }
        const auto stays = static_cast<unsigned>(random() % wanted.size());
        votes.add(adviceToStay(), static_cast<int>(stays));
        std::sort(wanted.begin(), wanted.end());
        std::sort(free.begin(), free.end());
        free.resize(200, kInfinity);
        const Middle middle = random() % 2 == 0 ? Middle::Lower : Middle::Upper;
        const float plain = selectStep([&](unsigned i) { return wanted.at(i); },
                                       [&](unsigned i) { return free.at(i); },
                                       static_cast<unsigned>(wanted.size()) - stays, middle);
        ASSERT_EQ(votes.step(kY, middle), plain) << "round " << round;
    }
}

TEST(Votes, ChildrenAreSortedAndTiesHaveAFixedOrder) {
    using Three = std::array<unsigned, 3>;
    using Four = std::array<unsigned, 4>;
    EXPECT_EQ(Placer::sortThreeNodes({5, 3, 3}), (Three{1, 2, 0}));
    EXPECT_EQ(Placer::sortThreeNodes({4, 4, 4}), (Three{0, 1, 2}));
    EXPECT_EQ(Placer::sortFourNodes({4, 4, 4, 4}), (Four{3, 0, 1, 2}));
    for (unsigned code = 0; code < 256; ++code) {
        const std::array<float, 4> keys = {float(code & 3U), float(code >> 2U & 3U),
                                           float(code >> 4U & 3U), float(code >> 6U)};
        const Three three = Placer::sortThreeNodes(keys);
        const Four four = Placer::sortFourNodes(keys);
        EXPECT_EQ(std::set<unsigned>(three.begin(), three.end()).size(), 3U);
        EXPECT_EQ(std::set<unsigned>(four.begin(), four.end()).size(), 4U);
        const auto less = [&keys](unsigned a, unsigned b) { return keys[a] < keys[b]; };
        EXPECT_TRUE(std::is_sorted(three.begin(), three.end(), less)) << code;
        EXPECT_TRUE(std::is_sorted(four.begin(), four.end(), less)) << code;
    }
}

}  // namespace
}  // namespace korvel::test

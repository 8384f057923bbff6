// How much room the packing takes a chain of dies to need.

#include "anneal/Packing.h"

#include <gtest/gtest.h>

namespace korvel {
namespace {

// The sum of many tenths is not a whole number of tenths, yet so many dies fill such a side and no
// smaller one.
TEST(Packing, ChainsMayFillTheSideUpToRounding) {
    for (unsigned dieNum = 1; dieNum <= 60; ++dieNum) {
        SCOPED_TRACE(dieNum);
        const SequencePair inARow(dieNum);
        Design design;
        design.dies.assign(dieNum, {"die", {0.1, 0.1}});
        for (const auto sweep : {Packing::Sweep::FromLow, Packing::Sweep::FromHigh}) {
            const auto overflowIn = [&](double side) {
                const DieLimits limits(design, {side, 1.0});
                Packing packing(limits, kX);
                packing.findLimits(inARow, sweep);
                return packing.overflow();
            };
            EXPECT_EQ(overflowIn(dieNum / 10.0), 0.0);
            EXPECT_NEAR(overflowIn(dieNum / 10.0 / 1.0001), 1e-4, 1e-8);
        }
    }
}

}  // namespace
}  // namespace korvel

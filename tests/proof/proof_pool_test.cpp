// What threads share of a tree: who gets which open part, and what bound stands for the whole.

#include <gtest/gtest.h>

#include <future>
#include <limits>

#include "proof/ProofPool.h"

namespace korvel {
namespace {

ProofNode withBound(double bound) {
    ProofNode node;
    node.bound = bound;
    return node;
}

// Ends with a bound of -1 when there is nothing left to take.
double takeBound(ProofPool& pool, unsigned worker) {
    const auto node = pool.take(worker);
    return node ? node->bound : -1.0;
}

TEST(ProofPool, TheLowestBoundComesFirstAndCountsWhileItIsWorkedOn) {
    ProofPool pool(withBound(1), 2);
    EXPECT_EQ(takeBound(pool, 0), 1);
    EXPECT_EQ(pool.lowestOpen(), 1) << "nothing is open, but somebody works on it";
    pool.giveBack(0, {withBound(5), withBound(2), withBound(4), withBound(3)});
    EXPECT_EQ(pool.lowestOpen(), 2);
    EXPECT_EQ(takeBound(pool, 0), 2);
    EXPECT_EQ(takeBound(pool, 1), 3);
    EXPECT_EQ(pool.lowestOpen(), 2);
    pool.giveBack(0, {withBound(6)});
    EXPECT_EQ(pool.lowestOpen(), 3);
    pool.giveBack(1, {});
    for (const double bound : {4.0, 5.0, 6.0}) {
        EXPECT_EQ(pool.lowestOpen(), bound);
        EXPECT_EQ(takeBound(pool, 0), bound);
        pool.giveBack(0, {});
    }
    EXPECT_EQ(pool.lowestOpen(), std::numeric_limits<double>::infinity());
    EXPECT_FALSE(pool.take(0));
    EXPECT_FALSE(pool.take(1));
}

// Whoever finds nothing open waits for what others hand back, and goes home when they hand back
// nothing.
TEST(ProofPool, WorkersWaitForOneAnother) {
    ProofPool pool(withBound(1), 2);
    for (const std::vector<ProofNode>& handedBack : {std::vector{withBound(7)}, {}}) {
        ASSERT_TRUE(pool.take(0));
        auto other = std::async(std::launch::async, [&] { return takeBound(pool, 1); });
        EXPECT_EQ(other.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
        pool.giveBack(0, handedBack);
        EXPECT_EQ(other.get(), handedBack.empty() ? -1 : 7);
        pool.giveBack(1, {withBound(2)});
    }
}

TEST(ProofPool, ClosingSendsEverybodyHome) {
    ProofPool pool(withBound(1), 2);
    ASSERT_TRUE(pool.take(0));
    auto other = std::async(std::launch::async, [&] { return takeBound(pool, 1); });
    pool.close();
    EXPECT_EQ(other.get(), -1);
    pool.giveBack(0, {withBound(3)});
    EXPECT_FALSE(pool.take(0));
    EXPECT_EQ(pool.lowestOpen(), 3);
}

}  // namespace
}  // namespace korvel

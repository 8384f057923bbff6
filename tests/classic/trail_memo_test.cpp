// What is remembered of bodies that stand as they did: nothing but exactly that.
#include "classic/alignment/TrailMemo.h"
#include "support/helpers.h"

namespace korvel::test {
namespace {

Trail trailOf(Orient orient, const std::vector<float>& places) {
    Trail trail(orient, places.front());
    for (std::size_t i = 1; i < places.size(); ++i) {
        trail.add(places[i]);
    }
    return trail;
}

class TrailMemoTest : public testing::Test {
protected:
    const float* ask(unsigned question, const std::vector<Trail>& trails) {
        memo.ask(question, trails.size(), trails.size());
        for (const Trail& trail : trails) {
            memo.add(trail);
        }
        return memo.known();
    }

    TrailMemo memo{2};
};

TEST_F(TrailMemoTest, KnowsTheSameQuestionAboutTheSameTrailsOnly) {
    const Trail still = trailOf(Orient::N, {3});
    const std::vector<Trail> asked{still, trailOf(Orient::E, {1, 2, -1})};
    EXPECT_EQ(ask(7, asked), nullptr);
    memo.keep(42.0F);
    EXPECT_EQ(ask(8, asked), nullptr);
    const std::vector<std::vector<Trail>> others{
        {asked[1], asked[0]},
        {still, trailOf(Orient::E, {1, -1, 2})},  // as far, but rounded on another way
        {still, trailOf(Orient::E, {2})},
        {still, trailOf(Orient::W, {1, 2, -1})},
        {still, trailOf(Orient::E, {1, 2, -1, 0.5F})},
    };
    for (std::size_t i = 0; i < others.size(); ++i) {
        EXPECT_EQ(ask(7, others[i]), nullptr) << i;
    }
    ASSERT_NE(ask(7, asked), nullptr);
    EXPECT_EQ(*ask(7, asked), 42.0F);
}

TEST_F(TrailMemoTest, KeepsNothingOfTrailsTooLongToBeToldApart) {
    const std::vector<Trail> asked{trailOf(Orient::N, {1, 1, 1, 1, 1, 1})};
    EXPECT_EQ(ask(0, asked), nullptr);
    memo.keep(1.0F);
    EXPECT_EQ(ask(0, asked), nullptr);
}

TEST_F(TrailMemoTest, DoesNotBotherWithWhatIsSoonDone) {
    EXPECT_FALSE(memo.ask(0, 1, 2));
    memo.keep(1.0F);
    memo.ask(0, 0, 0);
    EXPECT_EQ(memo.known(), nullptr);
}

}  // namespace
}  // namespace korvel::test

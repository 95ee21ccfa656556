// Random integers for signals.
#include "qvrtest/random.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

using namespace gfast;

namespace {

using testing::AllOf;
using testing::Ge;
using testing::Le;

TEST(RandomIntegers, StayInTheirRange) {
  std::vector<int> seen(5);
  for (int i = 0; i < 1000; i++) {
    const int number = randi(-2, 2);
    ASSERT_THAT(number, AllOf(Ge(-2), Le(2)));
    seen[static_cast<size_t>(number + 2)]++;
  }
  EXPECT_THAT(seen, testing::Each(Ge(1)));
}

TEST(RandomIntegers, UseTheGeneratorOfTheCLibrary) {
  std::srand(5);
  const int drawn = std::rand();
  std::srand(5);
  EXPECT_EQ(randi(10, 109), drawn % 100 + 10);
}

TEST(RandomIntegers, EmptyRangeReturnsItsStart) {
  EXPECT_EQ(randi(3, 2), 3);
  EXPECT_EQ(randi(3, -9), 3);
  EXPECT_EQ(randi(3, 3), 3);
  EXPECT_LE(randi(-2147483647 - 1, 2147483647), 2147483647);
}

}  // namespace

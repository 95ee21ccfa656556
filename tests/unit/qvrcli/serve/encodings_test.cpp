// Values in the published model's encodings.
#include "qvrcli/serve/encodings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace gfast::console;

namespace {

using testing::ElementsAre;

std::string base64Of(const std::string& text) {
  return base64({text.begin(), text.end()});
}

TEST(Encodings, WriteBase64) {
  EXPECT_EQ(base64Of(""), "");
  EXPECT_EQ(base64Of("f"), "Zg==");
  EXPECT_EQ(base64Of("fo"), "Zm8=");
  EXPECT_EQ(base64Of("foobar"), "Zm9vYmFy");
  EXPECT_EQ(base64({0xFF, 0xFB, 0xF0}), "//vw");
}

TEST(Encodings, WriteTimesInUtc) {
  EXPECT_EQ(dateAndTime(1700000000), "2023-11-14T22:13:20Z");
}

TEST(Encodings, PutTheFirstToneIntoTheHighHalfOfAByte) {
  EXPECT_THAT(bitNibbles({1, 14, 3}), ElementsAre(0x1E, 0x30));
}

TEST(Encodings, HaveAValueForNone) {
  EXPECT_THAT(snrOctets({10.5F, -32.0F, std::nullopt, 95.0F, 200.0F}), ElementsAre(85, 0, 255, 254, 254));
  EXPECT_THAT(noiseOfTones({-140.0F, std::nullopt, -20.0F, -200.0F}), ElementsAre(210, 255, 0, 251));
  EXPECT_THAT(hlogOfTones({-10.0F, std::nullopt, 9.0F}), ElementsAre(0, 160, 3, 255, 0, 0));
}

TEST(Encodings, TakeTheFirstToneOfAGroupThatHasAValue) {
  const Levels levels{std::nullopt, -100.0F, -120.0F, -120.0F};
  EXPECT_THAT(noiseOctets(levels, std::vector<bool>(4, true)), ElementsAre(130));
  EXPECT_THAT(hlogOctets(levels, std::vector<bool>(4, true)), ElementsAre(3, 252));
}

TEST(Encodings, TellAGroupThatIsNotInUseFromOneWithoutAValue) {
  const Levels none(8);
  const std::vector<bool> second{false, false, false, false, false, true, true, false};
  EXPECT_THAT(noiseOctets(none, second), ElementsAre(254, 255));
  EXPECT_THAT(hlogOctets(none, second), ElementsAre(3, 254, 3, 255));
  EXPECT_THAT(noiseOctets(none, {}), ElementsAre(255, 255)) << "unknown which are in use";
}

TEST(Encodings, KeepTenthsWithinTheirLimits) {
  EXPECT_EQ(inTenths(6.04, -511, 511), 60);
  EXPECT_EQ(inTenths(-99, -511, 511), -511);
  EXPECT_EQ(inTenths(99, -511, 511), 511);
}

}  // namespace

// The version, as number and as text.
#include <gtest/gtest.h>
#include <qvr.h>

#include <string>

namespace {

TEST(Version, TheTextIsTheThreeNumbers) {
  EXPECT_EQ(std::string(QVR_VERSION), std::to_string(QVR_VERSION_MAJOR) + '.' +
                                          std::to_string(QVR_VERSION_MINOR) + '.' +
                                          std::to_string(QVR_VERSION_PATCH));
}

TEST(Version, IsThatOfTheBuild) {
  EXPECT_STREQ(QVR_VERSION, PROJECT_VERSION);
}

}  // namespace

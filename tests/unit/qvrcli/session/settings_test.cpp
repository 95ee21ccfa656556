#include "qvrcli/session/settings.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace gfast::console;

namespace {

TEST(Settings, RestrictNothingWithoutAnEnvironment) {
  const auto settings = readSettings();
  ASSERT_TRUE(settings);
  EXPECT_FALSE(settings->listen);
  EXPECT_FALSE(settings->allowed);
  EXPECT_FALSE(settings->filesFolder);
  EXPECT_FALSE(settings->readOnly);
  EXPECT_FALSE(settings->log);
}

TEST(Settings, AreWhatTheEnvironmentSays) {
  setenv("GFAST_LISTEN", "127.0.0.1:5000", 1);
  setenv("GFAST_ALLOW", "10.0.0.0/8,127.0.0.1", 1);
  setenv("GFAST_FILES", "/var/tmp", 1);
  setenv("GFAST_READ_ONLY", "1", 1);
  setenv("GFAST_LOG", "/var/log/gfast.log", 1);
  const auto settings = readSettings();
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->listen->port, 5000);
  EXPECT_EQ(settings->allowed->size(), 2U);
  EXPECT_EQ(settings->filesFolder, "/var/tmp");
  EXPECT_TRUE(settings->readOnly);
  EXPECT_EQ(settings->log, "/var/log/gfast.log");
}

TEST(Settings, TakeReadOnly0ForOff) {
  setenv("GFAST_READ_ONLY", "0", 1);
  const auto settings = readSettings();
  ASSERT_TRUE(settings);
  EXPECT_FALSE(settings->readOnly);
}

struct Mistake {
  const char* variable;
  const char* text;
  const char* line;
};

class MistakeInSettings : public testing::TestWithParam<Mistake> {};

TEST_P(MistakeInSettings, IsOneLine) {
  setenv(GetParam().variable, GetParam().text, 1);
  testing::internal::CaptureStderr();
  EXPECT_FALSE(readSettings());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), GetParam().line);
}

INSTANTIATE_TEST_SUITE_P(
    All, MistakeInSettings,
    testing::Values(
        Mistake{"GFAST_LISTEN", "localhost",
                "GFAST_LISTEN=localhost: must be an IPv4 address, or one with a port like 127.0.0.1:9000\n"},
        Mistake{"GFAST_LOG", "", "GFAST_LOG=: must be the name of a file, or syslog\n"},
        Mistake{"GFAST_LISTEN", "",
                "GFAST_LISTEN=: must be an IPv4 address, or one with a port like 127.0.0.1:9000\n"},
        Mistake{
            "GFAST_ALLOW", "10.0.0.0/40",
            "GFAST_ALLOW=10.0.0.0/40: must list IPv4 addresses and networks, like 192.0.2.7,10.0.0.0/8\n"},
        Mistake{"GFAST_ALLOW", "",
                "GFAST_ALLOW=: must list IPv4 addresses and networks, like 192.0.2.7,10.0.0.0/8\n"},
        Mistake{"GFAST_FILES", "", "GFAST_FILES=: must be the name of a folder\n"},
        Mistake{"GFAST_READ_ONLY", "yes", "GFAST_READ_ONLY=yes: must be 1 or 0\n"},
        Mistake{"GFAST_READ_ONLY", "", "GFAST_READ_ONLY=: must be 1 or 0\n"}));

}  // namespace

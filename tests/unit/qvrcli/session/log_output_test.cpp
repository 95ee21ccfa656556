#include "qvrcli/session/log_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

using namespace gfast::console;

namespace {

using testing::ElementsAre;

std::vector<std::string> said;

void remember(const char* line) {
  said.emplace_back(line);
}

void sayAll(const std::string& text) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  close(ends[1]);
  sayLines(ends[0], remember);
}

TEST(LogOutput, SaysEachLineWithoutItsEnd) {
  sayAll("Listening on port 9000\nReboot notification...\r\n\nthe last one");
  EXPECT_THAT(said, ElementsAre("Listening on port 9000", "Reboot notification...", "the last one"));
}

TEST(LogOutput, SaysALongLineInPieces) {
  sayAll(std::string(1500, 'a') + "\nb\n");
  EXPECT_THAT(said, ElementsAre(std::string(1023, 'a'), std::string(477, 'a'), "b"));
}

}  // namespace

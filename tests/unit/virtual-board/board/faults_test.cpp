#include "virtual-board/board/faults.h"

#include <gtest/gtest.h>

#include "chip/boot_register.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

// The results of four requests: "12x4" when the third fails.
std::string readFour(Bench& bench, uint32_t address = SBR_REG_ADDRESS) {
  std::string results;
  for (int i = 1; i <= 4; i++) {
    results += bench.read(0, address, 4) == "EIO" ? "x" : std::to_string(i);
  }
  return results;
}

std::string fault(const std::string& rest) {
  return "[[device]]\nline = \"showtime\"\n[[fault]]\ndevice = 0\n" + rest;
}

}  // namespace

TEST(Faults, FailOnceByDefault) {
  Bench bench(fault("request = \"memread\""));
  EXPECT_EQ(readFour(bench), "x234");
}

TEST(Faults, LetSomeRequestsThroughAndThenFailSome) {
  Bench bench(fault("request = \"memread\"\nskip = 1\ncount = 2"));
  EXPECT_EQ(readFour(bench), "1xx4");
}

TEST(Faults, CountZeroFailsAllThatFollow) {
  Bench bench(fault("request = \"memread\"\nskip = 2\ncount = 0"));
  EXPECT_EQ(readFour(bench), "12xx");
  EXPECT_EQ(readFour(bench), "xxxx");
}

TEST(Faults, AreForOneDevice) {
  Bench bench(fault("request = \"memread\"\ncount = 0"));
  EXPECT_EQ(bench.read(1, SBR_REG_ADDRESS, 4), "00 00 80 01");
}

TEST(Faults, WithAnAddressFailOnlyRequestsThatTouchIt) {
  Bench bench(fault("request = \"memread\"\naddress = 0xEF000004\ncount = 0"));
  EXPECT_EQ(bench.read(0, 0xEF000000, 4), "00 00 00 00");
  EXPECT_EQ(bench.read(0, 0xEF000000, 6), "EIO");
  EXPECT_EQ(bench.read(0, 0xEF000004, 2), "EIO");
  EXPECT_EQ(bench.read(0, 0xEF000005, 2), "00 00");
  EXPECT_EQ(bench.read(0, 0xEF000004, 0), "EIO");
}

TEST(Faults, SkipCountsOnlyRequestsThatMatch) {
  Bench bench(fault("request = \"memread\"\naddress = 0xEF000004\nskip = 1"));
  EXPECT_EQ(readFour(bench), "1234");
  EXPECT_EQ(readFour(bench, 0xEF000004), "1x34");
}

TEST(Faults, FailWithTheirError) {
  Bench bench(fault("request = \"memread\"\nerrno = \"ETIMEDOUT\""));
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "ETIMEDOUT");
}

TEST(Faults, SeveralCountIndependently) {
  Bench bench((fault("request = \"memread\"\nerrno = \"EIO\"\n") +
               "[[fault]]\ndevice = 0\nrequest = \"memread\"\nskip = 2\nerrno = \"EIO\""));
  EXPECT_EQ(readFour(bench), "x2x4");
}

TEST(Faults, AFailedRequestHasNoEffect) {
  Bench bench(fault("request = \"memwrite\""));
  EXPECT_EQ(bench.write(0, 0xEF000000, "01 02"), "EIO");
  EXPECT_EQ(bench.read(0, 0xEF000000, 2), "00 00");
  EXPECT_EQ(bench.write(0, 0xEF000000, "01 02"), "ok");
}

TEST(Faults, EveryRequestCanFail) {
  const TempFile image("x");
  const struct {
    const char* request;
    std::string (*send)(Bench&, const std::string& file);
  } requests[] = {
      {"memread", [](Bench& b, const std::string&) { return b.read(0, SBR_REG_ADDRESS, 4); }},
      {"memwrite", [](Bench& b, const std::string&) { return b.write(0, 0xEF000000, "00 00"); }},
      {"activate", [](Bench& b, const std::string&) { return b.activate(0, 0); }},
      {"imgdnld", [](Bench& b, const std::string& file) { return b.download(0, file); }},
      {"flasherase", [](Bench& b, const std::string&) { return b.erase(0, FLASHERASE_ALL, 0); }},
      {"flashprog", [](Bench& b, const std::string& file) { return b.program(0, file, 0); }},
      {"logcfg", [](Bench& b, const std::string&) { return b.enableLogs(0); }},
      {"logread", [](Bench& b, const std::string&) { return b.logs(0); }},
      {"eventread", [](Bench& b, const std::string&) { return b.event(0); }},
      {"farend", [](Bench& b, const std::string&) { return b.farEnd(0, 1); }},
  };
  for (const auto& each : requests) {
    const std::string toml = fault("request = \"" + std::string(each.request) + "\"\nerrno = \"EREMOTEIO\"");
    Bench bench(toml);
    EXPECT_EQ(each.send(bench, image.path()), "EREMOTEIO") << each.request;
    EXPECT_NE(each.send(bench, image.path()), "EREMOTEIO") << each.request;
  }
}

TEST(Faults, OpeningCanFail) {
  Bench bench("[[fault]]\ndevice = 0\nrequest = \"open\"\nskip = 1\nerrno = \"EACCES\"");
  EXPECT_GE(bench.descriptors[0], 0);
  EXPECT_EQ(bench.board.open(0), -1);
  EXPECT_EQ(errno, EACCES);
  const int again = bench.board.open(0);
  EXPECT_GE(again, 0);
}

#include <gtest/gtest.h>

#include "chip/boot_register.h"
#include "chip/registers.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

struct TracedBench : Bench {
  explicit TracedBench(const std::string& file, const char* toml = "[[device]]\nline = \"showtime\"")
      : Bench(toml) {
    EXPECT_EQ(board.traceRequests(file), 0);
  }
};

}  // namespace

TEST(RequestTrace, HasOneLineForEachRequest) {
  const TempFile trace;
  const TempFile image("12345");
  TracedBench bench(trace.path());
  bench.wait(1.5);
  bench.read(0, SBR_REG_ADDRESS, 4);
  bench.read(1, 0x10, 901);
  bench.write(0, 0xEF000000, "01 02");
  bench.board.open(2);
  bench.board.open(1);
  bench.wait(0.25);
  bench.erase(0, FLASHERASE_64KB, 0x10000);
  bench.program(0, image.path(), 0x10000);
  bench.program(0, "missing", 0x10000);
  bench.download(0, image.path());
  bench.activate(0, ROM_DEFAULT_ENTRY_POINT);
  bench.readFlash(0, 0x10000, 8);
  bench.enableLogs(0);
  bench.logs(0);
  bench.event(0);
  bench.farEnd(1, 4, 64);
  bench.send(0, 12345);
  EXPECT_EQ(trace.content(),
            "1.500000 0 memread 0xe0000238 4 ok\n"
            "1.500000 1 memread 0x00000010 901 EINVAL\n"
            "1.500000 0 memwrite 0xef000000 2 ok\n"
            "1.500000 2 open - 0 ENODEV\n"
            "1.500000 1 open - 0 ok\n"
            "1.750000 0 flasherase 0x00010000 0 ok\n"
            "1.750000 0 flashprog 0x00010000 5 ok\n"
            "1.750000 0 flashprog 0x00010000 0 ENOENT\n"
            "1.750000 0 imgdnld - 5 EBUSY\n"
            "1.750000 0 activate 0xfffffff0 0 EBUSY\n"
            "1.750000 0 flashread 0x00010000 8 ok\n"
            "1.750000 0 logcfg - 0 ok\n"
            "1.750000 0 logread - 0 ok\n"
            "1.750000 0 eventread - 0 ok\n"
            "1.750000 1 farend 0 0 EIO\n"
            "1.750000 0 unknown - 0 ENOTTY\n");
}

TEST(RequestTrace, FaultsShowTheirError) {
  const TempFile trace;
  TracedBench bench(trace.path(), "[[fault]]\ndevice = 0\nrequest = \"memread\"\nerrno = \"EPROTO\"");
  bench.read(0, SBR_REG_ADDRESS, 4);
  EXPECT_EQ(trace.content(), "0.000000 0 memread 0xe0000238 4 EPROTO\n");
}

TEST(RequestTrace, AFileThatCannotBeCreatedIsReported) {
  Bench bench;
  EXPECT_EQ(bench.board.traceRequests("/nonexistent/trace"), ENOENT);
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "00 00 80 01");
}

TEST(RequestTrace, TheBoardWorksOnWithAFullDisk) {
  TracedBench bench("/dev/full");
  for (int i = 0; i < 1000; i++) {
    ASSERT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "00 00 80 01");
  }
}

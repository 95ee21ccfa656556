#include "virtual-board/description/board_file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

TEST(BoardFile, AnEmptyFileDescribesTheUsualBoard) {
  const BoardConfig config = parseBoard("", "board.toml");
  EXPECT_EQ(config.devices, 2);
  EXPECT_EQ(config.seed, 1U);
  EXPECT_EQ(config.loop.cable, "CAD55");
  EXPECT_EQ(config.loop.length_m, 100.0);
  EXPECT_EQ(config.loop.noise_dbm_hz, -140.0);
  EXPECT_TRUE(config.device[0].firmware.networkSide());
  EXPECT_FALSE(config.device[1].firmware.networkSide());
}

TEST(BoardFile, EveryKeyIsRead) {
  const BoardConfig config = parseBoard(R"(
    [board]
    devices = 1
    seed = 9
    [loop]
    cable = "T05b"
    length_m = 250
    noise_dbm_hz = -133.5
    taps = [ { at_m = 40.0, length_m = 5 } ]
    cut = true
    [[device]]
    side = "dp"
    firmware = "3.1.2.3"
    boot = "b1"
    mac = "0a 0b 0c 0d 0e 0f"
    temperature_c = -5
    params = { usMargin = 60, dsMargin = -1 }
    [[device]]
    side = "cpe"
    line = "idle"
    [[farend]]
    line = 1
    request = 5
    errno = "EIO"
    [[fault]]
    device = 0
    request = "farend"
    address = 1
    skip = 2
    count = 3
    errno = "EPIPE"
  )",
                                        "board.toml");
  EXPECT_EQ(config.devices, 1);
  EXPECT_EQ(config.seed, 9U);
  EXPECT_EQ(config.loop.cable, "T05b");
  EXPECT_EQ(config.loop.length_m, 250.0);
  EXPECT_EQ(config.loop.noise_dbm_hz, -133.5);
  ASSERT_EQ(config.loop.taps.size(), 1U);
  EXPECT_EQ(config.loop.taps[0].at_m, 40.0);
  EXPECT_EQ(config.loop.taps[0].length_m, 5.0);
  EXPECT_TRUE(config.loop.cut);
  EXPECT_EQ(config.device[0].firmware.chipset, 3);
  EXPECT_EQ(config.device[0].boot, Stage::kB1);
  EXPECT_EQ(config.device[0].mac[5], 0x0F);
  EXPECT_EQ(config.device[0].temperature_c, -5);
  EXPECT_EQ(config.device[0].params.at(PARAMS_usMargin), fromHex("3c 00"));
  EXPECT_EQ(config.device[0].params.at(PARAMS_dsMargin), fromHex("ff ff"));
  EXPECT_EQ(config.device[1].line, LineState::kIdle);
  EXPECT_EQ(config.farEnd.at(0).error, EIO);
  EXPECT_EQ(config.faults.at(0).address, 1U);
  EXPECT_EQ(config.faults.at(0).skip, 2U);
  EXPECT_EQ(config.faults.at(0).count, 3U);
  EXPECT_EQ(config.faults.at(0).error, EPIPE);
}

TEST(BoardFile, TheExamplesAreBoards) {
  size_t examples = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(BOARD_EXAMPLES)) {
    if (entry.path().extension() == ".toml") {
      EXPECT_NO_THROW(readBoardFile(entry.path().string())) << entry.path();
      examples++;
    }
  }
  EXPECT_GE(examples, 4U);
}

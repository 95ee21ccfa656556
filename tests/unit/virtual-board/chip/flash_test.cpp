#include "virtual-board/chip/flash.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "chip/flash_layout.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr const char* kErased = "ff ff ff ff";

// A board whose flash is erased everywhere.
struct ErasedBench : Bench {
  ErasedBench() { erase(0, FLASHERASE_ALL, 0); }
};

std::string fullOf(size_t length) {
  return std::string(length, '\x55');
}

}  // namespace

TEST(FlashErase, SetsABlockOf64KiB) {
  Bench bench;
  ASSERT_NE(bench.readFlash(0, 0x20000, 4), kErased);
  EXPECT_EQ(bench.erase(0, FLASHERASE_64KB, 0x20000), "ok");
  EXPECT_EQ(bench.readFlash(0, 0x20000, 4), kErased);
  EXPECT_EQ(bench.readFlash(0, 0x2FFFC, 4), kErased);
  EXPECT_NE(bench.readFlash(0, 0x30000, 4), kErased);
  EXPECT_NE(bench.readFlash(0, 0x10000, 4), kErased);
}

TEST(FlashErase, SetsASectorOf4KiB) {
  Bench bench;
  EXPECT_EQ(bench.erase(0, FLASHERASE_4KB, 0x21FFF), "ok");
  EXPECT_EQ(bench.readFlash(0, 0x21000, 4), kErased);
  EXPECT_EQ(bench.readFlash(0, 0x21FFC, 4), kErased);
  EXPECT_NE(bench.readFlash(0, 0x20FFC, 4), kErased);
  EXPECT_NE(bench.readFlash(0, 0x22000, 4), kErased);
}

TEST(FlashErase, SetsWhatWasProgrammedUpToItsEnd) {
  ErasedBench bench;
  const TempFile image(fullOf(0x2800));
  bench.program(0, image.path(), 0x20000);
  EXPECT_EQ(bench.erase(0, FLASHERASE_4KB, 0x22000), "ok");  // its last part
  EXPECT_EQ(bench.readFlash(0, 0x21FFE, 4), "55 55 ff ff");
  EXPECT_EQ(bench.readFlash(0, 0x227FE, 4), kErased);
  EXPECT_EQ(bench.erase(0, FLASHERASE_64KB, 0xF0000), "ok");  // where nothing was ever programmed
  EXPECT_EQ(bench.readFlash(0, 0x21FFE, 4), "55 55 ff ff");
}

TEST(FlashErase, SetsEverythingWhateverTheAddress) {
  Bench bench;
  EXPECT_EQ(bench.erase(0, FLASHERASE_ALL, 0xFFFFFFFF), "ok");
  for (const uint32_t address : {0x00000U, 0x10000U, 0x20000U, 0xFFFFCU}) {
    EXPECT_EQ(bench.readFlash(0, address, 4), kErased) << address;
  }
  EXPECT_NE(bench.readFlash(1, 0, 4), kErased);
}

TEST(FlashErase, RefusesWhatDoesNotExist) {
  Bench bench;
  EXPECT_EQ(bench.erase(0, FLASHERASE_64KB, FLASH_SIZE), "EINVAL");
  EXPECT_EQ(bench.erase(0, FLASHERASE_4KB, 0xFFFFFFFF), "EINVAL");
  EXPECT_EQ(bench.erase(0, 0, 0), "EINVAL");
  EXPECT_EQ(bench.erase(0, 4, 0), "EINVAL");
  EXPECT_EQ(bench.readFlash(0, 0, 4), "47 46 41 53");
}

TEST(FlashProgram, WritesTheFileAtTheAddress) {
  ErasedBench bench;
  const TempFile image(std::string("\x12\x34\x56", 3));
  EXPECT_EQ(bench.program(0, image.path(), 0x20002), "ok");
  EXPECT_EQ(bench.readFlash(0, 0x20000, 8), "ff ff 12 34 56 ff ff ff");
}

TEST(FlashProgram, OnlyClearsBits) {
  ErasedBench bench;
  const TempFile first(std::string("\xF0\x0F", 2));
  const TempFile second(std::string("\x3C\xFF", 2));
  bench.program(0, first.path(), 0x20000);
  bench.program(0, second.path(), 0x20000);
  EXPECT_EQ(bench.readFlash(0, 0x20000, 2), "30 0f");
}

TEST(FlashProgram, AnImageMayFillItsRegion) {
  const struct {
    uint32_t start, end;
  } regions[] = {{0x00000, 0x10000}, {0x10000, 0x20000}, {0x20000, 0x100000}};
  for (const auto& region : regions) {
    ErasedBench bench;
    const TempFile image(fullOf(region.end - region.start));
    EXPECT_EQ(bench.program(0, image.path(), region.start), "ok") << region.start;
    EXPECT_EQ(bench.readFlash(0, region.start, 1), "55");
    EXPECT_EQ(bench.readFlash(0, region.end - 1, 1), "55");
    if (region.end < FLASH_SIZE) {
      EXPECT_EQ(bench.readFlash(0, region.end, 1), "ff");
    }
  }
}

TEST(FlashProgram, AnImageLargerThanItsRegionChangesNothing) {
  const struct {
    uint32_t start, end;
  } regions[] = {{0x00000, 0x10000}, {0x10000, 0x20000}, {0x20000, 0x100000}, {0x1FFFF, 0x20000}};
  for (const auto& region : regions) {
    ErasedBench bench;
    const TempFile image(fullOf(region.end - region.start + 1));
    EXPECT_EQ(bench.program(0, image.path(), region.start), "EFBIG") << region.start;
    EXPECT_EQ(bench.readFlash(0, region.start, 1), "ff");
    EXPECT_EQ(bench.readFlash(0, region.end - 1, 1), "ff");
  }
}

TEST(FlashProgram, AFileThatCannotBeReadChangesNothing) {
  Bench bench;
  const TempFile empty("");
  const TempFile file("x");
  EXPECT_EQ(bench.program(0, file.folder() + "/missing", 0x20000), "ENOENT");
  EXPECT_EQ(bench.program(0, file.path() + "/below", 0x20000), "ENOTDIR");
  EXPECT_EQ(bench.program(0, empty.path(), 0x20000), "ENODATA");
  EXPECT_EQ(bench.program(0, file.folder(), 0x20000), "EISDIR");
  EXPECT_EQ(bench.program(0, "", 0x20000), "ENOENT");
  EXPECT_EQ(bench.program(0, std::string(128, 'n'), 0x20000), "ENAMETOOLONG");
  EXPECT_EQ(bench.program(0, "/dev/zero", 0x20000), "EINVAL");
  if (::geteuid() != 0) {
    ::chmod(file.path().c_str(), 0);
    EXPECT_EQ(bench.program(0, file.path(), 0x20000), "EACCES");
  }
  EXPECT_EQ(bench.readFlash(0, 0x20000, 4), "47 46 41 53");
}

TEST(FlashProgram, APipeDoesNotBlockTheBoard) {
  Bench bench;
  const TempFile place;
  const std::string pipe = place.folder() + "/pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(bench.program(0, pipe, 0x20000), "EINVAL");
  ::unlink(pipe.c_str());
}

TEST(FlashProgram, ANameMayBe127BytesLong) {
  Bench bench;
  EXPECT_EQ(bench.program(0, std::string(127, 'n'), 0x20000), "ENOENT");
}

TEST(FlashProgram, AnAddressOutsideFlashIsRefused) {
  Bench bench;
  const TempFile image("x");
  EXPECT_EQ(bench.program(0, image.path(), FLASH_SIZE), "EINVAL");
  EXPECT_EQ(bench.program(0, image.path(), 0xFFFFFFFF), "EINVAL");
}

TEST(FlashRead, GivesErasedBytesWhereNothingWasProgrammed) {
  ErasedBench bench;
  const TempFile image(fullOf(2));
  bench.program(0, image.path(), 0xF0000);
  EXPECT_EQ(bench.readFlash(0, 0xEFFFE, 6), "ff ff 55 55 ff ff");
  EXPECT_EQ(bench.readFlash(0, 0x10000, 2), "ff ff");
}

TEST(FlashRead, RefusesToReachPastTheEnd) {
  Bench bench;
  EXPECT_EQ(bench.readFlash(0, FLASH_SIZE - 4, 4), kErased);
  EXPECT_EQ(bench.readFlash(0, FLASH_SIZE - 4, 5), "EINVAL");
  EXPECT_EQ(bench.readFlash(0, 0xFFFFFFFF, 2), "EINVAL");
  EXPECT_EQ(bench.readFlash(0, 0, 901), "EINVAL");
}

TEST(FlashDownload, AFileThatCannotBeReadIsRefused) {
  Bench bench("[[device]]\nboot = \"b0\"");
  const TempFile empty("");
  const TempFile large(fullOf(FLASH_SIZE + 1));
  EXPECT_EQ(bench.download(0, "missing-image.bin"), "ENOENT");
  EXPECT_EQ(bench.download(0, empty.path()), "ENODATA");
  EXPECT_EQ(bench.download(0, large.path()), "EFBIG");
  EXPECT_EQ(bench.download(0, std::string(128, 'n')), "ENAMETOOLONG");
}

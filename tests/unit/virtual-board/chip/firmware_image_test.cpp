#include <gtest/gtest.h>

#include "unit/virtual-board/bench.h"
#include "virtual-board/chip/firmware_image.h"

using namespace gfast;
using namespace gfast::board;

namespace {

std::vector<uint8_t> bytes(const std::string& text) {
  return {text.begin(), text.end()};
}

bool runs(const std::string& image) {
  return parseFirmware(bytes(image), FirmwareKind::kApplication).has_value();
}

}  // namespace

TEST(FirmwareImage, ChecksumIsThatOfTheCksumCommand) {
  EXPECT_EQ(cksum(bytes("123456789")), 930766865U);
  EXPECT_EQ(cksum({}), 4294967295U);
}

TEST(FirmwareImage, HeaderNamesVersionAndBuildTime) {
  const auto firmware =
      parseFirmware(bytes("GFAST-IMAGE application 1.9.5.106 2024-05-02T09:15:00 930766865 9\n123456789"),
                    FirmwareKind::kApplication);
  ASSERT_TRUE(firmware);
  EXPECT_EQ(firmware->version.chipset, 1);
  EXPECT_EQ(firmware->version.ga, 9);
  EXPECT_EQ(firmware->version.rc, 5);
  EXPECT_EQ(firmware->version.profile, 106);
  EXPECT_EQ(firmware->date, "May  2 2024");
  EXPECT_EQ(firmware->time, "09:15:00");
}

TEST(FirmwareImage, BytesBehindThePayloadAreIgnored) {
  EXPECT_TRUE(runs("GFAST-IMAGE application 1.9.5.106 2024-05-02T09:15:00 930766865 9\n123456789\xFF\xFF"));
}

TEST(FirmwareImage, AnythingElseIsNoImage) {
  const char* const images[] = {
      "",
      "\n",
      "GFAST-IMAGE application 1.9.5.106 2024-05-02T09:15:00 930766865 9",              // no payload
      "GFAST-IMAGE application 1.9.5.106 2024-05-02T09:15:00 930766865 9\n12345678",    // short
      "GFAST-IMAGE application 1.9.5.106 2024-05-02T09:15:00 930766865 9\n123456780",   // changed
      "GFAST-IMAGE bootloader 1.9.5.106 2024-05-02T09:15:00 930766865 9\n123456789",    // other kind
      "GFAST-IMAGE application 1.9.5 2024-05-02T09:15:00 930766865 9\n123456789",       // version
      "GFAST-IMAGE application 1.9.5.256 2024-05-02T09:15:00 930766865 9\n123456789",   // version
      "GFAST-IMAGE application 1.9.5.106 2024-13-02T09:15:00 930766865 9\n123456789",   // month
      "GFAST-IMAGE application 1.9.5.106 2024-05-02 930766865 9\n123456789",            // time
      "GFAST-IMAGE application 1.9.5.106 2024-05-02T09:15:00 930766865\n123456789",     // length
      "GFAST-IMAGE application 1.9.5.106 2024-05-02T09:15:00 930766865 -9\n123456789",  // length
      "GFAST-IMAGE application 1.9.5.106 2024-05-02T09:15:00 930766865 99999999999999999999999\n1",
      "gfast-image application 1.9.5.106 2024-05-02T09:15:00 930766865 9\n123456789",
  };
  for (const char* image : images) {
    EXPECT_FALSE(runs(image)) << image;
  }
  EXPECT_FALSE(runs(std::string(100000, 'x')));
}

TEST(FirmwareImage, AnImageThatWasMadeCanBeRead) {
  const auto image =
      makeFirmware(FirmwareKind::kBootloader, {2, 0, 255, 7}, "2019-12-31T23:59:59", bytes("payload"));
  const auto firmware = parseFirmware(image, FirmwareKind::kBootloader);
  ASSERT_TRUE(firmware);
  EXPECT_EQ(firmware->date, "Dec 31 2019");
  EXPECT_FALSE(firmware->version.networkSide());
}

TEST(FirmwareImage, TheToolMakesImagesThatRun) {
  const TempFile image;
  const TempFile payload("some code");
  const std::string command = std::string("BUILT=2024-05-02T09:15:00 ") + MAKE_IMAGE +
                              " application 1.2.3.4 " + image.path() + ' ' + payload.path();
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_TRUE(runs(image.content()));
  EXPECT_TRUE(image.content().starts_with("GFAST-IMAGE application 1.2.3.4 2024-05-02T09:15:00 "));
  EXPECT_TRUE(image.content().ends_with("\nsome code"));
}

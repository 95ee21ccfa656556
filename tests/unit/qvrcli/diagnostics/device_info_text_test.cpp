// A device-information image as text.
#include "qvrcli/diagnostics/device_info_text.h"
#include "chip/device_information.h"

#include <cstdio>
#include <numeric>

#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

// Byte i of the image is i, so that every value shows where it comes from.
Bytes countingImage() {
  Bytes image(DEV_INF_SIZE);
  std::iota(image.begin(), image.end(), uint8_t{0});
  return image;
}

const Lines kExpected = {
    "deviceId                                  1",
    "devinfVersion                             00010203",
    "firmwareVersion                           04050607",
    "linkStartupTime[0]                        24252627",
    "link0GhsTime                              80818283",
    "link1GhsTime                              84858687",
    "link2GhsTime                              88898a8b",
    "link3GhsTime                              8c8d8e8f",
    "linkInitlastsignal[0]                     9091 9293",
    "linkInitStatusFailureCause[0]             94959697",
    "temperature                               98999a9b",
    "vendor id                                 9c9d a0a1a2a3 a4a5",
    "",
    "<framerAssertInfo [1.0]>",
    "",
    "numberOfAssertions                        28292a2b",
    "symbolCounter                             a8a9aaab",
    "tbmSymbol                                 acadaeaf",
    "tbmPhase                                  b0b1b2b3",
    "tbmSample                                 b4b5b6b7",
    "assertId                                  2c2d2e2f (741158447)",
    "numParams                                 30313233",
    "assertParam0                              34353637",
    "assertParam1                              38393a3b",
    "assertParam2                              3c3d3e3f",
    "assertParam3                              40414243",
    "assertParam4                              44454647",
    "assertParam5                              48494a4b",
    "assertParam6                              4c4d4e4f",
    "assertParam7                              50515253",
    "",
    "<fduAssertInfo [1.0]>",
    "",
    "numberOfAssertions                        54555657",
    "symbolCounter                             b8b9babb",
    "tbmSymbol                                 bcbdbebf",
    "tbmPhase                                  c0c1c2c3",
    "tbmSample                                 c4c5c6c7",
    "assertId                                  58595a5b (1482250843)",
    "numParams                                 5c5d5e5f",
    "assertParam0                              60616263",
    "assertParam1                              64656667",
    "assertParam2                              68696a6b",
    "assertParam3                              6c6d6e6f",
    "assertParam4                              70717273",
    "assertParam5                              74757677",
    "assertParam6                              78797a7b",
    "assertParam7                              7c7d7e7f",
    "",
    "<cpAssertInfo[1]>",
    "",
    "numberOfAssertions                        c8c9cacb",
    "symbolCounter                             f4f5f6f7",
    "tbmSymbol                                 f8f9fafb",
    "tbmPhase                                  fcfdfeff",
    "tbmSample                                 00010203",
    "assertId                                  cccdcecf (-858927409)",
    "numParams                                 d0d1d2d3",
    "assertParam0                              d4d5d6d7",
    "assertParam1                              d8d9dadb",
    "assertParam2                              dcdddedf",
    "assertParam3                              e0e1e2e3",
    "assertParam4                              e4e5e6e7",
    "assertParam5                              e8e9eaeb",
    "assertParam6                              ecedeeef",
    "assertParam7                              f0f1f2f3",
    " ",
};

using DeviceInfoText = TypedConsole;

TEST_F(DeviceInfoText, ShowsEveryFieldUnswapped) {
  static Lines lines;
  cli_print_callback(interpreter(), [](cli_def*, const char* line) { lines.emplace_back(line); });
  printDeviceInfo(interpreter(), 1, countingImage().data());
  EXPECT_EQ(lines, kExpected);
}

// A session adds a line end behind those of a heading, and a last line of one blank; a file does not.
TEST_F(DeviceInfoText, AFileHoldsTheSameFields) {
  std::string expected;
  for (size_t i = 0; i + 1 < kExpected.size(); i++) {
    const bool behindHeading = i > 0 && kExpected[i].empty() && kExpected[i - 1].starts_with('<');
    expected += behindHeading ? "" : kExpected[i] + "\n";
  }
  FILE* file = std::tmpfile();
  printDeviceInfoToFile(file, 1, countingImage().data());
  std::rewind(file);
  std::string text;
  for (int character = std::fgetc(file); character != EOF; character = std::fgetc(file)) {
    text += static_cast<char>(character);
  }
  std::fclose(file);
  EXPECT_EQ(text, expected);
}

}  // namespace

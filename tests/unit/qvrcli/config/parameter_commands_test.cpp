// The commands that print the firmware's parameters: given this dictionary and these values, these lines are
// printed.
#include "qvrcli/config/parameter_commands.h"
#include "chip/parameter_records.h"

#include "support/chip_identity.h"
#include "support/dictionaries.h"
#include "support/lines.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kParameterAreaSize = 64;

// Parameters of length 2, 4 and others, with and without a display name, per device and per line. Id 1 is
// missing.
std::vector<Entry> dictionary() {
  std::vector<Entry> list(128, Entry{127, 0, 0});
  list[0] = {0, 4, 0};
  list[1] = {1, 0, 0};
  list[2] = {125, 2, 8, CONFIG_TYPE_PER_DEVICE, CONFIG_STATE_LINE};
  list[3] = {PARAMS_cyclicPrefixSize, 2, 10, CONFIG_TYPE_PER_LINE, CONFIG_STATE_LINE};
  list[4] = {PARAMS_reinitQuickDtuIndicationTime, 6, 12, CONFIG_TYPE_PER_LINE, CONFIG_STATE_SYSTEM};
  list[5] = {PARAMS_usMargin, 3, 18};
  return list;
}

class ShownParameters : public TypedConsole {
 protected:
  ShownParameters() {
    enterBothLines();
    expect(opens(0) + readsIdentity(0, {}) + opens(1) + readsIdentity(1, {}));
  }

  void SetUp() override {
    QVR_getDeviceInfo(0, nullptr);
    QVR_getDeviceInfo(1, nullptr);
    verify();
  }

  static Script loads() { return readsDictionary(kParameterAreaSize, dictionary()); }

  // Reads every value once, in the order of ids. A value of an odd length is read with the byte behind it.
  static Script readsValues() {
    return reads(0, kArea, {0x78, 0x56, 0x34, 0x92}) + reads(0, kArea + 18, {1, 2, 0xFF, 9}) +
           reads(0, kArea + 10, {160, 0}) + reads(0, kArea + 12, {0, 1, 2, 0xAB, 0xCD, 0xEF}) +
           reads(0, kArea + 8, {0xFF, 0xFF});
  }
};

const Lines kDictionary{
    "  0   0 ParamsRevision                         0 4 [EB000000]",
    "  5  83 usMargin                              18 3 [EB000012]",
    "  3  87 cyclicPrefixSize                      10 2 [EB00000A]",
    "  4  89 reinitQuickDtuIndicationTime          12 6 [EB00000C]",
    "  2 125 ???                                    8 2 [EB000008]",
};

const Lines kValues{
    "  0 ParamsRevision                       [EB000000] -1842063752 (92345678) SCS device",
    " 83 usMargin                             [EB000012] 01 02 FF  SCS device",
    " 87 cyclicPrefixSize                     [EB00000A] 160 (00A0) LCS line",
    " 89 reinitQuickDtuIndicationTime         [EB00000C] 00 01 02 AB CD EF  SCS line",
    "125 ???                                  [EB000008] 65535 (FFFF) LCS device",
};

TEST_F(ShownParameters, ShowDictionaryListsAllEntries) {
  expect(loads());
  EXPECT_EQ(typed("show dictionary"), kDictionary);
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShownParameters, ShowParamsListsAllValues) {
  expect(loads() + readsValues());
  EXPECT_EQ(typed("show params"), kValues);
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShownParameters, ShowParamsReadsLine0ForAnyLine) {
  expect(loads() + readsValues().times(2));
  EXPECT_EQ(typed("show params 1"), kValues);
  EXPECT_EQ(typed("show params 0"), kValues);
}

TEST_F(ShownParameters, ShowParamsRefusesOtherLineNumbers) {
  for (const char* line : {"show params 2", "show params -1"}) {
    EXPECT_THAT(typed(line), ElementsAre("invalid parameter - line number must be between 0..1"));
    EXPECT_EQ(result(), CLI_OK);
  }
}

TEST_F(ShownParameters, ShowParamsPrintsTheLastValueWhenAReadFails) {
  expect(loads() + readsValues());
  typed("show params");
  expect(reads(0, kArea, Bytes(4)).fails(EIO).times(2) + reads(0, kArea + 18, Bytes(4)).fails(EIO).times(2) +
         reads(0, kArea + 10, Bytes(2)).fails(EIO).times(2) +
         reads(0, kArea + 12, Bytes(6)).fails(EIO).times(2) +
         reads(0, kArea + 8, Bytes(2)).fails(EIO).times(2));
  EXPECT_EQ(typed("show params"), kValues);
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShownParameters, ShowTheLongestValueWhole) {
  expect(readsDictionary(512, {{0, 511, 0}}) + reads(0, kArea, Bytes(512, 0xAB)));
  std::string bytes;
  for (int i = 0; i < 511; i++) {
    bytes += "AB ";
  }
  EXPECT_THAT(typed("show params"),
              ElementsAre("  0 ParamsRevision                       [EB000000] " + bytes + " SCS device"));
}

TEST_F(ShownParameters, PrintNothingWithoutADictionary) {
  expect(reads(0, VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY, Bytes(12)).fails(EIO));
  EXPECT_THAT(typed("show dictionary"), IsEmpty());
  EXPECT_THAT(typed("show params"), IsEmpty());
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShownParameters, CommandsPrintTheirUsage) {
  EXPECT_THAT(typed("show dictionary ?"), ElementsAre("show dictionary"));
  EXPECT_THAT(typed("show params ?"), ElementsAre("show params [<lineId>]"));
  EXPECT_THAT(typed("show params 0 1"), ElementsAre("show params [<lineId>]"));
}

TEST(ParameterName, IsFoundInTheTable) {
  EXPECT_EQ(paramNameToParamId("ParamsRevision"), 0U);
  EXPECT_EQ(paramNameToParamId("bandStart_0"), 22U);
  EXPECT_EQ(paramNameToParamId("fraFirstStepNoRdtFrames"), 122U);
  EXPECT_EQ(paramNameToParamId("???"), 123U);
}

TEST(ParameterName, IsNotFoundWhenSpeltDifferently) {
  for (const char* name : {"paramsrevision", "ParamsRevision ", "", "enableFlowControl", "PARAMS_usMargin"}) {
    EXPECT_EQ(paramNameToParamId(name), 124U) << name;
  }
}

}  // namespace

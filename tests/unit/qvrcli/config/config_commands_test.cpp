// The commands on the whole record of configuration mode: get, save, show and restore.
#include "qvrcli/config/config_commands.h"
#include "chip/boot_register.h"

#include "support/chip_identity.h"
#include "support/dictionaries.h"
#include "support/lines.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kNoLine = "invalid parameter - line number must be between 0..1";
constexpr uint32_t kAreaSize = 8;
constexpr uint32_t kUsMarginOffset = 4;

std::string margin(const std::string& value) {
  return "TARSNRMus                                 " + value;
}

Script readsArea() {
  return reads(0, kArea, Bytes(kAreaSize));
}

// These chips have only one parameter, the upstream margin. It is read from the line's own device.
Script readsConfig(int device, uint16_t usMargin) {
  const auto low = static_cast<uint8_t>(usMargin);
  const auto high = static_cast<uint8_t>(usMargin >> 8);
  return readsArea() + reads(device, kArea + kUsMarginOffset, {low, high});
}

class WholeRecord : public TypedConsole {
 protected:
  WholeRecord() {
    enterBothLines();
    expect(opens(0) + readsIdentity(0, {}) + opens(1) + readsIdentity(1, {}) +
           readsDictionary(kAreaSize, {{0, 0, 0}, {PARAMS_usMargin, 2, kUsMarginOffset}}));
  }

  void SetUp() override {
    QVR_getDeviceInfo(0, nullptr);
    QVR_getDeviceInfo(1, nullptr);
    QVR_initParams();
    verify();
    typed("configure");
  }
};

TEST_F(WholeRecord, GetReadsAndShowsTheLinesConfiguration) {
  expect(readsConfig(0, 60));
  EXPECT_THAT(typed("get"), Contains(margin("60")));
  expect(readsConfig(1, 61));
  EXPECT_THAT(typed("get 1"), Contains(margin("61")));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(WholeRecord, GetOverwritesEdits) {
  typed("TARSNRM us 77");
  EXPECT_THAT(typed("show"), Contains(margin("77")));
  expect(readsConfig(1, 61));
  EXPECT_THAT(typed("get 1"), Contains(margin("61")));
  EXPECT_THAT(typed("show"), Contains(margin("61")));
}

TEST_F(WholeRecord, GetKeepsEditsOfFieldsThatTheChipDoesNotHave) {
  typed("DELAYMAX ds 100");
  expect(readsConfig(0, 60));
  EXPECT_THAT(typed("get"), Contains("DELAYMAXds                                100"));
}

TEST_F(WholeRecord, GetFailsWhenTheAreaCannotBeRead) {
  typed("TARSNRM us 77");
  expect(readsArea().fails(EIO));
  EXPECT_THAT(typed("get"), ElementsAre("QVR_getLineConfig failed"));
  EXPECT_EQ(result(), 1);
  EXPECT_EQ(configParams.noiseMarginProfile.TARSNRMus, 77);
}

TEST_F(WholeRecord, GetAndSaveRefuseOtherLineNumbers) {
  for (const char* line : {"get 2", "get -1", "save 2", "save -1"}) {
    EXPECT_THAT(typed(line), ElementsAre(kNoLine)) << line;
    EXPECT_EQ(result(), CLI_OK);
  }
}

TEST_F(WholeRecord, SaveReadsTheLineTwiceAndKeepsEdits) {
  typed("TARSNRM us 77");
  for (const auto& [line, device] : {std::pair{"save", 0}, std::pair{"save 0", 0}, std::pair{"save 1", 1}}) {
    expect(readsConfig(device, 60).times(2));
    EXPECT_THAT(typed(line), IsEmpty());
    verify();
    EXPECT_THAT(typed("show"), Contains(margin("77")));
  }
}

TEST_F(WholeRecord, SavePrintsNothingWhenTheLineCannotBeRead) {
  expect(readsArea().fails(EIO).times(2));
  EXPECT_THAT(typed("save"), IsEmpty());
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(WholeRecord, RestoreReadsLine0) {
  typed("TARSNRM us 77");
  typed("DELAYMAX ds 100");
  expect(readsConfig(0, 60));
  EXPECT_THAT(typed("restore"), IsEmpty());
  EXPECT_THAT(typed("show"), Contains(margin("60")));
  EXPECT_EQ(configParams.retransmissionProfile.DELAYMAXds, 100U);
}

TEST_F(WholeRecord, FailedRestoreKeepsEdits) {
  typed("TARSNRM us 77");
  expect(readsArea().fails(EIO));
  EXPECT_THAT(typed("restore"), IsEmpty());
  EXPECT_EQ(configParams.noiseMarginProfile.TARSNRMus, 77);
}

TEST_F(WholeRecord, SystemRestartReadsItAgain) {
  typed("TARSNRM us 77");
  typed("exit");
  expect(readsWord(0, SBR_REG_ADDRESS, 0x01808000) + readsConfig(0, 60));
  EXPECT_THAT(typed("restart system T"), IsEmpty());
  EXPECT_EQ(configParams.noiseMarginProfile.TARSNRMus, 60);
}

TEST_F(WholeRecord, RestartOfDevice1ReadsItFromLine0) {
  typed("TARSNRM us 77");
  typed("exit");
  expect(readsWord(1, SBR_REG_ADDRESS, 0).fails(EIO) + readsConfig(0, 60));
  EXPECT_THAT(typed("restart system F 1"), IsEmpty());
  EXPECT_EQ(configParams.noiseMarginProfile.TARSNRMus, 60);
}

TEST_F(WholeRecord, CommandsPrintTheirUsage) {
  EXPECT_THAT(typed("restore ?"), ElementsAre("default-params"));
  EXPECT_THAT(typed("restore 0"), ElementsAre("default-params"));
  EXPECT_THAT(typed("save ?"), ElementsAre("save <line-id>"));
  EXPECT_THAT(typed("save 0 1"), ElementsAre("save <line-id>"));
  EXPECT_THAT(typed("get ?"), ElementsAre("get [<line-id>] : { 0 }"));
  EXPECT_THAT(typed("get 0 1"), ElementsAre("get [<line-id>] : { 0 }"));
}

}  // namespace

// The configuration of a line: which fields are read from which parameters, and which fields stay as they
// were.
#include "qvrfast/line_config.h"

#include <map>

#include "support/records.h"
#include "support/trace_log.h"
#include "unit/sdk/qvrparams/parameters.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kParameters = PARAMS_Last;

uint32_t addressOf(eConstParams parameter) {
  return kArea + parameter * 4;
}

// The parameters that are read for a configuration, in this order.
std::vector<eConstParams> readParameters() {
  std::vector<eConstParams> order{PARAMS_numDownstreamSymbols, PARAMS_cyclicPrefixSize};
  for (uint32_t band = PARAMS_RFIBand_0; band <= PARAMS_RFIBand_15; band++) {
    order.push_back(id(band));
  }
  order.insert(order.end(),
               {PARAMS_IARBands, PARAMS_dsMargin, PARAMS_usMargin, PARAMS_vectoringEnabled,
                PARAMS_vectoringEnabled, PARAMS_disableDsSra, PARAMS_disableUsSra, PARAMS_ds_INP_min_rein,
                PARAMS_us_INP_min_rein, PARAMS_ds_fREIN, PARAMS_us_fREIN, PARAMS_ds_shine_oh,
                PARAMS_us_shine_oh, PARAMS_blUpperLimit, PARAMS_blUpperLimit});
  return order;
}

using Values = std::map<eConstParams, uint32_t>;

class LineConfig : public Parameters {
 protected:
  // Loads a dictionary of all parameters. Each has four bytes, or the length given here, every four bytes.
  void loadAll(const std::map<eConstParams, uint32_t>& lengths = {}) {
    std::vector<Entry> entries;
    for (uint32_t i = 0; i < kParameters; i++) {
      const auto length = lengths.find(id(i));
      entries.push_back({i, length == lengths.end() ? 4 : length->second, i * 4});
    }
    load(kParameters * 4, entries);
  }

  static Script loadsArea() { return reads(0, kArea, Bytes(kParameters * 4)); }

  // Line 0's device returns this value for a parameter of four bytes.
  static Script gives(eConstParams parameter, uint32_t value) {
    return readsWord(0, addressOf(parameter), value);
  }

  static Script readsAll(int device, const Values& values) {
    Script script;
    for (const eConstParams parameter : readParameters()) {
      const auto value = values.find(parameter);
      script = script + readsWord(device, addressOf(parameter), value == values.end() ? 0 : value->second);
    }
    return script;
  }

  QVR_lineConfig_t config(const Values& values) {
    QVR_lineConfig_t read{};
    driver_.expect(loadsArea() + readsAll(0, values));
    EXPECT_EQ(QVR_getLineConfig(0, &read), QVR_E_STATUS_OK);
    return read;
  }

  TraceLog log_;
};

TEST_F(LineConfig, ReadsItsFieldsFromTheParameters) {
  loadAll();
  const QVR_lineConfig_t read = config({{PARAMS_numTxSymbolsInFrame, 23},
                                        {PARAMS_numDownstreamSymbols, 28},
                                        {PARAMS_cyclicPrefixSize, 160},
                                        {PARAMS_RFIBand_3, 0x00C80064},
                                        {PARAMS_RFIBand_15, 0x07B307B2},
                                        {PARAMS_IARBands, 0x80000FFF},
                                        {PARAMS_dsMargin, 60},
                                        {PARAMS_usMargin, 0xFFFF},
                                        {PARAMS_vectoringEnabled, 1},
                                        {PARAMS_disableDsSra, 0},
                                        {PARAMS_disableUsSra, 1},
                                        {PARAMS_ds_INP_min_rein, 4},
                                        {PARAMS_us_INP_min_rein, 5},
                                        {PARAMS_ds_fREIN, 100},
                                        {PARAMS_us_fREIN, 360},
                                        {PARAMS_ds_shine_oh, 6},
                                        {PARAMS_us_shine_oh, 7},
                                        {PARAMS_blUpperLimit, 12}});
  EXPECT_EQ(read.tddProfile.MF, MF_36);
  EXPECT_EQ(read.tddProfile.Mds, 28);
  EXPECT_EQ(read.tddProfile.CE, 10);
  EXPECT_EQ(read.rfiProfile.RFIBANDS[3].startSubcarrierIdx, 100);
  EXPECT_EQ(read.rfiProfile.RFIBANDS[3].stopSubcarrierIdx, 200);
  EXPECT_EQ(read.rfiProfile.RFIBANDS[15].startSubcarrierIdx, 1970);
  EXPECT_EQ(read.rfiProfile.RFIBANDS[15].stopSubcarrierIdx, 1971);
  EXPECT_EQ(read.rfiProfile.RFIBANDS[4].stopSubcarrierIdx, 0);
  EXPECT_EQ(read.rfiProfile.IARBANDS, 0x80000FFFU);
  EXPECT_EQ(read.noiseMarginProfile.TARSNRMds, 60);
  EXPECT_EQ(read.noiseMarginProfile.TARSNRMus, -1);
  EXPECT_EQ(read.vectoringProfile.FEXT_CANCEL_ENABLEds, TRUE);
  EXPECT_EQ(read.vectoringProfile.FEXT_CANCEL_ENABLEus, TRUE);
  EXPECT_EQ(read.sraProfile.SRA_ENABLEds, TRUE);
  EXPECT_EQ(read.sraProfile.SRA_ENABLEus, FALSE);
  EXPECT_EQ(read.retransmissionProfile.INPMIN_REINds, 4);
  EXPECT_EQ(read.retransmissionProfile.INPMIN_REINus, 5);
  EXPECT_EQ(static_cast<uint32_t>(read.retransmissionProfile.IAT_REINds), 100U);
  EXPECT_EQ(static_cast<uint32_t>(read.retransmissionProfile.IAT_REINus), 360U);
  EXPECT_EQ(read.retransmissionProfile.SHINERATIOds, 6);
  EXPECT_EQ(read.retransmissionProfile.SHINERATIOus, 7);
  EXPECT_EQ(read.dataRateProfile.BLUPPERLIMITds, 12);
  EXPECT_EQ(read.dataRateProfile.BLUPPERLIMITus, 12);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

// Clears the fields that are read from parameters.
void clearReadFields(QVR_lineConfig_t& config) {
  config.tddProfile.MF = {};
  config.tddProfile.Mds = config.tddProfile.CE = 0;
  config.rfiProfile = {};
  config.noiseMarginProfile.TARSNRMds = config.noiseMarginProfile.TARSNRMus = 0;
  config.vectoringProfile = {};
  config.sraProfile = {};
  config.retransmissionProfile.INPMIN_REINds = config.retransmissionProfile.INPMIN_REINus = 0;
  config.retransmissionProfile.IAT_REINds = config.retransmissionProfile.IAT_REINus = {};
  config.retransmissionProfile.SHINERATIOds = config.retransmissionProfile.SHINERATIOus = 0;
  config.dataRateProfile.BLUPPERLIMITds = config.dataRateProfile.BLUPPERLIMITus = 0;
}

TEST_F(LineConfig, KeepsFieldsWithoutAParameter) {
  loadAll();
  Values values;
  for (const eConstParams parameter : readParameters()) {
    values[parameter] = 0xFFFFFFFF;
  }
  QVR_lineConfig_t read = config(values);
  EXPECT_EQ(read.tddProfile.Mds, 0xFF);
  clearReadFields(read);
  EXPECT_TRUE(isZero(read));
}

TEST_F(LineConfig, ReadsParametersFromTheLinesDeviceAndTheAreaFromDevice0) {
  loadAll();
  QVR_lineConfig_t read{};
  driver_.expect(loadsArea() + readsAll(1, {{PARAMS_numDownstreamSymbols, 29}}));
  EXPECT_EQ(QVR_getLineConfig(1, &read), QVR_E_STATUS_OK);
  EXPECT_EQ(read.tddProfile.Mds, 29);
}

TEST_F(LineConfig, ReadsNumbersOfTwoBytes) {
  loadAll({{PARAMS_numDownstreamSymbols, 2},
           {PARAMS_cyclicPrefixSize, 2},
           {PARAMS_IARBands, 2},
           {PARAMS_dsMargin, 2},
           {PARAMS_disableDsSra, 2},
           {PARAMS_RFIBand_0, 2},
           {PARAMS_ds_fREIN, 2}});
  const auto gives16 = [](eConstParams parameter, uint16_t value) {
    Bytes bytes(2);
    store_le16(bytes.data(), value);
    return reads(0, addressOf(parameter), bytes);
  };
  driver_.expect(gives16(PARAMS_numDownstreamSymbols, 0x011C) + gives16(PARAMS_cyclicPrefixSize, 320) +
                 gives16(PARAMS_IARBands, 0x1234) + gives16(PARAMS_dsMargin, 0xFF80) +
                 gives16(PARAMS_disableDsSra, 0x0100) + gives16(PARAMS_ds_fREIN, 300));
  uint8_t byte = 0;
  EXPECT_EQ(QVR_getByteParam(0, PARAMS_numDownstreamSymbols, &byte), QVR_E_STATUS_OK);
  EXPECT_EQ(byte, 0x1C);
  EXPECT_EQ(QVR_getCE(0, PARAMS_cyclicPrefixSize, &byte), QVR_E_STATUS_OK);
  EXPECT_EQ(byte, 20);
  uint32_t number = 0xFFFFFFFF;
  EXPECT_EQ(QVR_getLongParam(0, PARAMS_IARBands, &number), QVR_E_STATUS_OK);
  EXPECT_EQ(number, 0x1234U);
  int16_t margin = 0;
  EXPECT_EQ(QVR_getWordParam(0, PARAMS_dsMargin, &margin), QVR_E_STATUS_OK);
  EXPECT_EQ(margin, -128);
  BOOL enabled = 7;
  EXPECT_EQ(QVR_getBoolParam(0, PARAMS_disableDsSra, &enabled), QVR_E_STATUS_OK);
  EXPECT_EQ(enabled, FALSE);
  G9972_IAT_REIN_t rate = IAT_REIN_100Hz;
  EXPECT_EQ(QVR_getIAT_REIN(0, PARAMS_ds_fREIN, &rate), QVR_E_STATUS_OK);
  EXPECT_EQ(rate, IAT_REIN_300Hz);
}

TEST_F(LineConfig, KeepsTheLowBitsOfNumbersOfFourBytes) {
  loadAll();
  driver_.expect(gives(PARAMS_blUpperLimit, 0x12345678) + gives(PARAMS_dsMargin, 0x12345678) +
                 gives(PARAMS_cyclicPrefixSize, 0x00012340));
  uint8_t byte[2] = {0, 0xAA};
  EXPECT_EQ(QVR_getByteParam(0, PARAMS_blUpperLimit, byte), QVR_E_STATUS_OK);
  EXPECT_THAT(byte, ElementsAre(0x78, 0xAA));
  uint16_t word[2] = {0, 0xAAAA};
  EXPECT_EQ(QVR_getWordParam(0, PARAMS_dsMargin, word), QVR_E_STATUS_OK);
  EXPECT_THAT(word, ElementsAre(0x5678, 0xAAAA));
  EXPECT_EQ(QVR_getCE(0, PARAMS_cyclicPrefixSize, byte), QVR_E_STATUS_OK);
  EXPECT_THAT(byte, ElementsAre(0x34, 0xAA));
}

TEST_F(LineConfig, FlagIsOffWhenAnyBitOfItsNumberIsSet) {
  loadAll();
  for (const uint32_t disabled : {1U, 0x8000U, 0x10000U, 0x80000000U}) {
    BOOL on = 7;
    driver_.expect(gives(PARAMS_disableDsSra, disabled));
    EXPECT_EQ(QVR_getBoolParam(0, PARAMS_disableDsSra, &on), QVR_E_STATUS_OK);
    EXPECT_EQ(on, FALSE) << disabled;
  }
}

TEST_F(LineConfig, BandHasSixteenBitsOfEachEdge) {
  loadAll();
  const QVR_lineConfig_t read = config({{PARAMS_RFIBand_2, 0xFEDC9876}});
  EXPECT_EQ(read.rfiProfile.RFIBANDS[2].startSubcarrierIdx, 0x9876);
  EXPECT_EQ(read.rfiProfile.RFIBANDS[2].stopSubcarrierIdx, 0xFEDC);
}

// Each getter that reads one parameter, and the size of its field.
struct Getter {
  QVR_getConfigParam_t get;
  size_t size;
};
constexpr Getter kGetters[] = {{QVR_getCE, 1},        {QVR_getBoolParam, 1}, {QVR_getByteParam, 1},
                               {QVR_getWordParam, 2}, {QVR_getLongParam, 4}, {QVR_getIAT_REIN, 4}};

TEST_F(LineConfig, RefusesParametersOfOtherLengths) {
  loadAll({{id(0), 1}, {id(1), 3}, {id(2), 6}, {id(3), 500}});
  for (const Getter& getter : kGetters) {
    for (uint32_t parameter = 0; parameter <= 3; parameter++) {
      Bytes field(8, 0xAA);
      EXPECT_EQ(getter.get(0, id(parameter), field.data()), QVR_E_ERROR) << parameter;
      EXPECT_EQ(field, Bytes(8, 0xAA)) << parameter;
    }
  }
  G9972_subCarrierIdxRange_t bands[17];
  std::memset(bands, 0xAA, sizeof bands);
  driver_.expect(readsWord(0, kArea + 16, 0x00020001));
  for (uint32_t parameter = 5; parameter < 16; parameter++) {
    driver_.expect(readsWord(0, kArea + parameter * 4, 0));
  }
  EXPECT_EQ(QVR_getRFIBANDS(0, id(0), bands), QVR_E_STATUS_OK);
  EXPECT_EQ(bands[3].stopSubcarrierIdx, 0);
  EXPECT_EQ(bands[4].startSubcarrierIdx, 1);
  EXPECT_EQ(bands[16].startSubcarrierIdx, 0xAAAA);
}

TEST_F(LineConfig, FieldThatCannotBeReadGetsTheValueThatWasReadLast) {
  loadAll();
  for (const Getter& getter : kGetters) {
    Bytes before(8, 0xAA);
    driver_.expect(gives(id(0), 360));
    EXPECT_EQ(getter.get(0, id(0), before.data()), QVR_E_STATUS_OK);
    EXPECT_NE(before, Bytes(8, 0xAA));
    Bytes field(8, 0xAA);
    driver_.expect(gives(id(0), 0).fails(EIO).times(2));
    EXPECT_EQ(getter.get(0, id(0), field.data()), QVR_E_MEMREAD_ERROR);
    EXPECT_EQ(field, before);
  }
}

TEST_F(LineConfig, KeepsAFieldWhoseParameterIsNotInTheDictionary) {
  loadAll({{id(9), 0}});
  for (const Getter& getter : kGetters) {
    Bytes field(8, 0xAA);
    const bool asksTheDictionary = getter.get == QVR_getByteParam || getter.get == QVR_getWordParam;
    EXPECT_EQ(getter.get(0, id(9), field.data()),
              asksTheDictionary ? QVR_E_ERROR : QVR_E_UNSUPPORTED_PARAMETER);
    EXPECT_EQ(field, Bytes(8, 0xAA));
  }
  EXPECT_EQ(log_.lines().size(), 4U);
}

TEST_F(LineConfig, ClearsTheBandsAndReturnsTheResultOfTheLastRead) {
  loadAll();
  G9972_subCarrierIdxRange_t bands[16];
  const auto readBands = [&](uint32_t failing) {
    std::memset(bands, 0xAA, sizeof bands);
    for (uint32_t band = 0; band < 16; band++) {
      const Script read = gives(id(PARAMS_RFIBand_0 + band), 0x00050004);
      driver_.expect(band == failing ? read.fails(EIO).times(2) : read);
    }
    return QVR_getRFIBANDS(0, PARAMS_RFIBand_0, bands);
  };
  log_.lines().clear();
  EXPECT_EQ(readBands(7), QVR_E_STATUS_OK);
  EXPECT_EQ(bands[7].startSubcarrierIdx, 0);
  EXPECT_EQ(bands[8].startSubcarrierIdx, 4);
  EXPECT_EQ(bands[8].stopSubcarrierIdx, 5);
  EXPECT_THAT(log_.lines(), ElementsAre(warns("QVR_getRFIBANDS", "Failed getting parameter 110\n")));
  EXPECT_EQ(readBands(15), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(bands[14].stopSubcarrierIdx, 5);
  EXPECT_EQ(bands[15].stopSubcarrierIdx, 5) << "read last";
}

TEST_F(LineConfig, ConvertsImpulseNoiseRates) {
  loadAll();
  const struct {
    uint32_t hertz;
    G9972_IAT_REIN_t rate;
  } known[] = {{100, IAT_REIN_100Hz}, {120, IAT_REIN_120Hz}, {300, IAT_REIN_300Hz}, {360, IAT_REIN_360Hz}};
  for (const auto& [hertz, rate] : known) {
    auto read = static_cast<G9972_IAT_REIN_t>(9);
    driver_.expect(gives(PARAMS_ds_fREIN, hertz));
    EXPECT_EQ(QVR_getIAT_REIN(0, PARAMS_ds_fREIN, &read), QVR_E_STATUS_OK);
    EXPECT_EQ(read, rate);
  }
  for (const uint32_t other : {0U, 1U, 101U, 240U}) {
    auto read = static_cast<G9972_IAT_REIN_t>(9);
    driver_.expect(gives(PARAMS_ds_fREIN, other));
    EXPECT_EQ(QVR_getIAT_REIN(0, PARAMS_ds_fREIN, &read), QVR_E_STATUS_OK);
    EXPECT_EQ(static_cast<uint32_t>(read), 9U);
  }
}

// ---- Test modes ----

TEST_F(LineConfig, ReadsTestModesInShowtime) {
  driver_.expect(readsIdentity(1, chipWithLine(LS_SHOWTIME)));
  ASSERT_EQ(QVR_getDeviceInfo(1, nullptr), QVR_E_STATUS_OK);
  addLine(1, 1, 0, FALSE);
  driver_.expect(readsWord(1, 0xED010000, 0x01000000) + readsWord(1, 0xED010000, 0) +
                 readsWord(1, 0xED000000, 1) + readsWord(1, 0xED000000, 0));
  for (const QVR_getConfigParam_t getter : {QVR_getRtxTestMode, QVR_getTpsTestMode}) {
    BOOL on = 7;
    EXPECT_EQ(getter(1, id(0), &on), QVR_E_STATUS_OK);
    EXPECT_EQ(on, TRUE);
    EXPECT_EQ(getter(1, id(0), &on), QVR_E_STATUS_OK);
    EXPECT_EQ(on, FALSE);
  }
  driver_.verify();
  BOOL on = 7;
  EXPECT_EQ(QVR_getDraTestMode(1, id(0), &on), QVR_E_STATUS_OK);
  EXPECT_EQ(on, FALSE) << "without a request";
}

TEST_F(LineConfig, KeepsATestModeThatCannotBeRead) {
  driver_.expect(readsIdentity(0, chipWithLine(LS_SHOWTIME)));
  ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
  driver_.expect(readsWord(0, 0xED010000, 1).fails(EIO) + readsWord(0, 0xED000000, 1).fails(EIO));
  for (const QVR_getConfigParam_t getter : {QVR_getRtxTestMode, QVR_getTpsTestMode}) {
    BOOL on = 7;
    EXPECT_EQ(getter(0, id(0), &on), QVR_E_MEMREAD_ERROR);
    EXPECT_EQ(on, 7);
  }
}

TEST_F(LineConfig, TestModesAreFalseOutsideShowtime) {
  for (const G9701_linkState_t state : {LS_IDLE, LS_INIT_TRAIN, LS_DEACTIVATING1}) {
    driver_.expect(readsIdentity(0, chipWithLine(state)));
    ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
    for (const QVR_getConfigParam_t getter : {QVR_getRtxTestMode, QVR_getTpsTestMode, QVR_getDraTestMode}) {
      BOOL on = 7;
      EXPECT_EQ(getter(0, id(0), &on), QVR_E_STATUS_OK);
      EXPECT_EQ(on, FALSE);
    }
  }
}

// ---- The whole record ----

TEST_F(LineConfig, FailsWhenTheAreaCannotBeRead) {
  loadAll();
  QVR_lineConfig_t read{};
  driver_.expect(loadsArea().fails(EIO) + loadsArea().fails(EIO));
  EXPECT_EQ(QVR_getLineConfig(0, &read), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(QVR_setLineConfig(0, &read), QVR_E_MEMREAD_ERROR);
  EXPECT_TRUE(isZero(read));
}

// The read of each field fails in turn; the other fields are still read.
TEST_F(LineConfig, LogsEveryFieldThatCannotBeRead) {
  loadAll();
  const std::vector<eConstParams> order = readParameters();
  for (size_t failing = 0; failing < order.size(); failing++) {
    log_.lines().clear();
    driver_.expect(loadsArea());
    for (size_t i = 0; i < order.size(); i++) {
      const Script read = gives(order[i], 0x00010001);
      driver_.expect(i == failing ? read.fails(EIO).times(2) : read);
    }
    QVR_lineConfig_t config{};
    EXPECT_EQ(QVR_getLineConfig(0, &config), QVR_E_STATUS_OK);
    const bool isBand = order[failing] >= PARAMS_RFIBand_0 && order[failing] <= PARAMS_RFIBand_15;
    std::vector<testing::Matcher<const std::string&>> logged{
        warns(isBand ? "QVR_getRFIBANDS" : "QVR_getLineConfig",
              "Failed getting parameter " + std::to_string(order[failing]) + "\n")};
    if (order[failing] == PARAMS_RFIBand_15) {
      logged.push_back(warns("QVR_getLineConfig", "Failed getting parameter 103\n"));
    }
    EXPECT_THAT(log_.lines(), testing::ElementsAreArray(logged));
    EXPECT_EQ(config.dataRateProfile.BLUPPERLIMITus, 1) << "read for the other direction just before";
    EXPECT_EQ(config.tddProfile.Mds, failing == 0 ? 0 : 1);
  }
}

TEST_F(LineConfig, LogsAParameterThatIsNotInTheDictionaryTwice) {
  load(64, {{0, 4, 0}, {PARAMS_numDownstreamSymbols, 4, 4}});
  log_.lines().clear();
  QVR_lineConfig_t read{};
  std::memset(&read, 0x55, sizeof read);
  driver_.expect(reads(0, kArea, Bytes(64)) + readsWord(0, kArea + 4, 30));
  EXPECT_EQ(QVR_getLineConfig(0, &read), QVR_E_STATUS_OK);
  EXPECT_EQ(read.tddProfile.MF, MF_36);
  EXPECT_EQ(read.tddProfile.Mds, 30);
  EXPECT_EQ(read.tddProfile.CE, 0x55);
  EXPECT_EQ(read.noiseMarginProfile.TARSNRMds, 0x5555);
  EXPECT_THAT(log_.lines(), testing::Contains(warns("QVR_getConfigParam",
                                                    "Parameter with ID=87 not found in dictionary\n")));
  EXPECT_THAT(log_.lines(), testing::Contains(warns("QVR_getLineConfig", "Failed getting parameter 87\n")));
  EXPECT_THAT(log_.lines(), testing::Contains(warns("QVR_getLineConfig", "Failed getting parameter 103\n")));
}

TEST_F(LineConfig, SetReadsAndWritesNothing) {
  loadAll();
  QVR_lineConfig_t wanted{};
  std::memset(&wanted, 0x5A, sizeof wanted);
  driver_.expect(loadsArea() + readsAll(1, {}));
  EXPECT_EQ(QVR_setLineConfig(1, &wanted), QVR_E_STATUS_OK);
}

// ---- Snapshots ----

TEST_F(LineConfig, SavesStateAndConfigurationOfEveryLine) {
  loadAll();
  driver_.expect(readsIdentity(0, chipWithLine(LS_SHOWTIME)) + readsIdentity(1, chipWithLine(LS_SILENT)));
  QVR_getDeviceInfo(0, nullptr);
  QVR_getDeviceInfo(1, nullptr);
  driver_.expect(loadsArea() + readsAll(0, {{PARAMS_blUpperLimit, 11}}) + loadsArea() +
                 readsAll(1, {{PARAMS_blUpperLimit, 12}}));
  EXPECT_EQ(QVR_saveLineConfigState(), QVR_E_STATUS_OK);
  EXPECT_EQ(savedLineDb().savedLineState[0], LS_SHOWTIME);
  EXPECT_EQ(savedLineDb().savedLineState[1], LS_SILENT);
  EXPECT_EQ(savedLineDb().savedLineConfig[0].dataRateProfile.BLUPPERLIMITds, 11);
  EXPECT_EQ(savedLineDb().savedLineConfig[1].dataRateProfile.BLUPPERLIMITds, 12);
  EXPECT_EQ(QVR_restoreSystemConfigState(), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_restoreLineConfigState(), QVR_E_STATUS_OK);
}

TEST_F(LineConfig, StopsSavingAtTheFirstLineThatCannotBeRead) {
  loadAll();
  driver_.expect(readsIdentity(0, chipWithLine(LS_IDLE)) + readsIdentity(1, chipWithLine(LS_SILENT)));
  QVR_getDeviceInfo(0, nullptr);
  QVR_getDeviceInfo(1, nullptr);
  driver_.expect(loadsArea().fails(EIO));
  EXPECT_EQ(QVR_saveLineConfigState(), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(savedLineDb().savedLineState[0], LS_IDLE);
  EXPECT_EQ(savedLineDb().savedLineState[1], 0U);
  driver_.verify();
  driver_.expect(loadsArea() + readsAll(0, {}) + loadsArea().fails(EIO));
  EXPECT_EQ(QVR_saveLineConfigState(), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(savedLineDb().savedLineState[1], LS_SILENT);
}

}  // namespace

// The dictionary of the parameters, from valid and from invalid data of a chip.
#include "qvrparams/dictionary.h"
#include "support/trace_log.h"
#include "unit/sdk/qvrparams/parameters.h"

using namespace gfast;

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::vector<uint32_t>& listed() {
  static auto& ids = *new std::vector<uint32_t>;
  return ids;
}

BOOL listAll(uint32_t index, const QVR_paramInfo_t* entry) {
  EXPECT_EQ(entry->param_id, index);
  listed().push_back(index);
  return TRUE;
}

// The ids of the parameters in the dictionary.
std::vector<uint32_t> ids() {
  listed().clear();
  EXPECT_EQ(QVR_listDictionary(listAll), QVR_E_STATUS_OK);
  return listed();
}

size_t slots() {
  return loadedDictionary().dictionary.numOfEntries();
}

class Dictionary : public Parameters {
 protected:
  TraceLog log_;
};

TEST_F(Dictionary, FillsAllFieldsOfAnEntry) {
  load(64, {{0, 4, 0}, {1, 2, 60, CONFIG_TYPE_PER_LINE, CONFIG_STATE_LINE}});
  const QVR_paramInfo_t* entry = QVR_getParamDictionaryEntry(id(1));
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->param_id, 1U);
  EXPECT_EQ(entry->param_len, 2U);
  EXPECT_EQ(entry->param_offset, 60U);
  EXPECT_EQ(entry->param_config_state, CONFIG_STATE_LINE);
  EXPECT_EQ(entry->param_config_type, CONFIG_TYPE_PER_LINE);
  EXPECT_EQ(entry->param_address, kArea + 60);
  EXPECT_EQ(entry->param_entry, 1U);
  EXPECT_EQ(QVR_paramConfigState(id(0)), CONFIG_STATE_SYSTEM);
  EXPECT_EQ(QVR_paramConfigState(id(1)), CONFIG_STATE_LINE);
  EXPECT_EQ(QVR_paramConfigState(id(2)), CONFIG_STATE_SYSTEM);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(Dictionary, ReadsTypeAndStateSeparately) {
  load(64, {{0, 4, 0, CONFIG_TYPE_PER_LINE, CONFIG_STATE_SYSTEM},
            {1, 4, 4, CONFIG_TYPE_PER_DEVICE, CONFIG_STATE_LINE}});
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0))->param_config_type, CONFIG_TYPE_PER_LINE);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0))->param_config_state, CONFIG_STATE_SYSTEM);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(1))->param_config_type, CONFIG_TYPE_PER_DEVICE);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(1))->param_config_state, CONFIG_STATE_LINE);
  EXPECT_EQ(QVR_paramConfigState(id(0)), CONFIG_STATE_SYSTEM);
  EXPECT_EQ(QVR_paramConfigState(id(1)), CONFIG_STATE_LINE);
}

TEST_F(Dictionary, IgnoresWordsOfLength0) {
  load(64, {{0, 4, 0},
            {1, 4, 4},
            {2, 4, 8},
            {3, 4, 12},
            {4, 4, 16},
            {5, 0, 20},
            {6, 4, 24},
            {7, 4, 28},
            {8, 4, 32},
            {9, 4, 36}});
  EXPECT_EQ(slots(), 10U);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(5)), nullptr);
  EXPECT_THAT(ids(), ElementsAre(0, 1, 2, 3, 4, 6, 7, 8, 9));
}

TEST_F(Dictionary, IsListedInTheOrderOfIds) {
  load(64, {{2, 4, 0}, {0, 4, 4}, {1, 4, 8}});
  EXPECT_THAT(ids(), ElementsAre(0, 1, 2));
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(2))->param_entry, 0U);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(1))->param_entry, 2U);
}

TEST_F(Dictionary, StopsListingWhenTheHandlerReturnsFalse) {
  load(64, {{0, 4, 0}, {1, 4, 4}});
  listed().clear();
  const auto first = [](uint32_t index, const QVR_paramInfo_t*) -> BOOL {
    listed().push_back(index);
    return FALSE;
  };
  EXPECT_EQ(QVR_listDictionary(first), QVR_E_STATUS_OK);
  EXPECT_THAT(listed(), ElementsAre(0));
}

TEST_F(Dictionary, IsReadOnlyOnce) {
  driver_.expect(readsDictionary(64, {{0, 4, 8}}));
  EXPECT_THAT(ids(), ElementsAre(0));
  driver_.verify();
  EXPECT_EQ(QVR_initParams(), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0))->param_offset, 8U);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(1)), nullptr);
  EXPECT_EQ(QVR_getParamDictionaryEntry(PARAMS_Last), nullptr);
}

TEST_F(Dictionary, HoldsAllParameters) {
  std::vector<Entry> all;
  for (uint32_t i = 0; i < PARAMS_Last; i++) {
    all.push_back({i, 4, i * 4});
  }
  load(PARAMS_Last * 4, all);
  EXPECT_EQ(ids().size(), 130U);
  EXPECT_EQ(QVR_getParamDictionaryEntry(PARAMS_usRsRedundancy)->param_address, kArea + 129 * 4);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(Dictionary, MayBeEmpty) {
  driver_.expect(readsHeader(kArea, 64, 0) + reads(0, kEntries, {}));
  EXPECT_EQ(QVR_initParams(), QVR_E_STATUS_OK);
  EXPECT_EQ(slots(), 0U);
  EXPECT_THAT(ids(), IsEmpty());
  uint32_t value = 7;
  EXPECT_EQ(QVR_getConfigParam(0, id(0), &value), QVR_E_UNSUPPORTED_PARAMETER);
}

// Every operation that needs the dictionary fails with the code of its first load, and does not read it
// again.
void expectEveryOperationFails(QVR_retval_t failure) {
  uint32_t value = 7;
  QVR_lineConfig_t config{};
  EXPECT_EQ(QVR_initParams(), failure);
  EXPECT_EQ(QVR_getConfigParam(0, id(0), &value), failure);
  EXPECT_EQ(QVR_setConfigParam(0, id(0), &value), failure);
  EXPECT_EQ(QVR_loadConfigParams(0), failure);
  EXPECT_EQ(QVR_saveConfigParams(0), failure);
  EXPECT_EQ(QVR_getLineConfig(0, &config), failure);
  EXPECT_EQ(QVR_setLineConfig(0, &config), failure);
  EXPECT_EQ(QVR_saveLineConfigState(), failure);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0)), nullptr);
  EXPECT_EQ(QVR_paramConfigState(id(0)), CONFIG_STATE_SYSTEM);
  listed().clear();
  EXPECT_EQ(QVR_listDictionary(listAll), QVR_E_ERROR);
  EXPECT_THAT(listed(), IsEmpty());
  EXPECT_EQ(value, 7U);
}

TEST_F(Dictionary, IsNotReadAgainAfterAFailedHeader) {
  driver_.expect(readsHeader(kArea, 64, 4).fails(EIO));
  expectEveryOperationFails(QVR_E_MEMREAD_ERROR);
}

TEST_F(Dictionary, ReadsItsEntriesAgainAtTheNextUse) {
  driver_.expect(readsDictionary(64, {{0, 4, 8}}).fails(EIO));
  EXPECT_EQ(QVR_initParams(), QVR_E_MEMREAD_ERROR);
  driver_.expect(readsEntries({{0, 4, 8}}));
  EXPECT_THAT(ids(), ElementsAre(0));
  driver_.expect(readsWord(0, kArea + 8, 77));
  uint32_t value = 0;
  EXPECT_EQ(QVR_getConfigParam(0, id(0), &value), QVR_E_STATUS_OK);
  EXPECT_EQ(value, 77U);
}

// 300 words are read in pieces of 225 and 75.
TEST_F(Dictionary, UsesTheEntriesThatWereReadUntilAllAre) {
  std::vector<Entry> entries;
  for (uint32_t i = 0; i < 300; i++) {
    entries.push_back({i, 2, i * 2});
  }
  driver_.expect(readsDictionary(600, entries).fails(EIO));
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0)), nullptr);
  driver_.expect(readsEntries(entries).fails(EIO));
  EXPECT_EQ(ids().size(), 225U);
  driver_.expect(readsEntries(entries).fails(EIO));
  const QVR_paramInfo_t* kept = QVR_getParamDictionaryEntry(id(224));
  ASSERT_NE(kept, nullptr);
  driver_.expect(readsEntries(entries));
  EXPECT_EQ(ids().size(), 300U);
  EXPECT_EQ(kept->param_offset, 448U);
  EXPECT_THAT(log_.lines(), Not(Contains(HasSubstr("words for"))));
}

TEST(DictionaryOfNoDevice, IsNotReadAgain) {
  ExpectedRequests driver(opens(0).fails(ENOENT));
  enterBothLines();
  expectEveryOperationFails(QVR_E_DEVICE_NOT_EXISTS);
}

// ---- Invalid data ----

TEST_F(Dictionary, RejectsEntriesOutsideTheArea) {
  load(64, {{0, 4, 60}, {1, 4, 62}, {2, 2, 62}, {3, 511, 2047}, {4, 65, 0}});
  EXPECT_THAT(ids(), ElementsAre(0, 2));
  EXPECT_THAT(log_.lines(),
              ElementsAre(warns("fillSlot", "Parameter with ID=1 leaves the parameter area .*\n"),
                          warns("fillSlot", "Parameter with ID=3 leaves the parameter area .*\n"),
                          warns("fillSlot", "Parameter with ID=4 leaves the parameter area .*\n")));
}

TEST_F(Dictionary, UsesOnlyAsManyWordsAsItHasSlots) {
  load(64, {{0, 4, 0}, {0, 2, 8}});
  // The highest id is 0, so there is one slot and only one word is used.
  EXPECT_EQ(slots(), 1U);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0))->param_offset, 0U);
  EXPECT_THAT(log_.lines(), ElementsAre(warns("fillSlots", "Dictionary has 2 words for 1 parameters\n")));
}

TEST_F(Dictionary, LogsAnIdThatComesTwiceAndUsesTheLaterEntry) {
  load(64, {{0, 4, 0}, {0, 2, 8}, {2, 4, 12}});
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0))->param_offset, 8U);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0))->param_entry, 1U);
  EXPECT_THAT(ids(), ElementsAre(0, 2));
  EXPECT_THAT(log_.lines(),
              ElementsAre(warns("fillSlot", "Parameter with ID=0 is more than once in dictionary\n")));
}

TEST_F(Dictionary, AcceptsFewerWordsThanSlots) {
  load(64, {{0, 4, 0}, {1023, 4, 4}});
  EXPECT_EQ(slots(), 1024U);
  EXPECT_THAT(ids(), ElementsAre(0, 1023));
  EXPECT_THAT(log_.lines(), ElementsAre(warns("fillSlots", "Dictionary has 2 words for 1024 parameters\n")));
}

TEST_F(Dictionary, IgnoresAnUnusedHighestId) {
  // An unused slot has every bit set, so its id is 1023.
  load(64, {{0, 4, 0}, {1023, 0, 0}});
  EXPECT_EQ(slots(), 1024U);
  EXPECT_THAT(ids(), ElementsAre(0));
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(1023)), nullptr);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(1024)), nullptr);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0xFFFFFFFF)), nullptr);
}

TEST_F(Dictionary, LimitsItsSizeToOneWordPerId) {
  Bytes list(4096);
  store_le32(list.data(), 0x00001000);  // id 0, 4 bytes at 0
  driver_.expect(readsHeader(kArea, 64, 0xFFFFFFFC) + readsInPieces(0, kEntries, list));
  EXPECT_EQ(QVR_initParams(), QVR_E_STATUS_OK);
  EXPECT_THAT(ids(), ElementsAre(0));
  EXPECT_THAT(log_.lines(),
              ElementsAre(warns("believedSize",
                                "Size of the dictionary is too large \\(4294967292\\), taken as 4096\n"),
                          warns("fillSlots", "Dictionary has 1024 words for 1 parameters\n")));
}

TEST_F(Dictionary, UsesTheWholeWordsOfAnOddSize) {
  Bytes list = entryWords({{0, 4, 0}, {1, 4, 4}});
  list.insert(list.end(), {0xFF, 0xFF});
  driver_.expect(readsHeader(kArea, 64, 9) + reads(0, kEntries, list));
  EXPECT_EQ(QVR_initParams(), QVR_E_STATUS_OK);
  EXPECT_THAT(ids(), ElementsAre(0, 1));
  EXPECT_THAT(log_.lines(),
              ElementsAre(warns("believedSize", "Size of the dictionary is not a multiple of 4 \\(9\\)\n")));
}

TEST_F(Dictionary, IsEmptyForASizeBelowOneWord) {
  driver_.expect(readsHeader(kArea, 64, 3) + reads(0, kEntries, {0, 0x10, 0, 0}));
  EXPECT_EQ(QVR_initParams(), QVR_E_STATUS_OK);
  EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(Dictionary, LimitsTheAreaToWhatEntriesCanReach) {
  driver_.expect(readsHeader(kArea, 0xFFFFFFFC, 4) + reads(0, kEntries, entryWords({{0, 511, 2047}})));
  EXPECT_EQ(QVR_initParams(), QVR_E_STATUS_OK);
  EXPECT_THAT(ids(), ElementsAre(0));
  EXPECT_THAT(
      log_.lines(),
      ElementsAre(warns("believedSize",
                        "Size of the parameter area is too large \\(4294967292\\), taken as 2558\n")));
  driver_.verify();
  driver_.expect(readsInPieces(0, kArea, Bytes(2558)));
  EXPECT_EQ(QVR_loadConfigParams(0), QVR_E_STATUS_OK);
}

TEST_F(Dictionary, AcceptsTheLargestArea) {
  load(0x10000, {{0, 4, 0}});
  EXPECT_THAT(log_.lines(), IsEmpty());
  driver_.expect(readsInPieces(0, kArea, Bytes(0x10000)));
  EXPECT_EQ(QVR_loadConfigParams(0), QVR_E_STATUS_OK);
}

TEST_F(Dictionary, IsEmptyForAnEmptyArea) {
  load(0, {{0, 4, 0}, {1, 0, 0}});
  EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(Dictionary, WrapsAddressesAround) {
  driver_.expect(readsHeader(0xFFFFFFFE, 64, 4) + reads(0, kEntries, entryWords({{0, 4, 4}})));
  EXPECT_EQ(QVR_initParams(), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0))->param_address, 2U);
  uint32_t value = 0;
  driver_.expect(readsWord(0, 2, 0x01020304));
  EXPECT_EQ(QVR_getConfigParam(0, id(0), &value), QVR_E_STATUS_OK);
  EXPECT_EQ(value, 0x01020304U);
}

// ---- Names ----

TEST(ParameterNames, MatchTheEnumeration) {
  EXPECT_STREQ(QVR_paramName(PARAMS_ParamsRevision), "ParamsRevision");
  EXPECT_STREQ(QVR_paramName(id(22)), "bandStart_0");
  EXPECT_STREQ(QVR_paramName(id(37)), "flatDecrease_7");
  EXPECT_STREQ(QVR_paramName(id(38)), "saturation_0");
  EXPECT_STREQ(QVR_paramName(id(46)), "isFlatDecrease");
  EXPECT_STREQ(QVR_paramName(PARAMS_maxGarunteedRate), "maxGarunteedRate");
  EXPECT_STREQ(QVR_paramName(id(80)), "disableUsSra");
  EXPECT_STREQ(QVR_paramName(id(102)), "IARBands");
  EXPECT_STREQ(QVR_paramName(id(118)), "RFIBand_15");
  EXPECT_STREQ(QVR_paramName(id(122)), "fraFirstStepNoRdtFrames");
}

TEST(ParameterNames, AreQuestionMarksBeyondTheTable) {
  for (const uint32_t nameless : {123U, 124U, 129U, 130U, 1023U}) {
    EXPECT_STREQ(QVR_paramName(id(nameless)), "???");
  }
}

TEST(ParameterIds, HaveTheFirmwaresNumbers) {
  EXPECT_EQ(PARAMS_bandStart_0, 22U);
  EXPECT_EQ(PARAMS_flatDecrease_0, 30U);
  EXPECT_EQ(PARAMS_saturation_7, 45U);
  EXPECT_EQ(PARAMS_disableDsSra, 81U);
  EXPECT_EQ(PARAMS_vectoringEnabled, 82U);
  EXPECT_EQ(PARAMS_usMargin, 83U);
  EXPECT_EQ(PARAMS_dsMargin, 84U);
  EXPECT_EQ(PARAMS_blUpperLimit, 91U);
  EXPECT_EQ(PARAMS_us_shine_oh, 93U);
  EXPECT_EQ(PARAMS_us_INP_min_rein, 94U);
  EXPECT_EQ(PARAMS_us_fREIN, 95U);
  EXPECT_EQ(PARAMS_ds_shine_oh, 96U);
  EXPECT_EQ(PARAMS_ds_INP_min_rein, 97U);
  EXPECT_EQ(PARAMS_ds_fREIN, 98U);
  EXPECT_EQ(PARAMS_RFIBand_0, 103U);
  EXPECT_EQ(PARAMS_usRsRedundancy, 129U);
}

}  // namespace

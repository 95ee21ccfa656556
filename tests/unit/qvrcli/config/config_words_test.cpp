// The words that edit a line configuration: given this line, this field changes and no other one does.
#include <array>
#include <cstring>
#include <functional>
#include <limits>

#include "qvrcli/config/config_commands.h"
#include "qvrcli/config/config_words.h"
#include "support/vocabulary.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kNoDirection = "invalid parameter - must enter ds or us";
constexpr const char* kNoFlag = "invalid parameter - must enter T or F";
constexpr const char* kNoRise = "invalid value - stop value must be greater than start value";
constexpr const char* kNoIndex = "invalid parameter - must enter a value between 0..1";

using Config = QVR_lineConfig_t;

// In configuration mode, with a record in which all bytes are the same.
class ConfigWords : public TypedConsole {
 protected:
  ConfigWords() { typed("configure"); }

  void SetUp() override { fill(0x5A); }

  void fill(int byte) {
    std::memset(static_cast<void*>(&configParams), byte, sizeof configParams);
    expected_ = configParams;
  }

  bool onlyExpectedChanged() const { return std::memcmp(&expected_, &configParams, sizeof expected_) == 0; }

  // The line prints nothing and makes this change to the record, and no other one.
  template <typename Change>
  void expectChange(const std::string& line, const Change& change) {
    for (const int byte : {0x5A, 0xA5}) {
      fill(byte);
      change(expected_);
      EXPECT_THAT(typed(line), IsEmpty()) << line;
      EXPECT_TRUE(onlyExpectedChanged()) << line << " over " << byte;
    }
    EXPECT_EQ(result(), CLI_OK);
  }

  void expectRefusal(const std::string& line, const std::string& text) {
    fill(0x5A);
    EXPECT_THAT(typed(line), ElementsAre(text)) << line;
    EXPECT_TRUE(onlyExpectedChanged()) << line;
    EXPECT_EQ(result(), CLI_OK);
  }

  Config expected_{};
};

// A word that takes one number: its range, its refusal, and what it stores.
struct NumberWord {
  const char* keyword;
  int64_t low;
  int64_t high;
  const char* refusal;
  std::function<void(Config&, int64_t)> storeDs;  // also without a direction
  std::function<void(Config&, int64_t)> storeUs;  // empty without a direction
};

#define STORES(field) \
  [](Config& config, int64_t value) { config.field = static_cast<decltype(config.field)>(value); }
#define BOTH(field) STORES(field##ds), STORES(field##us)
#define NUMBER(text) "invalid parameter - must enter value between " text
#define A_NUMBER(text) "invalid parameter - must enter a value between " text

const NumberWord kNumbers[] = {
    {"TARSNRM", 0, 310, NUMBER("0..310"), BOTH(noiseMarginProfile.TARSNRM)},
    {"TARSNRM_RMC", 0, 310, NUMBER("0..310"), BOTH(noiseMarginProfile.TARSNRM_RMC)},
    {"MINSNRM_RMC", 0, 310, NUMBER("0..310"), BOTH(noiseMarginProfile.MINSNRM_RMC)},
    {"MAXBL_RMC", 0, 14, NUMBER("2..6"), STORES(noiseMarginProfile.MAXBL_RMCus),
     STORES(noiseMarginProfile.MAXBL_RMCus)},
    {"INPMIN_SHINE", 0, 520, NUMBER("0..520"), BOTH(retransmissionProfile.INPMIN_SHINE)},
    {"INPMIN_REIN", 0, 63, NUMBER("0..63"), BOTH(retransmissionProfile.INPMIN_REIN)},
    {"IAT_REIN", 0, 3, NUMBER("0..3"), BOTH(retransmissionProfile.IAT_REIN)},
    {"SHINERATIO", 0, 310, NUMBER("0..310"), BOTH(retransmissionProfile.SHINERATIO)},
    {"RNRATIO", 0, 8, NUMBER("0..8"), BOTH(retransmissionProfile.RNRATIO)},
    {"ACEMODE", 0, 1, NUMBER("0..1"), STORES(aceConfigProfile.ACEMODE), {}},
    {"ACEP2N2", 0, 1, NUMBER("0..1"), STORES(aceConfigProfile.ACEP2N2), {}},
    {"ALLOWACEON", 0, 1, NUMBER("0..1"), STORES(aceConfigProfile.ALLOWACEON), {}},
    {"Mds", 10, 32, "invalid line number - Mds must be between 10..32", STORES(tddProfile.Mds), {}},
    {"IARBANDS", 0, 4095, A_NUMBER("0..4095"), STORES(rfiProfile.IARBANDS), {}},
    {"UPBOPSDA", 0, 4095, A_NUMBER("0..4095"), STORES(upboProfile.UPBOPSDA), {}},
    {"UPBOPSDB", 0, 4095, A_NUMBER("0..4095"), STORES(upboProfile.UPBOPSDB), {}},
    {"UPBOKL", 0, 1280, A_NUMBER("0..1280"), STORES(upboProfile.UPBOKL), {}},
    {"BLUPPERLIMIT", 0, 14, NUMBER("0..310"), BOTH(dataRateProfile.BLUPPERLIMIT)},
    {"DELAYMAX", 4, 252, NUMBER("4..252"), BOTH(retransmissionProfile.DELAYMAX)},
    {"MAXSNRM", 0, 511, NUMBER("0..511"), STORES(noiseMarginProfile.MAXSNRMus),
     STORES(noiseMarginProfile.MAXSNRMus)},
    {"MINSNRM", 0, 310, NUMBER("0..310"), BOTH(noiseMarginProfile.MINSNRM)},
    {"SRA_USNRM", 0, 310, NUMBER("0..310"), BOTH(noiseMarginProfile.SRA_USNRM)},
    {"SRA_UTIME", 0, 16383, NUMBER("0..16383"), BOTH(noiseMarginProfile.SRA_UTIME)},
    {"SRA_DSNRM", 0, 310, NUMBER("0..310"), BOTH(noiseMarginProfile.SRA_DSNRM)},
    {"SRA_DTIME", 0, 16383, NUMBER("0..16383"), BOTH(noiseMarginProfile.SRA_DTIME)},
    {"FRA_TIME", 1, 8, NUMBER("1..8"), BOTH(fastRateAdaptationProfile.FRA_TIME)},
    {"FRA_NTONES", 0, 100, NUMBER("0..100"), BOTH(fastRateAdaptationProfile.FRA_NTONES)},
    {"FRA_RTXUC", 0, 1023, NUMBER("0..1023"), BOTH(fastRateAdaptationProfile.FRA_RTXUC)},
    {"REINIT_TIME_THRESHOLD", 5, 31, NUMBER("5, 31"), BOTH(reinitPolicyProfile.REINIT_TIME_THRESHOLD)},
    {"LOW_ETR_THRESHOLD", 0, 30, NUMBER("0..30"), BOTH(reinitPolicyProfile.LOW_ETR_THRESHOLD)},
    {"LOS_PERSISTENCY", 1, 20, NUMBER("0..30"), BOTH(reinitPolicyProfile.LOS_PERSISTENCY)},
    {"LOM_PERSISTENCY", 2, 20, NUMBER("2..20"), BOTH(reinitPolicyProfile.LOM_PERSISTENCY)},
    {"LOR_PERSISTENCY", 1, 20, NUMBER("0..30"), BOTH(reinitPolicyProfile.LOR_PERSISTENCY)},
    {"MAXATP", -310, 310, NUMBER("-310..310"), BOTH(lineSpectrumProfile.MAXATP)},
    {"DTA_MODE", 0, 2, NUMBER("0..2"), STORES(dtaProfile.DTA_MODE), {}},
    {"MINMds", 5, 30, "MINMds must be between 5..30", STORES(dtaProfile.MINMds), {}},
    {"MAXMds", 5, 30, "MAXMds must be between 5..30", STORES(dtaProfile.MAXMds), {}},
    {"cDTA_MAXMds", 5, 30, "cDTA_MAXMds must be between 8..30", STORES(dtaProfile.cDTA_MAXMds), {}},
    {"cDTA_MINMds", 5, 30, "cDTA_MINMds must be between 8..30", STORES(dtaProfile.cDTA_MINMds), {}},
};

// A word that takes T or F.
struct FlagWord {
  const char* keyword;
  std::function<void(Config&, int64_t)> storeDs;
  std::function<void(Config&, int64_t)> storeUs;
};

const FlagWord kFlags[] = {
    {"RTX_TESTMODE", BOTH(retransmissionProfile.RTX_TESTMODE)},
    {"TPS_TESTMODE", STORES(dataPathConfigProfile.TPS_TESTMODE), {}},
    {"DRA_TESTMODE", STORES(dataPathConfigProfile.DRA_TESTMODE), {}},
    {"FEXT_CANCEL_ENABLE", BOTH(vectoringProfile.FEXT_CANCEL_ENABLE)},
    {"SRA_ENABLE", BOTH(sraProfile.SRA_ENABLE)},
    {"UPBOKLF", STORES(upboProfile.UPBOKLF), {}},
    {"FRA_VENDISC", BOTH(fastRateAdaptationProfile.FRA_VENDISC)},
    {"cDTA_ENABLE", STORES(dtaProfile.cDTA_ENABLE), {}},
};

// The words that take every number of 32 bits.
const FlagWord kUnsignedNumbers[] = {
    {"MAXNDR", BOTH(dataRateProfile.MAXNDR)},
    {"MINETR", BOTH(dataRateProfile.MINETR)},
};

using Store = std::function<void(Config&, int64_t)>;

// A word with each direction that it takes, and what it then stores.
std::vector<std::pair<std::string, Store>> ways(const std::string& keyword, const Store& ds,
                                                const Store& us) {
  if (!us) {
    return {{keyword + " ", ds}};
  }
  return {{keyword + " ds ", ds}, {keyword + " DS ", ds}, {keyword + " us ", us}, {keyword + " US ", us}};
}

TEST_F(ConfigWords, StoreNumbersInTheirRange) {
  for (const NumberWord& row : kNumbers) {
    for (const auto& [command, store] : ways(row.keyword, row.storeDs, row.storeUs)) {
      for (const int64_t value : {row.low, row.high, (row.low + row.high) / 2}) {
        expectChange(command + std::to_string(value),
                     [&store = store, value](Config& config) { store(config, value); });
      }
    }
  }
}

TEST_F(ConfigWords, RefuseNumbersOutsideTheirRange) {
  for (const NumberWord& row : kNumbers) {
    for (const auto& [command, store] : ways(row.keyword, row.storeDs, row.storeUs)) {
      expectRefusal(command + std::to_string(row.low - 1), row.refusal);
      expectRefusal(command + std::to_string(row.high + 1), row.refusal);
      expectRefusal(command + "99999999999", row.refusal);
    }
  }
}

TEST_F(ConfigWords, RefuseTextWithoutANumber) {
  for (const NumberWord& row : kNumbers) {
    for (const auto& [command, store] : ways(row.keyword, row.storeDs, row.storeUs)) {
      expectRefusal(command + "many", row.refusal);
      expectRefusal(command + "\"\"", row.refusal);
    }
  }
  for (const FlagWord& row : kUnsignedNumbers) {
    for (const auto& [command, store] : ways(row.keyword, row.storeDs, row.storeUs)) {
      expectRefusal(command + "many", NUMBER("0..4294967295"));
      expectRefusal(command + "\"\"", NUMBER("0..4294967295"));
    }
  }
}

TEST_F(ConfigWords, IgnoreTextBehindANumber) {
  expectChange("TARSNRM us 60dB", [](Config& config) { config.noiseMarginProfile.TARSNRMus = 60; });
}

TEST_F(ConfigWords, StoreEveryUnsignedNumber) {
  for (const FlagWord& row : kUnsignedNumbers) {
    for (const auto& [command, store] : ways(row.keyword, row.storeDs, row.storeUs)) {
      for (const int64_t value : {int64_t{0}, int64_t{1}, int64_t{4294967295}}) {
        expectChange(command + std::to_string(value),
                     [&store = store, value](Config& config) { store(config, value); });
      }
    }
  }
}

TEST_F(ConfigWords, WrapOrLimitUnsignedNumbers) {
  // A number below the range wraps around, one above it becomes the highest.
  for (const char* word : {"-1", "4294967296"}) {
    expectChange(std::string("MAXNDR ds ") + word,
                 [](Config& config) { config.dataRateProfile.MAXNDRds = 4294967295; });
  }
}

TEST_F(ConfigWords, StoreFlags) {
  for (const FlagWord& row : kFlags) {
    for (const auto& [command, store] : ways(row.keyword, row.storeDs, row.storeUs)) {
      for (const char* word : {"t", "T"}) {
        expectChange(command + word, [&store = store](Config& config) { store(config, TRUE); });
      }
      for (const char* word : {"f", "F"}) {
        expectChange(command + word, [&store = store](Config& config) { store(config, FALSE); });
      }
      for (const char* word : {"1", "0", "true", "TT", "\"\""}) {
        expectRefusal(command + word, kNoFlag);
      }
    }
  }
}

TEST_F(ConfigWords, NarrowNumbersToTheField) {
  expectChange("SHINERATIO ds 300", [](Config& config) { config.retransmissionProfile.SHINERATIOds = 44; });
  expectChange("MAXATP us -310", [](Config& config) { config.lineSpectrumProfile.MAXATPus = -310; });
}

TEST_F(ConfigWords, StoreSomeMaximaUpstreamInBothDirections) {
  expectChange("MAXBL_RMC ds 5", [](Config& config) { config.noiseMarginProfile.MAXBL_RMCus = 5; });
  expectChange("MAXSNRM ds 511", [](Config& config) { config.noiseMarginProfile.MAXSNRMus = 511; });
}

TEST_F(ConfigWords, StoreTheListedCyclicExtensions) {
  for (int value = -1; value <= 256 + 33; value++) {
    const std::string line = "CE " + std::to_string(value);
    const bool exists = value == 10 || value == 12 || value == 14 || value == 16 || value == 20 ||
                        value == 24 || value == 30 || value == 33;
    if (exists) {
      expectChange(line, [&](Config& config) { config.tddProfile.CE = static_cast<uint8_t>(value); });
    } else {
      expectRefusal(line, "invalid parameter - must enter value 10, 12, 14, 16, 20, 24, 30 and 33");
    }
  }
  expectRefusal("CE long", "invalid parameter - must enter value 10, 12, 14, 16, 20, 24, 30 and 33");
}

TEST_F(ConfigWords, StoreZeroOrAReferenceLengthInItsRange) {
  for (const int value : {0, 18, 100, 255}) {
    expectChange("UPBOKLREF " + std::to_string(value),
                 [&](Config& config) { config.upboProfile.UPBOKLREF = static_cast<uint16_t>(value); });
  }
  for (const char* word : {"-1", "1", "10", "17", "256", "none", "\"\""}) {
    expectRefusal(std::string("UPBOKLREF ") + word, A_NUMBER("0, 18..255"));
  }
}

// A word that stores one entry of a list of 16.
struct ListWord {
  const char* keyword;
  int lastFirst;
  int lastSecond;
  bool rises;
  const char* refusal;
  std::function<void(Config&, int index, int first, int second)> storeDs;
  std::function<void(Config&, int index, int first, int second)> storeUs;
};

void storeRange(G9972_subCarrierIdxRange_t& range, int start, int stop) {
  range.startSubcarrierIdx = static_cast<uint16_t>(start);
  range.stopSubcarrierIdx = static_cast<uint16_t>(stop);
}

void storeBreakpoint(G9972_PSDMASKdescriptor_t& breakpoint, int subcarrier, int level) {
  breakpoint.subCarrierIndex = static_cast<uint16_t>(subcarrier);
  breakpoint.PSDlevel = static_cast<uint8_t>(level);
}

#define LISTS(how, list) \
  [](Config& config, int index, int first, int second) { how(config.list[index], first, second); }

const ListWord kLists[] = {
    {"CARMASK", 2047, 2047, true, A_NUMBER("0..2047"), LISTS(storeRange, lineSpectrumProfile.CARMASKds),
     LISTS(storeRange, lineSpectrumProfile.CARMASKus)},
    {"PSDMASK", 4095, 255, false, A_NUMBER("0..2047"), LISTS(storeBreakpoint, lineSpectrumProfile.PSDMASKds),
     LISTS(storeBreakpoint, lineSpectrumProfile.PSDMASKus)},
    {"RFIBAND", 4095, 4095, true, A_NUMBER("0..4095"), LISTS(storeRange, rfiProfile.RFIBANDS), {}},
};

using ListStore = std::function<void(Config&, int index, int first, int second)>;

std::vector<std::pair<std::string, ListStore>> listWays(const ListWord& row) {
  const std::string keyword = row.keyword;
  if (!row.storeUs) {
    return {{keyword + " ", row.storeDs}};
  }
  return {{keyword + " ds ", row.storeDs},
          {keyword + " DS ", row.storeDs},
          {keyword + " us ", row.storeUs},
          {keyword + " US ", row.storeUs}};
}

std::string numbers(int index, int first, int second) {
  return std::to_string(index) + " " + std::to_string(first) + " " + std::to_string(second);
}

TEST_F(ConfigWords, StoreListEntriesInTheirRanges) {
  for (const ListWord& row : kLists) {
    for (const auto& [command, store] : listWays(row)) {
      for (int index = 0; index <= 15; index++) {
        for (const auto& [first, second] :
             {std::pair{0, row.rises ? 1 : 0}, std::pair{0, row.lastSecond},
              std::pair{row.rises ? row.lastFirst - 1 : row.lastFirst, row.lastSecond}}) {
          expectChange(command + numbers(index, first, second),
                       [&store = store, index, first = first, second = second](Config& config) {
                         store(config, index, first, second);
                       });
        }
      }
    }
  }
}

TEST_F(ConfigWords, RefuseListEntriesOutsideTheirRanges) {
  for (const ListWord& row : kLists) {
    for (const auto& [command, store] : listWays(row)) {
      expectRefusal(command + numbers(-1, 1, 2), kNoIndex);
      expectRefusal(command + numbers(16, 1, 2), kNoIndex);
      expectRefusal(command + "one 1 2", kNoIndex);
      expectRefusal(command + numbers(0, -1, 2), row.refusal);
      expectRefusal(command + numbers(0, row.lastFirst + 1, 2), row.refusal);
      expectRefusal(command + "0 low 2", row.refusal);
      expectRefusal(command + numbers(0, 1, -1), row.refusal);
      expectRefusal(command + numbers(0, 1, row.lastSecond + 1), row.refusal);
      expectRefusal(command + "0 1 high", row.refusal);
    }
  }
}

TEST_F(ConfigWords, RefuseRangesThatDoNotRise) {
  for (const ListWord& row : kLists) {
    for (const auto& [command, store] : listWays(row)) {
      if (row.rises) {
        expectRefusal(command + numbers(3, 200, 100), kNoRise);
        expectRefusal(command + numbers(3, 200, 200), kNoRise);
      } else {
        expectChange(command + numbers(3, 200, 100),
                     [&store = store](Config& config) { store(config, 3, 200, 100); });
      }
    }
  }
}

TEST_F(ConfigWords, CheckDirectionThenIndexThenRangeThenOrder) {
  expectRefusal("RFIBAND 16 5000 1", kNoIndex);
  expectRefusal("RFIBAND 3 5000 1", A_NUMBER("0..4095"));
  expectRefusal("CARMASK sideways 16 5000 1", kNoDirection);
}

std::string words(int count) {
  std::string text;
  for (int i = 0; i < count; i++) {
    text += " 1";
  }
  return text;
}

bool takesDirection(const VocabularyRow& row) {
  return std::strstr(row.usage, "(ds | us)") != nullptr;
}

int wordsTaken(const VocabularyRow& row) {
  const std::string keyword = row.path;
  const int directions = takesDirection(row) ? 1 : 0;
  return directions + (keyword == "CARMASK" || keyword == "PSDMASK" || keyword == "RFIBAND" ? 3 : 1);
}

bool editsTheRecord(const VocabularyRow& row) {
  const std::string keyword = row.path;
  return row.mode == MODE_CONFIG && keyword != "restore" && keyword != "save" && keyword != "show" &&
         keyword != "get";
}

TEST_F(ConfigWords, PrintTheirUsageForAQuestionMarkOrAWrongCount) {
  int edited = 0;
  for (const VocabularyRow& row : kVocabulary) {
    if (editsTheRecord(row)) {
      edited++;
      const std::string keyword = row.path;
      expectRefusal(keyword + " ?", row.usage);
      for (int count = 0; count < 6; count++) {
        if (count != wordsTaken(row)) {
          expectRefusal(keyword + words(count), row.usage);
        }
      }
    }
  }
  EXPECT_EQ(edited, 54);
}

TEST_F(ConfigWords, RefuseOtherDirections) {
  for (const VocabularyRow& row : kVocabulary) {
    if (editsTheRecord(row) && takesDirection(row)) {
      for (const char* word : {"Us", "uS", "Ds", "dS", "u", "dsx", "1", "\"\""}) {
        const std::string line = std::string(row.path) + " " + word + words(wordsTaken(row) - 1);
        expectRefusal(line, kNoDirection);
      }
    }
  }
}

TEST_F(ConfigWords, AllHaveATestHere) {
  std::vector<std::string> tested = {"CE", "UPBOKLREF"};
  for (const NumberWord& row : kNumbers) {
    tested.emplace_back(row.keyword);
  }
  for (const FlagWord& row : kFlags) {
    tested.emplace_back(row.keyword);
  }
  for (const FlagWord& row : kUnsignedNumbers) {
    tested.emplace_back(row.keyword);
  }
  for (const ListWord& row : kLists) {
    tested.emplace_back(row.keyword);
  }
  std::vector<std::string> words;
  for (const VocabularyRow& row : kVocabulary) {
    if (editsTheRecord(row)) {
      words.emplace_back(row.path);
    }
  }
  EXPECT_THAT(tested, testing::UnorderedElementsAreArray(words));
}

// The checks that the table of words must pass to compile.

constexpr ConfigWord kGoodWord{CLI_setCyclicExtension,
                               "CE",
                               "help",
                               "usage",
                               config_rows::kCyclicExtension,
                               {config_rows::field<&QVR_TDDProfile_t::CE>("CE", ConfigForm::kUnsigned)}};

constexpr ConfigWord withFields(ConfigField first, ConfigField second = {}) {
  ConfigWord word = kGoodWord;
  word.fields = {first, second};
  return word;
}

TEST(ConfigTable, RejectsAKeywordTwice) {
  ConfigWord other = kGoodWord;
  other.keyword = "MF";
  const std::array different{kGoodWord, other};
  const std::array same{kGoodWord, other, kGoodWord};
  EXPECT_TRUE(keywordsDiffer(different));
  EXPECT_FALSE(keywordsDiffer(same));
}

TEST(ConfigTable, RejectsAWordThatStoresNowhereOrTwice) {
  using namespace config_rows;
  constexpr auto any = field<&Tdd::CE>("CE", kUnsigned);
  constexpr auto down = ds<&Rate::MINETRds>("MINETRds", kUnsigned);
  constexpr auto up = us<&Rate::MINETRus>("MINETRus", kUnsigned);
  constexpr auto both = eitherWay<&Margin::MAXSNRMus>("MAXSNRMus", kUnsigned);
  constexpr auto none = shown<&Tdd::MF>("MF", kUnsigned);
  for (const ConfigWord& good :
       {withFields(any), withFields(any, none), withFields(down, up), withFields(none, both)}) {
    EXPECT_TRUE(storesIntoOneField(good));
  }
  for (const ConfigWord& bad :
       {withFields({}), withFields(none), withFields(down), withFields(up), withFields(any, any),
        withFields(any, up), withFields(both, up), withFields(down, down)}) {
    EXPECT_FALSE(storesIntoOneField(bad)) << bad.fields[0].name << ' ' << bad.fields[1].name;
  }
}

TEST(ConfigTable, RejectsALabelLongerThanItsColumn) {
  using namespace config_rows;
  const std::string longest(40, 'x');
  const std::string longestOfList(20, 'x');
  constexpr auto number = field<&Tdd::CE>("CE", kUnsigned);
  constexpr auto list = field<&Rfi::RFIBANDS>("RFIBANDS", kRanges);
  EXPECT_TRUE(labelFits(labelled(longest.c_str(), number)));
  EXPECT_FALSE(labelFits(labelled((longest + "x").c_str(), number)));
  EXPECT_TRUE(labelFits(labelled(longestOfList.c_str(), list)));
  EXPECT_FALSE(labelFits(labelled((longestOfList + "x").c_str(), list)));
}

}  // namespace

#include "qvrcli/config/config_members.h"

#include <algorithm>
#include <limits>
#include <type_traits>

#include "qvrcli/text/arguments.h"

namespace gfast::console {

namespace {

constexpr int kLastIndex = QVR_K_MAX_SUBCARRIER_RANGES - 1;
static_assert(QVR_K_MAX_PSD_BREAKPOINTS == QVR_K_MAX_SUBCARRIER_RANGES);

// ---- What is accepted ----

// A word without digits leaves the number as it was, so every number begins as one that is refused.
constexpr int kNoNumber = std::numeric_limits<int>::min();

bool readNumber(const char* word, int low, int high, int* number) {
  *number = kNoNumber;
  return isValidNumber(word, low, high, number) == TRUE;
}

const char* readInRange(const ConfigRule& rule, const char* const words[], GivenValues* values) {
  int number = 0;
  const bool accepted = readNumber(words[0], rule.low, rule.high, &number);
  values->first = number;
  return accepted ? nullptr : rule.refusal;
}

// Where every number is in range, what has digits shows by what it does to two different numbers.
const char* readUnsigned(const ConfigRule& rule, const char* const words[], GivenValues* values) {
  constexpr uint32_t kHighest = std::numeric_limits<uint32_t>::max();
  uint32_t number = 0;
  uint32_t again = 1;
  const bool accepted = isValidUnsignedNumber(words[0], 0, kHighest, &number) == TRUE &&
                        isValidUnsignedNumber(words[0], 0, kHighest, &again) == TRUE && number == again;
  values->first = number;
  return accepted ? nullptr : rule.refusal;
}

const char* readZeroOrInRange(const ConfigRule& rule, const char* const words[], GivenValues* values) {
  const char* const refusal = readInRange(rule, words, values);
  return values->first == 0 ? nullptr : refusal;
}

const char* readCyclicExtension(const ConfigRule& rule, const char* const words[], GivenValues* values) {
  constexpr int64_t kAccepted[] = {10, 12, 14, 16, 20, 24, 30, 33};
  const char* const refusal = readInRange(rule, words, values);
  return std::ranges::find(kAccepted, values->first) != std::end(kAccepted) ? refusal : rule.refusal;
}

const char* readFlag(const ConfigRule& rule, const char* const words[], GivenValues* values) {
  values->first = isKeyword(words[0], "t") ? TRUE : FALSE;
  return values->first == TRUE || isKeyword(words[0], "f") ? nullptr : rule.refusal;
}

const char* readPair(const ConfigRule& rule, const char* const words[], GivenValues* values) {
  if (!readNumber(words[0], 0, kLastIndex, &values->index)) {
    return "invalid parameter - must enter a value between 0..1";
  }
  const char* const refusal = readInRange(rule, words + 1, values);
  const bool accepted = refusal == nullptr && readNumber(words[2], 0, rule.secondHigh, &values->second);
  return accepted ? nullptr : rule.refusal;
}

const char* readRange(const ConfigRule& rule, const char* const words[], GivenValues* values) {
  const char* const refusal = readPair(rule, words, values);
  if (refusal != nullptr || values->second > values->first) {
    return refusal;
  }
  return "invalid value - stop value must be greater than start value";
}

constexpr ConfigRule between(int low, int high, const char* refusal) {
  return {readInRange, low, high, 0, refusal};
}
constexpr ConfigRule zeroOrBetween(int low, int high, const char* refusal) {
  return {readZeroOrInRange, low, high, 0, refusal};
}
constexpr ConfigRule rangeUpTo(int last, const char* refusal) {
  return {readRange, 0, last, last, refusal};
}
constexpr ConfigRule breakpointUpTo(int lastSubcarrier, int highestLevel, const char* refusal) {
  return {readPair, 0, lastSubcarrier, highestLevel, refusal};
}
constexpr ConfigRule kFlag{readFlag, 0, 0, 0, "invalid parameter - must enter T or F"};
constexpr ConfigRule kUnsigned{readUnsigned, 0, 0, 0,
                               "invalid parameter - must enter value between 0..4294967295"};
constexpr ConfigRule kCyclicExtension{
    readCyclicExtension, 10, 33, 0, "invalid parameter - must enter value 10, 12, 14, 16, 20, 24, 30 and 33"};

// ---- Where it is stored ----

void assign(G9972_subCarrierIdxRange_t& range, const GivenValues& values) {
  range.startSubcarrierIdx = static_cast<uint16_t>(values.first);
  range.stopSubcarrierIdx = static_cast<uint16_t>(values.second);
}

void assign(G9972_PSDMASKdescriptor_t& breakpoint, const GivenValues& values) {
  breakpoint.subCarrierIndex = static_cast<uint16_t>(values.first);
  breakpoint.PSDlevel = static_cast<uint8_t>(values.second);
}

template <auto Profile, auto Field>
void store(QVR_lineConfig_t& config, const GivenValues& values) {
  auto& field = (config.*Profile).*Field;
  using FieldType = std::remove_reference_t<decltype(field)>;
  if constexpr (std::is_array_v<FieldType>) {
    assign(field[values.index], values);
  } else {
    field = static_cast<FieldType>(values.first);
  }
}

template <auto Profile, auto Field>
constexpr ConfigMember single(const char* keyword, const ConfigRule& accepts) {
  return {keyword, accepts, store<Profile, Field>, nullptr};
}

template <auto Profile, auto Downstream, auto Upstream>
constexpr ConfigMember directed(const char* keyword, const ConfigRule& accepts) {
  return {keyword, accepts, store<Profile, Downstream>, store<Profile, Upstream>};
}

using Tdd = QVR_TDDProfile_t;
using Spectrum = QVR_lineSpectrumProfile_t;
using Rfi = QVR_rfiProfile_t;
using Upbo = QVR_upboProfile_t;
using Margin = QVR_noiseMarginProfile_t;
using Fra = QVR_fastRateAdaptationProfile_t;
using Reinit = QVR_reinitPolicyProfile_t;
using Rtx = QVR_retransmissionProfile_t;
using Vectoring = QVR_vectoringProfile_t;
using Sra = QVR_sraProfile_t;
using Rate = QVR_dataRateProfile_t;
using Path = QVR_dataPathConfigProfile_t;
using Ace = QVR_AceConfigProfile_t;
using Dta = QVR_DTAProfile_t;

constexpr auto kTdd = &QVR_lineConfig_t::tddProfile;
constexpr auto kSpectrum = &QVR_lineConfig_t::lineSpectrumProfile;
constexpr auto kRfi = &QVR_lineConfig_t::rfiProfile;
constexpr auto kUpbo = &QVR_lineConfig_t::upboProfile;
constexpr auto kMargin = &QVR_lineConfig_t::noiseMarginProfile;
constexpr auto kFra = &QVR_lineConfig_t::fastRateAdaptationProfile;
constexpr auto kReinit = &QVR_lineConfig_t::reinitPolicyProfile;
constexpr auto kRtx = &QVR_lineConfig_t::retransmissionProfile;
constexpr auto kVectoring = &QVR_lineConfig_t::vectoringProfile;
constexpr auto kSra = &QVR_lineConfig_t::sraProfile;
constexpr auto kRate = &QVR_lineConfig_t::dataRateProfile;
constexpr auto kPath = &QVR_lineConfig_t::dataPathConfigProfile;
constexpr auto kAce = &QVR_lineConfig_t::aceConfigProfile;
constexpr auto kDta = &QVR_lineConfig_t::dtaProfile;

// clang-format off

constexpr ConfigMember kMembers[] = {
    directed<kMargin, &Margin::TARSNRMds, &Margin::TARSNRMus>(
        "TARSNRM", between(0, 310, "invalid parameter - must enter value between 0..310")),
    single<kTdd, &Tdd::Mds>(
        "Mds", between(10, 32, "invalid line number - Mds must be between 10..32")),
    single<kTdd, &Tdd::CE>("CE", kCyclicExtension),
    directed<kVectoring, &Vectoring::FEXT_CANCEL_ENABLEds, &Vectoring::FEXT_CANCEL_ENABLEus>(
        "FEXT_CANCEL_ENABLE", kFlag),
    directed<kSra, &Sra::SRA_ENABLEds, &Sra::SRA_ENABLEus>("SRA_ENABLE", kFlag),
    directed<kSpectrum, &Spectrum::CARMASKds, &Spectrum::CARMASKus>(
        "CARMASK", rangeUpTo(2047, "invalid parameter - must enter a value between 0..2047")),
    directed<kSpectrum, &Spectrum::PSDMASKds, &Spectrum::PSDMASKus>(
        "PSDMASK", breakpointUpTo(4095, 255, "invalid parameter - must enter a value between 0..2047")),
    single<kRfi, &Rfi::RFIBANDS>(
        "RFIBAND", rangeUpTo(4095, "invalid parameter - must enter a value between 0..4095")),
    single<kRfi, &Rfi::IARBANDS>(
        "IARBANDS", between(0, 4095, "invalid parameter - must enter a value between 0..4095")),
    single<kUpbo, &Upbo::UPBOPSDA>(
        "UPBOPSDA", between(0, 4095, "invalid parameter - must enter a value between 0..4095")),
    single<kUpbo, &Upbo::UPBOPSDB>(
        "UPBOPSDB", between(0, 4095, "invalid parameter - must enter a value between 0..4095")),
    single<kUpbo, &Upbo::UPBOKL>(
        "UPBOKL", between(0, 1280, "invalid parameter - must enter a value between 0..1280")),
    single<kUpbo, &Upbo::UPBOKLF>("UPBOKLF", kFlag),
    single<kUpbo, &Upbo::UPBOKLREF>(
        "UPBOKLREF", zeroOrBetween(18, 255, "invalid parameter - must enter a value between 0, 18..255")),
    directed<kRate, &Rate::MAXNDRds, &Rate::MAXNDRus>("MAXNDR", kUnsigned),
    directed<kRtx, &Rtx::INPMIN_SHINEds, &Rtx::INPMIN_SHINEus>(
        "INPMIN_SHINE", between(0, 520, "invalid parameter - must enter value between 0..520")),
    directed<kRtx, &Rtx::INPMIN_REINds, &Rtx::INPMIN_REINus>(
        "INPMIN_REIN", between(0, 63, "invalid parameter - must enter value between 0..63")),
    directed<kRtx, &Rtx::IAT_REINds, &Rtx::IAT_REINus>(
        "IAT_REIN", between(0, 3, "invalid parameter - must enter value between 0..3")),
    directed<kRtx, &Rtx::SHINERATIOds, &Rtx::SHINERATIOus>(
        "SHINERATIO", between(0, 310, "invalid parameter - must enter value between 0..310")),
    directed<kRtx, &Rtx::RTX_TESTMODEds, &Rtx::RTX_TESTMODEus>("RTX_TESTMODE", kFlag),
    directed<kRate, &Rate::BLUPPERLIMITds, &Rate::BLUPPERLIMITus>(
        "BLUPPERLIMIT", between(0, 14, "invalid parameter - must enter value between 0..310")),
    directed<kRtx, &Rtx::DELAYMAXds, &Rtx::DELAYMAXus>(
        "DELAYMAX", between(4, 252, "invalid parameter - must enter value between 4..252")),
    // The record has no maximum margin downstream.
    directed<kMargin, &Margin::MAXSNRMus, &Margin::MAXSNRMus>(
        "MAXSNRM", between(0, 511, "invalid parameter - must enter value between 0..511")),
    directed<kMargin, &Margin::MINSNRMds, &Margin::MINSNRMus>(
        "MINSNRM", between(0, 310, "invalid parameter - must enter value between 0..310")),
    directed<kMargin, &Margin::SRA_USNRMds, &Margin::SRA_USNRMus>(
        "SRA_USNRM", between(0, 310, "invalid parameter - must enter value between 0..310")),
    directed<kMargin, &Margin::SRA_UTIMEds, &Margin::SRA_UTIMEus>(
        "SRA_UTIME", between(0, 16383, "invalid parameter - must enter value between 0..16383")),
    directed<kMargin, &Margin::SRA_DSNRMds, &Margin::SRA_DSNRMus>(
        "SRA_DSNRM", between(0, 310, "invalid parameter - must enter value between 0..310")),
    directed<kMargin, &Margin::SRA_DTIMEds, &Margin::SRA_DTIMEus>(
        "SRA_DTIME", between(0, 16383, "invalid parameter - must enter value between 0..16383")),
    directed<kFra, &Fra::FRA_TIMEds, &Fra::FRA_TIMEus>(
        "FRA_TIME", between(1, 8, "invalid parameter - must enter value between 1..8")),
    directed<kFra, &Fra::FRA_NTONESds, &Fra::FRA_NTONESus>(
        "FRA_NTONES", between(0, 100, "invalid parameter - must enter value between 0..100")),
    directed<kFra, &Fra::FRA_RTXUCds, &Fra::FRA_RTXUCus>(
        "FRA_RTXUC", between(0, 1023, "invalid parameter - must enter value between 0..1023")),
    directed<kFra, &Fra::FRA_VENDISCds, &Fra::FRA_VENDISCus>("FRA_VENDISC", kFlag),
    directed<kReinit, &Reinit::REINIT_TIME_THRESHOLDds, &Reinit::REINIT_TIME_THRESHOLDus>(
        "REINIT_TIME_THRESHOLD", between(5, 31, "invalid parameter - must enter value between 5, 31")),
    directed<kReinit, &Reinit::LOS_PERSISTENCYds, &Reinit::LOS_PERSISTENCYus>(
        "LOS_PERSISTENCY", between(1, 20, "invalid parameter - must enter value between 0..30")),
    directed<kReinit, &Reinit::LOM_PERSISTENCYds, &Reinit::LOM_PERSISTENCYus>(
        "LOM_PERSISTENCY", between(2, 20, "invalid parameter - must enter value between 2..20")),
    directed<kReinit, &Reinit::LOR_PERSISTENCYds, &Reinit::LOR_PERSISTENCYus>(
        "LOR_PERSISTENCY", between(1, 20, "invalid parameter - must enter value between 0..30")),
    directed<kReinit, &Reinit::LOW_ETR_THRESHOLDds, &Reinit::LOW_ETR_THRESHOLDus>(
        "LOW_ETR_THRESHOLD", between(0, 30, "invalid parameter - must enter value between 0..30")),
    directed<kRate, &Rate::MINETRds, &Rate::MINETRus>("MINETR", kUnsigned),
    directed<kSpectrum, &Spectrum::MAXATPds, &Spectrum::MAXATPus>(
        "MAXATP", between(-310, 310, "invalid parameter - must enter value between -310..310")),
    directed<kRtx, &Rtx::RNRATIOds, &Rtx::RNRATIOus>(
        "RNRATIO", between(0, 8, "invalid parameter - must enter value between 0..8")),
    single<kPath, &Path::TPS_TESTMODE>("TPS_TESTMODE", kFlag),
    single<kPath, &Path::DRA_TESTMODE>("DRA_TESTMODE", kFlag),
    single<kAce, &Ace::ACEMODE>(
        "ACEMODE", between(0, 1, "invalid parameter - must enter value between 0..1")),
    single<kAce, &Ace::ACEP2N2>(
        "ACEP2N2", between(0, 1, "invalid parameter - must enter value between 0..1")),
    single<kAce, &Ace::ALLOWACEON>(
        "ALLOWACEON", between(0, 1, "invalid parameter - must enter value between 0..1")),
    single<kDta, &Dta::DTA_MODE>(
        "DTA_MODE", between(0, 2, "invalid parameter - must enter value between 0..2")),
    single<kDta, &Dta::MINMds>("MINMds", between(5, 30, "MINMds must be between 5..30")),
    single<kDta, &Dta::MAXMds>("MAXMds", between(5, 30, "MAXMds must be between 5..30")),
    single<kDta, &Dta::cDTA_MAXMds>("cDTA_MAXMds", between(5, 30, "cDTA_MAXMds must be between 8..30")),
    single<kDta, &Dta::cDTA_MINMds>("cDTA_MINMds", between(5, 30, "cDTA_MINMds must be between 8..30")),
    single<kDta, &Dta::cDTA_ENABLE>("cDTA_ENABLE", kFlag),
    directed<kMargin, &Margin::TARSNRM_RMCds, &Margin::TARSNRM_RMCus>(
        "TARSNRM_RMC", between(0, 310, "invalid parameter - must enter value between 0..310")),
    directed<kMargin, &Margin::MINSNRM_RMCds, &Margin::MINSNRM_RMCus>(
        "MINSNRM_RMC", between(0, 310, "invalid parameter - must enter value between 0..310")),
    // Upstream whichever direction is given: scripts rely on it.
    directed<kMargin, &Margin::MAXBL_RMCus, &Margin::MAXBL_RMCus>(
        "MAXBL_RMC", between(0, 14, "invalid parameter - must enter value between 2..6")),
};

// clang-format on

// Where the direction says to store; nullptr for another word.
StoreValues chosenStore(const ConfigMember& member, const char* direction) {
  if (member.storeUs == nullptr || isKeyword(direction, "ds")) {
    return member.store;
  }
  return isKeyword(direction, "us") ? member.storeUs : nullptr;
}

}  // namespace

const ConfigMember& configMember(std::string_view keyword) {
  return *std::ranges::find(kMembers, keyword, &ConfigMember::keyword);
}

const char* setConfigMember(const ConfigMember& member, const char* const words[], QVR_lineConfig_t& config) {
  const StoreValues storeChosen = chosenStore(member, words[0]);
  if (storeChosen == nullptr) {
    return "invalid parameter - must enter ds or us";
  }
  GivenValues values;
  const int directionWords = member.storeUs != nullptr ? 1 : 0;
  const char* const refusal = member.accepts.read(member.accepts, words + directionWords, &values);
  if (refusal == nullptr) {
    storeChosen(config, values);
  }
  return refusal;
}

}  // namespace gfast::console

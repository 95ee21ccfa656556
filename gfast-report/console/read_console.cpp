#include "gfast-report/console/read_console.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <utility>

#include "gfast-report/console/printed_values.h"
#include "gfast-report/report_error.h"
#include "qvrcli/text/link_states.h"

namespace gfast::report {

namespace {

using namespace gfast::console;

constexpr int64_t kMostTenths = 9999;
constexpr int64_t kMostKbps = 10'000'000;
constexpr int64_t kMostSeconds = QVR_K_SECS_IN_24HR_COLLECTION_INTERVAL;
constexpr size_t kMostIntervals = 1 + QVR_K_NUMBER_OF_15MIN_INTERVALS_IN_HISTORY;

// One line being read.
struct Taking {
  const Ask& ask;
  const Progress& progress;
  time_t now;
  LineReading line;
  std::vector<std::string> remarks;

  std::string reply(const char* what, const std::string& command) {
    progress(what);
    return ask(command);
  }
  Labelled labelled(const char* what, const std::string& command) { return Labelled(reply(what, command)); }
  void remark(const std::string& text) { remarks.push_back(text); }
  std::string of(const char* command) const { return fmt::format("{} {}", command, line.line); }
};

// ---- The line and its device ----

// A device that was lost and found again counts once more, so there may seem to be more than can be.
QVR_lineId_t numberOfLines(const Ask& ask) {
  constexpr std::string_view kTotal = "total = ";
  constexpr int64_t kMost = 10000;
  const std::string reply = ask("show number lines");
  const size_t total = reply.find(kTotal);
  const auto number =
      total == std::string::npos
          ? std::nullopt
          : numberIn(trimmed(firstLineOf(std::string_view(reply).substr(total + kTotal.size()))), 0, kMost);
  if (!number) {
    throw ReportError(fmt::format("\"show number lines\" is answered with: {}", firstLineOf(reply)));
  }
  return static_cast<QVR_lineId_t>(std::min<int64_t>(*number, QVR_K_MAX_LINES));
}

// None while the chip does not answer.
std::optional<G9701_linkState_t> stateIn(const std::string& reply) {
  const std::vector<std::string_view> lines = linesOf(reply);
  const size_t bracket = lines.empty() ? std::string_view::npos : lines[0].find("] ");
  if (bracket == std::string_view::npos || !lines[0].starts_with("Line[")) {
    return std::nullopt;
  }
  const std::string_view name = trimmed(lines[0].substr(bracket + 1));
  for (int state = 0; trimmed(linkStateString(state)) != trimmed(linkStateString(-1)); state++) {
    if (trimmed(linkStateString(state)) == name) {
      return static_cast<G9701_linkState_t>(state);
    }
  }
  return std::nullopt;
}

// Chips of these kinds are at the network side; it stands first in their version.
bool isNetworkSide(std::string_view firmware) {
  return firmware.starts_with("1.") || firmware.starts_with("3.");
}

bool showsLine(const std::string& deviceInfo, QVR_lineId_t line) {
  bool below = false;
  for (const std::string_view row : linesOf(deviceInfo)) {
    if (below && row.starts_with(fmt::format("{} ", line))) {
      return true;
    }
    below = below || row.starts_with("Link ID");
  }
  return false;
}

void takeDevice(Taking& taking, QVR_lineId_t lines) {
  for (QVR_lineId_t device = 0; device < lines; device++) {
    const std::string reply = taking.reply("device", fmt::format("show device-info {}", device));
    const Labelled values(reply);
    if (!showsLine(reply, taking.line.line)) {
      continue;
    }
    taking.line.firmware = values.text("Firmware Version").substr(0, 40);
    taking.line.networkSide = isNetworkSide(taking.line.firmware);
    if (const auto celsius = values.number("Device temperature [Cel.]", 0, 255)) {
      taking.line.deviceTemperature_c = static_cast<uint32_t>(*celsius);
    }
    return;
  }
  taking.line.networkSide = true;
  taking.remark("no device says that the line is its own: it is taken for one at the network side");
}

void takeInitialisation(Taking& taking) {
  if (!taking.line.networkSide) {
    return;
  }
  const Labelled values = taking.labelled("initialisation", taking.of("show init-failure-cause"));
  const auto cause = values.number("INITSFCAUSE", 0, 255);
  const auto downstream = values.number("INITLASTSIGNALds", 0, 255);
  const auto upstream = values.number("INITLASTSIGNALus", 0, 255);
  if (cause && downstream && upstream) {
    taking.line.initialisation = {static_cast<G9972_initSuccessFailureCause_t>(*cause),
                                  static_cast<uint8_t>(*downstream), static_cast<uint8_t>(*upstream)};
  }
}

// ---- Status ----

std::optional<double> levelOf(const Labelled& values, const char* label) {
  const auto tenths = values.number(label, -kMostTenths, kMostTenths);
  return tenths && *tenths != QVR_K_LEVEL_NOT_AVAILABLE ? std::optional(static_cast<double>(*tenths) / 10)
                                                        : std::nullopt;
}

// The same labels go into the same fields as when the server reads them.
void takeStatus(Taking& taking) {
  const Labelled values = taking.labelled("line status", taking.of("show line status"));
  DirectionReading& downstream = taking.line.downstream;
  DirectionReading& upstream = taking.line.upstream;
  downstream.snrMargin_db = levelOf(values, "SNRMds");
  upstream.snrMargin_db = levelOf(values, "SNRMus");
  upstream.rmcSnrMargin_db = levelOf(values, "SNRM_RMCus");
  if (downstream.snrMargin_db) {
    downstream.rmcSnrMargin_db = levelOf(values, "SNRM_RMCds");
  }
  downstream.transmitPower_dbm = levelOf(values, "ACTATPds");
  upstream.transmitPower_dbm = levelOf(values, "ACTATPus");
  upstream.electricalLength_db = levelOf(values, "UPBOKLE");
  downstream.electricalLength_db = levelOf(values, "UPBOKLE-R");
  if (const auto length = values.number("EWL", 0, UINT32_MAX)) {
    taking.line.estimatedLength = static_cast<uint32_t>(*length);
  }
}

void takeChannel(Taking& taking, const char* word, DirectionReading& direction) {
  const Labelled values =
      taking.labelled("channel status", fmt::format("{} {}", taking.of("show channel status"), word));
  const auto rate = [&values](const char* label) {
    const auto kbps = values.number(label, 0, kMostKbps);
    return kbps ? std::optional(static_cast<uint32_t>(*kbps)) : std::nullopt;
  };
  const auto octet = [&values](const char* label) {
    const auto number = values.number(label, 0, UINT8_MAX);
    return number ? std::optional(static_cast<uint8_t>(*number)) : std::nullopt;
  };
  direction.netDataRate_kbps = rate("NDR");
  direction.expectedThroughput_kbps = rate("ETR");
  direction.gammaDataRate_kbps = rate("GDR");
  direction.attainableNetDataRate_kbps = rate("ATTNDR");
  direction.codewordLength_bytes = octet("DTU_NFEC");
  direction.codewordRedundancy_bytes = octet("DTU_RFEC");
  direction.codewordsPerDtu = octet("DTU_Q");
}

// ---- Who is at the ends ----

template <size_t Size>
void takeText(const Labelled& values, const char* label, char (&field)[Size]) {
  const std::string_view text = values.text(label);
  std::memcpy(field, text.data(), std::min(text.size(), Size));
}

void takeEnd(const Labelled& values, QVR_inventoryParameters_t& end) {
  takeText(values, "GHS_VENDOR", end.GHS_VENDOR);
  takeText(values, "SYSTEM_VENDOR", end.SYSTEM_VENDOR);
  takeText(values, "SERIALNR", end.SERIALNR);
  takeText(values, "VERSION", end.VERSION);
}

void takeInventory(Taking& taking) {
  if (!taking.line.networkSide && !taking.line.up()) {
    return;
  }
  const std::string reply = taking.reply("inventory", taking.of("show inventory"));
  const size_t subscriber = reply.find("FTU-R:");
  if (!reply.starts_with("\r\nFTU-O:") || subscriber == std::string::npos) {
    taking.remark("inventory: " + firstLineOf(reply));
    return;
  }
  QVR_inventoryObject_t inventory{};
  takeEnd(Labelled(std::string_view(reply).substr(0, subscriber)), inventory.FTU_O);
  takeEnd(Labelled(std::string_view(reply).substr(subscriber)), inventory.FTU_R);
  taking.line.inventory = inventory;
}

// ---- Counters ----

struct ShownCounter {
  const char* name;
  uint32_t EndCounters::*field;
  bool nearOnly = false;
};

using Ends = EndCounters;
constexpr ShownCounter kCounters[] = {{"LOS", &Ends::lossOfSignal},
                                      {"LOM", &Ends::lossOfMargin},
                                      {"LOR", &Ends::lossOfRmc},
                                      {"LPR", &Ends::lossOfPower},
                                      {"ES", &Ends::erroredSeconds},
                                      {"SES", &Ends::severelyErroredSeconds},
                                      {"LOSS", &Ends::lossOfSignalSeconds},
                                      {"LORS", &Ends::lossOfRmcSeconds},
                                      {"UAS", &Ends::unavailableSeconds},
                                      {"SRA", &Ends::rateAdaptations},
                                      {"FRA", &Ends::fastRateAdaptations},
                                      {"RPA", &Ends::rmcAdaptations},
                                      {"BSW", &Ends::bitSwaps},
                                      {"CV", &Ends::codeViolations},
                                      {"RTXUC", &Ends::uncorrectedDtus},
                                      {"RTXTX", &Ends::retransmittedDtus},
                                      {"EFB", &Ends::errorFreeBits},
                                      {"TIGA", &Ends::gainAdjustments, true},
                                      {"FULL_INITS", &Ends::fullInitialisations, true},
                                      {"FAILEDFULL_INITS", &Ends::failedFullInitialisations, true},
                                      {"FAST_INITS", &Ends::fastInitialisations, true},
                                      {"FAILEDFAST_INITS", &Ends::failedFastInitialisations, true}};

// A counter beyond 31 bits is printed as a negative number. None when one of them is missing.
std::optional<EndCounters> countersIn(const Labelled& values, bool nearEnd) {
  EndCounters counters{};
  counters.countsNearOnly = nearEnd;
  for (const ShownCounter& shown : kCounters) {
    if (shown.nearOnly && !nearEnd) {
      continue;
    }
    const auto count =
        values.number(fmt::format("{}-{}", nearEnd ? "NE" : "FE", shown.name), INT32_MIN, INT32_MAX);
    if (!count) {
      return std::nullopt;
    }
    counters.*shown.field = static_cast<uint32_t>(*count);
  }
  return counters;
}

struct IntervalLabels {
  const char* time;
  const char* stamp;
};
constexpr IntervalLabels kOfQuarterHours{"collectionTime", "timestamp"};
constexpr IntervalLabels kOfDays{"collection time", "timestamp"};

std::optional<IntervalReading> intervalIn(const Labelled& values, const IntervalLabels& labels) {
  const auto seconds = values.number(labels.time, 0, kMostSeconds);
  const auto end = stampIn(values.text(labels.stamp));
  const auto near = countersIn(values, true);
  const auto far = countersIn(values, false);
  if (!seconds || !end || !near || !far) {
    return std::nullopt;
  }
  IntervalReading interval;
  interval.end = *end;
  interval.measuredTime_s = static_cast<uint32_t>(*seconds);
  interval.near = {false, *near};
  interval.far = {false, *far};
  return interval;
}

// Each begins with the line's number, newest first: the first one is still running.
void takeQuarterHours(Taking& taking) {
  const std::string reply = taking.reply("quarter hours", taking.of("dump 15min-history"));
  std::vector<Labelled> blocks;
  for (const std::string_view line : linesOf(reply)) {
    if (line.starts_with("Line ") && blocks.size() < kMostIntervals) {
      blocks.emplace_back();
    }
    if (!blocks.empty()) {
      blocks.back().add(line);
    }
  }
  for (size_t i = 0; i < blocks.size(); i++) {
    auto interval = intervalIn(blocks[i], kOfQuarterHours);
    if (!interval) {
      taking.remark(fmt::format("quarter hour {} is not understood; it and those before it are left out", i));
      return;
    }
    interval->near.complete = blocks[i].text("neCounters") == "VALID";
    interval->far.complete = blocks[i].text("feCounters") == "VALID";
    if (i == 0) {
      taking.line.quarterHours.running = *interval;
    } else {
      taking.line.quarterHours.past.push_back(*interval);
    }
  }
}

// A day is complete by its length.
void takeDays(Taking& taking) {
  const std::string count = taking.reply("days", taking.of("show number 24hr-intervals"));
  const auto days = numberIn(trimmed(firstLineOf(count)), 0, 1 + QVR_K_NUMBER_OF_24HR_INTERVALS_IN_HISTORY);
  for (int64_t day = 0; day < days.value_or(0); day++) {
    const std::string command = fmt::format("{} {}", taking.of("show 24hr-counters"), day);
    auto interval = intervalIn(taking.labelled("days", command), kOfDays);
    if (!interval) {
      taking.remark(fmt::format("day {} is not understood; it and those before it are left out", day));
      return;
    }
    interval->near.complete = interval->far.complete = interval->measuredTime_s == kMostSeconds;
    if (day == 0) {
      taking.line.days.running = *interval;
    } else {
      taking.line.days.past.push_back(*interval);
    }
  }
}

// Intervals are stamped with the board's local time. The running quarter hour is stamped with the present
// one, so it tells how far that is from UTC, if only the board's clock is right.
void shiftToUtc(Taking& taking) {
  constexpr time_t kStep = 900;
  constexpr time_t kFarthest = 50400;  // 14 hours
  auto& quarterHours = taking.line.quarterHours;
  if (!quarterHours.running) {
    return;
  }
  const double ahead = static_cast<double>(quarterHours.running->end - taking.now);
  const time_t shift = static_cast<time_t>(std::lround(ahead / kStep)) * kStep;
  if (std::abs(ahead) > kFarthest) {
    return;
  }
  for (HistoryReading* history : {&quarterHours, &taking.line.days}) {
    if (history->running) {
      history->running->end -= shift;
    }
    for (IntervalReading& interval : history->past) {
      interval.end -= shift;
    }
  }
}

// ---- Tones ----

struct TableOf {
  ToneTable kind;
  const char* command;
  const char* what;
  int noValue;
  std::vector<std::optional<float>> ToneDirection::*levels;
};

constexpr TableOf kBits{ToneTable::kBits, "show BITSps", "bits", -1, nullptr};
constexpr TableOf kLevels[] = {
    {ToneTable::kSnr, "show SNRps", "SNR", G9972_SNR_NO_VALUE, &ToneDirection::snr_db},
    {ToneTable::kNoise, "show ALNps", "noise", G9972_ALN_NO_VALUE, &ToneDirection::noise_dbmHz},
    {ToneTable::kHlog, "show HLOGps", "HLOG", G9972_HLOG_NO_VALUE, &ToneDirection::hlog_db}};

PrintedTable readTable(Taking& taking, const TableOf& table, const char* word) {
  const std::string command = fmt::format("{} {}", taking.of(table.command), word);
  PrintedTable printed = tableIn(taking.reply(table.what, command), table.kind);
  if (!printed.problem.empty()) {
    taking.remark(fmt::format("{}: {}", command, printed.problem));
  }
  return printed;
}

void takeTones(Taking& taking, const char* word, ToneDirection& direction) {
  const std::vector<int> bits = readTable(taking, kBits, word).codes;
  direction.bits.assign(bits.begin(), bits.end());
  for (const TableOf& table : kLevels) {
    for (const int code : readTable(taking, table, word).codes) {
      (direction.*table.levels)
          .push_back(code == table.noValue ? std::nullopt
                                           : std::optional(static_cast<float>(valueOf(table.kind, code))));
    }
  }
  const std::string command = fmt::format("{} {}", taking.of("show SATN"), word);
  if (const auto tenths = tenthsIn(trimmed(firstLineOf(taking.reply("attenuation", command))))) {
    direction.attenuation_db = *tenths / 10.0;
  }
  // What a short table does not have has no value.
  const auto fill = [](auto& table) {
    if (!table.empty()) {
      table.resize(QVR_MAX_NUMBER_OF_TONES);
    }
  };
  fill(direction.bits);
  fill(direction.snr_db);
  fill(direction.noise_dbmHz);
  fill(direction.hlog_db);
}

void takeShowtime(Taking& taking) {
  takeStatus(taking);
  takeChannel(taking, "ds", taking.line.downstream);
  takeChannel(taking, "us", taking.line.upstream);
  auto tones = std::make_shared<ToneReading>();
  tones->time = taking.now;
  takeTones(taking, "ds", tones->downstream);
  takeTones(taking, "us", tones->upstream);
  if (stateIn(taking.reply("state", taking.of("show line state"))) != LS_SHOWTIME) {
    taking.remark("the line went down while it was read: the tables may be of before or empty");
  }
  taking.line.tones = std::move(tones);
}

void takeLine(Taking& taking, QVR_lineId_t lines) {
  const std::string reply = taking.reply("state", taking.of("show line state"));
  const auto state = stateIn(reply);
  if (!state) {
    taking.remark("state: " + firstLineOf(reply));
    return;
  }
  taking.line.answers = true;
  taking.line.state = *state;
  takeDevice(taking, lines);
  takeInitialisation(taking);
  takeInventory(taking);
  takeQuarterHours(taking);
  takeDays(taking);
  shiftToUtc(taking);
  if (taking.line.up()) {
    takeShowtime(taking);
  }
}

}  // namespace

TakenReading readConsole(const Ask& ask, QVR_lineId_t line, time_t now, const Progress& progress) {
  const auto began = std::chrono::steady_clock::now();
  progress("lines");
  const QVR_lineId_t lines = numberOfLines(ask);
  if (line >= lines) {
    throw ReportError(fmt::format("there is no line {}: the console has {}", line, lines));
  }
  Taking taking{ask, progress, now, {}, {}};
  taking.line.line = line;
  takeLine(taking, lines);
  TakenReading taken;
  taken.reading.time = taken.reading.countedSince = now;
  taken.reading.number = 1;
  taken.reading.duration_s = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
  taken.reading.lines.push_back(std::move(taking.line));
  taken.remarks = std::move(taking.remarks);
  return taken;
}

}  // namespace gfast::report

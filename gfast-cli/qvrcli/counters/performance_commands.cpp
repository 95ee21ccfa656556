#include "qvrcli/counters/performance_commands.h"

#include <fmt/format.h>

#include <string_view>

#include "qvrcli/session/interpreter.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/labelled_lines.h"

namespace gfast::console {

namespace {

constexpr uint8_t kRecordLabelWidth = 20;

// A counter beyond 31 bits shows as a negative number.
void printCount(const LabelledLines& lines, std::string_view label, uint32_t value) {
  lines.print(label, static_cast<int32_t>(value));
}

// A counter of a group, and the name that is printed for it.
template <typename Group>
struct Shown {
  const char* name;
  uint32_t Group::*counter;
};

template <typename Group, size_t Count>
void printGroup(cli_def* session, bool nearEnd, const Shown<Group> (&rows)[Count], const Group& group) {
  const LabelledLines lines(session, kRecordLabelWidth);
  for (const Shown<Group>& row : rows) {
    printCount(lines, fmt::format("{}-{}", nearEnd ? "NE" : "FE", row.name), group.*row.counter);
  }
}

using Line = QVR_linePerformance_t;
constexpr Shown<Line> kLineCounters[] = {
    {"LOS", &Line::LOS}, {"LOM", &Line::LOM}, {"LOR", &Line::LOR},   {"LPR", &Line::LPR},
    {"ES", &Line::ES},   {"SES", &Line::SES}, {"LOSS", &Line::LOSS}, {"LORS", &Line::LORS},
    {"UAS", &Line::UAS}, {"SRA", &Line::SRA}, {"FRA", &Line::FRA},   {"RPA", &Line::RPA},
    {"BSW", &Line::BSW},
};
constexpr Shown<Line> kNearLineCounters[] = {
    {"TIGA", &Line::TIGA},
    {"FULL_INITS", &Line::FULL_INITS},
    {"FAILEDFULL_INITS", &Line::FAILEDFULL_INITS},
    {"FAST_INITS", &Line::FAST_INITS},
    {"FAILEDFAST_INITS", &Line::FAILEDFAST_INITS},
};

using Channel = QVR_ChannelPerformance_t;
constexpr Shown<Channel> kChannelCounters[] = {
    {"CV", &Channel::CV},
    {"RTXUC", &Channel::RTXUC},
    {"RTXTX", &Channel::RTXTX},
    {"EFB", &Channel::EFB},
};

using Near = G9972_NEAR_END_COUNTERS_S;
constexpr Shown<Near> kNearBlock[] = {
    {"LOS", &Near::LOS},
    {"LOM", &Near::LOM},
    {"LOR", &Near::LOR},
    {"LPR", &Near::LPR},
    {"ES", &Near::ES},
    {"SES", &Near::SES},
    {"LOSS", &Near::LOSS},
    {"LORS", &Near::LORS},
    {"UAS", &Near::UAS},
    {"FULL_INITS", &Near::FULL_INITS},
    {"FAILEDFULL_INITS", &Near::FAILEDFULL_INITS},
    {"FAST_INITS", &Near::FAST_INITS},
    {"FAILEDFAST_INITS", &Near::FAILEDFAST_INITS},
    {"SRA", &Near::SRA},
    {"FRA", &Near::FRA},
    {"RPA", &Near::RPA},
    {"BSW", &Near::BSW},
    {"CV", &Near::CV},
    {"RTXUC", &Near::RTXUC},
    {"RTXTX", &Near::RTXTX},
    {"EFB", &Near::EFB},
};

using Far = G9972_FAR_END_COUNTERS_S;
constexpr Shown<Far> kFarBlock[] = {
    {"LOS", &Far::LOS}, {"LOM", &Far::LOM}, {"LOR", &Far::LOR},     {"LPR", &Far::LPR},
    {"ES", &Far::ES},   {"SES", &Far::SES}, {"LOSS", &Far::LOSS},   {"LORS", &Far::LORS},
    {"UAS", &Far::UAS}, {"CV", &Far::CV},   {"SRA", &Far::SRA},     {"FRA", &Far::FRA},
    {"RPA", &Far::RPA}, {"BSW", &Far::BSW}, {"RTXUC", &Far::RTXUC}, {"RTXTX", &Far::RTXTX},
    {"EFB", &Far::EFB},
};

void printBlank(cli_def* session) {
  cli_print(session, " ");
}

// The far end has no initialisation counts and no TIGA.
void CLI_printLinePerformanceCounters(cli_def* session, const QVR_linePerformance_t& counters, bool nearEnd) {
  printGroup(session, nearEnd, kLineCounters, counters);
  if (nearEnd) {
    printGroup(session, nearEnd, kNearLineCounters, counters);
  }
}

void CLI_printChannelPerformanceCounters(cli_def* session, const QVR_ChannelPerformance_t& counters,
                                         bool nearEnd) {
  printGroup(session, nearEnd, kChannelCounters, counters);
}

void CLI_printPerformanceMonitoringCounters(cli_def* session, const G9972_PM_COUNTERS_S& counters) {
  printGroup(session, true, kNearBlock, counters.ne);
  printBlank(session);
  printGroup(session, false, kFarBlock, counters.fe);
}

void printEnd(cli_def* session, const QVR_performanceCounterDB_t& counters, bool nearEnd) {
  CLI_printLinePerformanceCounters(session, counters.linePerformanceCounters, nearEnd);
  CLI_printChannelPerformanceCounters(session, counters.channelPerformanceCounters, nearEnd);
}

bool isInvalid(const QVR_performanceCounterDB_t& counters) {
  return counters.linePerformanceCounters.timeInterval.INVALID != FALSE;
}

void printInvalid(const LabelledLines& lines, bool invalid) {
  lines.heading("");
  lines.printFlag("INVALID:", invalid);
}

constexpr Refusal kNoSuchLineNumber = "invalid line number";
constexpr Refusal kNoSuchEnd =
    "parameter must be curr or prev";  // names the wrong choices; scripts look for it

template <typename Counters>
using Reader = QVR_retval_t (*)(QVR_lineId_t, Counters*);

template <typename Counters>
int showCurrent(cli_def* session, char* argv[], int argc, Reader<Counters> readNear, Reader<Counters> readFar,
                void (*print)(cli_def*, const Counters&, bool)) {
  ArgumentReader words(session, argv, argc);
  const QVR_lineId_t line = words.line(0, kNoSuchLineNumber);
  const bool nearEnd = words.end(1, kNoSuchEnd, OtherWord::kNearEnd) == End::kNear;
  if (words.refused()) {
    return CLI_OK;
  }
  Counters counters{};
  if (QVR_STATUS_ERROR((nearEnd ? readNear : readFar)(line, &counters))) {
    cli_print(session, "QVR_readGfastCounters failed");
  } else {
    print(session, counters, nearEnd);
  }
  return CLI_OK;
}

// One of the two histories.
struct History {
  uint8_t (*count)(QVR_lineId_t);
  QVR_retval_t (*get)(QVR_lineId_t, int8_t, QVR_intervalLinkCounterDB_t*);
  bool nearEndFirst;  // the first INVALID flag is the near end's; otherwise both are the far end's
};

// Quarter hours show the far end's flag twice: scripts expect that.
constexpr History kQuarterHours{QVR_numberOf15minHistoryIntervals, QVR_getPrev15minCounters, false};
constexpr History kDays{QVR_numberOf24hrHistoryIntervals, QVR_getPrev24hrCounters, true};

void printInterval(cli_def* session, const QVR_intervalLinkCounterDB_t& interval, bool nearEndFirst) {
  const LabelledLines lines(session, kRecordLabelWidth);
  printCount(lines, "collection time:", interval.collectionTime);
  lines.print("timestamp:", interval.timestampString);
  printInvalid(lines, isInvalid(nearEndFirst ? interval.neCounters : interval.feCounters));
  printEnd(session, interval.neCounters, true);
  printInvalid(lines, isInvalid(interval.feCounters));
  printEnd(session, interval.feCounters, false);
}

int showInterval(cli_def* session, char* argv[], int argc, const History& history) {
  constexpr Refusal noSuchInterval =
      "Invalid interval number 0\n";  // 0 whatever was typed: scripts look for it
  ArgumentReader words(session, argv, argc);
  const QVR_lineId_t line = words.line(0, kNoSuchLineNumber);
  const int interval = words.number(1, 0, history.count(line) - 1, noSuchInterval, 0);
  if (words.refused()) {
    return CLI_OK;
  }
  QVR_intervalLinkCounterDB_t counters{};
  if (QVR_STATUS_ERROR(history.get(line, static_cast<int8_t>(interval), &counters))) {
    cli_print(session, "Failed to get previous counters for interval %d", interval);
  } else {
    printInterval(session, counters, history.nearEndFirst);
  }
  return CLI_OK;
}

int showCount(cli_def* session, char* argv[], int argc, const History& history) {
  ArgumentReader words(session, argv, argc);
  const QVR_lineId_t line = words.line(0, kNoSuchLineNumber);
  if (!words.refused()) {
    cli_print(session, "%1d", history.count(line));
  }
  return CLI_OK;
}

// Prints one interval of the history. TRUE makes the library go on with the next one.
BOOL CLI_printCounterHistory(QVR_lineId_t lineId, QVR_intervalLinkCounterDB_t* interval) {
  const LabelledLines lines(cli, kRecordLabelWidth);
  lines.print("Line", lineId);
  lines.print("intervalNumber", interval->intervalNumber);
  lines.print("neCounters", isInvalid(interval->neCounters) ? "INVALID" : "VALID");
  lines.print("feCounters", isInvalid(interval->feCounters) ? "INVALID" : "VALID");
  printCount(lines, "collectionTime", interval->collectionTime);
  lines.print("timestamp", interval->timestampString);
  printEnd(cli, interval->neCounters, true);
  printBlank(cli);
  printEnd(cli, interval->feCounters, false);
  printBlank(cli);
  return TRUE;
}

int CLI_showPerformanceMonitoringCounters(cli_def* session, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(session, argv, argc);
  const QVR_lineId_t line = words.line(0, kNoSuchLineNumber);
  if (words.refused()) {
    return CLI_OK;
  }
  G9972_PM_COUNTERS_S counters{};
  const QVR_retval_t status = QVR_readPerformanceMonitoringCounters(line, &counters);
  if (QVR_STATUS_ERROR(status)) {
    cli_print(session, "QVR_readPerformanceMonitoringCounters failed (%d)", static_cast<int>(status));
  } else {
    CLI_printPerformanceMonitoringCounters(session, counters);
  }
  return CLI_OK;
}

int CLI_showLinePerformanceCounters(cli_def* session, const char* /*command*/, char* argv[], int argc) {
  return showCurrent(session, argv, argc, QVR_getCurrNELinePerformance, QVR_getCurrFELinePerformance,
                     CLI_printLinePerformanceCounters);
}

int CLI_showChannelPerformanceCounters(cli_def* session, const char* /*command*/, char* argv[], int argc) {
  return showCurrent(session, argv, argc, QVR_getCurrNEChannelPerformance, QVR_getCurrFEChannelPerformance,
                     CLI_printChannelPerformanceCounters);
}

int CLI_show15minCounters(cli_def* session, const char* /*command*/, char* argv[], int argc) {
  return showInterval(session, argv, argc, kQuarterHours);
}

int CLI_show24hrCounters(cli_def* session, const char* /*command*/, char* argv[], int argc) {
  return showInterval(session, argv, argc, kDays);
}

int CLI_showNumberOf15minIntervals(cli_def* session, const char* /*command*/, char* argv[], int argc) {
  return showCount(session, argv, argc, kQuarterHours);
}

int CLI_showNumberOf24hrIntervals(cli_def* session, const char* /*command*/, char* argv[], int argc) {
  return showCount(session, argv, argc, kDays);
}

int CLI_dump15minCountersHistoryDB(cli_def* session, const char* /*command*/, char* argv[], int argc) {
  constexpr QVR_lineId_t otherwise = 1;  // the usage line says 0, but scripts count on 1
  ArgumentReader words(session, argv, argc);
  const QVR_lineId_t line = words.line(0, kNoSuchLineNumber, otherwise);
  if (!words.refused()) {
    QVR_dump15minCounterHistoryDB(line, CLI_printCounterHistory);
  }
  return CLI_OK;
}

constexpr Command kPerformanceCommands[] = {
    exec("show pm-counters", "Show performance monitoring counters for line",
         CLI_showPerformanceMonitoringCounters, atLeast<1>, kReads, "show pm-counters <line-id>"),
    exec("show 15min-counters", "Show 15-minute performance counters", CLI_show15minCounters, between<0, 2>,
         kReads, "show 15min-counters [<line-id>] [interval]"),
    exec("show 24hr-counters", "Show 24-hour performance counters", CLI_show24hrCounters, between<0, 2>,
         kReads, "show 24hr-counters [<line-id>] [interval]"),
    exec("show line performance-counters", "Show (near-end) line performance counters",
         CLI_showLinePerformanceCounters, anyNumber, kReads,
         "show line performance-counters [<line-id>] [(ne | fe)] : { 0, ne }"),
    exec("show channel performance-counters", "Show (near-end) line performance counters",
         CLI_showChannelPerformanceCounters, between<1, 2>, kReads,
         "show channel performance-counters <line-id> [(ne | fe)] : { 0, ne }"),
    exec("show number 15min-intervals", "Show number of 15 minute history intervals",
         CLI_showNumberOf15minIntervals, between<0, 1>, kReads, "show number 15min-intervals [<line-id>]"),
    exec("show number 24hr-intervals", "Show number of 24 hour history intervals",
         CLI_showNumberOf24hrIntervals, between<0, 1>, kReads, "show number 24hr-intervals [<line-id>]"),
    exec("dump 15min-history", "Dump the 15-minute counter history database", CLI_dump15minCountersHistoryDB,
         between<0, 1>, kReads, "dump 15min-history [<line-id>] : { 0 }"),
};

}  // namespace

std::span<const Command> performanceCommands() {
  return kPerformanceCommands;
}

}  // namespace gfast::console

#include "qvrcli/serve/field_model.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "qvrcli/findings/findings.h"
#include "qvrcli/reading/counter_columns.h"
#include "qvrcli/serve/encodings.h"

namespace gfast::console {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kUndetermined = "undetermined";

// ---- Status ----

Json margin(const std::optional<double>& margin_db) {
  return margin_db ? Json(inTenths(*margin_db, -511, 511)) : Json(kUndetermined);
}

Json power(const std::optional<double>& power_dbm) {
  return power_dbm ? Json(inTenths(*power_dbm, -311, 311)) : Json(kUndetermined);
}

Json rate(const std::optional<uint32_t>& rate_kbps) {
  return rate_kbps ? Json(*rate_kbps) : Json(kUndetermined);
}

void addTones(Json& status, const ToneDirection& tones) {
  status["signal-attenuation"] =
      tones.attenuation_db ? Json(inTenths(*tones.attenuation_db, 0, 1001)) : Json(kUndetermined);
  if (!tones.snr_db.empty()) {
    status["snr"] = {{"snr-sub-carrier-group-size", 1}, {"snrps", base64(snrOctets(tones.snr_db))}};
  }
  if (!tones.bits.empty()) {
    status["bitsps"] = base64(bitNibbles(tones.bits));
  }
  if (!tones.hlog_db.empty()) {
    status["hlog"] = {{"hlog-sub-carrier-group-size", kGroupSize},
                      {"hlogps", base64(hlogOctets(tones.hlog_db, tones.inUse))}};
  }
}

Json directionStatus(const DirectionReading& direction) {
  Json status;
  status["snr-margin"] = margin(direction.snrMargin_db);
  if (direction.electricalLength_db) {
    status["upbo-electrical-length"] = inTenths(*direction.electricalLength_db, 0, 1280);
  }
  status["actual-aggregate-transmit-power"] = power(direction.transmitPower_dbm);
  status["robust-management-channel"] = {{"snr-margin", margin(direction.rmcSnrMargin_db)}};
  return status;
}

const char* causeWord(G9972_initSuccessFailureCause_t cause) {
  constexpr const char* kWords[] = {
      "successful", "config-error", "config-not-feasible", "communication-problem", "no-far-end-ftu-detected",
      "unknown"};
  return kWords[std::min<size_t>(cause, std::size(kWords) - 1)];
}

// A failure holds until the next showtime.
Json failures(const LineReading& line, bool nearEnd) {
  const auto& last = line.memory.lastFailure;
  const auto is = [&](LINK_FAILURE_TYPE_E reason) {
    return nearEnd && !line.up() && last && last->reason == reason;
  };
  return {{"loss-of-signal", is(LF_REASON_LOSS_OF_SIGNAL)},
          {"loss-of-rmc", is(LF_REASON_LOSS_OF_RMC)},
          {"loss-of-margin", is(LF_REASON_LOSS_OF_MARGIN)},
          {"loss-of-power", is(LF_REASON_LOSS_OF_POWER)}};
}

void addInitialisation(const LineReading& line, Json& status) {
  if (!line.initialisation) {
    return;
  }
  constexpr uint8_t kLastDownstreamSignal = 21;
  constexpr uint8_t kLastUpstreamSignal = 10;
  const InitialisationReading& initialisation = *line.initialisation;
  status["initialization-success-failure-cause"] = causeWord(initialisation.cause);
  status["ftu-o"]["failures"]["line-initialization-failure"] = !line.up() && initialisation.cause != 0;
  if (initialisation.lastSignalDownstream <= kLastDownstreamSignal) {
    status["downstream"]["initialization-last-transmitted-signal"] = initialisation.lastSignalDownstream;
  }
  if (initialisation.lastSignalUpstream <= kLastUpstreamSignal) {
    status["upstream"]["initialization-last-received-signal"] = initialisation.lastSignalUpstream;
  }
}

Json lineStatus(const LineReading& line, bool whole) {
  Json status;
  status["link-state"] = line.up() ? "l0-link-state" : "l3-link-state";
  status["ftu-o"]["failures"] = failures(line, line.networkSide);
  status["ftu-r"]["failures"] = failures(line, !line.networkSide);
  status["downstream"] = directionStatus(line.downstream);
  status["upstream"] = directionStatus(line.upstream);
  addInitialisation(line, status);
  if (whole && line.tones) {
    addTones(status["downstream"], line.tones->downstream);
    addTones(status["upstream"], line.tones->upstream);
    const ToneDirection& downstream = line.tones->downstream;
    if (!downstream.noise_dbmHz.empty()) {  // the model has it for this direction only
      status["downstream"]["aln"] = {
          {"aln-sub-carrier-group-size", kGroupSize},
          {"alnps", base64(noiseOctets(downstream.noise_dbmHz, downstream.inUse))}};
    }
  }
  return status;
}

Json channelStatus(const DirectionReading& direction) {
  Json status;
  status["net-data-rate"] = rate(direction.netDataRate_kbps);
  status["expected-throughput"] = rate(direction.expectedThroughput_kbps);
  status["gamma-data-rate"] = rate(direction.gammaDataRate_kbps);
  status["attainable-net-data-rate"] = rate(direction.attainableNetDataRate_kbps);
  const auto addWithin = [&status](const char* leaf, const std::optional<uint8_t>& value, bool (*fits)(int)) {
    if (value && fits(*value)) {
      status[leaf] = *value;
    }
  };
  addWithin("dtu-fec-codeword-length", direction.codewordLength_bytes, [](int n) { return n >= 32; });
  addWithin("dtu-fec-redundancy", direction.codewordRedundancy_bytes,
            [](int n) { return n >= 2 && n <= 16 && n % 2 == 0 && n != 14; });
  addWithin("fec-codewords-per-dtu", direction.codewordsPerDtu, [](int n) { return n >= 1 && n <= 16; });
  return status;
}

// ---- Counters ----

// What the lists of intervals of the two objects, line and channel, have in common.
struct Intervals {
  CounterOf what;
  uint32_t length_s;
};

void addCounters(Json& end, const EndCounters& counters, const Intervals& intervals) {
  for (const CounterColumn& column : kCounterColumns) {
    if (column.what == intervals.what && (!column.nearOnly || counters.countsNearOnly)) {
      const uint32_t count = counters.*column.field;
      end[column.model] = column.seconds ? std::min(count, intervals.length_s) : count;
    }
  }
}

// The initialisations and gain adjustments are the network end's in the model.
Json endOf(const IntervalReading& interval, const EndInterval& counted, bool networkEnd, bool past,
           const Intervals& intervals) {
  Json end;
  end["measured-time"] = interval.measuredTime_s;
  if (past) {
    end["invalid-data-flag"] = !counted.complete;
    end["time-stamp"] = dateAndTime(interval.end);
  }
  EndCounters counters = counted.counters;
  counters.countsNearOnly = counters.countsNearOnly && networkEnd;
  addCounters(end, counters, intervals);
  return end;
}

void addEnds(Json& object, const LineReading& line, const IntervalReading& interval, bool past,
             const Intervals& intervals) {
  const bool nearIsNetwork = line.networkSide;
  object["ftu-o"] = endOf(interval, nearIsNetwork ? interval.near : interval.far, true, past, intervals);
  object["ftu-r"] = endOf(interval, nearIsNetwork ? interval.far : interval.near, false, past, intervals);
}

Json history(const LineReading& line, const HistoryReading& read, const Intervals& intervals, bool whole) {
  Json all = Json::object();
  if (read.running) {
    addEnds(all["current"], line, *read.running, false, intervals);
  }
  all["number-of-intervals"] = read.past.size();
  all["non-valid-intervals"] = std::ranges::count_if(
      read.past, [](const IntervalReading& interval) { return !interval.near.complete; });
  if (whole && !read.past.empty()) {
    Json& past = all["history"] = Json::array();
    for (size_t i = 0; i < read.past.size(); i++) {
      Json entry;
      entry["interval-number"] = i + 1;
      addEnds(entry, line, read.past[i], true, intervals);
      past.push_back(std::move(entry));
    }
  }
  return all;
}

Json performance(const LineReading& line, CounterOf what, bool whole) {
  return {
      {"intervals-15min",
       history(line, line.quarterHours, {what, QVR_K_SECS_IN_15MIN_COLLECTION_INTERVAL}, whole)},
      {"intervals-24hr", history(line, line.days, {what, QVR_K_SECS_IN_24HR_COLLECTION_INTERVAL}, whole)}};
}

// ---- Inventory ----

template <size_t Size>
std::string whole(const char (&field)[Size]) {
  return base64({field, field + Size});
}

// A text ends at its first zero byte or fills its field.
template <size_t Size>
std::string text(const char (&field)[Size]) {
  return base64({field, std::find(field, field + Size, '\0')});
}

Json inventoryOf(const QVR_inventoryParameters_t& end) {
  return {{"g.994.1-vendor-id", whole(end.GHS_VENDOR)},
          {"version-number", text(end.VERSION)},
          {"system-vendor-id", whole(end.SYSTEM_VENDOR)},
          {"system-serial-number", text(end.SERIALNR)}};
}

// ---- The whole ----

Json fastLine(const LineReading& line, bool all) {
  Json object;
  object["channel"] = {
      {"status",
       {{"downstream", channelStatus(line.downstream)}, {"upstream", channelStatus(line.upstream)}}},
      {"performance", performance(line, CounterOf::kChannel, all)}};
  object["status"] = lineStatus(line, all);
  if (line.inventory) {
    object["inventory"] = {{"ftu-o", inventoryOf(line.inventory->FTU_O)},
                           {"ftu-r", inventoryOf(line.inventory->FTU_R)}};
  }
  object["performance"] = performance(line, CounterOf::kLine, all);
  return object;
}

const char* operStatus(const LineReading& line) {
  if (!line.answers) {
    return "not-present";
  }
  return line.up() ? "up" : "down";
}

std::string nameOf(const LineReading& line) {
  return "line" + std::to_string(line.line);
}

Json interfaceOf(const LineReading& line, const Reading& reading, bool all) {
  Json interface;
  interface["name"] = nameOf(line);
  interface["type"] = "iana-if-type:fastdsl";
  interface["admin-status"] = line.state == LS_IDLE ? "down" : "up";
  interface["oper-status"] = operStatus(line);
  if (line.memory.stateSince) {
    interface["last-change"] = dateAndTime(*line.memory.stateSince);
  }
  interface["if-index"] = line.line + 1;
  interface["statistics"] = {{"discontinuity-time", dateAndTime(reading.countedSince)}};
  Json& fastdsl = interface["bbf-fastdsl:line"] = {{"operational-mode", "bbf-fastdsl:mode-fast"}};
  if (line.answers) {
    fastdsl["bbf-fast:line"] = fastLine(line, all);
  }
  return interface;
}

Json ownTones(const ToneDirection& tones) {
  Json own = Json::object();
  if (!tones.noise_dbmHz.empty()) {
    own["noise"] = base64(noiseOfTones(tones.noise_dbmHz));
  }
  if (!tones.hlog_db.empty()) {
    own["hlog"] = base64(hlogOfTones(tones.hlog_db));
  }
  return own;
}

void addFigures(Json& own, const char* direction, const DirectionFigures& figures) {
  Json figuresOf = Json::object();
  if (figures.netDataRate_kbps) {
    figuresOf["net-data-rate"] = *figures.netDataRate_kbps;
  }
  if (figures.snrMargin_db) {
    figuresOf["snr-margin"] = inTenths(*figures.snrMargin_db, -511, 511);
  }
  own[direction] = std::move(figuresOf);
}

Json ownQuarterHours(const LineReading& line) {
  Json quarters = Json::array();
  for (const QuarterFigures& quarter : line.dayFigures) {
    Json own{{"start", dateAndTime(quarter.start)}};
    addFigures(own, "downstream", quarter.downstream);
    addFigures(own, "upstream", quarter.upstream);
    quarters.push_back(std::move(own));
  }
  return quarters;
}

Json ownFindings(const LineReading& line) {
  Json all = Json::array();
  for (const Finding& finding : findingsIn(line)) {
    all.push_back({{"number", all.size() + 1},
                   {"what", finding.what},
                   {"sure", wordOf(finding.sureness)},
                   {"text", finding.text}});
  }
  return all;
}

Json ownLine(const LineReading& line, bool all) {
  Json own;
  own["name"] = nameOf(line);
  own["answers"] = line.answers;
  if (line.memory.lastFailure) {
    own["last-failure"] = {{"time", dateAndTime(line.memory.lastFailure->time)},
                           {"reason", failureText(line.memory.lastFailure->reason)}};
  }
  if (!line.answers) {
    return own;
  }
  own["side"] = line.networkSide ? "network" : "subscriber";
  own["state"] = stateWord(line.state);
  if (line.initialisation) {
    own["initialisation"] = causeText(line.initialisation->cause);
  }
  own["firmware"] = line.firmware;
  if (line.deviceTemperature_c) {
    own["temperature"] = static_cast<int32_t>(*line.deviceTemperature_c);
  }
  if (all) {
    own["quarter-hour"] = ownQuarterHours(line);
    own["finding"] = ownFindings(line);
  }
  if (all && line.tones) {
    own["tones"] = {{"time", dateAndTime(line.tones->time)},
                    {"downstream", ownTones(line.tones->downstream)},
                    {"upstream", ownTones(line.tones->upstream)}};
  }
  return own;
}

Json eventOf(const RecentEvent& event) {
  Json object;
  object["time"] = dateAndTime(event.time);
  if (event.line) {
    object["line"] = "line" + std::to_string(*event.line);
  }
  object["what"] = event.what;
  if (!event.why.empty()) {
    object["why"] = event.why;
  }
  return object;
}

Json ownObject(const Reading& reading, const Json& lines) {
  Json own;
  own["time"] = dateAndTime(reading.time);
  own["number"] = reading.number;
  own["line"] = lines;
  Json& events = own["event"] = Json::array();
  for (size_t i = 0; i < reading.events.size(); i++) {
    Json event = eventOf(reading.events[i]);
    event["number"] = i + 1;
    events.push_back(std::move(event));
  }
  return own;
}

std::string documentOf(const Reading& reading, const std::vector<const LineReading*>& lines, bool all) {
  Json interfaces = Json::array();
  Json own = Json::array();
  for (const LineReading* line : lines) {
    interfaces.push_back(interfaceOf(*line, reading, all));
    own.push_back(ownLine(*line, all));
  }
  const Json document = {{"ietf-interfaces:interfaces-state", {{"interface", interfaces}}},
                         {"gfast-cli-reading:reading", ownObject(reading, own)}};
  return document.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string linesDocument(const Reading& reading) {
  std::vector<const LineReading*> lines;
  for (const LineReading& line : reading.lines) {
    lines.push_back(&line);
  }
  return documentOf(reading, lines, false);
}

std::optional<std::string> lineDocument(const Reading& reading, QVR_lineId_t line) {
  const auto found = std::ranges::find(reading.lines, line, &LineReading::line);
  return found == reading.lines.end() ? std::nullopt : std::optional(documentOf(reading, {&*found}, true));
}

}  // namespace gfast::console

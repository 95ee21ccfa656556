#include "qvrcli/reading/collect_reading.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "clock/clock.h"
#include "qvrcli/session/turn.h"

namespace gfast::console {

namespace {

static_assert(QVR_K_MAX_LINES_PER_DEVICE == 1);
constexpr size_t kTheLine = 0;  // the only one of a device

uint32_t operationsDone = 0;  // by the reading thread, which alone reads

// Calls one operation of the library when it is the reading's turn.
template <typename Operation, typename... Arguments>
auto ask(Operation operation, Arguments... arguments) {
  const ReadingTurn turn;
  operationsDone++;
  return operation(arguments...);
}

double tenths(int value) {
  return value / 10.0;
}

std::optional<double> level(int16_t value) {
  return value == QVR_K_LEVEL_NOT_AVAILABLE ? std::nullopt : std::optional(tenths(value));
}

// ---- Status ----

void readDevice(LineReading& reading) {
  const QVR_deviceId_t device = QVR_deviceIdforLine(reading.line);
  QVR_deviceInfo_t info{};
  if (device == QVR_K_DEVICE_NULL || QVR_isDeviceActive(device) == FALSE ||
      QVR_STATUS_ERROR(ask(QVR_getDeviceInfo, device, &info))) {
    return;
  }
  reading.answers = true;
  reading.networkSide = QVR_isNetworkSideLine(reading.line) != FALSE;
  reading.state = info.lineState[kTheLine];
  // Only the network side has the result of an initialisation.
  if (reading.networkSide) {
    reading.initialisation = {info.initsFcause[kTheLine], info.initLastSignalds[kTheLine],
                              info.initLastSignalus[kTheLine]};
  }
  reading.deviceTemperature_c = info.temperatureInCelcius;
  const QVR_versionNumber_t& version = info.firmwareVersion;
  reading.firmware = fmt::format("{}.{}.{}.{}", version.versionChipset, version.versionGa, version.versionRc,
                                 version.versionProfile);
}

void takeChannel(const QVR_channelStatus_t& status, DirectionReading& direction) {
  direction.netDataRate_kbps = status.NDR;
  direction.expectedThroughput_kbps = status.ETR;
  direction.gammaDataRate_kbps = status.GDR;
  direction.attainableNetDataRate_kbps = status.ATTNDR;
  direction.codewordLength_bytes = status.DTU_NFEC;
  direction.codewordRedundancy_bytes = status.DTU_RFEC;
  direction.codewordsPerDtu = status.DTU_Q;
}

// Of a line in showtime: in other states the chip's figures are those of the last showtime, or none.
void readStatus(LineReading& reading) {
  QVR_lineStatus_t status{};
  if (QVR_STATUS_OK(ask(QVR_getLineStatus, reading.line, &status))) {
    reading.downstream.snrMargin_db = level(status.SNRMds);
    reading.upstream.snrMargin_db = level(status.SNRMus);
    reading.upstream.rmcSnrMargin_db = tenths(status.SNRM_RMCus);
    if (reading.downstream.snrMargin_db) {  // of the same answer of the far end
      reading.downstream.rmcSnrMargin_db = tenths(status.SNRM_RMCds);
    }
    reading.downstream.transmitPower_dbm = tenths(status.ACTATPds);
    reading.upstream.transmitPower_dbm = level(status.ACTATPus);
    reading.upstream.electricalLength_db = tenths(status.UPBOKLE);
    reading.downstream.electricalLength_db = tenths(status.UPBOKLE_R);
    reading.estimatedLength = status.EWL;
  }
  QVR_channelStatus_t channel{};
  if (QVR_STATUS_OK(ask(QVR_getChannelStatusds, reading.line, &channel))) {
    takeChannel(channel, reading.downstream);
  }
  channel = {};
  if (QVR_STATUS_OK(ask(QVR_getChannelStatusus, reading.line, &channel))) {
    takeChannel(channel, reading.upstream);
  }
}

// ---- Counters ----

template <typename Line, typename Channel>
EndCounters countersOf(const Line& line, const Channel& channel) {
  EndCounters counters{};
  counters.lossOfSignal = line.LOS;
  counters.lossOfMargin = line.LOM;
  counters.lossOfRmc = line.LOR;
  counters.lossOfPower = line.LPR;
  counters.erroredSeconds = line.ES;
  counters.severelyErroredSeconds = line.SES;
  counters.lossOfSignalSeconds = line.LOSS;
  counters.lossOfRmcSeconds = line.LORS;
  counters.unavailableSeconds = line.UAS;
  counters.bitSwaps = line.BSW;
  counters.rateAdaptations = line.SRA;
  counters.fastRateAdaptations = line.FRA;
  counters.rmcAdaptations = line.RPA;
  counters.codeViolations = channel.CV;
  counters.uncorrectedDtus = channel.RTXUC;
  counters.retransmittedDtus = channel.RTXTX;
  counters.errorFreeBits = channel.EFB;
  return counters;
}

// What only the near end counts.
template <typename Line>
void takeNearOnly(const Line& line, EndCounters& counters) {
  counters.countsNearOnly = true;
  counters.gainAdjustments = line.TIGA;
  counters.fullInitialisations = line.FULL_INITS;
  counters.failedFullInitialisations = line.FAILEDFULL_INITS;
  counters.fastInitialisations = line.FAST_INITS;
  counters.failedFastInitialisations = line.FAILEDFAST_INITS;
}

void readCounters(LineReading& reading) {
  G9972_PM_COUNTERS_S all{};
  if (QVR_STATUS_ERROR(ask(QVR_readPerformanceMonitoringCounters, reading.line, &all))) {
    return;
  }
  auto& near = reading.networkSide ? reading.networkEnd : reading.subscriberEnd;
  auto& far = reading.networkSide ? reading.subscriberEnd : reading.networkEnd;
  near = countersOf(all.ne, all.ne);
  takeNearOnly(all.ne, *near);
  far = countersOf(all.fe, all.fe);
}

EndCounters countersOf(const QVR_performanceCounterDB_t& end) {
  return countersOf(end.linePerformanceCounters, end.channelPerformanceCounters);
}

IntervalReading intervalOf(const QVR_intervalLinkCounterDB_t& interval, bool nearComplete, bool farComplete) {
  IntervalReading reading;
  reading.end = interval.timestamp;
  reading.measuredTime_s = interval.collectionTime;
  reading.near = {nearComplete, countersOf(interval.neCounters)};
  takeNearOnly(interval.neCounters.linePerformanceCounters, reading.near.counters);
  reading.far = {farComplete, countersOf(interval.feCounters)};
  return reading;
}

bool isValid(const QVR_performanceCounterDB_t& end) {
  return end.linePerformanceCounters.timeInterval.INVALID == FALSE;
}

using GetInterval = QVR_retval_t (*)(QVR_lineId_t, int8_t, QVR_intervalLinkCounterDB_t*);

// A day is complete by its length: its INVALID flag says the opposite.
IntervalReading quarterHourOf(const QVR_intervalLinkCounterDB_t& interval) {
  return intervalOf(interval, isValid(interval.neCounters), isValid(interval.feCounters));
}

IntervalReading dayOf(const QVR_intervalLinkCounterDB_t& interval) {
  const bool whole = interval.collectionTime == QVR_K_SECS_IN_24HR_COLLECTION_INTERVAL;
  return intervalOf(interval, whole, whole);
}

HistoryReading readHistory(QVR_lineId_t line, uint8_t (*count)(QVR_lineId_t), GetInterval get,
                           IntervalReading (*take)(const QVR_intervalLinkCounterDB_t&)) {
  HistoryReading history;
  const int kept = ask(count, line);
  for (int k = 0; k < kept; k++) {
    QVR_intervalLinkCounterDB_t interval{};
    if (QVR_STATUS_ERROR(ask(get, line, static_cast<int8_t>(k), &interval))) {
      continue;
    }
    if (k == 0) {
      history.running = take(interval);
    } else {
      history.past.push_back(take(interval));
    }
  }
  return history;
}

// ---- Inventory ----

// At the subscriber side the far end is asked anew, which needs a line in showtime.
void readInventory(LineReading& reading) {
  QVR_inventoryObject_t inventory{};
  if ((reading.networkSide || reading.up()) &&
      QVR_STATUS_OK(ask(QVR_getInventory, reading.line, &inventory))) {
    reading.inventory = inventory;
  }
}

LineReading readLine(QVR_lineId_t line) {
  LineReading reading;
  reading.line = line;
  readDevice(reading);
  if (!reading.answers) {
    return reading;
  }
  if (reading.up()) {
    readStatus(reading);
  }
  readCounters(reading);
  reading.quarterHours =
      readHistory(line, QVR_numberOf15minHistoryIntervals, QVR_getPrev15minCounters, quarterHourOf);
  reading.days = readHistory(line, QVR_numberOf24hrHistoryIntervals, QVR_getPrev24hrCounters, dayOf);
  readInventory(reading);
  return reading;
}

// ---- Tones ----

template <typename Table>
using ReadTable = QVR_retval_t (*)(QVR_lineId_t, Table);

template <typename Code>
std::vector<std::optional<float>> readLevels(QVR_lineId_t line, ReadTable<Code*> read, Code noValue,
                                             float (*decibels)(Code)) {
  std::vector<Code> codes(QVR_MAX_NUMBER_OF_TONES);
  if (QVR_STATUS_ERROR(ask(read, line, codes.data()))) {
    return {};
  }
  std::vector<std::optional<float>> levels(codes.size());
  std::ranges::transform(codes, levels.begin(), [&](Code code) {
    return code == noValue ? std::nullopt : std::optional(decibels(code));
  });
  return levels;
}

std::vector<uint8_t> readBits(QVR_lineId_t line, ReadTable<uint8_t*> read) {
  std::vector<uint8_t> bits(QVR_MAX_NUMBER_OF_TONES);
  return QVR_STATUS_OK(ask(read, line, bits.data())) ? bits : std::vector<uint8_t>();
}

// ITU-T G.997.2, as qvr/tones.h has it.
float snrOf(uint8_t code) {
  return static_cast<float>(code) / 2 - 32;
}
float noiseOf(uint8_t code) {
  return -33 - static_cast<float>(code) / 2;
}
float hlogOf(int16_t code) {
  return 6 - static_cast<float>(code) / 10;
}

// The set on which the line's chip sends or receives.
std::vector<bool> readTonesInUse(QVR_lineId_t line, bool sent) {
  QVR_medleyset_t set{};
  if (QVR_STATUS_ERROR(ask(QVR_getMedleySet, line, static_cast<QVR_bool_t>(sent ? TRUE : FALSE), &set))) {
    return {};
  }
  std::vector<bool> inUse(QVR_MAX_NUMBER_OF_TONES);
  for (size_t band = 0; band < std::min<size_t>(set.numBands, MAX_NUM_BANDS_IN_MEDLEY_SET); band++) {
    for (size_t tone = set.bands[band].firstSubCarrier; tone <= set.bands[band].lastSubCarrier; tone++) {
      if (tone < inUse.size()) {
        inUse[tone] = true;
      }
    }
  }
  return inUse;
}

struct DirectionTables {
  ReadTable<uint8_t*> bits, snr, noise;
  ReadTable<int16_t*> hlog;
  QVR_retval_t (*attenuation)(QVR_lineId_t, G9972_SATN_t*);
};

constexpr DirectionTables kDownstreamTables{QVR_getLineStatusBITSpsds, QVR_getLineStatusSNRpsds,
                                            QVR_getLineStatusALNpsds, QVR_getLineStatusHLOGpsds,
                                            QVR_getSignalAttenuationds};
constexpr DirectionTables kUpstreamTables{QVR_getLineStatusBITSpsus, QVR_getLineStatusSNRpsus,
                                          QVR_getLineStatusALNpsus, QVR_getLineStatusHLOGpsus,
                                          QVR_getSignalAttenuationus};

ToneDirection readDirection(QVR_lineId_t line, const DirectionTables& tables, bool sent) {
  ToneDirection direction;
  direction.bits = readBits(line, tables.bits);
  direction.snr_db = readLevels<uint8_t>(line, tables.snr, G9972_SNR_NO_VALUE, snrOf);
  direction.noise_dbmHz = readLevels<uint8_t>(line, tables.noise, G9972_ALN_NO_VALUE, noiseOf);
  direction.hlog_db = readLevels<int16_t>(line, tables.hlog, G9972_HLOG_NO_VALUE, hlogOf);
  G9972_SATN_t attenuation = 0;
  if (QVR_STATUS_OK(ask(tables.attenuation, line, &attenuation))) {
    direction.attenuation_db = tenths(attenuation);
  }
  direction.inUse = readTonesInUse(line, sent);
  return direction;
}

// A device is counted once more when it is lost and found again.
QVR_lineId_t numberOfLines() {
  return static_cast<QVR_lineId_t>(
      std::min<uint32_t>(QVR_numberOfDevices() * QVR_numberOfLinesInDevice(), QVR_K_MAX_LINES));
}

}  // namespace

Reading collectReading() {
  const auto began = clockSource().steady();
  operationsDone = 0;
  Reading reading;
  for (QVR_lineId_t line = 0; line < numberOfLines(); line++) {
    reading.lines.push_back(readLine(line));
  }
  // Behind the lines: what happened while they were read is told as well.
  RecentEvents recent = recentEvents();
  for (LineReading& line : reading.lines) {
    line.memory = recent.lines[static_cast<size_t>(line.line)];
  }
  reading.events = std::move(recent.events);
  reading.time = clockSource().now();
  reading.duration_s = std::chrono::duration<double>(clockSource().steady() - began).count();
  reading.operations = operationsDone;
  return reading;
}

std::shared_ptr<const ToneReading> collectTones(QVR_lineId_t line) {
  const QVR_deviceId_t device = QVR_deviceIdforLine(line);
  if (device == QVR_K_DEVICE_NULL || QVR_isDeviceActive(device) == FALSE ||
      ask(QVR_isLineUp, line) == FALSE) {
    return nullptr;
  }
  const bool networkSide = QVR_isNetworkSideLine(line) != FALSE;
  auto tones = std::make_shared<ToneReading>();
  tones->downstream = readDirection(line, kDownstreamTables, networkSide);
  tones->upstream = readDirection(line, kUpstreamTables, !networkSide);
  tones->time = clockSource().now();
  return tones;
}

}  // namespace gfast::console

#include "virtual-board/measured/counter_blocks.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "chip/counters.h"
#include "std/byte_order.h"

namespace gfast::board {

namespace {

constexpr uint32_t kRevision = 1;
constexpr uint32_t kEfbUnit_bits = 65536;
constexpr uint64_t kMeanPacket = 600;
constexpr uint64_t kRingSize = 1024;
// One codeword in so many is corrected by its redundancy, and how many bytes of it.
constexpr uint64_t kCodewordsPerCorrection = 256;
constexpr uint64_t kBytesPerCorrection = 3;
// Hosts compute the length of the wire from the time gap: EWL = (262752 - 483 * gap) / 1024.
constexpr double kGapAtZero = 262752.0 / 483;
constexpr double kGapPerMetre = 1024.0 / 483;
constexpr uint32_t kImpulseProtection = 10;  // 0.1 symbols
// How busy the chip's processors are, in per cent.
constexpr uint32_t kTxHardRealTime = 22;
constexpr uint32_t kTxSoftRealTime = 9;
constexpr uint32_t kRxHardRealTime = 31;
constexpr uint32_t kRxSoftRealTime = 12;
constexpr uint32_t kTraps[] = {2, 1, 1};
// From when on a defect is persistent.
constexpr double kPersistent_s = 1;

// The lower 32 bits, as a chip shows a counter.
constexpr uint32_t wrapped(uint64_t count) {
  return static_cast<uint32_t>(count);
}

template <typename Block>
Bytes inChipOrder(const Block& block) {
  std::array<uint32_t, sizeof(Block) / 4> words;
  std::memcpy(words.data(), &block, sizeof block);
  Bytes bytes(sizeof block);
  for (size_t i = 0; i < words.size(); i++) {
    store_le32(bytes.data() + 4 * i, words[i]);
  }
  return bytes;
}

template <typename Block>
Block headed() {
  Block block{};
  block.revision = kRevision;
  block.lengthInBytes = sizeof block;
  return block;
}

// The contents of the units that one end sent or received.
struct Carried {
  uint64_t dataDtus, idleDtus;
  uint64_t dataBytes, idleBytes;
  uint64_t eocBytes;
  uint64_t packets;
};

// `newDtus` are the units without retransmissions, or those that arrived well.
Carried carried(uint64_t newDtus, uint64_t frames, const StreamState& state) {
  Carried c{};
  c.dataDtus = newDtus * state.load_percent / 100;
  c.idleDtus = newDtus - c.dataDtus;
  c.dataBytes = c.dataDtus * state.framing.dtu.payload();
  c.idleBytes = c.idleDtus * state.framing.dtu.payload();
  c.eocBytes = frames * kEocBytesPer3s / kFramesPer3s;
  c.packets = c.dataBytes / kMeanPacket;
  return c;
}

uint64_t corrections(const StreamCounts& stream, const StreamState& state) {
  return stream.dtusArrived * state.framing.dtu.codewords / kCodewordsPerCorrection;
}

// In 65536 bits (ITU-T G.997.2).
uint64_t errorFreeBits(const StreamCounts& stream, const StreamState& state) {
  return stream.dtusGood() * state.framing.dtu.payload() * 8 / kEfbUnit_bits;
}

// The codewords of either direction, and which of the two the chip sends.
struct Codewords {
  const DtuFraming& ds;
  const DtuFraming& us;
  const DtuFraming& tx;
  const DtuFraming& rx;
};

Codewords codewordsOf(const LineInsight& line) {
  return {line.loop.plan->downstream.dtu, line.loop.plan->upstream.dtu, line.sendPlan().dtu,
          line.receivePlan().dtu};
}

Bytes framerInit(const LineInsight& line) {
  auto block = headed<GFAST_FRAMER_INIT_COUNTERS_S>();
  if (line.everTrained()) {
    block.firstTone = kFirstTone;
    block.numProcessedTones = kProcessedTones;
    const Codewords dtu = codewordsOf(line);
    block.dsCodeWordSize = dtu.ds.codewordSize;
    block.dsNumCodeWords = dtu.ds.codewords;
    block.dsRsRedundancy = dtu.ds.redundancy;
    block.usCodeWordSize = dtu.us.codewordSize;
    block.usNumCodeWords = dtu.us.codewords;
    block.usRsRedundancy = dtu.us.redundancy;
    block.txCodeWordSize = dtu.tx.codewordSize;
    block.txNumCodeWords = dtu.tx.codewords;
    block.txRsRedundancy = dtu.tx.redundancy;
    block.rxCodeWordSize = dtu.rx.codewordSize;
    block.rxNumCodeWords = dtu.rx.codewords;
    block.rxRsRedundancy = dtu.rx.redundancy;
    block.txLogicalFrameNumSym = line.view.sends.framing.symbolsPerFrame;
    block.rxLogicalFrameNumSym = line.view.receives.framing.symbolsPerFrame;
  }
  return inChipOrder(block);
}

Bytes fduInit(const LineInsight& line) {
  auto block = headed<GFAST_FDU_INIT_COUNTERS_S>();
  if (line.everTrained()) {
    block.winSize = kSnrWindow;
    block.sseScale = line.receives().spectrum->snrScale;
    block.vectoringEnabled = line.loop.plan->vectoring ? 1 : 0;
    block.dsMargin = line.loop.plan->downstream.targetMargin;
    block.usMargin = line.loop.plan->upstream.targetMargin;
    block.DacScaler = -12;
    block.ActualAnalogGainTx = -3;
  }
  return inChipOrder(block);
}

void fillSent(GFAST_FRAMER_RAW_COUNTERS_S& block, const StreamCounts& sent, const StreamState& state) {
  const uint64_t newDtus = sent.dtusSent - sent.dtusRetransmitted;
  const Carried c = carried(newDtus, sent.framesSent, state);
  block.numOfTxFrames = wrapped(sent.framesSent);
  block.numOfTxDTUs = wrapped(sent.dtusSent);
  block.numOfDataTxDTUs = wrapped(c.dataDtus);
  block.numOfDummyTxDTUs = wrapped(c.idleDtus);
  block.numOfRetTxDTUs = wrapped(sent.dtusRetransmitted);
  block.numOfTxPackets = wrapped(c.packets);
  block.numOfTxRScw = wrapped(sent.dtusSent * state.framing.dtu.codewords);
  block.numDescriptorsProcessedByDtuBuilder = wrapped(c.packets);
  block.TxBytes = wrapped(c.dataBytes + c.idleBytes + c.eocBytes);
  block.TxDataBytes = wrapped(c.dataBytes);
  block.TxIdleDataBytes = wrapped(c.idleBytes);
  block.EoCTxBytes = wrapped(c.eocBytes);
  block.sraTxExngCnt = wrapped(sent.seamlessRateAdaptations);
  block.fraTxExngCnt = wrapped(sent.fastRateAdaptations);
  block.bitswapTxExngCnt = wrapped(sent.bitSwaps);
  block.rpaTxExngCnt = wrapped(sent.rmcParameterAdaptations);
  block.nextSegmentIndexForPdlBuilding = wrapped(newDtus % kRingSize);
  block.currentIndex = wrapped(sent.dtusSent % kRingSize);
}

void fillReceived(GFAST_FRAMER_RAW_COUNTERS_S& block, const StreamCounts& received,
                  const StreamState& state) {
  const Carried c = carried(received.dtusGood(), received.framesArrived, state);
  block.numOfRxFrames = wrapped(received.framesArrived);
  block.numOfGoodRMCs = wrapped(received.framesArrived - received.lostRmcs);
  block.numOfBadRMCs = wrapped(received.lostRmcs);
  block.numOfRxDTUs = wrapped(received.dtusArrived);
  block.numOfGoodRxDTUs = wrapped(received.dtusGood());
  block.numOfGoodRxDummyDTUs = wrapped(c.idleDtus);
  block.numOfBadRxDTUs = wrapped(received.dtusBad);
  block.numOfOutRxDTUs = wrapped(c.dataDtus);
  block.numOfRxPackets = wrapped(c.packets);
  block.numOfRxRScw = wrapped(received.dtusArrived * state.framing.dtu.codewords);
  block.numOfRxRSBytesCorrected = wrapped(corrections(received, state) * kBytesPerCorrection);
  block.numOfRxRScwUncorrected = wrapped(received.dtusBad);
  block.rtxuc = wrapped(received.dtusUncorrected);
  block.RxBytes = wrapped(c.dataBytes + c.idleBytes + c.eocBytes);
  block.RxDataBytes = wrapped(c.dataBytes);
  block.RxIdleDataBytes = wrapped(c.idleBytes);
  block.EoCRxBytes = wrapped(c.eocBytes);
  block.sraRxExngCnt = wrapped(received.seamlessRateAdaptations);
  block.fraRxExngCnt = wrapped(received.fastRateAdaptations);
  block.bitswapRxExngCnt = wrapped(received.bitSwaps);
  block.rpaRxExngCnt = wrapped(received.rmcParameterAdaptations);
  block.numNormalDescriptorsCreated = wrapped(c.packets);
  block.nextReleaseIndex = wrapped(received.dtusGood() % kRingSize);
  const uint32_t ring = wrapped(c.packets % kRingSize);
  block.tailIndex = block.xgmacRxRingTailIndex = block.xgmacRxRingCurrentDescriptor = ring;
  block.xgmacRxRingCurrentIndexFirstRead = block.xgmacRxRingCurrentIndexSecondRead = ring;
}

// The time for which processors were busy, in samples of the line.
void fillProcessorTime(GFAST_FRAMER_RAW_COUNTERS_S& block, uint64_t frames) {
  const auto share = [samples = frames * kSymbolsPerFrame * kSamplesPerSymbol](uint32_t percent) {
    return wrapped(samples / 100 * percent);
  };
  block.txHrtAccumulatedNumSamples = share(kTxHardRealTime);
  block.txSrtAccumulatedNumSamples = share(kTxSoftRealTime);
  block.rxHrtAccumulatedNumSamples = share(kRxHardRealTime);
  block.rxSrtAccumulatedNumSamples = share(kRxSoftRealTime);
  block.hrtAccumulatedCycles = share(kTxHardRealTime + kRxHardRealTime);
  block.srtAccumulatedCycles = share(kTxSoftRealTime + kRxSoftRealTime);
  block.trap0AccumulatedCycles = share(kTraps[0]);
  block.trap1AccumulatedCycles = share(kTraps[1]);
  block.trap2AccumulatedCycles = share(kTraps[2]);
}

Bytes framerRaw(const LineInsight& line) {
  auto block = headed<GFAST_FRAMER_RAW_COUNTERS_S>();
  const EndView& view = line.view;
  fillSent(block, view.near.sent, view.sends);
  fillReceived(block, view.near.received, view.receives);
  fillProcessorTime(block, view.near.sent.framesSent);
  block.tigaExngCnt = wrapped(view.near.gainAdjustments);
  block.nearEndLossOfSignal = wrapped(view.near.lossOfSignalFailures);
  block.farEndLossOfSignal = wrapped(view.far.lossOfSignalFailures);
  if (line.everTrained()) {
    const StreamFraming& tx = view.sends.framing;
    const StreamFraming& rx = view.receives.framing;
    block.TxBD = tx.bytesPerSymbol;
    block.TxBDR = tx.bytesPerRmcSymbol;
    block.TxBR = line.sends().loading->rmcBytes;
    block.RxBD = rx.bytesPerSymbol;
    block.RxBDR = rx.bytesPerRmcSymbol;
    block.RxBR = line.receives().loading->rmcBytes;
    block.RxLD = rx.bytesPerSymbol * 8;
    block.attainableNdr = line.receives().attainable_kbps;
    block.snrMargin = static_cast<uint32_t>(line.receives().state.margin);
    block.rmcSnrMargin = static_cast<uint32_t>(line.receives().state.rmcMargin);
    block.dtaCurrentMds = line.loop.plan->downstream.symbols;
  }
  return inChipOrder(block);
}

Bytes fduRaw(const LineInsight& line) {
  auto block = headed<GFAST_FDU_RAW_COUNTERS_S>();
  block.lossOfPower = wrapped(line.view.near.lossOfPowerFailures);
  block.lossOfMargin = wrapped(line.view.near.lossOfMarginFailures);
  if (line.everTrained()) {
    block.rxMargin = static_cast<uint32_t>(line.receives().state.margin);
    block.UPBOKLE = line.receives().electricalLength;
    block.UPBOKLE_R = line.sends().electricalLength;
    // Hosts read the power of the other end from the other end, and show it as upstream whoever it is. So a
    // chip puts its own where they look for downstream.
    block.ACTATPds = line.sends().powerSent;
    block.ACTATPus = line.receives().powerSent;
    block.TimeGapCorrection =
        static_cast<uint32_t>(std::max(0.0, kGapAtZero - line.loop.length_m * kGapPerMetre));
  }
  return inChipOrder(block);
}

void fillRates(GFAST_DERIVED_COUNTERS_S& block, const LineInsight& line) {
  const StreamRates tx = streamRates(line.view.sends.framing);
  const StreamRates rx = streamRates(line.view.receives.framing);
  block.PreShowTimeTxETR = tx.expected;
  block.PreShowTimeRxETR = rx.expected;
  block.EFTR_min = line.view.receives.throughput.least;
  if (!line.view.showtime) {
    return;
  }
  block.TxRateInKbps = tx.line;
  block.TxNDR = tx.net;
  block.RxNDR = rx.net;
  block.TxETR = tx.expected;
  block.RxETR = rx.expected;
  block.TxEtrAvg = line.view.sends.throughput.averageExpected;
  block.RxEtrAvg = line.view.receives.throughput.averageExpected;
  block.EFTR = line.view.receives.throughput.last;
  block.EocTxRateInKbps = block.EocRxRateInKbps = kEocRate_kbps;
  block.ETRds_MaxMds = streamRates(line.loop.downstream.framing).expected;
  block.ETRus_MaxMus = streamRates(line.loop.upstream.framing).expected;
  block.NewMds = line.loop.plan->downstream.symbols;
  block.txHrtPrecentage = kTxHardRealTime;
  block.txSrtPrecentage = kTxSoftRealTime;
  block.rxHrtPrecentage = kRxHardRealTime;
  block.rxSrtPrecentage = kRxSoftRealTime;
  block.hrtPrecentage = kTxHardRealTime + kRxHardRealTime;
  block.srtPrecentage = kTxSoftRealTime + kRxSoftRealTime;
  block.trap0Precentage = kTraps[0];
  block.trap1Precentage = kTraps[1];
  block.trap2Precentage = kTraps[2];
}

Bytes derived(const LineInsight& line) {
  auto block = headed<GFAST_DERIVED_COUNTERS_S>();
  const EndView& view = line.view;
  const EndCounts& near = view.near;
  const bool failed = view.signalLost && !view.showtime;
  block.lossOfSignalFailure = failed ? 1 : 0;
  block.lossOfMarginFailure = view.failure == &EndCounts::lossOfMarginFailures ? 1 : 0;
  block.lossOfRmcFailure = view.failure == &EndCounts::lossOfRmcFailures ? 1 : 0;
  block.lossOfPowerFailure = view.failure == &EndCounts::lossOfPowerFailures ? 1 : 0;
  block.persistentLossOfSignalDefect = view.signalLost ? 1 : 0;
  block.lossOfSignalFailureCounter = wrapped(near.lossOfSignalFailures);
  block.lossOfRmcFailureCounter = wrapped(near.lossOfRmcFailures);
  block.lossOfMarginFailureCounter = wrapped(near.lossOfMarginFailures);
  block.lossOfPowerFailureCounter = wrapped(near.lossOfPowerFailures);
  block.erroredSeconds = wrapped(near.received.erroredSeconds);
  block.severlyErroredSeconds = wrapped(near.received.severelyErroredSeconds);
  block.lossOfSignalSeconds = wrapped(near.lossOfSignalSeconds);
  block.lossOfRMCSeconds = wrapped(near.received.lossOfRmcSeconds);
  block.unavailableSeconds = wrapped(near.unavailableSeconds);
  block.fullInits = wrapped(near.initialisations);
  block.failedFullInits = wrapped(near.failedInitialisations);
  block.crcAnomaly = wrapped(near.received.dtusUncorrected);
  block.lorDefect = view.rmcLost ? 1 : 0;
  block.persistentLorDefect = view.rmcLostFor_s >= kPersistent_s ? 1 : 0;
  block.continousMillisecondsOfLorDefects = static_cast<uint32_t>(view.rmcLostFor_s * 1000);
  block.continuousLossOfRMCSeconds = static_cast<uint32_t>(view.rmcLostFor_s);
  block.continuousSeverlyErroredSeconds = view.receives.severeInRow;
  block.lorDefects = wrapped(near.received.lossOfRmcSeconds);
  block.errorFreeBits = wrapped(errorFreeBits(near.received, line.view.receives));
  block.continuousLossOfSignalSeconds = view.signalLostFor_s;
  fillRates(block, line);
  return inChipOrder(block);
}

Bytes etrDatabase(const LineInsight& line) {
  ETR_DB_S block{};
  if (line.everTrained()) {
    block.dtuOverheadSize = kDtuOverhead;
    block.numSamplesInSymbol = kSamplesPerSymbol;
    block.samplingFrequency = kSampleRate_hz;
    block.numFramesInSuperFrame = kFramesPerSuperframe;
    block.numSymbolsInFrame = line.view.sends.framing.frameSymbols;
    const StreamFraming& tx = line.view.sends.framing;
    const StreamFraming& rx = line.view.receives.framing;
    block.numTxSymbols = tx.symbolsPerFrame;
    block.numRxSymbols = rx.symbolsPerFrame;
    const Codewords dtu = codewordsOf(line);
    block.Tx_kFec = dtu.tx.codewordData();
    block.Tx_nFec = dtu.tx.codewordSize;
    block.Tx_Q = dtu.tx.codewords;
    block.Rx_kFec = dtu.rx.codewordData();
    block.Rx_nFec = dtu.rx.codewordSize;
    block.Rx_Q = dtu.rx.codewords;
    block.Tx_B_D = tx.bytesPerSymbol;
    block.Tx_B_DR = tx.bytesPerRmcSymbol;
    block.Rx_B_D = rx.bytesPerSymbol;
    block.Rx_B_DR = rx.bytesPerRmcSymbol;
  }
  return inChipOrder(block);
}

// The counters that near-end and far-end groups both have.
template <typename Group>
void fillGroup(Group& group, const EndCounts& end, const StreamState& receives) {
  group.LOS = wrapped(end.lossOfSignalFailures);
  group.LOM = wrapped(end.lossOfMarginFailures);
  group.LOR = wrapped(end.lossOfRmcFailures);
  group.LPR = wrapped(end.lossOfPowerFailures);
  group.ES = wrapped(end.received.erroredSeconds);
  group.SES = wrapped(end.received.severelyErroredSeconds);
  group.LOSS = wrapped(end.lossOfSignalSeconds);
  group.LORS = wrapped(end.received.lossOfRmcSeconds);
  group.UAS = wrapped(end.unavailableSeconds);
  group.SRA = wrapped(end.received.seamlessRateAdaptations);
  group.FRA = wrapped(end.received.fastRateAdaptations);
  group.RPA = wrapped(end.received.rmcParameterAdaptations);
  group.BSW = wrapped(end.received.bitSwaps);
  group.CV = wrapped(end.received.dtusUncorrected);
  group.RTXUC = wrapped(end.received.dtusUncorrected);
  group.RTXTX = wrapped(end.sent.dtusRetransmitted);
  group.EFB = wrapped(errorFreeBits(end.received, receives));
}

Bytes performanceMonitoring(const LineInsight& line) {
  G9972_PM_COUNTERS_S block{};
  fillGroup(block.ne, line.view.near, line.view.receives);
  fillGroup(block.fe, line.view.far, line.view.sends);
  block.ne.TIGA = wrapped(line.view.near.gainAdjustments);
  block.ne.FULL_INITS = wrapped(line.view.near.initialisations);
  block.ne.FAILEDFULL_INITS = wrapped(line.view.near.failedInitialisations);
  return inChipOrder(block);
}

constexpr CounterBlock kBlocks[] = {
    {VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_FRAMER_CORE, 0, VIRT_GFAST_CNTR_INIT),
     sizeof(GFAST_FRAMER_INIT_COUNTERS_S), framerInit},
    {VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_FDU_CORE, 0, VIRT_GFAST_CNTR_INIT),
     sizeof(GFAST_FDU_INIT_COUNTERS_S), fduInit},
    {VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_FRAMER_CORE, 0, VIRT_GFAST_CNTR_RAW),
     sizeof(GFAST_FRAMER_RAW_COUNTERS_S), framerRaw},
    {VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_FDU_CORE, 0, VIRT_GFAST_CNTR_RAW),
     sizeof(GFAST_FDU_RAW_COUNTERS_S), fduRaw},
    {VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_CP_CORE, 0, VIRT_GFAST_CNTR_DERIVED),
     sizeof(GFAST_DERIVED_COUNTERS_S), derived},
    {VIRT_ADDR_ETR_DB(0), sizeof(ETR_DB_S), etrDatabase},
    {VIRT_ADDR_15MIN_24HRS_COUNTERS(0), sizeof(G9972_PM_COUNTERS_S), performanceMonitoring},
};

}  // namespace

std::span<const CounterBlock> counterBlocks() {
  return kBlocks;
}

Bytes managementCounters(const LineInsight& line) {
  const EndCounts& near = line.view.near;
  G9701_ManagementCounters_t counters{};
  counters.fec = wrapped(corrections(near.received, line.view.receives));
  counters.crc = wrapped(near.received.dtusUncorrected);
  counters.rtxUc = wrapped(near.received.dtusUncorrected);
  counters.rtxTx = wrapped(near.sent.dtusRetransmitted);
  counters.erroredSeconds = wrapped(near.received.erroredSeconds);
  counters.serverlyErroredSeconds = wrapped(near.received.severelyErroredSeconds);
  counters.lossOfSignalSeconds = wrapped(near.lossOfSignalSeconds);
  counters.lossOfRmcSeconds = wrapped(near.received.lossOfRmcSeconds);
  counters.unavailableSeconds = wrapped(near.unavailableSeconds);
  counters.eftrMin = line.view.receives.throughput.least;
  counters.errorFreeBitsCounter = wrapped(errorFreeBits(near.received, line.view.receives));
  return inChipOrder(counters);
}

Bytes pmdTestParameters(const LineInsight& line) {
  Bytes bytes(sizeof(G9701_PMDTestParameters_t));
  uint8_t* const p = bytes.data();
  const auto half = [](auto value) { return static_cast<uint16_t>(value); };
  store_le16(p, half(line.receives().state.margin));
  store_le32(p + 2, line.receives().attainable_kbps);
  store_le16(p + 6, half(line.sends().powerSent));
  store_le16(p + 8, half(kImpulseProtection));
  store_le16(p + 10, half(line.receives().state.rmcMargin));
  store_le16(p + 12, half(line.receives().powerReceived));
  return bytes;
}

}  // namespace gfast::board

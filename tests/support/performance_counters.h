// The performance monitoring block of a chip, and the counter of an interval behind each of its words.
#pragma once

#include "support/driver_script.h"

using namespace gfast;

constexpr size_t kPmWords = 39;

// The chip's counters after `n` of everything: word i has counted (i + 1) * n, so no two counters are alike.
inline Bytes pmBlock(uint32_t n) {
  Bytes bytes;
  for (uint32_t i = 0; i < kPmWords; i++) {
    append32(bytes, (i + 1) * n);
  }
  return bytes;
}

inline Script readsPm(int device, uint32_t n) {
  return reads(device, 0xF0000000, pmBlock(n));
}

// A counter of an interval and the chip's word behind it.
template <typename Group>
struct WordOf {
  const char* name;
  uint32_t Group::*counter;
  size_t word;
};

using LineGroup = QVR_linePerformance_t;
using ChannelGroup = QVR_ChannelPerformance_t;

constexpr WordOf<LineGroup> kNearLineWords[] = {
    {"LOS", &LineGroup::LOS, 0},
    {"LOM", &LineGroup::LOM, 1},
    {"LOR", &LineGroup::LOR, 2},
    {"LPR", &LineGroup::LPR, 3},
    {"ES", &LineGroup::ES, 4},
    {"SES", &LineGroup::SES, 5},
    {"LOSS", &LineGroup::LOSS, 6},
    {"LORS", &LineGroup::LORS, 7},
    {"UAS", &LineGroup::UAS, 8},
    {"FULL_INITS", &LineGroup::FULL_INITS, 9},
    {"FAILEDFULL_INITS", &LineGroup::FAILEDFULL_INITS, 10},
    {"FAST_INITS", &LineGroup::FAST_INITS, 11},
    {"FAILEDFAST_INITS", &LineGroup::FAILEDFAST_INITS, 12},
    {"SRA", &LineGroup::SRA, 13},
    {"FRA", &LineGroup::FRA, 14},
    {"RPA", &LineGroup::RPA, 15},
    {"BSW", &LineGroup::BSW, 16},
    {"TIGA", &LineGroup::TIGA, 17},
};
constexpr WordOf<ChannelGroup> kNearChannelWords[] = {
    {"CV", &ChannelGroup::CV, 18},
    {"RTXUC", &ChannelGroup::RTXUC, 19},
    {"RTXTX", &ChannelGroup::RTXTX, 20},
    {"EFB", &ChannelGroup::EFB, 21},
};
constexpr WordOf<LineGroup> kFarLineWords[] = {
    {"FE-LOS", &LineGroup::LOS, 22},   {"FE-LOM", &LineGroup::LOM, 23},   {"FE-LOR", &LineGroup::LOR, 24},
    {"FE-LPR", &LineGroup::LPR, 25},   {"FE-ES", &LineGroup::ES, 26},     {"FE-SES", &LineGroup::SES, 27},
    {"FE-LOSS", &LineGroup::LOSS, 28}, {"FE-LORS", &LineGroup::LORS, 29}, {"FE-UAS", &LineGroup::UAS, 30},
    {"FE-SRA", &LineGroup::SRA, 32},   {"FE-FRA", &LineGroup::FRA, 33},   {"FE-RPA", &LineGroup::RPA, 34},
    {"FE-BSW", &LineGroup::BSW, 35},
};
constexpr WordOf<ChannelGroup> kFarChannelWords[] = {
    {"FE-CV", &ChannelGroup::CV, 31},
    {"FE-RTXUC", &ChannelGroup::RTXUC, 36},
    {"FE-RTXTX", &ChannelGroup::RTXTX, 37},
    {"FE-EFB", &ChannelGroup::EFB, 38},
};

// Calls compare(name, counter, word) for each of the 22 near-end and the 17 far-end counters of an interval.
template <typename Compare>
void forEachCounter(const QVR_intervalLinkCounterDB_t& interval, const Compare& compare) {
  for (const auto& row : kNearLineWords) {
    compare(row.name, interval.neCounters.linePerformanceCounters.*row.counter, row.word);
  }
  for (const auto& row : kNearChannelWords) {
    compare(row.name, interval.neCounters.channelPerformanceCounters.*row.counter, row.word);
  }
  for (const auto& row : kFarLineWords) {
    compare(row.name, interval.feCounters.linePerformanceCounters.*row.counter, row.word);
  }
  for (const auto& row : kFarChannelWords) {
    compare(row.name, interval.feCounters.channelPerformanceCounters.*row.counter, row.word);
  }
}

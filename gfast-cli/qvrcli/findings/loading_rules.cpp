#include <fmt/format.h>

#include <cmath>
#include <numeric>

#include "qvrcli/findings/rules.h"

namespace gfast::console {

namespace {

constexpr double kMostBits = 12;

bool isUsed(const ToneDirection& tones, size_t tone) {
  return tone < std::min(tones.bits.size(), tones.snr_db.size()) && tones.snr_db[tone].has_value();
}

double allBits(const ToneDirection& tones) {
  return std::accumulate(tones.bits.begin(), tones.bits.end(), 0.0);
}

struct Gap {
  size_t first, last;
};

// Where tones are silent between others that are not.
std::vector<Gap> gapsOf(const ToneDirection& tones) {
  std::vector<Gap> gaps;
  std::optional<size_t> before;
  for (size_t tone = 0; tone < tones.bits.size(); tone++) {
    if (!isUsed(tones, tone)) {
      continue;
    }
    if (before && tone - *before > 1) {
      gaps.push_back({*before + 1, tone - 1});
    }
    before = tone;
  }
  return gaps;
}

// The mean of a few tones on both sides.
double bitsBeside(const ToneDirection& tones, const Gap& gap) {
  constexpr size_t kTones = 8;
  double sum = 0;
  size_t count = 0;
  for (size_t i = 1; i <= kTones; i++) {
    for (const size_t tone : {gap.first - i, gap.last + i}) {
      if (isUsed(tones, tone)) {
        sum += tones.bits[tone];
        count++;
      }
    }
  }
  return count == 0 ? 0 : sum / static_cast<double>(count);
}

double bitsOf(float snr_db) {
  constexpr double kGap_db = 9.8 - 5;  // ITU-T G.9701, with the gain of coding
  constexpr double kMargin_db = 6;
  return std::clamp(std::floor(std::log2(1 + std::pow(10, (snr_db - kGap_db - kMargin_db) / 10))), 0.0,
                    kMostBits);
}

}  // namespace

void findMasks(const LineReading& /*line*/, const Directions& directions, std::vector<Finding>& findings) {
  constexpr double kLeastShare = 0.01;
  for (const Direction& direction : directions) {
    const double carried = allBits(direction.tones);
    double lost = 0;
    size_t silent = 0;
    Gap widest{1, 0};
    for (const Gap& gap : gapsOf(direction.tones)) {
      const size_t width = gap.last - gap.first + 1;
      lost += bitsBeside(direction.tones, gap) * static_cast<double>(width);
      silent += width;
      widest = width > widest.last + 1 - widest.first ? gap : widest;
    }
    if (carried <= 0 || lost < kLeastShare * carried || !direction.figures.netDataRate_kbps) {
      continue;
    }
    const double cost = *direction.figures.netDataRate_kbps * lost / carried / 1000;
    findings.push_back(
        {"mask", Sureness::kSure,
         fmt::format(
             "A configuration keeps {} tones silent ({}), most of them from {:.1f} to {:.1f} MHz. With "
             "the bits of the tones beside them they would carry about {:.0f} Mbit/s more.",
             silent, direction.name, megahertz(static_cast<double>(widest.first)),
             megahertz(static_cast<double>(widest.last)), cost)});
  }
}

void findUnusedSnr(const LineReading& /*line*/, const Directions& directions,
                   std::vector<Finding>& findings) {
  constexpr double kEnough = 0.8;
  for (const Direction& direction : directions) {
    double possible = 0;
    for (size_t tone = 0; tone < direction.tones.bits.size(); tone++) {
      possible += isUsed(direction.tones, tone) ? bitsOf(*direction.tones.snr_db[tone]) : 0;
    }
    const double carried = allBits(direction.tones);
    if (possible > 0 && carried < kEnough * possible) {
      findings.push_back(
          {"unused-snr", Sureness::kPossible,
           fmt::format("The tones carry {:.0f} bits, {:.0f} % of the {:.0f} that their SNR would "
                       "carry with a margin of 6 dB ({}): a limit in the configuration, or "
                       "noise that comes and goes.",
                       carried, 100 * carried / possible, possible, direction.name)});
    }
  }
}

}  // namespace gfast::console

#include <fmt/format.h>

#include <cmath>

#include "qvrcli/findings/rules.h"

namespace gfast::console {

namespace {

// Below this SNR a good part of HLOG is noise.
constexpr float kReliableSnr_db = 12;
// HLOG comes in whole decibels.
constexpr double kNotchDepth_db = 3;
// A quarter of the velocity of a wave on the pair: an open branch of this many metres takes out 1 MHz.
constexpr double kQuarterWave_MHzm = 52;

struct Point {
  double tone;
  double loss_db;
};
using Curve = std::vector<Point>;

Curve lossOf(const ToneDirection& tones) {
  Curve curve;
  for (size_t tone = 0; tone < tones.hlog_db.size(); tone++) {
    const auto& hlog = tones.hlog_db[tone];
    const bool heard =
        tone < tones.snr_db.size() && tones.snr_db[tone] && *tones.snr_db[tone] >= kReliableSnr_db;
    if (hlog && heard) {
      curve.push_back({static_cast<double>(tone), -static_cast<double>(*hlog)});
    }
  }
  return curve;
}

// ---- Bridged taps ----

struct Notch {
  double tone;
  double depth_db;  // below the lower one of both sides
};

// How far the curve falls in steps of `step` from a place, before it is higher than there.
double fallFrom(const Curve& curve, size_t place, std::ptrdiff_t step) {
  double lowest = curve[place].loss_db;
  const auto end = static_cast<std::ptrdiff_t>(curve.size());
  for (std::ptrdiff_t i = static_cast<std::ptrdiff_t>(place) + step; i >= 0 && i < end; i += step) {
    const double loss = curve[static_cast<size_t>(i)].loss_db;
    if (loss > curve[place].loss_db) {
      break;
    }
    lowest = std::min(lowest, loss);
  }
  return curve[place].loss_db - lowest;
}

// The holes of a channel. Where the deepest part is flat, its middle counts.
std::vector<Notch> notchesOf(const Curve& curve) {
  std::vector<Notch> notches;
  for (size_t first = 0; first < curve.size();) {
    size_t last = first;
    while (last + 1 < curve.size() && curve[last + 1].loss_db == curve[first].loss_db) {
      last++;
    }
    const double depth = std::min(fallFrom(curve, first, -1), fallFrom(curve, last, 1));
    // A hole whose edge jumps by one decibel to and fro has several deepest parts.
    const bool sameHole = !notches.empty() && curve[first].tone - notches.back().tone < 10;
    if (depth >= kNotchDepth_db && sameHole) {
      notches.back().tone = (notches.back().tone + (curve[first].tone + curve[last].tone) / 2) / 2;
    } else if (depth >= kNotchDepth_db) {
      notches.push_back({(curve[first].tone + curve[last].tone) / 2, depth});
    }
    first = last + 1;
  }
  return notches;
}

struct Comb {
  double first = 0;            // tone of the quarter wave
  std::vector<Notch> notches;  // at 1, 3, 5 times that
};

// The holes that are at odd multiples of a tone, none when one of the first three is missing.
Comb combAt(double first, const std::vector<Notch>& notches, const Curve& curve) {
  constexpr double kTolerance = 0.05;
  Comb comb;
  double sum = 0;
  for (const int order : {1, 3, 5}) {
    const double expected = first * order;
    if (expected < curve.front().tone || expected > curve.back().tone * (1 - kTolerance)) {
      continue;
    }
    const auto found = std::ranges::find_if(notches, [&](const Notch& notch) {
      return std::abs(notch.tone - expected) <= std::max(3.0, kTolerance * expected);
    });
    if (found == notches.end()) {
      return {};
    }
    comb.notches.push_back(*found);
    sum += found->tone / order;
  }
  if (!comb.notches.empty()) {
    comb.first = sum / static_cast<double>(comb.notches.size());
  }
  return comb;
}

Comb combOf(const Curve& curve) {
  const std::vector<Notch> notches = notchesOf(curve);
  for (const Notch& notch : notches) {
    Comb comb = combAt(notch.tone, notches, curve);
    if (!comb.notches.empty()) {
      return comb;
    }
  }
  return {};
}

bool findTap(const Curve& curve, std::vector<Finding>& findings) {
  const Comb comb = combOf(curve);
  if (comb.notches.empty()) {
    return false;
  }
  std::string places;
  double depth = 0;
  for (const Notch& notch : comb.notches) {
    places += fmt::format("{}{:.1f}", places.empty() ? "" : ", ", megahertz(notch.tone));
    depth = std::max(depth, notch.depth_db);
  }
  const bool several = comb.notches.size() > 1;
  findings.push_back(
      {"bridged-tap", several ? Sureness::kSure : Sureness::kPossible,
       fmt::format("A bridged tap of about {:.1f} m: the channel has {} at {} MHz, up to {:.0f} dB deep.",
                   kQuarterWave_MHzm / megahertz(comb.first), several ? "holes" : "a hole", places, depth)});
  return true;
}

// ---- Loss ----

// The loss of a cable: a constant part, one that grows with the root of the frequency, one that grows with
// it. None is negative, and ends alone make the constant part.
struct Fit {
  std::array<double, 3> parts{};
  double worst_db = 0;        // of 16 pieces of the band, the mean difference of the worst one
  double worst_MHz = 0;       // where that is
  double worstExcess_db = 0;  // with its sign: more loss than fits is positive
};

constexpr double kMostOfEnds_db = 2;

std::array<double, 3> basisAt(double tone) {
  const double mhz = megahertz(tone);
  return {1, std::sqrt(mhz), mhz};
}

double fittedLoss(const std::array<double, 3>& parts, double tone) {
  const auto basis = basisAt(tone);
  return parts[0] * basis[0] + parts[1] * basis[1] + parts[2] * basis[2];
}

// Least squares within the limits, one part at a time.
std::array<double, 3> fittedParts(const Curve& curve) {
  constexpr int kRounds = 5000;
  constexpr std::array<double, 3> kMost{kMostOfEnds_db, 1e3, 1e3};
  std::array<std::array<double, 3>, 3> products{};
  std::array<double, 3> sums{};
  for (const Point& point : curve) {
    const auto basis = basisAt(point.tone);
    for (size_t i = 0; i < 3; i++) {
      sums[i] += basis[i] * point.loss_db;
      for (size_t k = 0; k < 3; k++) {
        products[i][k] += basis[i] * basis[k];
      }
    }
  }
  std::array<double, 3> parts{};
  for (int round = 0; round < kRounds; round++) {
    for (size_t i = 0; i < 3; i++) {
      double rest = sums[i];
      for (size_t k = 0; k < 3; k++) {
        rest -= k == i ? 0 : products[i][k] * parts[k];
      }
      parts[i] = std::clamp(rest / products[i][i], 0.0, kMost[i]);
    }
  }
  return parts;
}

Fit fitOf(const Curve& curve) {
  constexpr size_t kPieces = 16;
  Fit fit;
  fit.parts = fittedParts(curve);
  for (size_t piece = 0; piece < kPieces; piece++) {
    const size_t from = piece * curve.size() / kPieces;
    const size_t to = (piece + 1) * curve.size() / kPieces;
    double sum = 0;
    for (size_t i = from; i < to; i++) {
      sum += curve[i].loss_db - fittedLoss(fit.parts, curve[i].tone);
    }
    const double mean = sum / static_cast<double>(to - from);
    if (std::abs(mean) > fit.worst_db) {
      fit.worst_db = std::abs(mean);
      fit.worstExcess_db = mean;
      fit.worst_MHz = megahertz(curve[(from + to) / 2].tone);
    }
  }
  return fit;
}

// A loss that does not grow with frequency as that of any cable does.
bool findUnfitting(const Direction& direction, const Curve& curve, std::vector<Finding>& findings) {
  constexpr double kMisfit_db = 1;
  const Fit fit = fitOf(curve);
  if (fit.worst_db < kMisfit_db) {
    return false;
  }
  findings.push_back(
      {"unfitting-loss", Sureness::kLikely,
       fmt::format(
           "The attenuation fits no length of a cable ({}): at {:.1f} MHz it is {:.1f} dB {} than the "
           "rest promises. A bad joint does that.",
           direction.name, fit.worst_MHz, fit.worst_db, fit.worstExcess_db > 0 ? "more" : "less")});
  return true;
}

// More loss than the electrical length of the last training explains. Cables lose at most so many times as
// much at 50 MHz as at 1 MHz.
void findGrownLoss(const Direction& direction, const Curve& curve, std::vector<Finding>& findings) {
  constexpr double kMostAt50MHz = 10.5;
  constexpr double kSpare_db = 2;
  constexpr double kFrom_MHz = 49;
  constexpr double kTo_MHz = 51;
  std::vector<double> losses;
  for (const Point& point : curve) {
    if (megahertz(point.tone) >= kFrom_MHz && megahertz(point.tone) <= kTo_MHz) {
      losses.push_back(point.loss_db);
    }
  }
  if (losses.empty() || !direction.figures.electricalLength_db) {
    return;
  }
  const double loss = medianOf(losses);
  const double most = kMostAt50MHz * *direction.figures.electricalLength_db + kSpare_db;
  if (loss > most) {
    findings.push_back(
        {"grown-loss", Sureness::kLikely,
         fmt::format(
             "The cable loses more than when the line trained ({}): {:.0f} dB at 50 MHz, of which its "
             "electrical length of {:.1f} dB explains {:.0f} at most. Water in the cable does that.",
             direction.name, loss, *direction.figures.electricalLength_db, most)});
  }
}

}  // namespace

void findTapOrLoss(const LineReading& /*line*/, const Directions& directions,
                   std::vector<Finding>& findings) {
  constexpr size_t kFewest = 200;
  // Both directions go through the same pair: the one that is heard on more tones tells.
  const Curve curves[] = {lossOf(directions[0].tones), lossOf(directions[1].tones)};
  const size_t better = curves[1].size() > curves[0].size() ? 1 : 0;
  const Curve& curve = curves[better];
  if (curve.size() < kFewest || findTap(curve, findings) ||
      findUnfitting(directions[better], curve, findings)) {
    return;
  }
  findGrownLoss(directions[better], curve, findings);
}

}  // namespace gfast::console

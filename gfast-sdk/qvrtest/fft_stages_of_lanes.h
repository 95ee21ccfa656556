// The stages, written once for every width of vectors. Everything is local to the including file: code
// compiled for a newer processor must not be linked into the variant for every processor.
#pragma once

#include "qvrtest/fft_lanes.h"
#include "qvrtest/fft_stages.h"

namespace gfast {

namespace {

template <typename Lanes, FftDirection Direction>
struct Stages {
  using Vector = typename Lanes::Vector;

  // Up to this magnitude no sum of any transform overflows, so no product is infinite or no number.
  static constexpr double kLargestCareless = 0x1p900;

  // So many points, 16 bytes each, fit the smallest cache of a processor together with their factors.
  static constexpr size_t kCachedPoints = 1024;

  struct Points {
    Vector re;
    Vector im;
  };

  static Points load(const double* re, const double* im, size_t at) {
    return {Lanes::load(re + at), Lanes::load(im + at)};
  }

  // The inverse conjugates the factor.
  static Points times(const Points& factor, const Points& x) {
    if constexpr (Direction == FftDirection::kInverse) {
      return {factor.re * x.re + factor.im * x.im, factor.re * x.im - factor.im * x.re};
    } else {
      return {factor.re * x.re - factor.im * x.im, factor.re * x.im + factor.im * x.re};
    }
  }

  // The same for the factor 1 - 0i. It cannot be left out, because it decides the sign of zeros.
  static Points timesFirstFactor(const Points& x) {
    const Vector zero = Lanes::all(Direction == FftDirection::kInverse ? 0.0 : -0.0);
    return {x.re - zero * x.im, x.im + zero * x.re};
  }

  static void butterfly(Points& upper, Points& lower, const Points& product) {
    lower = {upper.re - product.re, upper.im - product.im};
    upper = {upper.re + product.re, upper.im + product.im};
  }

  // Two stages on four rows of points, which are one span apart.
  struct Rows {
    Points a, b, c, d;

    void transform(const FftWorkspace& work, size_t span, size_t t) {
      const Points near = load(work.twiddleRe, work.twiddleIm, span + t);
      butterfly(a, b, times(near, b));
      butterfly(c, d, times(near, d));
      butterfly(a, c, times(load(work.twiddleRe, work.twiddleIm, 2 * span + t), c));
      butterfly(b, d, times(load(work.twiddleRe, work.twiddleIm, 3 * span + t), d));
    }
  };

  static Rows loadRows(const FftWorkspace& work, size_t at, size_t span) {
    return {load(work.re, work.im, at), load(work.re, work.im, at + span),
            load(work.re, work.im, at + 2 * span), load(work.re, work.im, at + 3 * span)};
  }

  static void store(const FftWorkspace& work, size_t at, const Points& x) {
    Lanes::store(work.re + at, x.re);
    Lanes::store(work.im + at, x.im);
  }

  static Points takeInput(const double* input, size_t point, Vector& sum) {
    Points x;
    Lanes::split(input + 2 * point, x.re, x.im);
    sum += Lanes::magnitude(x.re) + Lanes::magnitude(x.im);
    return x;
  }

  // Bit reversal and the stages of spans 1 and 2: points that are a quarter of the input apart are combined,
  // and neighbouring points fill the lanes.
  static bool firstStages(const FftWorkspace& work, const double* input) {
    const size_t quarter = work.size / 4;
    const size_t places = work.size / Lanes::kWidth - 4;  // all bits of a place's number, from 4 up
    const Points last{Lanes::all(work.twiddleRe[3]), Lanes::all(work.twiddleIm[3])};
    Vector sum = Lanes::all(0);
    size_t place = 0;
    for (size_t point = 0; point < quarter; point += Lanes::kWidth) {
      Points a = takeInput(input, point, sum);
      Points c = takeInput(input, point + quarter, sum);
      Points b = takeInput(input, point + 2 * quarter, sum);
      Points d = takeInput(input, point + 3 * quarter, sum);
      butterfly(a, b, timesFirstFactor(b));
      butterfly(c, d, timesFirstFactor(d));
      butterfly(a, c, timesFirstFactor(c));
      butterfly(b, d, times(last, d));
      Lanes::storeRows(work.re + place, work.size, a.re, b.re, c.re, d.re);
      Lanes::storeRows(work.im + place, work.size, a.im, b.im, c.im, d.im);
      place = nextReversed(place, places);
    }
    return Lanes::sum(sum) <= kLargestCareless;
  }

  // The next number when counting with reversed bits: the mask's most significant bit is the ones.
  static size_t nextReversed(size_t number, size_t mask) {
    const size_t clear = ~number & mask;
    if (clear == 0) {
      return 0;
    }
    constexpr int kTopBit = static_cast<int>(8 * sizeof(unsigned long long)) - 1;
    const size_t highest = size_t{1} << (kTopBit - __builtin_clzll(clear));
    return (number & (highest - 1)) | highest;
  }

  static void singleStage(const FftWorkspace& work, size_t span, size_t first, size_t end) {
    for (size_t block = first; block < end; block += 2 * span) {
      for (size_t t = 0; t < span; t += Lanes::kWidth) {
        Points upper = load(work.re, work.im, block + t);
        Points lower = load(work.re, work.im, block + t + span);
        butterfly(upper, lower, times(load(work.twiddleRe, work.twiddleIm, span + t), lower));
        store(work, block + t, upper);
        store(work, block + t + span, lower);
      }
    }
  }

  static void twoStages(const FftWorkspace& work, size_t span, size_t first, size_t end) {
    for (size_t block = first; block < end; block += 4 * span) {
      for (size_t t = 0; t < span; t += Lanes::kWidth) {
        Rows rows = loadRows(work, block + t, span);
        rows.transform(work, span, t);
        store(work, block + t, rows.a);
        store(work, block + t + span, rows.b);
        store(work, block + t + 2 * span, rows.c);
        store(work, block + t + 3 * span, rows.d);
      }
    }
  }

  template <bool RealOnly>
  static void giveOutput(double* output, size_t point, const Points& x, Vector gain) {
    Lanes::join(output + 2 * point, x.re * gain, RealOnly ? Lanes::all(0) : x.im * gain);
  }

  template <bool RealOnly>
  static void lastStages(const FftWorkspace& work, double outputGain, double* output) {
    const size_t span = work.size / 4;
    const Vector gain = Lanes::all(outputGain);
    for (size_t t = 0; t < span; t += Lanes::kWidth) {
      Rows rows = loadRows(work, t, span);
      rows.transform(work, span, t);
      giveOutput<RealOnly>(output, t, rows.a, gain);
      giveOutput<RealOnly>(output, t + span, rows.b, gain);
      giveOutput<RealOnly>(output, t + 2 * span, rows.c, gain);
      giveOutput<RealOnly>(output, t + 3 * span, rows.d, gain);
    }
  }

  // All stages between the first two and the last two. Those whose butterflies stay within a part of the
  // points are done part by part, while the cache holds the part.
  static void middleStages(const FftWorkspace& work) {
    const bool hasSingle = __builtin_ctzll(work.size) % 2 != 0;
    const size_t firstSpan = hasSingle ? 8 : 4;
    const size_t part = work.size < kCachedPoints ? work.size : kCachedPoints;
    size_t span = firstSpan;
    for (size_t first = 0; first < work.size; first += part) {
      if (hasSingle) {
        singleStage(work, 4, first, first + part);
      }
      for (span = firstSpan; span < work.size / 4 && 4 * span <= part; span *= 4) {
        twoStages(work, span, first, first + part);
      }
    }
    for (; span < work.size / 4; span *= 4) {
      twoStages(work, span, 0, work.size);
    }
  }

  static bool transform(const FftWorkspace& work, const FftOutput& rule, const double* input,
                        double* output) {
    if (!firstStages(work, input)) {
      return false;
    }
    middleStages(work);
    rule.realOnly ? lastStages<true>(work, rule.gain, output) : lastStages<false>(work, rule.gain, output);
    return true;
  }
};

template <typename Lanes>
bool stagesOf(const FftWorkspace& work, FftDirection direction, const FftOutput& rule, const double* input,
              double* output) {
  return direction == FftDirection::kInverse
             ? Stages<Lanes, FftDirection::kInverse>::transform(work, rule, input, output)
             : Stages<Lanes, FftDirection::kForward>::transform(work, rule, input, output);
}

}  // namespace

}  // namespace gfast

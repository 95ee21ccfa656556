// What the virtual board's lines carry, what its cables lose and where its bridged taps cut, held against
// what is published and against a second computation. docs/rates.md holds these tables and says where the
// figures come from.
//
// The rates are those that chips in showtime report: the net data rates of both directions, from the derived
// counters in chip memory.

#include <gfast_api.h>

#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <string>

#include "chip/counters.h"
#include "std/byte_order.h"
#include "virtual-board/board/board_config.h"
#include "virtual-board/board/virtual_board.h"
#include "virtual-board/line/cable.h"

using namespace gfast;
using namespace gfast::board;

namespace {

using Complex = std::complex<double>;
using std::numbers::pi;

constexpr double kMega = 1e6;

// ---- A second computation of the cables ----

// The reference models of wire types of ITU-T G.9701, typed here once more, so that a slip of the pen in the
// board's own table shows.
struct ReferenceWire {
  const char* name;
  double z0, nvf, rs0, ql, qh, qx, qy, qc, phi, fd;
};

constexpr ReferenceWire kReferenceWires[] = {
    {"CAD55", 105.0694, 0.6976, 0.1871, 1.5315, 0.7415, 1.0, 0.0, 1.0016, -0.2356, 1.0},
    {"CAT5", 98.000000, 0.690464, 165.900000e-3, 2.150000, 0.859450, 0.500000, 0.722636, 0, 0.973846e-3, 1.0},
    {"T05u", 125.636455, 0.729623, 180.000000e-3, 1.666050, 0.740000, 0.848761, 1.207166, 0, 1.762056e-3,
     1.0},
    {"T05b", 132.348256, 0.675449, 170.500000e-3, 1.789725, 0.725776, 0.799306, 1.030832, 0, 0.005222e-3,
     1.0},
    {"T05h", 98.369783, 0.681182, 170.800000e-3, 1.700000, 0.650000, 0.777307, 1.500000, 0, 3.023930e-3, 1.0},
};

// Ohm, henry, siemens and farad per metre at one frequency.
struct Primary {
  double r, l, g, c;
};

Primary primaryOf(const ReferenceWire& wire, double frequency_hz) {
  const double c0 = 3e8;
  const double omega = 2 * pi * frequency_hz;
  const double ls = wire.z0 / (wire.nvf * c0);
  const double cp = 1 / (wire.nvf * c0 * wire.z0);
  const double qs = 1 / (wire.qh * wire.qh * wire.ql);
  const Complex x(0, omega / (wire.qh * wire.qh * 4 * pi * wire.rs0 / (4 * pi * 1e-7)));
  const Complex inner = (qs * qs + x * wire.qy) / (qs * qs / wire.qx + x * wire.qy);
  const Complex z = Complex(0, omega * ls) +
                    wire.rs0 * (1 - qs * wire.qx + std::sqrt(qs * qs * wire.qx * wire.qx + 2.0 * x * inner));
  const Complex loss = std::pow(Complex(1, omega / (2 * pi * wire.fd)), -2 * wire.phi / pi);
  const Complex y = Complex(0, omega * cp) * (loss * (1 - wire.qc) + wire.qc);
  return {z.real(), z.imag() / omega, y.real(), y.imag() / omega};
}

using Matrix = std::array<Complex, 4>;  // A B C D of a chain of two-ports

Matrix operator*(const Matrix& m, const Matrix& n) {
  return {m[0] * n[0] + m[1] * n[2], m[0] * n[1] + m[1] * n[3], m[2] * n[0] + m[3] * n[2],
          m[2] * n[1] + m[3] * n[3]};
}

// The pair as a ladder of some thousand short sections of lumped R, L, G and C: no wave, no hyperbolic
// function, so nothing in common with the board's way but the constants.
double ladderLoss_db(const ReferenceWire& wire, double length_m, double frequency_hz) {
  constexpr int doublings = 16;
  const Primary per_m = primaryOf(wire, frequency_hz);
  const double section_m = std::ldexp(length_m, -doublings);
  const double omega = 2 * pi * frequency_hz;
  const Complex series = Complex(per_m.r, omega * per_m.l) * section_m;
  const Complex shunt = Complex(per_m.g, omega * per_m.c) * section_m;
  // Half of the series impedance stands on either side of the shunt.
  const Complex a = 1.0 + series * shunt / 2.0;
  Matrix chain{a, series * (1.0 + series * shunt / 4.0), shunt, a};
  for (int i = 0; i < doublings; i++) {
    chain = chain * chain;
  }
  constexpr double end_ohm = 100;
  return 20 * std::log10(std::abs(chain[0] + chain[1] / end_ohm + chain[2] * end_ohm + chain[3]) / 2);
}

double boardLoss_db(const LoopConfig& loop, double frequency_hz) {
  return -20 * std::log10(std::abs(Cable(loop).insertionGain(frequency_hz)));
}

LoopConfig straightLoop(const char* cable, double length_m) {
  LoopConfig loop;
  loop.cable = cable;
  loop.length_m = length_m;
  return loop;
}

constexpr double kLossTolerance_db = 0.1;
constexpr double kTenFrequencies_mhz[] = {2.2, 5, 10, 17, 30, 44, 60, 75, 90, 106};

// False when a loss differs by more than the tolerance from the second computation.
bool printLosses() {
  bool good = true;
  std::printf("\nLoss of 100 m in dB: the board's, and how far the ladder is from it.\n\n| MHz |");
  for (const ReferenceWire& wire : kReferenceWires) {
    std::printf(" %s |", wire.name);
  }
  std::printf("\n| --- | --- | --- | --- | --- | --- |\n");
  for (const double mhz : kTenFrequencies_mhz) {
    std::printf("| %g |", mhz);
    for (const ReferenceWire& wire : kReferenceWires) {
      const double board_db = boardLoss_db(straightLoop(wire.name, 100), mhz * kMega);
      const double apart_db = ladderLoss_db(wire, 100, mhz * kMega) - board_db;
      good = good && std::abs(apart_db) <= kLossTolerance_db;
      std::printf(" %.2f, %+.3f |", board_db, apart_db);
    }
    std::printf("\n");
  }
  return good;
}

// Losses that were known before the board was made.
constexpr struct {
  const char* cable;
  double length_m;
  double mhz;
  double loss_db;
} kKnownLosses[] = {{"CAD55", 100, 10, 6.3},  {"CAD55", 100, 50, 16.7}, {"CAD55", 100, 100, 26.5},
                    {"CAD55", 200, 10, 12.6}, {"CAD55", 200, 50, 33.3}, {"CAD55", 200, 100, 53.0},
                    {"CAT5", 100, 10, 5.7},   {"CAT5", 100, 50, 12.7},  {"CAT5", 100, 100, 18.2}};

bool printKnownLosses() {
  bool good = true;
  std::printf("\n| cable | metres | MHz | dB | known |\n| --- | --- | --- | --- | --- |\n");
  for (const auto& known : kKnownLosses) {
    const double loss_db = boardLoss_db(straightLoop(known.cable, known.length_m), known.mhz * kMega);
    good = good && std::abs(loss_db - known.loss_db) <= kLossTolerance_db;
    std::printf("| %s | %.0f | %.0f | %.2f | %.1f |\n", known.cable, known.length_m, known.mhz, loss_db,
                known.loss_db);
  }
  return good;
}

// ---- Bridged taps ----

double velocityAt(const ReferenceWire& wire, double frequency_hz) {
  const Primary per_m = primaryOf(wire, frequency_hz);
  const double omega = 2 * pi * frequency_hz;
  const Complex propagation =
      std::sqrt(Complex(per_m.r, omega * per_m.l) * Complex(per_m.g, omega * per_m.c));
  return omega / propagation.imag();
}

// Where a tap is an odd number of quarter waves long: it is open at its end, so a short circuit at its root.
double quarterWave_hz(const ReferenceWire& wire, double tap_m, int quarters) {
  double frequency_hz = quarters * wire.nvf * 3e8 / (4 * tap_m);
  for (int i = 0; i < 20; i++) {
    frequency_hz = quarters * velocityAt(wire, frequency_hz) / (4 * tap_m);
  }
  return frequency_hz;
}

// Where the tap costs most, within a fifth of a frequency.
double notchNear_hz(const LoopConfig& tapped, double around_hz) {
  const LoopConfig straight = straightLoop(tapped.cable.c_str(), tapped.length_m);
  constexpr int steps = 4000;
  double deepest_db = 0;
  double deepest_hz = 0;
  for (int i = 0; i <= steps; i++) {
    const double frequency_hz = around_hz * (0.8 + 0.4 * i / steps);
    const double cost_db = boardLoss_db(tapped, frequency_hz) - boardLoss_db(straight, frequency_hz);
    if (cost_db > deepest_db) {
      deepest_db = cost_db;
      deepest_hz = frequency_hz;
    }
  }
  return deepest_hz;
}

constexpr double kNotchTolerance = 0.02;
constexpr double kLastTone_mhz = 2047 * 0.05175;

bool printNotches() {
  bool good = true;
  std::printf("\n| cable | tap, metres | quarter waves | expected, MHz | the board's | apart |\n");
  std::printf("| --- | --- | --- | --- | --- | --- |\n");
  for (const ReferenceWire& wire : {kReferenceWires[0], kReferenceWires[1]}) {
    for (const double tap_m : {1.0, 2.0, 5.0, 10.0, 20.0}) {
      for (int quarters = 1; quarters <= 5; quarters += 2) {
        const double expected_hz = quarterWave_hz(wire, tap_m, quarters);
        if (expected_hz > kLastTone_mhz * kMega) {
          continue;
        }
        LoopConfig loop = straightLoop(wire.name, 100);
        loop.taps = {{40, tap_m}};
        const double notch_hz = notchNear_hz(loop, expected_hz);
        const double apart = notch_hz / expected_hz - 1;
        good = good && std::abs(apart) <= kNotchTolerance;
        std::printf("| %s | %g | %d | %.2f | %.2f | %+.2f %% |\n", wire.name, tap_m, quarters,
                    expected_hz / kMega, notch_hz / kMega, 100 * apart);
      }
    }
  }
  return good;
}

// ---- Rates ----

struct Rates {
  uint32_t down_mbps;
  uint32_t up_mbps;
  uint32_t both() const { return down_mbps + up_mbps; }
};

uint32_t word(VirtualBoard& board, int descriptor, uint32_t address) {
  char bytes[4] = {};
  gfast_iocreq request{};
  request.req_u.memread = {address, sizeof bytes, bytes, sizeof bytes, 0, 0};
  if (board.request(descriptor, DFEIOCMEMRD, request) != 0) {
    std::perror("reading chip memory");
    std::exit(EXIT_FAILURE);
  }
  return load_le32(reinterpret_cast<const uint8_t*>(bytes));
}

Rates ratesOf(const char* cable, double length_m) {
  BoardConfig config;
  config.loop = straightLoop(cable, length_m);
  config.device[0].line = LineState::kShowtime;
  VirtualBoard board(config, [] { return 0.0; });
  const int descriptor = board.open(0);
  const uint32_t block = VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_CP_CORE, 0, VIRT_GFAST_CNTR_DERIVED);
  const auto net = [&](size_t offset) {
    return word(board, descriptor, block + static_cast<uint32_t>(offset)) / 1000;
  };
  return {net(offsetof(GFAST_DERIVED_COUNTERS_S, TxNDR)), net(offsetof(GFAST_DERIVED_COUNTERS_S, RxNDR))};
}

// False when a longer loop carries more.
bool printRates() {
  bool good = true;
  std::printf("| metres | CAD55 down + up | both | CAT5 down + up | both |\n");
  std::printf("| --- | --- | --- | --- | --- |\n");
  uint32_t cad55Before = 1000;
  uint32_t cat5Before = 1000;
  for (const double length_m : {25.0, 50.0, 100.0, 150.0, 200.0, 250.0, 300.0, 400.0}) {
    const Rates cad55 = ratesOf("CAD55", length_m);
    const Rates cat5 = ratesOf("CAT5", length_m);
    good = good && cad55.both() <= cad55Before && cat5.both() <= cat5Before;
    cad55Before = cad55.both();
    cat5Before = cat5.both();
    std::printf("| %.0f | %u + %u | %u | %u + %u | %u |\n", length_m, cad55.down_mbps, cad55.up_mbps,
                cad55.both(), cat5.down_mbps, cat5.up_mbps, cat5.both());
  }
  return good;
}

// What a published rate says of the board's.
enum class Judgement {
  kNear,     // measured on a clean pair: the board's is near it
  kAtLeast,  // a target, or measured on a poor or disturbed pair: the board's is not below it
  kNone,     // too little is known of how it was measured
};

constexpr double kNear = 0.25;

// Rates of both directions together in Mbit/s, each with the number that docs/rates.md gives its source, and
// the nearest of the board's cables.
constexpr struct {
  int source;
  uint32_t both_mbps;
  double length_m;
  const char* cable;
  Judgement judgement;
} kPublished[] = {
    {1, 500, 100, "CAD55", Judgement::kAtLeast}, {1, 200, 200, "CAD55", Judgement::kAtLeast},
    {1, 150, 250, "CAD55", Judgement::kAtLeast}, {2, 1017, 19, "CAD55", Judgement::kNear},
    {2, 896, 66, "CAD55", Judgement::kNear},     {3, 1100, 70, "CAT5", Judgement::kNear},
    {3, 800, 100, "CAT5", Judgement::kNear},     {3, 500, 100, "CAD55", Judgement::kAtLeast},
    {4, 700, 100, "CAD55", Judgement::kNear},    {5, 600, 100, "CAD55", Judgement::kAtLeast},
    {6, 1000, 100, "CAT5", Judgement::kNone},    {6, 500, 200, "CAT5", Judgement::kNone},
};

bool isAsJudged(double share, Judgement judgement) {
  switch (judgement) {
    case Judgement::kNear:
      return std::abs(share - 1) <= kNear;
    case Judgement::kAtLeast:
      return share >= 1;
    default:
      return true;
  }
}

bool printPublished() {
  bool good = true;
  std::printf("\n| source | metres | published, Mbit/s | cable | the board's | of the published |\n");
  std::printf("| --- | --- | --- | --- | --- | --- |\n");
  for (const auto& published : kPublished) {
    const Rates rates = ratesOf(published.cable, published.length_m);
    const double share = static_cast<double>(rates.both()) / published.both_mbps;
    good = good && isAsJudged(share, published.judgement);
    std::printf("| %d | %.0f | %u | %s | %u (%u + %u) | %.0f %% |\n", published.source, published.length_m,
                published.both_mbps, published.cable, rates.both(), rates.down_mbps, rates.up_mbps,
                100 * share);
  }
  return good;
}

}  // namespace

// Exit status 1: a figure is outside its range.
int main() {
  bool good = true;
  for (bool (*const print)() : {printRates, printPublished, printLosses, printKnownLosses, printNotches}) {
    good = print() && good;
  }
  return good ? EXIT_SUCCESS : EXIT_FAILURE;
}

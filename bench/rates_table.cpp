// What the virtual board's lines carry and what its cables lose, compared with known figures.
//
// The rates are those that chips in showtime report: the net data rates of both directions, from the derived
// counters in chip memory.

#include <gfast_api.h>

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "chip/counters.h"
#include "std/byte_order.h"
#include "virtual-board/board/board_config.h"
#include "virtual-board/board/virtual_board.h"
#include "virtual-board/line/cable.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr const char* kCables[] = {"CAD55", "CAT5"};

// Of CAD55, both directions together.
constexpr struct {
  double length_m;
  uint32_t least_mbps;
  uint32_t most_mbps;
} kRates[] = {{50, 500, 1000}, {100, 500, 1000}, {150, 200, 1000}, {200, 200, 1000}, {250, 150, 1000}};

constexpr struct {
  const char* cable;
  double length_m;
  double mhz;
  double loss_db;
} kLosses[] = {{"CAD55", 100, 10, 6.3},  {"CAD55", 100, 50, 16.7}, {"CAD55", 100, 100, 26.5},
               {"CAD55", 200, 10, 12.6}, {"CAD55", 200, 50, 33.3}, {"CAD55", 200, 100, 53.0},
               {"CAT5", 100, 10, 5.7},   {"CAT5", 100, 50, 12.7},  {"CAT5", 100, 100, 18.2}};
constexpr double kLossTolerance_db = 0.1;

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
  config.loop.cable = cable;
  config.loop.length_m = length_m;
  config.device[0].line = LineState::kShowtime;
  VirtualBoard board(config, [] { return 0.0; });
  const int descriptor = board.open(0);
  const uint32_t block = VIRT_ADDR_GFAST_COUNTERS(VIRT_GFAST_CNTR_CP_CORE, 0, VIRT_GFAST_CNTR_DERIVED);
  const auto net = [&](size_t offset) {
    return word(board, descriptor, block + static_cast<uint32_t>(offset)) / 1000;
  };
  return {net(offsetof(GFAST_DERIVED_COUNTERS_S, TxNDR)), net(offsetof(GFAST_DERIVED_COUNTERS_S, RxNDR))};
}

// False when a rate is outside the known range of CAD55, or a longer loop carries more.
bool printRates() {
  bool good = true;
  std::printf("| metres | CAD55 down + up | both | known | CAT5 down + up | both |\n");
  std::printf("| --- | --- | --- | --- | --- | --- |\n");
  Rates before[std::size(kCables)] = {{1000, 1000}, {1000, 1000}};
  for (const auto& known : kRates) {
    Rates rates[std::size(kCables)];
    for (size_t i = 0; i < std::size(kCables); i++) {
      rates[i] = ratesOf(kCables[i], known.length_m);
      good = good && rates[i].both() <= before[i].both();
      before[i] = rates[i];
    }
    good = good && rates[0].both() >= known.least_mbps && rates[0].both() <= known.most_mbps;
    std::printf("| %.0f | %u + %u | %u | %u to %u | %u + %u | %u |\n", known.length_m, rates[0].down_mbps,
                rates[0].up_mbps, rates[0].both(), known.least_mbps, known.most_mbps, rates[1].down_mbps,
                rates[1].up_mbps, rates[1].both());
  }
  return good;
}

bool printLosses() {
  bool good = true;
  std::printf("\n| cable | metres | MHz | dB | known |\n| --- | --- | --- | --- | --- |\n");
  for (const auto& known : kLosses) {
    LoopConfig loop;
    loop.cable = known.cable;
    loop.length_m = known.length_m;
    const double loss_db = -20 * std::log10(std::abs(Cable(loop).insertionGain(known.mhz * 1e6)));
    good = good && std::abs(loss_db - known.loss_db) <= kLossTolerance_db;
    std::printf("| %s | %.0f | %.0f | %.2f | %.1f |\n", known.cable, known.length_m, known.mhz, loss_db,
                known.loss_db);
  }
  return good;
}

}  // namespace

// Exit status 1: a figure is outside its known range.
int main() {
  const bool rates = printRates();
  const bool losses = printLosses();
  return rates && losses ? EXIT_SUCCESS : EXIT_FAILURE;
}

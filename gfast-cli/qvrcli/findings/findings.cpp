#include "qvrcli/findings/findings.h"

#include <fmt/format.h>

#include <iterator>

#include "qvrcli/findings/rules.h"

namespace gfast::console {

namespace {

constexpr const char* kUpstream = "upstream";
constexpr const char* kDownstream = "downstream";

// What the other end measures it may refuse to tell.
void findUntold(const LineReading& line, const Directions& directions, std::vector<Finding>& findings) {
  for (const Direction& direction : directions) {
    const Levels& snr = direction.tones.snr_db;
    const bool told = std::ranges::any_of(snr, [](const auto& level) { return level.has_value(); });
    const bool received = (direction.name == kUpstream) != line.networkSide;
    if (received && !told && !direction.tones.bits.empty()) {
      findings.push_back({"untold-tones", Sureness::kSure,
                          fmt::format("The far end does not tell its SNR by tone ({}). Its rates and "
                                      "counters can be relied on; an update of its firmware may help.",
                                      direction.name)});
    }
  }
}

using Rule = void (*)(const LineReading&, const Directions&, std::vector<Finding>&);

constexpr Rule kToneRules[] = {findTapOrLoss, findNoise, findMasks, findUnusedSnr, findUntold};

}  // namespace

const char* wordOf(Sureness sureness) {
  constexpr const char* kWords[] = {"sure", "likely", "possible"};
  return kWords[static_cast<size_t>(sureness)];
}

std::vector<Finding> findingsIn(const LineReading& line) {
  std::vector<Finding> findings;
  if (line.up() && line.tones) {
    const Directions directions{{{kDownstream, line.downstream, line.tones->downstream},
                                 {kUpstream, line.upstream, line.tones->upstream}}};
    for (const Rule rule : kToneRules) {
      rule(line, directions, findings);
    }
  }
  findImpulses(line, findings);
  findPowerLosses(line, findings);
  return findings;
}

}  // namespace gfast::console

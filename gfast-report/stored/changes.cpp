#include "gfast-report/stored/changes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "gfast-report/writing/block_plot.h"
#include "gfast-report/writing/text_page.h"
#include "gfast-report/writing/tone_values.h"

namespace gfast::report {

namespace {

using namespace gfast::console;

// ---- Figures ----

std::string changeOf(const char* what, const std::optional<double>& before,
                     const std::optional<double>& after, const char* unit) {
  const auto text = [](const std::optional<double>& value) {
    return value ? fmt::format("{:.1f}", *value) : "-";
  };
  if (text(before) == text(after)) {
    return "";
  }
  const std::string by = before && after ? fmt::format(" ({:+.1f})", *after - *before) : "";
  return fmt::format("{}: {} -> {} {}{}\n", what, text(before), text(after), unit, by);
}

std::optional<double> megabits(const std::optional<uint32_t>& rate_kbps) {
  return rate_kbps ? std::optional(*rate_kbps / 1000.0) : std::nullopt;
}

std::string changesOfDirection(const std::string& name, const DirectionReading& before,
                               const DirectionReading& after, const ToneDirection& tonesBefore,
                               const ToneDirection& tonesAfter) {
  return changeOf((name + " rate").c_str(), megabits(before.netDataRate_kbps),
                  megabits(after.netDataRate_kbps), "Mbit/s") +
         changeOf((name + " possible rate").c_str(), megabits(before.attainableNetDataRate_kbps),
                  megabits(after.attainableNetDataRate_kbps), "Mbit/s") +
         changeOf((name + " margin").c_str(), before.snrMargin_db, after.snrMargin_db, "dB") +
         changeOf((name + " power").c_str(), before.transmitPower_dbm, after.transmitPower_dbm, "dBm") +
         changeOf((name + " attenuation").c_str(), tonesBefore.attenuation_db, tonesAfter.attenuation_db,
                  "dB");
}

std::string changeOfText(const char* what, const std::string& before, const std::string& after) {
  return before == after ? ""
                         : fmt::format("{}: {} -> {}\n", what, before.empty() ? "-" : before,
                                       after.empty() ? "-" : after);
}

std::string textOf(const StoredEnd& end) {
  return fmt::format("{} {} {}", end.vendor, end.version, end.serialNumber);
}

std::string changeOfErrors(const StoredErrors& before, const StoredErrors& after) {
  const auto text = [](const StoredErrors& errors) {
    return fmt::format("{} downstream and {} upstream in {} s", errors.subscriber, errors.network,
                       errors.measured_s);
  };
  return text(before) == text(after)
             ? ""
             : wrapped(fmt::format("errored seconds: {} -> {}", text(before), text(after)), 2);
}

std::string findingsOf(const char* what, const StoredReading& of, const StoredReading& notOf) {
  std::string text;
  for (const StoredFinding& finding : of.findings) {
    const auto same = [&finding](const StoredFinding& other) { return other.text == finding.text; };
    if (std::ranges::none_of(notOf.findings, same)) {
      text += wrapped(fmt::format("{}: {}", what, finding.text), 2);
    }
  }
  return text;
}

// ---- Tones ----

using Levels = std::vector<std::optional<float>>;

// Those of the second less those of the first, where both have a value.
Values differencesOf(const Levels& before, const Levels& after) {
  Values differences(std::min(before.size(), after.size()));
  for (size_t tone = 0; tone < differences.size(); tone++) {
    if (before[tone] && after[tone]) {
      differences[tone] = static_cast<double>(*after[tone]) - static_cast<double>(*before[tone]);
    }
  }
  return differences;
}

// Tones that are all higher, or all lower, than before.
struct Stretch {
  size_t first, last;
  double sum, most;
  size_t tones;
};

std::vector<Stretch> stretchesOf(const Values& differences, double least) {
  constexpr size_t kWidestGap = 8;
  std::vector<Stretch> stretches;
  for (size_t tone = 0; tone < differences.size(); tone++) {
    if (!differences[tone] || std::abs(*differences[tone]) < least) {
      continue;
    }
    const double by = *differences[tone];
    const bool same = !stretches.empty() && tone - stretches.back().last <= kWidestGap &&
                      std::signbit(stretches.back().sum) == std::signbit(by);
    if (!same) {
      stretches.push_back({tone, tone, 0, 0, 0});
    }
    Stretch& stretch = stretches.back();
    stretch.last = tone;
    stretch.sum += by;
    stretch.most = std::abs(by) > std::abs(stretch.most) ? by : stretch.most;
    stretch.tones++;
  }
  return stretches;
}

struct Table {
  const char* what;
  const char* unit;
  double least;  // what counts as a change: more than the steps in which it is measured
  Levels (*levels)(const ToneDirection& tones);
};

constexpr Table kTables[] = {
    {"bits", "", 1, bitsInUse},
    {"SNR", " dB", 2, [](const ToneDirection& tones) { return tones.snr_db; }},
    {"noise", " dB", 3, [](const ToneDirection& tones) { return tones.noise_dbmHz; }},
    {"HLOG", " dB", 2, [](const ToneDirection& tones) { return tones.hlog_db; }},
};

std::string wordsOf(const Stretch& stretch, const Table& table) {
  const double mean = stretch.sum / static_cast<double>(stretch.tones);
  const auto megahertz = [](size_t tone) { return static_cast<double>(tone) * kToneSpacing_hz / 1e6; };
  return fmt::format("{:.1f}{} {} from {:.1f} to {:.1f} MHz (at most {:.0f})", std::abs(mean), table.unit,
                     mean > 0 ? "more" : "less", megahertz(stretch.first), megahertz(stretch.last),
                     std::abs(stretch.most));
}

// The stretches that weigh most.
std::string changesOfTable(const char* direction, const Table& table, const Values& differences) {
  constexpr size_t kMost = 3;
  if (std::ranges::none_of(differences, [](const auto& value) { return value.has_value(); })) {
    return "";
  }
  std::vector<Stretch> stretches = stretchesOf(differences, table.least);
  std::ranges::sort(stretches, {}, [](const Stretch& stretch) { return -std::abs(stretch.sum); });
  std::string text;
  for (size_t i = 0; i < std::min(kMost, stretches.size()); i++) {
    text += (i == 0 ? "" : "; ") + wordsOf(stretches[i], table);
  }
  if (stretches.size() > kMost) {
    text += fmt::format("; and {} more", stretches.size() - kMost);
  }
  return wrapped(fmt::format("{} {}: {}", direction, table.what, text.empty() ? "as before" : text), 2);
}

std::string changesOfTones(const ToneReading& before, const ToneReading& after) {
  constexpr int kRows = 3;
  std::string words;
  std::string plots;
  for (const Table& table : kTables) {
    const Values down = differencesOf(table.levels(before.downstream), table.levels(after.downstream));
    const Values up = differencesOf(table.levels(before.upstream), table.levels(after.upstream));
    words += changesOfTable("downstream", table, down) + changesOfTable("upstream", table, up);
    const auto changed = [&table](const Values& differences) {
      return !stretchesOf(differences, table.least).empty();
    };
    if (changed(down) || changed(up)) {
      plots += drawBlocks({table.what, Summary::kMean, kRows}, down, up);
    }
  }
  if (plots.empty()) {
    return words;
  }
  return words + fmt::format("{:11}{:34}{}\n", "Change of", "downstream", "upstream") + plots +
         frequencyAxis();
}

}  // namespace

std::string changesOf(const StoredReading& before, const StoredReading& after) {
  std::string text;
  for (const auto& [what, reading] : {std::pair{"before", &before}, std::pair{"after", &after}}) {
    text += fmt::format("{:7}{}: {}   {}\n", what, reading->name,
                        reading->state.empty() ? "-" : reading->state, reading->time);
  }
  text += changesOfDirection("downstream", before.downstream, after.downstream, before.tones.downstream,
                             after.tones.downstream);
  text += changesOfDirection("upstream", before.upstream, after.upstream, before.tones.upstream,
                             after.tones.upstream);
  text += changeOfText("firmware", before.firmware, after.firmware);
  text += changeOfText("network end", textOf(before.network), textOf(after.network));
  text += changeOfText("subscriber's end", textOf(before.subscriber), textOf(after.subscriber));
  text += changeOfErrors(before.errors, after.errors);
  text += findingsOf("gone", before, after) + findingsOf("new", after, before);
  return text + changesOfTones(before.tones, after.tones);
}

}  // namespace gfast::report

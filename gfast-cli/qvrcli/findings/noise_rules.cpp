#include <fmt/format.h>

#include <cmath>

#include "qvrcli/findings/rules.h"

namespace gfast::console {

namespace {

constexpr double kStationExcess_db = 10;
constexpr double kStationDip_db = 6;
// A pair whose wires are alike hears a strong station, too, but below this.
constexpr float kHeardStation_dbmHz = -120;
constexpr size_t kWidestStation = 24;  // tones
// More of them are no stations, but the harmonics of something that switches.
constexpr size_t kMostStations = 12;
// A quiet pair is at -140; this is what takes three bits of every tone.
constexpr float kLoud_dbmHz = -130;

struct Band {
  double from_MHz, to_MHz;
  const char* name;
};

// Where short-wave and FM stations are allowed, and amateurs (ITU Radio Regulations).
constexpr Band kBands[] = {{2.3, 2.495, "120 m broadcasting"},  {3.2, 3.4, "90 m broadcasting"},
                           {3.5, 3.9, "80 m amateurs"},         {3.9, 4.0, "75 m broadcasting"},
                           {4.75, 5.06, "60 m broadcasting"},   {5.9, 6.2, "49 m broadcasting"},
                           {7.0, 7.2, "40 m amateurs"},         {7.2, 7.45, "41 m broadcasting"},
                           {9.4, 9.9, "31 m broadcasting"},     {10.1, 10.15, "30 m amateurs"},
                           {11.6, 12.1, "25 m broadcasting"},   {13.57, 13.87, "22 m broadcasting"},
                           {14.0, 14.35, "20 m amateurs"},      {15.1, 15.83, "19 m broadcasting"},
                           {17.48, 17.9, "16 m broadcasting"},  {18.068, 18.168, "17 m amateurs"},
                           {18.9, 19.02, "15 m broadcasting"},  {21.0, 21.45, "15 m amateurs"},
                           {21.45, 21.85, "13 m broadcasting"}, {24.89, 24.99, "12 m amateurs"},
                           {25.67, 26.1, "11 m broadcasting"},  {26.96, 27.41, "citizens' band"},
                           {28.0, 29.7, "10 m amateurs"},       {50.0, 54.0, "6 m amateurs"},
                           {70.0, 70.5, "4 m amateurs"},        {87.5, 108.0, "FM broadcasting"}};

std::string bandOf(double mhz) {
  const auto* const band = std::ranges::find_if(
      kBands, [mhz](const Band& known) { return mhz >= known.from_MHz && mhz <= known.to_MHz; });
  return band == std::end(kBands) ? "no band of radio" : band->name;
}

struct Station {
  size_t tone;
  double noise_dbmHz;
  double dip_db;
};

// The median of the levels in [from, to), none when few are there.
std::optional<double> medianIn(const Levels& levels, size_t from, size_t to) {
  constexpr size_t kFewest = 10;
  std::vector<double> values;
  for (size_t tone = from; tone < std::min(to, levels.size()); tone++) {
    if (levels[tone]) {
      values.push_back(*levels[tone]);
    }
  }
  return values.size() < kFewest ? std::nullopt : std::optional(medianOf(values));
}

constexpr size_t kNear = 12;
constexpr size_t kFar = 60;

struct Sides {
  std::optional<double> below, above;
};

Sides sidesOf(const Levels& levels, size_t tone) {
  const size_t from = tone < kFar ? 0 : tone - kFar;
  const size_t to = tone < kNear ? 0 : tone - kNear;
  return {medianIn(levels, from, to), medianIn(levels, tone + kNear + 1, tone + kFar + 1)};
}

float lowestAround(const Levels& levels, size_t tone) {
  float lowest = *levels[tone];
  for (size_t i = tone < kFar ? 0 : tone - kFar; i < std::min(tone + kFar + 1, levels.size()); i++) {
    lowest = std::min(lowest, levels[i].value_or(lowest));
  }
  return lowest;
}

// Whether the noise of a tone is far above that on both sides of it.
bool standsOut(const Levels& noise, size_t tone) {
  // No median is below the lowest level, which is found sooner.
  if (!noise[tone] || *noise[tone] - lowestAround(noise, tone) < kStationExcess_db) {
    return false;
  }
  const Sides sides = sidesOf(noise, tone);
  return sides.below && sides.above &&
         *noise[tone] - std::max(*sides.below, *sides.above) >= kStationExcess_db;
}

double dipAt(const Levels& snr, size_t tone) {
  if (tone >= snr.size() || !snr[tone]) {
    return 0;
  }
  const Sides sides = sidesOf(snr, tone);
  return sides.below && sides.above ? std::min(*sides.below, *sides.above) - *snr[tone] : 0;
}

// The middle of those that are nearly as loud as the loudest one.
size_t loudestIn(const Levels& noise, size_t from, size_t to) {
  constexpr float kNearly_db = 1;
  float most = *noise[from];
  for (size_t tone = from; tone <= to; tone++) {
    most = std::max(most, *noise[tone]);
  }
  const auto isLoud = [&](size_t tone) { return *noise[tone] >= most - kNearly_db; };
  while (!isLoud(from)) {
    from++;
  }
  while (!isLoud(to)) {
    to--;
  }
  return (from + to) / 2;
}

std::vector<Station> stationsOf(const ToneDirection& tones) {
  const Levels& noise = tones.noise_dbmHz;
  std::vector<Station> stations;
  for (size_t tone = 0; tone < noise.size(); tone++) {
    if (!standsOut(noise, tone)) {
      continue;
    }
    const size_t from = tone;
    while (tone + 1 < noise.size() && standsOut(noise, tone + 1)) {
      tone++;
    }
    const size_t loudest = loudestIn(noise, from, tone);
    const double dip = dipAt(tones.snr_db, loudest);
    const bool heard = *noise[loudest] > kHeardStation_dbmHz;
    if (tone - from < kWidestStation && heard && dip >= kStationDip_db) {
      stations.push_back({loudest, *noise[loudest], dip});
    }
  }
  return stations.size() > kMostStations ? std::vector<Station>() : stations;
}

void tellStations(const Direction& direction, const std::vector<Station>& stations,
                  std::vector<Finding>& findings) {
  for (const Station& station : stations) {
    const double mhz = megahertz(static_cast<double>(station.tone));
    findings.push_back(
        {"radio-station", Sureness::kLikely,
         fmt::format("A radio station at {:.1f} MHz ({}): {:.0f} dBm/Hz of noise, SNR {:.0f} dB "
                     "lower than beside it ({}). A pair hears that where its wires differ.",
                     mhz, bandOf(mhz), station.noise_dbmHz, station.dip_db, direction.name)});
  }
}

// What a station leaves on other tones: it falls with the square of the distance.
bool isBeside(const std::vector<Station>& stations, size_t tone, float noise_dbmHz) {
  constexpr double kWide_db = 12;  // a station is wider than a tone
  return std::ranges::any_of(stations, [&](const Station& station) {
    const double distance = std::abs(static_cast<double>(tone) - static_cast<double>(station.tone));
    return noise_dbmHz <= station.noise_dbmHz - 20 * std::log10(std::max(1.0, distance)) + kWide_db;
  });
}

void findWideNoise(const Direction& direction, const std::vector<Station>& stations,
                   std::vector<Finding>& findings) {
  constexpr size_t kShare = 10;  // a tenth of the tones
  const Levels& noise = direction.tones.noise_dbmHz;
  size_t measured = 0;
  std::vector<size_t> loud;
  float most = kLoud_dbmHz;
  for (size_t tone = 0; tone < noise.size(); tone++) {
    measured += noise[tone] ? 1 : 0;
    if (noise[tone] && *noise[tone] > kLoud_dbmHz && !isBeside(stations, tone, *noise[tone])) {
      loud.push_back(tone);
      most = std::max(most, *noise[tone]);
    }
  }
  if (loud.empty() || loud.size() * kShare < measured) {
    return;
  }
  findings.push_back(
      {"wide-band-noise", Sureness::kSure,
       fmt::format(
           "Noise above {:.0f} dBm/Hz on {} of {} tones ({}), from {:.1f} to {:.1f} MHz, up to {:.0f} "
           "dBm/Hz. Other lines in the cable, or a device of the customer.",
           kLoud_dbmHz, loud.size(), measured, direction.name, megahertz(static_cast<double>(loud.front())),
           megahertz(static_cast<double>(loud.back())), most)});
}

}  // namespace

void findNoise(const LineReading& /*line*/, const Directions& directions, std::vector<Finding>& findings) {
  for (const Direction& direction : directions) {
    const std::vector<Station> stations = stationsOf(direction.tones);
    tellStations(direction, stations, findings);
    findWideNoise(direction, stations, findings);
  }
}

}  // namespace gfast::console

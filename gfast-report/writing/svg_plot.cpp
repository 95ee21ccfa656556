#include "gfast-report/writing/svg_plot.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "gfast-report/writing/tone_values.h"

namespace gfast::report {

namespace {

using namespace gfast::console;

constexpr double kLeft = 60;
constexpr double kPlotWidth = 820;  // of the plots
constexpr double kTop = 40;
constexpr double kPlotHeight = 130;  // of one plot
constexpr double kEach = 170;        // from one plot to the next
constexpr const char* kDownColour = "#0072b2";
constexpr const char* kUpColour = "#d55e00";
constexpr double kDownWidth = 2.5;
constexpr double kUpWidth = 1.25;

struct ValueRange {
  double lowest = 1e9;
  double highest = -1e9;
};

template <typename Table>
void widen(ValueRange& range, const Table& table) {
  for (const auto& value : table) {
    if (value) {
      range.lowest = std::min(range.lowest, static_cast<double>(*value));
      range.highest = std::max(range.highest, static_cast<double>(*value));
    }
  }
}

double xOf(double tone) {
  return kLeft + tone / QVR_MAX_NUMBER_OF_TONES * kPlotWidth;
}

double yOf(double value, const ValueRange& range, double top) {
  return top + kPlotHeight * (range.highest - value) / (range.highest - range.lowest);
}

using Levels = std::vector<std::optional<float>>;

// One path; a tone without a value ends a piece of it.
std::string pathOf(const Levels& values, const ValueRange& range, double top, const char* colour,
                   double width) {
  std::string path;
  bool drawing = false;
  for (size_t tone = 0; tone < values.size(); tone++) {
    if (values[tone]) {
      path += fmt::format("{}{:.1f} {:.1f}", drawing ? 'L' : 'M', xOf(static_cast<double>(tone)),
                          yOf(*values[tone], range, top));
    }
    drawing = values[tone].has_value();
  }
  return fmt::format("<path d=\"{}\" fill=\"none\" stroke=\"{}\" stroke-width=\"{}\"/>\n", path, colour,
                     width);
}

std::string textAt(double x, double y, const char* anchor, const std::string& text) {
  return fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\">{}</text>\n", x, y, anchor, text);
}

std::string frameAt(double top, const ValueRange& range, const char* title) {
  std::string frame =
      fmt::format("<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" fill=\"none\" stroke=\"#888\"/>\n",
                  kLeft, top, kPlotWidth, kPlotHeight);
  frame += textAt(kLeft, top - 6, "start", title);
  frame += textAt(kLeft - 6, top + 10, "end", fmt::format("{:.0f}", range.highest));
  frame += textAt(kLeft - 6, top + kPlotHeight, "end", fmt::format("{:.0f}", range.lowest));
  for (int mhz = 0; mhz <= 100; mhz += 20) {
    const double x = xOf(mhz * 1e6 / kToneSpacing_hz);
    frame += fmt::format("<path d=\"M{0:.1f} {1}V{2}\" stroke=\"#ccc\"/>\n", x, top, top + kPlotHeight);
    frame += textAt(x, top + kPlotHeight + 14, "middle", fmt::format("{}", mhz));
  }
  return frame;
}

std::string plotAt(double top, const char* title, const Levels& downstream, const Levels& upstream) {
  ValueRange range;
  widen(range, downstream);
  widen(range, upstream);
  if (range.lowest > range.highest) {
    return "";
  }
  range.highest = std::max(range.highest, range.lowest + 1);
  return frameAt(top, range, title) + pathOf(downstream, range, top, kDownColour, kDownWidth) +
         pathOf(upstream, range, top, kUpColour, kUpWidth);
}

// Of the texts that stand in a drawing.
std::string escaped(const std::string& text) {
  std::string safe;
  for (const char character : text) {
    switch (character) {
      case '<':
        safe += "&lt;";
        break;
      case '&':
        safe += "&amp;";
        break;
      default:
        safe += character;
    }
  }
  return safe;
}

}  // namespace

std::string svgPlot(const LineReading& line, const std::string& heading) {
  std::string drawing = fmt::format(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 900 {}\" font-family=\"sans-serif\" "
      "font-size=\"12\">\n"
      "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n",
      kTop + 4 * kEach);
  drawing += textAt(kLeft, 16, "start", escaped(heading));
  if (line.tones) {
    const ToneDirection& down = line.tones->downstream;
    const ToneDirection& up = line.tones->upstream;
    drawing += fmt::format(
        "<text x=\"{}\" y=\"16\" text-anchor=\"end\"><tspan fill=\"{}\">downstream</tspan> <tspan "
        "fill=\"{}\">upstream"
        "</tspan>, MHz</text>\n",
        kLeft + kPlotWidth, kDownColour, kUpColour);
    drawing += plotAt(kTop, "Bits per tone", bitsInUse(down), bitsInUse(up));
    drawing += plotAt(kTop + kEach, "SNR, dB", down.snr_db, up.snr_db);
    drawing += plotAt(kTop + 2 * kEach, "Noise, dBm/Hz", down.noise_dbmHz, up.noise_dbmHz);
    drawing += plotAt(kTop + 3 * kEach, "HLOG, dB", down.hlog_db, up.hlog_db);
  }
  return drawing + "</svg>\n";
}

}  // namespace gfast::report

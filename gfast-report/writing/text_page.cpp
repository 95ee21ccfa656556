#include "gfast-report/writing/text_page.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>

#include "gfast-report/writing/block_plot.h"
#include "gfast-report/writing/tone_values.h"
#include "qvrcli/findings/findings.h"
#include "qvrcli/text/printable.h"

namespace gfast::report {

namespace {

using namespace gfast::console;

constexpr size_t kTextWidth = 79;

template <typename Value>
std::string orDash(const std::optional<Value>& value, double unit, const char* name) {
  return value ? fmt::format("{:.1f} {}", static_cast<double>(*value) / unit, name) : "-";
}

std::string directionRow(const char* name, const DirectionReading& figures,
                         const std::optional<double>& attenuation) {
  return fmt::format(
      "{:10} {:>13} {:>13} {:>9} {:>10} {:>10}\n", name, orDash(figures.netDataRate_kbps, 1000, "Mbit/s"),
      orDash(figures.attainableNetDataRate_kbps, 1000, "Mbit/s"), orDash(figures.snrMargin_db, 1, "dB"),
      orDash(figures.transmitPower_dbm, 1, "dBm"), orDash(attenuation, 1, "dB"));
}

std::string figuresOf(const LineReading& line) {
  std::optional<double> downstream;
  std::optional<double> upstream;
  if (line.tones) {
    downstream = line.tones->downstream.attenuation_db;
    upstream = line.tones->upstream.attenuation_db;
  }
  return fmt::format("{:10} {:>13} {:>13} {:>9} {:>10} {:>10}\n", "", "rate", "possible", "margin", "power",
                     "attenuation") +
         directionRow("downstream", line.downstream, downstream) +
         directionRow("upstream", line.upstream, upstream);
}

template <size_t Size>
std::string_view textOf(const char (&field)[Size]) {
  return {field, static_cast<size_t>(std::find(field, field + Size, '\0') - field)};
}

std::string endOf(const QVR_inventoryParameters_t& end) {
  return printable(
      fmt::format("{} {} {}", textOf(end.SYSTEM_VENDOR), textOf(end.VERSION), textOf(end.SERIALNR)));
}

std::string endsOf(const LineReading& line) {
  return line.inventory ? fmt::format("network end:      {}\nsubscriber's end: {}\n",
                                      endOf(line.inventory->FTU_O), endOf(line.inventory->FTU_R))
                        : "";
}

// Of the last day and the running quarter hour together.
std::string errorsOf(const LineReading& line) {
  if (!line.quarterHours.running) {
    return "";
  }
  uint64_t near = line.quarterHours.running->near.counters.erroredSeconds;
  uint64_t far = line.quarterHours.running->far.counters.erroredSeconds;
  uint64_t measured = line.quarterHours.running->measuredTime_s;
  for (const IntervalReading& interval : line.quarterHours.past) {
    near += interval.near.counters.erroredSeconds;
    far += interval.far.counters.erroredSeconds;
    measured += interval.measuredTime_s;
  }
  return fmt::format("errored seconds in {} min: {} downstream, {} upstream\n", measured / 60,
                     line.networkSide ? far : near, line.networkSide ? near : far);
}

template <typename Table>
Values valuesOf(const Table& table) {
  return {table.begin(), table.end()};
}

std::string plotsOf(const ToneReading& tones) {
  const ToneDirection& down = tones.downstream;
  const ToneDirection& up = tones.upstream;
  const std::string plots =
      drawBlocks({"bits", Summary::kMean, 3, 0}, valuesOf(bitsInUse(down)), valuesOf(bitsInUse(up))) +
      drawBlocks({"SNR", Summary::kLowest, 4}, valuesOf(down.snr_db), valuesOf(up.snr_db)) +
      drawBlocks({"noise", Summary::kHighest, 3}, valuesOf(down.noise_dbmHz), valuesOf(up.noise_dbmHz)) +
      drawBlocks({"HLOG", Summary::kLowest, 4}, valuesOf(down.hlog_db), valuesOf(up.hlog_db));
  return plots.empty()
             ? "No tone has a value.\n"
             : fmt::format("{:11}{:34}{}\n", "", "downstream", "upstream") + plots + frequencyAxis();
}

}  // namespace

std::string headOf(const Reading& reading, const std::string& source) {
  const LineReading& line = reading.lines.at(0);
  const char* const side = line.networkSide ? ", network side" : ", subscriber's side";
  return fmt::format("line {}{}: {}   {:%Y-%m-%d %H:%M:%S} UTC   {}", line.line, line.answers ? side : "",
                     line.answers ? stateWord(line.state) : "the chip does not answer",
                     fmt::gmtime(reading.time), source);
}

std::string wrapped(const std::string& text, size_t indent) {
  std::string all;
  std::string line;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find(' ', at), text.size());
    const std::string word = text.substr(at, end - at);
    if (!line.empty() && line.size() + 1 + word.size() > kTextWidth) {
      all += line + "\n";
      line = std::string(indent, ' ') + word;
    } else {
      line += (at == 0 ? "" : " ") + word;
    }
    at = end + 1;
  }
  return all + line + "\n";
}

std::string textPage(const Reading& reading, const std::string& source) {
  const LineReading& line = reading.lines.at(0);
  std::string text = headOf(reading, source) + "\n" + figuresOf(line) + endsOf(line) + errorsOf(line);
  text += line.tones ? plotsOf(*line.tones) : "Tones are measured while the line is up.\n";
  for (const Finding& finding : findingsIn(line)) {
    text += wrapped(fmt::format("* {} ({})", finding.text, wordOf(finding.sureness)), 2);
  }
  return text;
}

}  // namespace gfast::report

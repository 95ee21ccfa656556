#include "qvrcli/serve/metrics.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "qvrcli/reading/counter_columns.h"

namespace gfast::console {

namespace {

// A direction's label, its figures and its tones.
struct Direction {
  const char* name;
  DirectionReading LineReading::*figures;
  ToneDirection ToneReading::*tones;
};

constexpr Direction kDirections[] = {{"downstream", &LineReading::downstream, &ToneReading::downstream},
                                     {"upstream", &LineReading::upstream, &ToneReading::upstream}};

// One figure of each direction. Its scale makes it the unit that the name says.
struct Gauge {
  const char* name;
  const char* unit;
  const char* help;
  std::optional<double> (*value)(const DirectionReading&);
};

std::optional<double> bitsPerSecond(const std::optional<uint32_t>& kilobits) {
  return kilobits ? std::optional(1000.0 * *kilobits) : std::nullopt;
}

constexpr Gauge kGauges[] = {
    {"dsl_data_rate_bps", "bps", "Net data rate",
     [](const DirectionReading& d) { return bitsPerSecond(d.netDataRate_kbps); }},
    {"dsl_attainable_data_rate_bps", "bps", "Attainable net data rate",
     [](const DirectionReading& d) { return bitsPerSecond(d.attainableNetDataRate_kbps); }},
    {"dsl_expected_throughput_bps", "bps", "Expected throughput",
     [](const DirectionReading& d) { return bitsPerSecond(d.expectedThroughput_kbps); }},
    {"dsl_snr_margin_db", "db", "Signal-to-noise ratio margin",
     [](const DirectionReading& d) { return d.snrMargin_db; }},
    {"dsl_transmit_power_dbm", "dbm", "Actual aggregate transmit power",
     [](const DirectionReading& d) { return d.transmitPower_dbm; }},
};

class Text {
 public:
  void family(std::string_view name, std::string_view type, std::string_view unit, std::string_view help) {
    print("# TYPE {} {}\n", name, type);
    if (!unit.empty()) {
      print("# UNIT {} {}\n", name, unit);
    }
    print("# HELP {} {}.\n", name, help);
  }

  template <typename... Arguments>
  void print(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(text_), format, std::forward<Arguments>(arguments)...);
  }

  std::string take() { return std::move(text_); }

 private:
  std::string text_;
};

// A label's value within its quotes. Bytes that are no plain character come from the equipment.
std::string label(std::string_view value) {
  std::string text;
  for (const char c : value) {
    if (c == '"' || c == '\\') {
      text += '\\';
    }
    text += c >= ' ' && c <= '~' ? c : '.';
  }
  return text;
}

template <size_t Size>
std::string label(const char (&field)[Size]) {
  return label(std::string_view(field, static_cast<size_t>(std::find(field, field + Size, '\0') - field)));
}

void addUp(Text& text, const Reading& reading) {
  text.family("dsl_up", "gauge", "", "1 while the line is in showtime");
  for (const LineReading& line : reading.lines) {
    text.print("dsl_up{{line=\"{}\"}} {}\n", line.line, line.up() ? 1 : 0);
  }
}

void addState(Text& text, const Reading& reading) {
  text.family("dsl_link_state", "gauge", "",
              "State of the link (ITU-T G.9701): 2 idle, 5 training, 6 showtime");
  for (const LineReading& line : reading.lines) {
    if (line.answers) {
      text.print("dsl_link_state{{line=\"{}\"}} {}\n", line.line, static_cast<uint32_t>(line.state));
    }
  }
  text.family(
      "dsl_state_changed_timestamp_seconds", "gauge", "seconds",
      "When the line came into its state; no sample while it has not changed since the program started");
  for (const LineReading& line : reading.lines) {
    if (line.answers && line.memory.stateSince) {
      text.print("dsl_state_changed_timestamp_seconds{{line=\"{}\"}} {}\n", line.line,
                 *line.memory.stateSince);
    }
  }
}

void addGauges(Text& text, const Reading& reading) {
  for (const Gauge& gauge : kGauges) {
    text.family(gauge.name, "gauge", gauge.unit, gauge.help);
    for (const LineReading& line : reading.lines) {
      for (const Direction& direction : kDirections) {
        if (const auto value = gauge.value(line.*direction.figures)) {
          text.print("{}{{line=\"{}\",direction=\"{}\"}} {}\n", gauge.name, line.line, direction.name,
                     *value);
        }
      }
    }
  }
}

void addAttenuation(Text& text, const Reading& reading) {
  text.family("dsl_signal_attenuation_db", "gauge", "db", "Signal attenuation, read every quarter hour");
  for (const LineReading& line : reading.lines) {
    for (const Direction& direction : kDirections) {
      if (line.tones && (line.tones.get()->*direction.tones).attenuation_db) {
        text.print("dsl_signal_attenuation_db{{line=\"{}\",direction=\"{}\"}} {}\n", line.line,
                   direction.name, *(line.tones.get()->*direction.tones).attenuation_db);
      }
    }
  }
}

void addCounter(Text& text, const LineReading& line, const char* end, const std::optional<EndTotals>& totals,
                const std::optional<EndCounters>& counters, size_t index) {
  const CounterColumn& column = kCounterColumns[index];
  if (!totals || !counters || (column.nearOnly && !counters->countsNearOnly)) {
    return;
  }
  const uint64_t unit = column.field == &EndCounters::errorFreeBits ? kErrorFreeBitsUnit : 1;
  text.print("dsl_{}_total{{line=\"{}\",end=\"{}\"}} {}\n", column.metric, line.line, end,
             (*totals)[index] * unit);
}

void addCounters(Text& text, const Reading& reading) {
  for (size_t i = 0; i < kCounterColumns.size(); i++) {
    const CounterColumn& column = kCounterColumns[i];
    text.family(fmt::format("dsl_{}", column.metric), "counter", column.seconds ? "seconds" : "",
                column.help);
    for (const LineReading& line : reading.lines) {
      addCounter(text, line, "network", line.networkTotals, line.networkEnd, i);
      addCounter(text, line, "subscriber", line.subscriberTotals, line.subscriberEnd, i);
    }
  }
}

// Who is at the ends. A new modem is a new set of labels, and the old one is not told any more.
void addInfo(Text& text, const Reading& reading) {
  text.family("dsl_line", "info", "", "Who is at the ends of the line");
  for (const LineReading& line : reading.lines) {
    if (line.answers && line.inventory) {
      const QVR_inventoryParameters_t& network = line.inventory->FTU_O;
      const QVR_inventoryParameters_t& subscriber = line.inventory->FTU_R;
      text.print(
          "dsl_line_info{{line=\"{}\",side=\"{}\",network_vendor=\"{}\",network_version=\"{}\","
          "network_serial=\"{}\",subscriber_vendor=\"{}\",subscriber_version=\"{}\",subscriber_serial=\"{}\"}"
          "} "
          "1\n",
          line.line, line.networkSide ? "network" : "subscriber", label(network.SYSTEM_VENDOR),
          label(network.VERSION), label(network.SERIALNR), label(subscriber.SYSTEM_VENDOR),
          label(subscriber.VERSION), label(subscriber.SERIALNR));
    }
  }
}

void addDevices(Text& text, const Reading& reading) {
  text.family("dsl_device_temperature_celsius", "gauge", "celsius", "Temperature of the line's chip");
  for (const LineReading& line : reading.lines) {
    if (line.deviceTemperature_c) {
      text.print("dsl_device_temperature_celsius{{line=\"{}\"}} {}\n", line.line,
                 static_cast<int32_t>(*line.deviceTemperature_c));
    }
  }
}

void addReading(Text& text, const Reading& reading) {
  text.family("gfast_reading_timestamp_seconds", "gauge", "seconds", "When the lines were read");
  text.print("gfast_reading_timestamp_seconds {}\n", reading.time);
  text.family("gfast_reading_duration_seconds", "gauge", "seconds",
              "How long that took, waiting for commands included");
  text.print("gfast_reading_duration_seconds {:.6f}\n", reading.duration_s);
  text.family("gfast_readings", "counter", "", "Readings since the program started");
  text.print("gfast_readings_total {}\n", reading.number);
}

}  // namespace

std::string metricsText(const Reading& reading) {
  Text text;
  addUp(text, reading);
  addState(text, reading);
  addGauges(text, reading);
  addAttenuation(text, reading);
  addCounters(text, reading);
  addDevices(text, reading);
  addInfo(text, reading);
  addReading(text, reading);
  text.print("# EOF\n");
  return text.take();
}

}  // namespace gfast::console

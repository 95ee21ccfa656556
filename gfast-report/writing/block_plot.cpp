#include "gfast-report/writing/block_plot.h"

#include <fmt/format.h>
#include <qvr.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "qvrcli/reading/line_reading.h"

namespace gfast::report {

namespace {

constexpr size_t kColumns = 32;  // of a direction
constexpr size_t kTonesOfColumn = QVR_MAX_NUMBER_OF_TONES / kColumns;
constexpr int kStepsOfRow = 8;
constexpr const char* kBlocks[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};

using Column = std::optional<double>;
using Columns = std::array<Column, kColumns>;

Column columnOf(const Values& values, size_t column, Summary summary) {
  std::vector<double> known;
  for (size_t tone = column * kTonesOfColumn; tone < std::min((column + 1) * kTonesOfColumn, values.size());
       tone++) {
    if (values[tone]) {
      known.push_back(*values[tone]);
    }
  }
  if (known.empty()) {
    return std::nullopt;
  }
  if (summary != Summary::kMean) {
    return summary == Summary::kLowest ? std::ranges::min(known) : std::ranges::max(known);
  }
  double sum = 0;
  for (const double value : known) {
    sum += value;
  }
  return sum / static_cast<double>(known.size());
}

Columns columnsOf(const Values& values, Summary summary) {
  Columns columns;
  for (size_t i = 0; i < kColumns; i++) {
    columns[i] = columnOf(values, i, summary);
  }
  return columns;
}

struct Range {
  double lowest, highest;
};

// None when there is no value.
std::optional<Range> rangeOf(const Columns& downstream, const Columns& upstream) {
  std::optional<Range> range;
  for (const Columns* columns : {&downstream, &upstream}) {
    for (const Column& column : *columns) {
      if (column) {
        range = range ? Range{std::min(range->lowest, *column), std::max(range->highest, *column)}
                      : Range{*column, *column};
      }
    }
  }
  return range;
}

// How many eighths of a row a column is high; a value is never without a block.
int heightOf(const Column& column, const Range& range, int rows) {
  if (!column) {
    return 0;
  }
  const double most = rows * kStepsOfRow - 1;
  const double span = range.highest - range.lowest;
  return 1 + static_cast<int>(span <= 0 ? 0 : std::lround((*column - range.lowest) / span * most));
}

std::string rowOf(const Columns& columns, const Range& range, int row, int rows) {
  std::string text;
  for (const Column& column : columns) {
    const int above = heightOf(column, range, rows) - (rows - 1 - row) * kStepsOfRow;
    text += kBlocks[std::clamp(above, 0, kStepsOfRow)];
  }
  return text;
}

}  // namespace

std::string drawBlocks(const BlockPlot& plot, const Values& downstream, const Values& upstream) {
  const Columns down = columnsOf(downstream, plot.summary);
  const Columns up = columnsOf(upstream, plot.summary);
  auto range = rangeOf(down, up);
  if (range && plot.floor) {
    range->lowest = *plot.floor;
  }
  std::string text;
  for (int row = 0; range && row < plot.rows; row++) {
    std::string label;
    if (row == 0) {
      label = fmt::format("{:.0f}", range->highest);
    } else if (row == plot.rows - 1) {
      label = fmt::format("{:.0f}", range->lowest);
    }
    const char* const title = row == plot.rows / 2 ? plot.title : "";
    text += fmt::format("{:6}{:>4}│{}│ {}│\n", title, label, rowOf(down, *range, row, plot.rows),
                        rowOf(up, *range, row, plot.rows));
  }
  return text;
}

std::string frequencyAxis() {
  const double top = QVR_MAX_NUMBER_OF_TONES * console::kToneSpacing_hz / 1e6;
  const std::string axis = fmt::format("{:<8.0f}{:<8.0f}{:<8.0f}{:>8.0f}", 0.0, top / 4, top / 2, top);
  return fmt::format("   MHz     {}  {}\n", axis, axis);
}

}  // namespace gfast::report

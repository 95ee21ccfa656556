// A plot over frequency, of Unicode blocks, for a terminal of 80 columns. Both directions stand side by side.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace gfast::report {

using Values = std::vector<std::optional<double>>;

// What stands for the tones that share a column.
enum class Summary { kMean, kLowest, kHighest };

struct BlockPlot {
  const char* title;
  Summary summary;
  int rows;
  std::optional<double> floor = std::nullopt;  // what the lowest row begins at; otherwise the lowest value
};

// One line a row, each with its end. Empty when neither direction has a value.
std::string drawBlocks(const BlockPlot& plot, const Values& downstream, const Values& upstream);

// The line below plots that tells the frequencies.
std::string frequencyAxis();

}  // namespace gfast::report

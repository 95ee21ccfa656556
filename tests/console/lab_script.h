// A script that the lab runs.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "console/programs.h"
#include "support/temporary_folder.h"

// What the lab prints that runs this script with these options, without the trace log.
inline std::string outputOf(std::vector<std::string> options, const std::string& script) {
  const TemporaryFolder folder;
  setenv("TZ", "UTC0", 1);
  options.insert(options.begin(), gfastLab());
  options.push_back(folder.write("a.txt", script));
  ConsoleProgram program(LAUNCHER, options, folder.path());
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.errors(), "");
  std::istringstream output(program.output());
  std::string text;
  for (std::string line; std::getline(output, line);) {
    text += line.starts_with("[LOG_") ? "" : line + '\n';
  }
  return text;
}

// Stored transcripts and files, compared byte for byte.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

inline std::string readText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

// The text is what the stored one says. With STORE_TEXTS in the environment it becomes the stored one
// instead, and the test fails so that nobody takes that for a pass: look at the difference before it is
// committed.
inline void expectStored(const std::string& path, const std::string& text) {
  if (std::getenv("STORE_TEXTS") != nullptr) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    ADD_FAILURE() << "stored anew: " << path;
    return;
  }
  EXPECT_EQ(text, readText(path)) << path;
}

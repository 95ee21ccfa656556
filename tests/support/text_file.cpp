#include "support/text_file.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

std::string readText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) {
    throw std::system_error(errno, std::generic_category(), path);
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeText(const std::string& path, std::string_view text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  file.close();
  if (!file) {
    throw std::system_error(errno, std::generic_category(), path);
  }
}

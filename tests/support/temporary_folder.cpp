#include "support/temporary_folder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "support/text_file.h"

TemporaryFolder::TemporaryFolder() {
  path_ = (std::filesystem::temp_directory_path() / "gfast-test-XXXXXX").string();
  if (mkdtemp(path_.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), path_);
  }
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::file(std::string_view name) const {
  return path_ + '/' + std::string(name);
}

bool TemporaryFolder::has(std::string_view name) const {
  return std::filesystem::exists(file(name));
}

std::string TemporaryFolder::write(std::string_view name, std::string_view content) const {
  std::string full = file(name);
  writeText(full, content);
  return full;
}

std::string TemporaryFolder::read(std::string_view name) const {
  return readText(file(name));
}

// A folder of its own for files that a test reads or writes; it is removed together with the object.
#pragma once

#include <string>
#include <string_view>

class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }

  // The full name of a file in it.
  std::string file(std::string_view name) const;
  bool has(std::string_view name) const;

  // Writes a file and returns its full name.
  std::string write(std::string_view name, std::string_view content) const;

  // The content of a file.
  std::string read(std::string_view name) const;

 private:
  std::string path_;
};

// A file that exists as long as its object, in a folder of its own.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

class TempFile {
 public:
  explicit TempFile(const std::string& content = "", const char* name = "") {
    char folder[] = "/tmp/board-test-XXXXXX";
    folder_ = ::mkdtemp(folder);
    path_ = folder_ + '/' + (*name == '\0' ? "file" : name);
    std::ofstream(path_, std::ios::binary) << content;
  }
  explicit TempFile(const std::vector<uint8_t>& content)
      : TempFile(std::string(content.begin(), content.end())) {}
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  ~TempFile() {
    ::unlink(path_.c_str());
    ::rmdir(folder_.c_str());
  }
  const std::string& path() const { return path_; }
  const std::string& folder() const { return folder_; }
  std::string content() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::string folder_;
  std::string path_;
};

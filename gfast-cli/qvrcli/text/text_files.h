// Text files that an operator names: reading their lines, whatever bytes are in them, and writing them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string_view>

namespace gfast::console {

struct CloseTextFile {
  void operator()(FILE* file) const { std::fclose(file); }
};
using TextFile = std::unique_ptr<FILE, CloseTextFile>;

// Opens a regular file for reading; nullptr when it cannot. Nothing else (a folder, a device, a pipe) is
// opened, because it may never end.
TextFile openForReading(const char* path);

// The lines of a file, cut to kMaxLineLength characters. What ends a line (a line feed, one with a carriage
// return before it, or the end of the file) is not part of it.
class LineReader {
 public:
  static constexpr size_t kMaxLineLength = 80;

  explicit LineReader(FILE* file) : file_(file) {}

  // False at the end of the file. The line is valid until the next call.
  bool next(std::string_view& line);

 private:
  FILE* file_;
  char line_[kMaxLineLength + 1];  // and a carriage return
};

// A file being written: created, or emptied if it was there. A terminal and the null device are written as
// well; any other name that is no file is refused.
class OutputFile {
 public:
  explicit OutputFile(const char* path);

  bool isOpen() const { return file_ != nullptr; }
  FILE* get() const { return file_.get(); }

  // Ends the writing. False when not everything could be written; errno says why.
  bool finish();

 private:
  TextFile file_;
};

// Takes a hexadecimal word of at most eight digits, and blanks before it, off the front of the text. False,
// with text and word unchanged, when there is none, or when digits or letters follow.
bool takeHexWord(std::string_view& text, uint32_t& word);

// Drops the first word of the text, whatever it holds, and blanks before it.
void dropWord(std::string_view& text);

}  // namespace gfast::console

// Text files that an operator names: read line by line whatever is in them, or written to the last line.
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

// Opens a regular file for reading: anything else (a folder, a device, a pipe) may never end. nullptr: it
// cannot be opened.
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

// A file being written: created, or emptied if it was there.
class OutputFile {
 public:
  explicit OutputFile(const char* path) : file_(std::fopen(path, "w")) {}

  bool isOpen() const { return file_ != nullptr; }
  FILE* get() const { return file_.get(); }

  // Ends the writing. False when not everything could be written; errno says why.
  bool finish();

 private:
  TextFile file_;
};

// Takes a hexadecimal word of at most eight digits off the text's front, blanks before it included. False,
// with text and word as they were, when there is none, or more digits or letters behind it.
bool takeHexWord(std::string_view& text, uint32_t& word);

// Drops whatever stands between blanks at the text's front.
void dropWord(std::string_view& text);

}  // namespace gfast::console

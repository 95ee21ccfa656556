// Strict reading of one TOML table: wrong values and unknown keys are mistakes.
#pragma once

#include <toml++/toml.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace gfast::board {

// Of all times and levels in a board file.
constexpr double kLatest_s = 1e9;
constexpr double kLeastLevel_dbm_hz = -200;

struct Choice {
  const char* name;
  int value;
};

class TomlReader {
 public:
  // `name` is the table's name in errors: "[loop]".
  TomlReader(std::string path, const toml::table& table, std::string name);

  // Each returns empty when the key is absent, and throws BoardFileError when its value has another type or
  // is out of range.
  std::optional<int64_t> integer(const char* key, int64_t least, int64_t most);
  std::optional<double> number(const char* key, double least, double most);
  std::optional<bool> boolean(const char* key);
  std::optional<std::string> text(const char* key);
  std::optional<int> choice(const char* key, std::initializer_list<Choice> choices);
  // 32-bit words, as unsigned or signed numbers.
  std::optional<std::vector<uint32_t>> words(const char* key, size_t most);
  std::optional<std::vector<std::string>> texts(const char* key);
  // "01 0a ff" or "01:0a:ff".
  std::optional<std::vector<uint8_t>> bytes(const char* key);
  // A table within this one; an array of tables. `name` is their name in errors.
  std::optional<TomlReader> table(const char* key, const char* name);
  std::vector<TomlReader> tables(const char* key, const char* name);

  // The value; a mistake when the key is absent.
  template <typename T>
  T required(const char* key, std::optional<T> value) const {
    if (!value) {
      failHere(name_ + " needs \"" + key + '"');
    }
    return *std::move(value);
  }

  bool has(const char* key) const { return table_->contains(key); }
  const std::string& path() const { return path_; }

  // Called at the end: a key that was never read is a mistake.
  void finish() const;

  [[noreturn]] void failAt(const char* key, const std::string& reason) const;
  [[noreturn]] void failHere(const std::string& reason) const;

 private:
  const toml::node* take(const char* key);
  // The value of a key, null when it is absent. `what` names the type in errors.
  template <typename T>
  const T* taken(const char* key, const char* what);
  // A list of values of this type.
  template <typename T>
  const toml::array* takenList(const char* key, const char* what);
  [[noreturn]] void failAt(const toml::source_region& where, const std::string& reason) const;

  std::string path_;
  const toml::table* table_;
  std::string name_;
  std::set<std::string> asked_;
};

}  // namespace gfast::board

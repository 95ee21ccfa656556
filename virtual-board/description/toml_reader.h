// Strict reading of one TOML table: what is asked for is checked, what was not asked for is a mistake.
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

struct Choice {
  const char* name;
  int value;
};

class TomlReader {
 public:
  // `name` is how errors call the table: "[loop]".
  TomlReader(std::string path, const toml::table& table, std::string name);

  // Each answers nothing when the key is absent and throws BoardFileError when its value is not of the type
  // or out of range.
  std::optional<int64_t> integer(const char* key, int64_t least, int64_t most);
  std::optional<double> number(const char* key, double least, double most);
  std::optional<bool> boolean(const char* key);
  std::optional<std::string> text(const char* key);
  std::optional<int> choice(const char* key, std::initializer_list<Choice> choices);
  // 32-bit words, written as unsigned or as signed numbers.
  std::optional<std::vector<uint32_t>> words(const char* key, size_t most);
  std::optional<std::vector<std::string>> texts(const char* key);
  // "01 0a ff", or with colons in between.
  std::optional<std::vector<uint8_t>> bytes(const char* key);
  // A table within this one, or an array of tables ("name" is what errors call each).
  std::optional<TomlReader> table(const char* key, const char* name);
  std::vector<TomlReader> tables(const char* key, const char* name);

  // What the optional answers hold, or a mistake: the table needs the key.
  template <typename T>
  T required(const char* key, std::optional<T> value) const {
    if (!value) {
      failHere(name_ + " needs \"" + key + '"');
    }
    return *std::move(value);
  }

  bool has(const char* key) const { return table_->contains(key); }
  const std::string& path() const { return path_; }

  // Throws when the table holds a key nobody asked for.
  void finish() const;

  [[noreturn]] void failAt(const char* key, const std::string& reason) const;
  [[noreturn]] void failHere(const std::string& reason) const;

 private:
  const toml::node* take(const char* key);
  [[noreturn]] void failAt(const toml::source_region& where, const std::string& reason) const;

  std::string path_;
  const toml::table* table_;
  std::string name_;
  std::set<std::string> asked_;
};

}  // namespace gfast::board

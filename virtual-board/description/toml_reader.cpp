#include "virtual-board/description/toml_reader.h"

#include <cmath>
#include <limits>
#include <sstream>

#include "virtual-board/description/board_file_error.h"
#include "virtual-board/description/foreign_text.h"

namespace gfast::board {

namespace {

std::string quoted(const char* key) {
  return std::string(1, '"') + key + '"';
}

std::string between(double least, double most) {
  std::ostringstream text;
  text << "between " << least << " and " << most;
  return text.str();
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Reads pairs of hexadecimal digits with blanks or one colon between them.
bool parseBytes(const std::string& text, std::vector<uint8_t>& bytes) {
  for (size_t i = 0; i < text.size();) {
    if (text[i] == ' ') {
      i++;
      continue;
    }
    const int high = hexDigit(text[i]);
    const int low = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
    const bool ends =
        i + 2 >= text.size() || text[i + 2] == ' ' || (text[i + 2] == ':' && i + 3 < text.size());
    if (high < 0 || low < 0 || !ends) {
      return false;
    }
    bytes.push_back(static_cast<uint8_t>(high * 16 + low));
    i += 3;
  }
  return true;
}

}  // namespace

TomlReader::TomlReader(std::string path, const toml::table& table, std::string name)
    : path_(std::move(path)), table_(&table), name_(std::move(name)) {}

const toml::node* TomlReader::take(const char* key) {
  asked_.insert(key);
  return table_->get(key);
}

void TomlReader::failAt(const toml::source_region& where, const std::string& reason) const {
  throw BoardFileError(path_ + ':' + std::to_string(where.begin.line) + ": " + printable(reason));
}

void TomlReader::failAt(const char* key, const std::string& reason) const {
  const toml::node* node = table_->get(key);
  failAt(node == nullptr ? table_->source() : node->source(), reason);
}

void TomlReader::failHere(const std::string& reason) const {
  failAt(table_->source(), reason);
}

void TomlReader::finish() const {
  for (const auto& [key, node] : *table_) {
    if (!asked_.contains(std::string(key.str()))) {
      failAt(key.source(), "unknown key \"" + std::string(key.str()) + "\" in " + name_);
    }
  }
}

template <typename T>
const T* TomlReader::taken(const char* key, const char* what) {
  const toml::node* node = take(key);
  if (node != nullptr && !node->is<T>()) {
    failAt(key, quoted(key) + " must be " + what);
  }
  return node == nullptr ? nullptr : node->as<T>();
}

template <typename T>
const toml::array* TomlReader::takenList(const char* key, const char* what) {
  const auto* array = taken<toml::array>(key, what);
  if (array != nullptr && !array->empty() && !array->is_homogeneous<T>()) {
    failAt(key, quoted(key) + " must be " + what);
  }
  return array;
}

std::optional<int64_t> TomlReader::integer(const char* key, int64_t least, int64_t most) {
  const auto* value = taken<toml::value<int64_t>>(key, "a whole number");
  if (value == nullptr) {
    return std::nullopt;
  }
  if (value->get() < least || value->get() > most) {
    failAt(key, quoted(key) + " must be between " + std::to_string(least) + " and " + std::to_string(most));
  }
  return value->get();
}

std::optional<double> TomlReader::number(const char* key, double least, double most) {
  const toml::node* node = take(key);
  if (node == nullptr) {
    return std::nullopt;
  }
  const auto value = node->value<double>();
  if (!value || !node->is_number()) {
    failAt(key, quoted(key) + " must be a number");
  }
  if (!(*value >= least && *value <= most)) {
    failAt(key, quoted(key) + " must be " + between(least, most));
  }
  return *value;
}

std::optional<bool> TomlReader::boolean(const char* key) {
  const auto* value = taken<toml::value<bool>>(key, "true or false");
  return value == nullptr ? std::nullopt : std::optional(value->get());
}

std::optional<std::string> TomlReader::text(const char* key) {
  const auto* value = taken<toml::value<std::string>>(key, "a text in quotes");
  return value == nullptr ? std::nullopt : std::optional(value->get());
}

std::optional<int> TomlReader::choice(const char* key, std::initializer_list<Choice> choices) {
  const auto value = text(key);
  if (!value) {
    return std::nullopt;
  }
  std::string names;
  for (const Choice& choice : choices) {
    if (*value == choice.name) {
      return choice.value;
    }
    names += std::string(names.empty() ? "" : ", ") + choice.name;
  }
  failAt(key, quoted(key) + " must be one of " + names);
}

std::optional<std::vector<uint32_t>> TomlReader::words(const char* key, size_t most) {
  const auto* array = taken<toml::array>(key, "a list of whole numbers");
  if (array == nullptr) {
    return std::nullopt;
  }
  if (array->size() > most) {
    failAt(key, quoted(key) + " must have at most " + std::to_string(most) + " entries");
  }
  std::vector<uint32_t> words;
  for (const toml::node& entry : *array) {
    const auto* value = entry.as_integer();
    if (value == nullptr) {
      failAt(entry.source(), quoted(key) + " must be a list of whole numbers");
    }
    if (value->get() < std::numeric_limits<int32_t>::min() ||
        value->get() > std::numeric_limits<uint32_t>::max()) {
      failAt(entry.source(), quoted(key) + " must hold numbers of 32 bits");
    }
    words.push_back(static_cast<uint32_t>(value->get()));
  }
  return words;
}

std::optional<std::vector<std::string>> TomlReader::texts(const char* key) {
  const auto* array = takenList<std::string>(key, "a list of texts in quotes");
  if (array == nullptr) {
    return std::nullopt;
  }
  std::vector<std::string> texts;
  for (const toml::node& entry : *array) {
    texts.push_back(entry.as_string()->get());
  }
  return texts;
}

std::optional<std::vector<uint8_t>> TomlReader::bytes(const char* key) {
  const auto value = text(key);
  if (!value) {
    return std::nullopt;
  }
  std::vector<uint8_t> bytes;
  if (!parseBytes(*value, bytes)) {
    failAt(key, quoted(key) + " must be pairs of hexadecimal digits with blanks or colons between them");
  }
  return bytes;
}

std::optional<TomlReader> TomlReader::table(const char* key, const char* name) {
  const auto* found = taken<toml::table>(key, "a table");
  return found == nullptr ? std::nullopt : std::optional(TomlReader(path_, *found, name));
}

std::vector<TomlReader> TomlReader::tables(const char* key, const char* name) {
  std::vector<TomlReader> readers;
  const auto* array = takenList<toml::table>(key, "a list of tables");
  if (array != nullptr) {
    for (const toml::node& entry : *array) {
      readers.emplace_back(path_, *entry.as_table(), name);
    }
  }
  return readers;
}

}  // namespace gfast::board

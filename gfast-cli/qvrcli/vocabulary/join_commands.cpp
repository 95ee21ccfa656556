#include "qvrcli/vocabulary/join_commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>

namespace gfast::console {

namespace {

[[noreturn]] void fail(const char* what, const char* path) {
  throw std::logic_error(fmt::format("vocabulary: {} '{}'", what, path));
}

bool isAt(const Place& place, int mode, std::string_view path) {
  return place.mode == mode && place.path == path;
}

bool leadsTo(const Place& place, const Place& other) {
  return place.mode == other.mode && std::string_view(other.path).starts_with(std::string(place.path) + ' ');
}

Command commandAt(const Place& place, std::span<const Place> order, std::span<const Command> rows) {
  const auto isRow = [&place](const Command& row) { return isAt(place, row.mode, row.path); };
  const auto isBelow = [&place](const Place& other) { return leadsTo(place, other); };
  const auto found = std::ranges::count_if(rows, isRow);
  if (std::ranges::any_of(order, isBelow)) {
    if (found != 0) {
      fail("a row for a word that leads to others", place.path);
    }
    return keyword(place.path);
  }
  if (found != 1) {
    fail(found == 0 ? "no row for" : "two rows for", place.path);
  }
  return *std::ranges::find_if(rows, isRow);
}

}  // namespace

std::vector<Command> joinCommands(std::span<const Place> order, std::span<const Command> rows) {
  const auto placesOf = [order](int mode, const char* path) {
    return std::ranges::count_if(order, [=](const Place& place) { return isAt(place, mode, path); });
  };
  std::vector<Command> joined;
  for (const Place& place : order) {
    if (placesOf(place.mode, place.path) != 1) {
      fail("two places for", place.path);
    }
    joined.push_back(commandAt(place, order, rows));
  }
  for (const Command& row : rows) {
    if (placesOf(row.mode, row.path) == 0) {
      fail("no place for", row.path);
    }
  }
  return joined;
}

}  // namespace gfast::console

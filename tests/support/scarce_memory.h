// Memory that is refused. A program that compiles scarce_memory.cpp allocates through it.
#pragma once

#include <cstddef>
#include <cstdint>

// Allocations of so many bytes and more fail; none fails at first.
inline constexpr size_t kNothingRefused = SIZE_MAX;
void refuseAllocationsFrom(size_t bytes);

// What `action` returns while allocations of so many bytes and more fail.
template <typename Action>
auto refusing(size_t from, Action action) {
  refuseAllocationsFrom(from);
  const auto result = action();
  refuseAllocationsFrom(kNothingRefused);
  return result;
}

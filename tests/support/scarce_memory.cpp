#include "support/scarce_memory.h"

#include <cstdlib>
#include <new>

namespace {

size_t refusedFrom = kNothingRefused;

void* allocate(size_t size) {
  return size >= refusedFrom ? nullptr : std::malloc(size);
}

void* allocateOrThrow(size_t size) {
  void* memory = allocate(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

void refuseAllocationsFrom(size_t bytes) {
  refusedFrom = bytes;
}

// Not inlined, because the compiler would warn of a free of what new has allocated.
[[gnu::noinline]] void* operator new(size_t size) {
  return allocateOrThrow(size);
}

[[gnu::noinline]] void* operator new[](size_t size) {
  return allocateOrThrow(size);
}

[[gnu::noinline]] void* operator new[](size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size);
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, size_t /*size*/) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory, size_t /*size*/) noexcept {
  std::free(memory);
}

// Vectoring coefficients for which there is no memory. This program's own allocation can be told to refuse.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "support/expected_requests.h"
#include "support/lines.h"
#include "support/tones.h"

using namespace gfast;

namespace {

size_t refusedFrom = SIZE_MAX;  // bytes; smaller allocations succeed

void* allocate(size_t size) {
  return size >= refusedFrom ? nullptr : std::malloc(size);
}

}  // namespace

// Inlined, these would look to the compiler like a free of what new has allocated.
[[gnu::noinline]] void* operator new(size_t size) {
  void* memory = allocate(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
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

namespace {

template <typename Read>
QVR_retval_t refusing(size_t from, Read read) {
  refusedFrom = from;
  const QVR_retval_t status = read();
  refusedFrom = SIZE_MAX;
  return status;
}

TEST(VectorMatricesWithoutMemory, AreNotReadAndFillNothing) {
  enterBothLines();
  const ExpectedRequests driver{Script()};
  QVR_tonePairMatrix_t matrix;
  matrix.coefficients_re.matrix[0][0] = 0.5;
  EXPECT_EQ(refusing(1024, [&] { return QVR_readCancelerMatrixForLine(0, 1, &matrix); }),
            QVR_E_FAILED_TO_ALLOCATE_MEMORY);
  EXPECT_EQ(refusing(1024, [&] { return QVR_readPrecoderMatrixForLine(0, 1, &matrix); }),
            QVR_E_FAILED_TO_ALLOCATE_MEMORY);
  EXPECT_EQ(refusing(65535U * 1024, [&] { return QVR_readCancelerMatrixForLine(0, 65535, &matrix); }),
            QVR_E_FAILED_TO_ALLOCATE_MEMORY);
  EXPECT_EQ(matrix.coefficients_re.matrix[0][0], 0.5);
}

TEST(VectorMatricesWithoutMemory, OfAllLinesAreAnError) {
  enterBothLines();
  const ExpectedRequests driver{Script()};
  QVR_tonePairMatrix_t matrices[2];
  EXPECT_EQ(refusing(1024, [&] { return QVR_readCancelerMatrixForAllLines(1, matrices); }), QVR_E_ERROR);
  EXPECT_EQ(refusing(1024, [&] { return QVR_readPrecoderMatrixForAllLines(1, matrices); }), QVR_E_ERROR);
}

}  // namespace

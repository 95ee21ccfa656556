// A transform without memory: it is reported, and nothing is transformed until there is some.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "qvrtest/fft.h"
#include "support/expected_requests.h"
#include "support/lines.h"
#include "support/plain_transform.h"
#include "support/test_clock.h"

using namespace gfast;

namespace {

int allocationsLeft = -1;  // -1: as many as wanted

bool isRefused() {
  if (allocationsLeft == 0) {
    return true;
  }
  allocationsLeft -= allocationsLeft > 0 ? 1 : 0;
  return false;
}

}  // namespace

// What the transform's vectors come from.
void* operator new[](size_t size, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept {
  const auto step = static_cast<size_t>(alignment);
  return isRefused() ? nullptr : std::aligned_alloc(step, (size + step - 1) / step * step);
}

void operator delete[](void* memory, std::align_val_t /*alignment*/) noexcept {
  std::free(memory);
}

namespace {

// So many allocations succeed. A transform needs two: factors, then a work vector.
class FftMemory : public testing::TestWithParam<int> {};

TEST_P(FftMemory, InitFailsAndNothingIsTransformed) {
  allocationsLeft = GetParam();
  EXPECT_FALSE(FFT_init(16, TRUE, FALSE));
  const Points input = randomPoints(16);
  Points output(16, {7, 7});
  EXPECT_EQ(FFT_transform(output.data(), input.data()), 0);
  EXPECT_EQ(FFT_inverseTransform(output.data(), input.data()), 0);
  EXPECT_EQ(FFT_transformAbsoluteSquare(output.data(), input.data()), 0);
  EXPECT_EQ(output, Points(16, {7, 7}));
}

TEST_P(FftMemory, InitSucceedsOnceThereIsMemory) {
  ASSERT_TRUE(FFT_init(8, TRUE, FALSE));
  allocationsLeft = GetParam();
  EXPECT_FALSE(FFT_init(16, TRUE, FALSE));
  allocationsLeft = -1;
  ASSERT_TRUE(FFT_init(16, TRUE, FALSE));
  Points output(16);
  EXPECT_EQ(FFT_transform(output.data(), randomPoints(16).data()), 0.25);
}

TEST_P(FftMemory, InitForTheSameSizeNeedsNoMemory) {
  ASSERT_TRUE(FFT_init(16, TRUE, FALSE));
  allocationsLeft = GetParam();
  EXPECT_TRUE(FFT_init(8, FALSE, TRUE));
  Points points = randomPoints(16);
  EXPECT_EQ(FFT_inverseTransform(points.data(), points.data()), 1.0 / 16);
}

TEST_P(FftMemory, GeneratingAndCapturingReportTheFailedAllocation) {
  allocationsLeft = GetParam();
  enterBothLines();
  testClock();
  const ExpectedRequests driver{Script()};
  QVR_txSignal_t words = {7};
  EXPECT_EQ(QVR_generateRandomTxSignal(43, 1971, 2048, words), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
  EXPECT_EQ(words[0], 7U);
  Points time(QVR_K_SIGNAL_POINTS, {7, 7});
  Points frequency(QVR_K_SIGNAL_POINTS, {7, 7});
  allocationsLeft = GetParam();
  EXPECT_EQ(QVR_receiveSignalSnapshot(0, time.data(), frequency.data()), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
  EXPECT_EQ(time[0], QVR_complex_t(7, 7));
  EXPECT_EQ(frequency[0], QVR_complex_t(7, 7));
}

INSTANTIATE_TEST_SUITE_P(Vectors, FftMemory, testing::Values(0, 1), [](const auto& each) {
  return each.param == 0 ? "FirstAllocationFails" : "SecondAllocationFails";
});

TEST(FftSize, InitFailsForASizeThatDoesNotFitItsType) {
  ASSERT_TRUE(FFT_init(16, TRUE, FALSE));
  EXPECT_FALSE(FFT_init(0x40000000, TRUE, TRUE));
  Points points = randomPoints(16);
  EXPECT_EQ(FFT_transform(points.data(), points.data()), 0);
}

}  // namespace

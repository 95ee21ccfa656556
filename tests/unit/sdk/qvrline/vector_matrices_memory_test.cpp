// Vectoring coefficients for which there is no memory.
#include <gtest/gtest.h>
#include <qvr.h>

#include "support/expected_requests.h"
#include "support/lines.h"
#include "support/scarce_memory.h"

using namespace gfast;

namespace {

TEST(VectorMatricesWithoutMemory, FailWithoutARequestAndFillNothing) {
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

TEST(VectorMatricesWithoutMemory, OfAllLinesFail) {
  enterBothLines();
  const ExpectedRequests driver{Script()};
  QVR_tonePairMatrix_t matrices[2];
  EXPECT_EQ(refusing(1024, [&] { return QVR_readCancelerMatrixForAllLines(1, matrices); }), QVR_E_ERROR);
  EXPECT_EQ(refusing(1024, [&] { return QVR_readPrecoderMatrixForAllLines(1, matrices); }), QVR_E_ERROR);
}

}  // namespace

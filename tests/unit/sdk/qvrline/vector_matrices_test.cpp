// Vectoring coefficients: the blocks in which they are read, and their order in matrices.
#include "support/vectoring.h"
#include "unit/sdk/qvrline/tone_test.h"

using namespace gfast;

namespace {

constexpr uint32_t kCanceler = 0xE4000000;
constexpr uint32_t kPrecoder = 0xE4380000;
constexpr size_t kPairSize = 1024;

class VectorMatrices : public ToneTest {
 protected:
  static Script readsUnsettled(int device, uint32_t address) {
    return readsCoefficientBlock(device, address, Bytes(248), 8);
  }

  static int realPart(uint32_t i, uint32_t j, uint32_t t, int line = 0) {
    return static_cast<int>(i * 1000 + j * 10 + t) - 8000 + line;
  }

  // What the chip keeps for so many pairs of subcarriers; imaginary parts are the negated real parts.
  static Bytes coefficients(uint32_t pairs, int line = 0) {
    Bytes area;
    for (uint32_t i = 0; i < COEF_NUM_USERS; i++) {
      for (uint32_t j = 0; j < COEF_NUM_USERS; j++) {
        for (uint32_t t = 0; t < pairs; t++) {
          append16(area, static_cast<uint32_t>(realPart(i, j, t, line)));
          append16(area, static_cast<uint32_t>(-realPart(i, j, t, line)));
        }
      }
    }
    return area;
  }

  static void expectCoefficients(const QVR_tonePairMatrix_t* matrices, uint32_t pairs, int line = 0) {
    for (uint32_t t = 0; t < pairs; t++) {
      for (uint32_t i = 0; i < COEF_NUM_USERS; i++) {
        for (uint32_t j = 0; j < COEF_NUM_USERS; j++) {
          const double expected = realPart(i, j, t, line) / 4096.0;
          EXPECT_EQ(matrices[t].coefficients_re.matrix[j][i], expected) << i << ' ' << j << ' ' << t;
          EXPECT_EQ(matrices[t].coefficients_im.matrix[j][i], -expected) << i << ' ' << j << ' ' << t;
        }
      }
    }
  }

  static bool allAre(const std::vector<QVR_tonePairMatrix_t>& matrices, double value) {
    return std::all_of(matrices.begin(), matrices.end(), [&](const QVR_tonePairMatrix_t& matrix) {
      const double* first = &matrix.coefficients_re.matrix[0][0];
      return std::all_of(first, first + 2 * COEF_NUM_USERS * COEF_NUM_USERS,
                         [&](double coefficient) { return coefficient == value; });
    });
  }

  static std::vector<QVR_tonePairMatrix_t> matricesOf(size_t count, double value) {
    std::vector<QVR_tonePairMatrix_t> matrices(count);
    for (QVR_tonePairMatrix_t& matrix : matrices) {
      std::fill_n(&matrix.coefficients_re.matrix[0][0], COEF_NUM_USERS * COEF_NUM_USERS, value);
      std::fill_n(&matrix.coefficients_im.matrix[0][0], COEF_NUM_USERS * COEF_NUM_USERS, value);
    }
    return matrices;
  }
};

struct MatrixKind {
  const char* name;
  uint32_t address;
  QVR_retval_t (*ofLine)(QVR_lineId_t line, uint16_t pairs, QVR_tonePairMatrix_t* matrices);
  QVR_retval_t (*ofAllLines)(uint16_t pairs, QVR_tonePairMatrix_t* matrices);
};
constexpr MatrixKind kKinds[] = {
    {"canceler", kCanceler, QVR_readCancelerMatrixForLine, QVR_readCancelerMatrixForAllLines},
    {"precoder", kPrecoder, QVR_readPrecoderMatrixForLine, QVR_readPrecoderMatrixForAllLines},
};

using CoefficientBlocks = VectorMatrices;

TEST_F(CoefficientBlocks, HoldLittleEndianValuesBehindTwoGuardWords) {
  Bytes block{1, 2, 3, 4, 1, 2, 3, 4, 0x34, 0x12, 0xFF, 0xFF, 0x00, 0x80};
  block.resize(256);
  driver_.expect(reads(1, 0xE4000010, block));
  int16_t values[4] = {0, 0, 0, 77};
  EXPECT_EQ(QVR_readVectMatrix(1, 0xE4000010, values, 6), QVR_E_STATUS_OK);
  EXPECT_THAT(values, testing::ElementsAre(0x1234, -1, -32768, 77));
}

TEST_F(CoefficientBlocks, AdvanceByTheirDataAndTheLastIsReadWhole) {
  Bytes area(500);
  for (size_t i = 0; i < area.size(); i += 2) {
    store_le16(&area[i], static_cast<uint16_t>(i / 2));
  }
  const Bytes first(area.begin(), area.begin() + 248);
  const Bytes second(area.begin() + 248, area.begin() + 496);
  const Bytes rest(area.begin() + 496, area.end());
  driver_.expect(readsCoefficientBlock(0, kCanceler, first) +
                 readsCoefficientBlock(0, kCanceler + 248, second) +
                 readsCoefficientBlock(0, kCanceler + 496, rest));
  std::vector<int16_t> values(251, 77);
  EXPECT_EQ(QVR_readVectMatrix(0, kCanceler, values.data(), 500), QVR_E_STATUS_OK);
  for (size_t i = 0; i < 250; i++) {
    EXPECT_EQ(values[i], static_cast<int16_t>(i));
  }
  EXPECT_EQ(values[250], 77);
}

TEST_F(CoefficientBlocks, FullBlockIsOneRead) {
  std::vector<int16_t> values(125, 77);
  driver_.expect(readsCoefficientBlock(0, kCanceler, Bytes(248, 1)));
  EXPECT_EQ(QVR_readVectMatrix(0, kCanceler, values.data(), 248), QVR_E_STATUS_OK);
  EXPECT_EQ(values[123], 0x0101);
  EXPECT_EQ(values[124], 77);
}

TEST_F(CoefficientBlocks, HalfAValueIsNotStored) {
  std::vector<int16_t> values(2, 77);
  driver_.expect(readsCoefficientBlock(0, kCanceler, Bytes(3, 1)));
  EXPECT_EQ(QVR_readVectMatrix(0, kCanceler, values.data(), 3), QVR_E_STATUS_OK);
  EXPECT_THAT(values, testing::ElementsAre(0x0101, 77));
}

TEST_F(CoefficientBlocks, LengthZeroMakesNoRequest) {
  EXPECT_EQ(QVR_readVectMatrix(0, kCanceler, nullptr, 0), QVR_E_STATUS_OK);
}

TEST_F(CoefficientBlocks, MayHaveGuardWordsOfZero) {
  driver_.expect(reads(0, kCanceler, Bytes(256)));
  int16_t value = 77;
  EXPECT_EQ(QVR_readVectMatrix(0, kCanceler, &value, 2), QVR_E_STATUS_OK);
  EXPECT_EQ(value, 0);
}

TEST_F(CoefficientBlocks, AreReadAgainWhenTheirGuardWordsDiffer) {
  for (size_t byte = 0; byte < 8; byte++) {
    Bytes unsettled(256);
    unsettled[byte] = 1;
    driver_.expect(reads(0, kCanceler, unsettled) + readsCoefficientBlock(0, kCanceler, {5, 0}));
    int16_t value = 77;
    EXPECT_EQ(QVR_readVectMatrix(0, kCanceler, &value, 2), QVR_E_STATUS_OK);
    EXPECT_EQ(value, 5);
  }
}

TEST_F(CoefficientBlocks, FailAfterSixteenFailuresInARow) {
  int16_t value = 77;
  driver_.expect(readsUnsettled(0, kCanceler).times(16));
  EXPECT_EQ(QVR_readVectMatrix(0, kCanceler, &value, 2), QVR_E_ERROR);
  driver_.expect(reads(0, kCanceler, Bytes(256)).fails(EIO).times(16));
  EXPECT_EQ(QVR_readVectMatrix(0, kCanceler, &value, 2), QVR_E_ERROR);
  driver_.expect((reads(0, kCanceler, Bytes(256)).fails(EIO) + readsUnsettled(0, kCanceler)).times(8));
  EXPECT_EQ(QVR_readVectMatrix(0, kCanceler, &value, 2), QVR_E_ERROR);
  EXPECT_EQ(value, 77);
}

TEST_F(CoefficientBlocks, AllowFifteenFailuresForEachBlock) {
  std::vector<int16_t> values(126, 77);
  driver_.expect(readsUnsettled(0, kCanceler).times(15) + readsCoefficientBlock(0, kCanceler, Bytes(248, 1)) +
                 readsUnsettled(0, kCanceler + 248).times(15) +
                 readsCoefficientBlock(0, kCanceler + 248, Bytes(4, 2)));
  EXPECT_EQ(QVR_readVectMatrix(0, kCanceler, values.data(), 252), QVR_E_STATUS_OK);
  EXPECT_EQ(values[123], 0x0101);
  EXPECT_EQ(values[125], 0x0202);
}

TEST_F(CoefficientBlocks, FailForALineWithoutADevice) {
  int16_t value = 77;
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_EQ(QVR_readVectMatrix(1, kCanceler, &value, 2), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_ASSERTION(QVR_readVectMatrix(2, kCanceler, &value, 2),
                   asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
}

TEST_F(VectorMatrices, AreTransposedAndInUnitsOf4096) {
  for (const MatrixKind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    driver_.expect(readsCoefficients(0, kind.address, coefficients(3)));
    std::vector<QVR_tonePairMatrix_t> matrices(3);
    EXPECT_EQ(kind.ofLine(0, 3, matrices.data()), QVR_E_STATUS_OK);
    expectCoefficients(matrices.data(), 3);
    driver_.verify();
  }
}

TEST_F(VectorMatrices, Coefficient4096IsOne) {
  Bytes area(kPairSize);
  store_le16(&area[(2 * 16 + 5) * 4], 4096);        // i = 2, j = 5
  store_le16(&area[(2 * 16 + 5) * 4 + 2], 0x8000);  // -32768
  driver_.expect(readsCoefficients(0, kCanceler, area));
  QVR_tonePairMatrix_t matrix;
  EXPECT_EQ(QVR_readCancelerMatrixForLine(0, 1, &matrix), QVR_E_STATUS_OK);
  EXPECT_EQ(matrix.coefficients_re.matrix[5][2], 1.0);
  EXPECT_EQ(matrix.coefficients_im.matrix[5][2], -8.0);
  EXPECT_EQ(matrix.coefficients_re.matrix[2][5], 0.0);
}

TEST_F(VectorMatrices, OfLine1AreStoredBehindThoseOfLine0) {
  for (const MatrixKind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    driver_.expect(readsCoefficients(1, kind.address, coefficients(2, 1)));
    std::vector<QVR_tonePairMatrix_t> matrices = matricesOf(4, 0.5);
    EXPECT_EQ(kind.ofLine(1, 2, matrices.data()), QVR_E_STATUS_OK);
    EXPECT_TRUE(allAre({matrices[0], matrices[1]}, 0.5));
    expectCoefficients(&matrices[2], 2, 1);
    driver_.verify();
  }
}

TEST_F(VectorMatrices, AddressDependsOnTheLineIndex) {
  addLine(0, 0, 2, TRUE);
  QVR_tonePairMatrix_t matrix;
  driver_.expect(readsCoefficients(0, 0xE4800000, Bytes(kPairSize)) +
                 readsCoefficients(0, 0xE4B80000, Bytes(kPairSize)));
  EXPECT_EQ(QVR_readCancelerMatrixForLine(0, 1, &matrix), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_readPrecoderMatrixForLine(0, 1, &matrix), QVR_E_STATUS_OK);
}

TEST_F(VectorMatrices, ZeroPairsMakeNoRequest) {
  for (const MatrixKind& kind : kKinds) {
    EXPECT_EQ(kind.ofLine(0, 0, nullptr), QVR_E_STATUS_OK);
    EXPECT_EQ(kind.ofAllLines(0, nullptr), QVR_E_STATUS_OK);
  }
}

TEST_F(VectorMatrices, ManyPairsTakeTheFewestBlocks) {
  const Script script = readsCoefficients(0, kPrecoder, Bytes(64 * kPairSize, 1));
  EXPECT_EQ(script.size(), (64 * kPairSize + 247) / 248);
  driver_.expect(script);
  std::vector<QVR_tonePairMatrix_t> matrices(64);
  EXPECT_EQ(QVR_readPrecoderMatrixForLine(0, 64, matrices.data()), QVR_E_STATUS_OK);
  EXPECT_TRUE(allAre(matrices, 0x0101 / 4096.0));
}

TEST_F(VectorMatrices, FailAndFillNothingWhenAnyBlockFails) {
  for (const MatrixKind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    std::vector<QVR_tonePairMatrix_t> matrices = matricesOf(1, 0.5);
    const Script area = readsCoefficients(0, kind.address, Bytes(kPairSize));
    for (size_t position = 0; position < area.size(); position++) {
      const Script script = area.failingAt(position, EIO);
      driver_.expect(script + Script(script.calls().back()).times(15));
      EXPECT_EQ(kind.ofLine(0, 1, matrices.data()), QVR_E_ERROR);
      EXPECT_TRUE(allAre(matrices, 0.5));
      driver_.verify();
    }
  }
}

TEST_F(VectorMatrices, OfAllLinesAreStoredInLineOrder) {
  for (const MatrixKind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    driver_.expect(readsCoefficients(0, kind.address, coefficients(2, 0)) +
                   readsCoefficients(1, kind.address, coefficients(2, 1)));
    std::vector<QVR_tonePairMatrix_t> matrices(4);
    EXPECT_EQ(kind.ofAllLines(2, matrices.data()), QVR_E_STATUS_OK);
    expectCoefficients(matrices.data(), 2, 0);
    expectCoefficients(&matrices[2], 2, 1);
    driver_.verify();
  }
}

TEST_F(VectorMatrices, OfAllLinesStopAtTheFirstFailure) {
  for (const MatrixKind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    std::vector<QVR_tonePairMatrix_t> matrices = matricesOf(2, 0.5);
    driver_.expect(readsUnsettled(0, kind.address).times(16));
    EXPECT_EQ(kind.ofAllLines(1, matrices.data()), QVR_E_ERROR);
    EXPECT_TRUE(allAre(matrices, 0.5));
    driver_.expect(readsCoefficients(0, kind.address, coefficients(1)) +
                   readsUnsettled(1, kind.address).times(16));
    EXPECT_EQ(kind.ofAllLines(1, matrices.data()), QVR_E_ERROR);
    expectCoefficients(matrices.data(), 1);
    EXPECT_TRUE(allAre({matrices[1]}, 0.5));
  }
}

TEST(VectorMatricesOfAllLines, ReadOnlyLinesInTheTable) {
  addLine(0, 0, 0, TRUE);
  ExpectedRequests driver{Script()};
  openDevice(driver, 0);
  driver.expect(reads(0, kCanceler, Bytes(256)));
  for (uint32_t offset = 248; offset < kPairSize; offset += 248) {
    driver.expect(reads(0, kCanceler + offset, Bytes(256)));
  }
  QVR_tonePairMatrix_t matrix;
  EXPECT_EQ(QVR_readCancelerMatrixForAllLines(1, &matrix), QVR_E_STATUS_OK);
}

}  // namespace

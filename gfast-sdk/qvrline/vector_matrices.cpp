// The coefficients of a line's receive-side canceller and transmit-side precoder (ITU-T G.9701).
#include <qvr.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>

#include "chip/tones.h"
#include "qvrline/line_table.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr uint32_t kBlockSize = 256;
constexpr uint32_t kGuardWord = 4;
constexpr uint32_t kBlockHeader = 2 * kGuardWord;
constexpr uint32_t kBlockData = kBlockSize - kBlockHeader;
constexpr int MAX_ALLOWED_STRAIGHT_FAILURES = 16;

constexpr uint32_t kCoefficientSize = sizeof(int16_t);
constexpr uint32_t kValuesPerTonePair = COEF_NUM_USERS * COEF_NUM_USERS * 2;

using MatrixBlock = std::array<uint8_t, kBlockSize>;
using LineReader = QVR_retval_t (*)(QVR_lineId_t line, uint16_t tonePairs, QVR_tonePairMatrix_t* matrices);

bool readSettled(QVR_deviceId_t device, uint32_t address, MatrixBlock* block) {
  return QVR_STATUS_OK(QVR_readmem(device, address, block->data(), kBlockSize)) &&
         load_le32(block->data()) == load_le32(&(*block)[kGuardWord]);
}

// The chip keeps a matrix column by column: its first index is the column here, its second the row.
void transpose(const int16_t* values, uint16_t tonePairs, QVR_tonePairMatrix_t* matrices) {
  for (uint32_t i = 0; i < COEF_NUM_USERS; i++) {
    for (uint32_t j = 0; j < COEF_NUM_USERS; j++) {
      for (uint32_t t = 0; t < tonePairs; t++) {
        matrices[t].coefficients_re.matrix[j][i] = *values++ * QVR_K_VEC_COEFF_UNIT;
        matrices[t].coefficients_im.matrix[j][i] = *values++ * QVR_K_VEC_COEFF_UNIT;
      }
    }
  }
}

QVR_retval_t readMatrix(QVR_lineId_t lineId, uint32_t (*addressOf)(uint32_t linkId), uint16_t tonePairs,
                        QVR_tonePairMatrix_t* matrices) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(lineId);
  const uint32_t count = tonePairs * kValuesPerTonePair;
  const std::unique_ptr<int16_t[]> values(new (std::nothrow) int16_t[count]);
  if (values == nullptr) {
    return QVR_E_FAILED_TO_ALLOCATE_MEMORY;
  }
  const QVR_retval_t status =
      QVR_readVectMatrix(lineId, addressOf(line.narrowLineID), values.get(), count * kCoefficientSize);
  if (QVR_STATUS_OK(status)) {
    transpose(values.get(), tonePairs, matrices + size_t{tonePairs} * static_cast<size_t>(lineId));
  }
  return status;
}

QVR_retval_t readAllLines(LineReader read, uint16_t tonePairs, QVR_tonePairMatrix_t* matrices) {
  const auto lines = static_cast<QVR_lineId_t>(numberOfLines());
  for (QVR_lineId_t line = 0; line < lines; line++) {
    if (QVR_STATUS_ERROR(read(line, tonePairs, matrices))) {
      return QVR_E_ERROR;
    }
  }
  return QVR_E_STATUS_OK;
}

}  // namespace

QVR_retval_t QVR_readVectMatrix(QVR_lineId_t xi_lineId, uint32_t xi_address, int16_t* xo_values,
                                uint32_t xi_sizeInBytes) {
  const QVR_deviceId_t device = QVR_deviceIdforLine(xi_lineId);
  if (device == QVR_K_DEVICE_NULL) {
    return QVR_E_NO_DEVICE_FOR_LINE;
  }
  MatrixBlock block;
  int failures = 0;
  for (uint32_t offset = 0; offset < xi_sizeInBytes;) {
    if (!readSettled(device, xi_address + offset, &block)) {
      if (++failures == MAX_ALLOWED_STRAIGHT_FAILURES) {
        return QVR_E_ERROR;
      }
      continue;
    }
    failures = 0;
    const uint32_t amount = std::min(kBlockData, xi_sizeInBytes - offset);
    for (uint32_t i = 0; i + kCoefficientSize <= amount; i += kCoefficientSize) {
      *xo_values++ = static_cast<int16_t>(load_le16(&block[kBlockHeader + i]));
    }
    offset += amount;
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_readCancelerMatrixForLine(QVR_lineId_t xi_lineId, uint16_t xi_tonePairs,
                                           QVR_tonePairMatrix_t* xo_matrices) {
  return readMatrix(xi_lineId, VIRT_ADDR_RX_VEC_COEFFS, xi_tonePairs, xo_matrices);
}

QVR_retval_t QVR_readCancelerMatrixForAllLines(uint16_t xi_tonePairs, QVR_tonePairMatrix_t* xo_matrices) {
  return readAllLines(QVR_readCancelerMatrixForLine, xi_tonePairs, xo_matrices);
}

QVR_retval_t QVR_readPrecoderMatrixForLine(QVR_lineId_t xi_lineId, uint16_t xi_tonePairs,
                                           QVR_tonePairMatrix_t* xo_matrices) {
  return readMatrix(xi_lineId, VIRT_ADDR_TX_VEC_COEFFS, xi_tonePairs, xo_matrices);
}

QVR_retval_t QVR_readPrecoderMatrixForAllLines(uint16_t xi_tonePairs, QVR_tonePairMatrix_t* xo_matrices) {
  return readAllLines(QVR_readPrecoderMatrixForLine, xi_tonePairs, xo_matrices);
}

#include "qvrline/snr_tables.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "chip/far_end_messages.h"
#include "chip/tones.h"
#include "qvrline/eoc.h"
#include "qvrline/medley_set.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr uint32_t kWord = sizeof(uint32_t);
constexpr uint32_t kGuardWords = 2;

// After so many failed tries in a row a far end is given up. Each try may have waited for a message that was
// lost on the line.
constexpr int kMostFarEndTries = 10;

using Energies = std::array<uint32_t, QVR_MAX_NUMBER_OF_TONES>;
using Window = std::array<uint8_t, size_t{kGuardWords + MAX_TONES_PER_READ_OPERATIONS} * kWord>;

double decibels(double ratio) {
  return 10.0 * std::log10(ratio);
}

bool isSettled(const Window& window) {
  const uint32_t first = load_le32(window.data());
  return first != 0 && first == load_le32(&window[kWord]);
}

// Reads `count` energies from this subcarrier on, through the window.
QVR_retval_t readWindow(const LineInShowtime& line, uint32_t tone, uint32_t count, uint32_t* energies) {
  const uint32_t address = VIRT_ADDR_SNR_BUF(line.descriptor.narrowLineID) + kWord * tone;
  Window window;
  for (int reading = 0; reading < MAX_RETRIES; reading++) {
    if (QVR_STATUS_ERROR(
            QVR_readmem(line.descriptor.deviceId, address, window.data(), (kGuardWords + count) * kWord))) {
      return QVR_E_ERROR;
    }
    if (isSettled(window)) {
      for (uint32_t i = 0; i < count; i++) {
        energies[i] = load_le32(&window[size_t{kGuardWords + i} * kWord]);
      }
      return QVR_E_STATUS_OK;
    }
  }
  return QVR_E_ERROR;
}

QVR_retval_t readEnergies(const LineInShowtime& line, Energies* energies) {
  for (uint32_t done = 0; done < line.tones.numProcessedTones;) {
    const uint32_t count = std::min(line.tones.numProcessedTones - done, MAX_TONES_PER_READ_OPERATIONS);
    const QVR_retval_t status = readWindow(line, line.tones.firstTone + done, count, energies->data() + done);
    if (QVR_STATUS_ERROR(status)) {
      return status;
    }
    done += count;
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t readNearEnd(const LineInShowtime& line, QVR_SNRTBL_t snr) {
  Energies energies;
  QVR_retval_t status = readEnergies(line, &energies);
  GFAST_FDU_INIT_COUNTERS_S scaling{};
  if (QVR_STATUS_OK(status)) {
    status = QVR_readGfastFduInitCounters(line.id, &scaling);
  }
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  const double window = decibels(scaling.winSize);
  const double scale = decibels(std::pow(2.0, scaling.sseScale));
  for (uint32_t k = 0; k < line.tones.numProcessedTones; k++) {
    snr[k] = static_cast<QVR_SNR_t>(-decibels(energies[k]) + window + scale);
  }
  return QVR_E_STATUS_OK;
}

// What the far end answers about a block of subcarriers: a byte each, behind a header.
struct Block {
  uint32_t first;
  uint32_t count;
  std::array<uint8_t, PMD_VECTOR_RESPONSE_HEADER_SIZE + PMD_VECTOR_MAX_SUBCARRIERS> message;

  uint32_t responseSize() const { return static_cast<uint32_t>(PMD_VECTOR_RESPONSE_HEADER_SIZE) + count; }
  uint8_t valueOf(uint32_t tone) const { return message[PMD_VECTOR_RESPONSE_HEADER_SIZE + tone - first]; }
};

QVR_retval_t askForBlock(const LineInShowtime& line, Block* block) {
  block->message.fill(0);
  block->message[PMD_VECTOR_REQUEST_ID] = G9701_PMD_TEST_PARAMS_VECTOR_ID_SNR;
  store_le16(&block->message[PMD_VECTOR_REQUEST_FIRST], static_cast<uint16_t>(block->first));
  store_le16(&block->message[PMD_VECTOR_REQUEST_LAST],
             static_cast<uint16_t>(block->first + block->count - 1));
  uint32_t received = 0;
  const EocExchange exchange(line.id);
  const QVR_retval_t status =
      QVR_sendMsgToFarEnd(line.descriptor.deviceId, static_cast<uint16_t>(line.descriptor.narrowLineID),
                          MGMT_FAR_END_REQ_TYPE_PMD_VECTOR_BLOCK_READ, block->message.data(),
                          PMD_VECTOR_REQUEST_SIZE, block->responseSize(), &received);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  if (received == 1 && block->message[0] == PMD_VECTOR_NACK) {
    return QVR_E_FAREND_EOC_NACK;
  }
  return received == block->responseSize() ? QVR_E_STATUS_OK : QVR_E_FAILED_GETTING_FE_DATA;
}

// A lost message is sent again; a refusal is final.
QVR_retval_t insistOnBlock(const LineInShowtime& line, Block* block) {
  QVR_retval_t status = QVR_E_ERROR;
  for (int tries = 0; tries < kMostFarEndTries; tries++) {
    status = askForBlock(line, block);
    if (QVR_STATUS_OK(status) || status == QVR_E_FAREND_EOC_NACK) {
      break;
    }
  }
  return status;
}

QVR_SNR_t decodeFarEnd(uint8_t value) {
  return value == PMD_VECTOR_NO_VALUE ? std::numeric_limits<QVR_SNR_t>::quiet_NaN()
                                      : static_cast<QVR_SNR_t>(value * 0.5 - 32);
}

QVR_retval_t readFarEnd(const LineInShowtime& line, QVR_SNRTBL_t snr) {
  MedleySet set;
  const bool isUpstream = line.descriptor.isDPsideLink == FALSE;
  if (const QVR_retval_t status = readMedleySet(line.descriptor, isUpstream, &set);
      QVR_STATUS_ERROR(status) || set.span() == 0) {
    return status;
  }
  Block block{};
  for (; block.first <= set.highest; block.first += block.count) {
    block.count = std::min(set.highest - block.first + 1, PMD_VECTOR_MAX_SUBCARRIERS);
    if (const QVR_retval_t status = insistOnBlock(line, &block); QVR_STATUS_ERROR(status)) {
      return status;
    }
    for (uint32_t tone = std::max(block.first, set.lowest); tone < block.first + block.count; tone++) {
      snr[tone - set.lowest] = decodeFarEnd(block.valueOf(tone));
    }
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t readOfLine(QVR_lineId_t lineId, LineEnd end, QVR_SNRTBL_t snr) {
  LineInShowtime line{};
  const QVR_retval_t status = findLineInShowtime(lineId, &line);
  return QVR_STATUS_OK(status) ? readSnr(line, end, snr) : status;
}

}  // namespace

QVR_retval_t gfast::readSnr(const LineInShowtime& line, LineEnd end, QVR_SNRTBL_t snr) {
  return end == LineEnd::kNear ? readNearEnd(line, snr) : readFarEnd(line, snr);
}

QVR_retval_t QVR_readSNRTable(QVR_lineId_t xi_lineId, QVR_SNRTBL_t xo_snr) {
  return readOfLine(xi_lineId, LineEnd::kNear, xo_snr);
}

QVR_retval_t QVR_readFarEndSNRTable(QVR_lineId_t xi_lineId, QVR_SNRTBL_t xo_snr) {
  return readOfLine(xi_lineId, LineEnd::kFar, xo_snr);
}

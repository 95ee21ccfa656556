#include "qvrcli/tones/vectoring_commands.h"

#include <qvr.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string>

#include "chip/tones.h"
#include "qvrcli/text/argument_reader.h"
#include "qvrcli/text/fraction.h"
#include "qvrcli/text/table_output.h"

namespace gfast::console {

namespace {

constexpr uint32_t kSubcarriersPerPair = 2;
constexpr int kCoefficientDigits = 6;  // behind the point

struct MatrixKind {
  QVR_retval_t (*read)(QVR_lineId_t line, uint16_t tonePairs, QVR_tonePairMatrix_t* matrices);
  const char* name;
};
constexpr MatrixKind kCanceler = {QVR_readCancelerMatrixForLine, "canceler"};
constexpr MatrixKind kPrecoder = {QVR_readPrecoderMatrixForLine, "precoder"};

// The coefficients of one line from its first processed subcarrier on, as far as the chip has room for them.
struct LineMatrices {
  QVR_linePhyParams_t tones{};
  uint16_t pairs = 0;
  std::unique_ptr<QVR_tonePairMatrix_t[]> all;  // of all lines up to this one
  const QVR_tonePairMatrix_t* ofLine = nullptr;

  uint32_t subcarriers() const { return std::min(tones.numProcessedTones, kSubcarriersPerPair * pairs); }
};

// How many processed subcarriers there are: a chip may count some past the last.
uint32_t countOf(const QVR_linePhyParams_t& tones) {
  const uint32_t first = std::min<uint32_t>(tones.firstTone, QVR_MAX_NUMBER_OF_TONES);
  return std::min<uint32_t>(tones.numProcessedTones, QVR_MAX_NUMBER_OF_TONES - first);
}

QVR_retval_t readMatrices(QVR_lineId_t line, const MatrixKind& kind, LineMatrices& matrices) {
  QVR_retval_t status = QVR_getLinePhyParams(line, &matrices.tones);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  matrices.tones.numProcessedTones = countOf(matrices.tones);
  const uint32_t pairs = (matrices.tones.numProcessedTones + kSubcarriersPerPair - 1) / kSubcarriersPerPair;
  matrices.pairs = static_cast<uint16_t>(std::min(pairs, QVR_K_MAX_TONE_PAIRS));
  const size_t before = size_t{matrices.pairs} * static_cast<size_t>(line);
  matrices.all.reset(new (std::nothrow) QVR_tonePairMatrix_t[before + matrices.pairs]);
  if (matrices.all == nullptr) {
    return QVR_E_FAILED_TO_ALLOCATE_MEMORY;
  }
  matrices.ofLine = matrices.all.get() + before;
  return kind.read(line, matrices.pairs, matrices.all.get());
}

// Row by row, each coefficient as its real and its imaginary part.
std::string coefficientsText(const QVR_tonePairMatrix_t& pair) {
  std::string text;
  for (uint32_t row = 0; row < COEF_NUM_USERS; row++) {
    for (uint32_t column = 0; column < COEF_NUM_USERS; column++) {
      appendFraction(text, pair.coefficients_re.matrix[row][column], kCoefficientDigits);
      text += ' ';
      appendFraction(text, pair.coefficients_im.matrix[row][column], kCoefficientDigits);
      text += ' ';
    }
  }
  return text;
}

void printMatrices(TableOutput& out, const LineMatrices& matrices) {
  std::string text;
  for (uint32_t i = 0; i < matrices.subcarriers(); i++) {
    if (i % kSubcarriersPerPair == 0) {
      text = coefficientsText(matrices.ofLine[i / kSubcarriersPerPair]);
    }
    const double frequency_MHz = (matrices.tones.firstTone + i) * QVR_K_SUBCARRIER_SPACING_MHZ;
    out.row(FMT_COMPILE("{:09.5f} {}"), frequency_MHz, text);
  }
}

int showMatrix(cli_def* cli, char* argv[], int argc, const MatrixKind& kind) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  if (QVR_isLineUp(line) != TRUE) {
    cli_print(cli, "Line %1d is not in SHOWTIME", line);
    return CLI_OK;
  }
  TableOutput out(cli);
  if (!out.open(words.text(1, nullptr))) {
    return CLI_OK;
  }
  LineMatrices matrices;
  const QVR_retval_t status = readMatrices(line, kind, matrices);
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "Failed reading %s matrix (%d)", kind.name, static_cast<int>(status));
    return CLI_OK;
  }
  printMatrices(out, matrices);
  out.finish();
  return CLI_OK;
}

int CLI_showCancelerMatrix(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return showMatrix(cli, argv, argc, kCanceler);
}

int CLI_showPrecoderMatrix(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  return showMatrix(cli, argv, argc, kPrecoder);
}

constexpr Command kVectoringCommands[] = {
    exec("show vectoring canceler", "Show vectoring canceler matrix for a line", CLI_showCancelerMatrix,
         exactly<2>, kChanges, "show vectoring canceler <line-id> <filename>"),
    exec("show vectoring precoder", "Show vectoring precoder matrix for a line", CLI_showPrecoderMatrix,
         exactly<2>, kChanges, "show vectoring precoder <line-id> <filename>"),
};

}  // namespace

std::span<const Command> vectoringCommands() {
  return kVectoringCommands;
}

}  // namespace gfast::console

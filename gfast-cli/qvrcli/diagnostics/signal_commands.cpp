#include "qvrcli/diagnostics/signal_commands.h"

#include <qvr.h>

#include <cerrno>
#include <cstring>
#include <iterator>

#include "qvrcli/diagnostics/signal_files.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/argument_reader.h"

namespace gfast::console {

namespace {

constexpr uint32_t kFirstTone = 43;
constexpr uint32_t kLastTone = 1971;
constexpr int kMaxIterations = 100;

constexpr const char* kTxSignalFile = "txsignal.dat";
constexpr const char* kFdSignalFile = "fdsignal.out";
constexpr const char* kMtprFile = "mtpr.out";

// Static, because they are too large for the board's stack.
QVR_signal_t tdSignal;
QVR_signal_t fdSignal;
QVR_txSignal_t txSignal;
QVR_MTPR_t mtpr;

void reportFailure(cli_def* cli, BOOL written, const char* path) {
  if (!written) {
    cli_print(cli, "Failed writing file %s (%s)", path, std::strerror(errno));
  }
}

void writeFdSignal(cli_def* cli, const char* path) {
  reportFailure(cli, dumpSignalToFile(fdSignal, path), path);
}

void writeMtpr(cli_def* cli, const char* path) {
  reportFailure(cli, dumpMtprToFile(mtpr, path), path);
}

// Loads the signal to send. Without a path it is nullptr, which stands for the library's default signal.
// Words that are missing from the file are zero. False after a message.
bool loadSignal(cli_def* cli, const char* path, const char* failure, const uint32_t** signal) {
  *signal = nullptr;
  if (path == nullptr) {
    return true;
  }
  std::memset(txSignal, 0, sizeof txSignal);
  uint32_t badLine = 0;
  if (!loadSignalFromFile(path, txSignal, &badLine)) {
    cli_print(cli, "%s %s", failure, path);
    return false;
  }
  if (badLine != 0) {
    cli_print(cli, "Signal file %s ends before line %u, which is no hexadecimal word", path, badLine);
  }
  *signal = txSignal;
  return true;
}

// The two lines of a test of the analogue front end.
struct Path {
  QVR_lineId_t txLine;
  QVR_lineId_t rxLine;
};

Path readPath(ArgumentReader& words) {
  const QVR_lineId_t txLine = words.line(0, "invalid line number {}");
  const QVR_lineId_t rxLine = words.line(1, "invalid line number {}");
  return {txLine, rxLine};
}

bool succeeded(cli_def* cli, QVR_retval_t status, const char* failure) {
  if (QVR_STATUS_ERROR(status)) {
    cli_print(cli, "%s (%1d)", failure, static_cast<int>(status));
  }
  return QVR_STATUS_OK(status);
}

constexpr const char* kMtprFailure = "Failed in AFE MTPR Performance Test";
constexpr const char* kLoadFailure = "Failed to load signal from file";

int CLI_generateRandomSignal(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  const QVR_retval_t status = QVR_generateRandomTxSignal(kFirstTone, kLastTone, QVR_K_SIGNAL_WORDS, txSignal);
  if (succeeded(cli, status, "failed generating random TX signal error")) {
    const char* const path = ArgumentReader(cli, argv, argc).text(0, kTxSignalFile);
    reportFailure(cli, dumpTxSignalToFile(txSignal, path), path);
  }
  return CLI_OK;
}

int CLI_transmitSignal(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0, "invalid line number");
  const uint32_t* signal = nullptr;
  if (words.refused() ||
      !loadSignal(cli, words.text(1, nullptr), "Failed loading signal from file", &signal)) {
    return CLI_OK;
  }
  flushSession(cli);
  succeeded(cli, QVR_startSignalTransmission(line, signal), "start transmit signal error");
  return CLI_OK;
}

int CLI_receiveSignal(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0, "invalid line number");
  if (words.refused()) {
    return CLI_OK;
  }
  flushSession(cli);
  if (succeeded(cli, QVR_receiveSignalSnapshot(line, tdSignal, fdSignal), "receive signal error")) {
    writeFdSignal(cli, words.text(1, kFdSignalFile));
  }
  return CLI_OK;
}

int CLI_testAfeTxRxPath(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const Path path = readPath(words);
  const uint32_t* signal = nullptr;
  if (words.refused() || !loadSignal(cli, words.text(2, nullptr), kLoadFailure, &signal)) {
    return CLI_OK;
  }
  flushSession(cli);
  const QVR_retval_t status = QVR_testAfeTxRxPath(path.txLine, path.rxLine, signal, fdSignal);
  if (succeeded(cli, status, "Failed in AFE TX-RX Path Test")) {
    writeFdSignal(cli, words.text(3, kFdSignalFile));
  }
  return CLI_OK;
}

int CLI_testAfePerformanceMTPR(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const Path path = readPath(words);
  const uint32_t* signal = nullptr;
  if (words.refused() || !loadSignal(cli, words.text(2, nullptr), kLoadFailure, &signal)) {
    return CLI_OK;
  }
  flushSession(cli);
  const QVR_retval_t status = QVR_testAfePerformanceMTPR(path.txLine, path.rxLine, signal, fdSignal, mtpr);
  if (succeeded(cli, status, kMtprFailure)) {
    writeFdSignal(cli, words.text(3, kFdSignalFile));
    writeMtpr(cli, words.text(4, kMtprFile));
  }
  return CLI_OK;
}

int CLI_testAfePerformanceMTPRInLoop(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const Path path = readPath(words);
  const int iterations = words.number(2, 1, kMaxIterations, "invalid number of iterations {}", 1);
  if (words.refused()) {
    return CLI_OK;
  }
  flushSession(cli);
  const QVR_retval_t status =
      QVR_testAfePerformanceMTPRInLoop(path.txLine, path.rxLine, iterations, fdSignal, mtpr);
  if (succeeded(cli, status, kMtprFailure)) {
    writeMtpr(cli, words.text(3, kMtprFile));
    writeFdSignal(cli, kFdSignalFile);
  }
  return CLI_OK;
}

constexpr Command kSignalCommands[] = {
    exec("test afe-loop", "Test AFE Tx-Rx path", CLI_testAfeTxRxPath, between<2, 4>, kChanges,
         "test afe-loop <tx-line-id> <rx-line-id> [<txsignal-filename>] [<fdsignal-filename>] : { "
         "<default-signal>, fdsignal.out } "),
    exec("test afe-mtpr", "Test MTPR performance", CLI_testAfePerformanceMTPR, between<2, 5>, kChanges,
         "test afe-mtpr <tx-line-id> <rx-line-id> [<txsignal-filename>] [<fdsignal-filename>] "
         "[<mtpr-result-filename>] : { NULL, fdsignal.out mtpr.out } "),
    exec("test afe-mtpr-loop", "Test MTPR performance in loop", CLI_testAfePerformanceMTPRInLoop,
         between<2, 4>, kChanges,
         "test afe-mtpr-loop <tx-line-id> <rx-line-id> <loop-iterations> [<mtpr-result-filename>] : { 1, "
         "mtpr.out } "),
    exec("transmit signal", "Transmit signal", CLI_transmitSignal, between<0, 2>, kChanges,
         "transmit signal [<line-id>] [<signal-filename>] : { 0, <default-signal> }"),
    exec("receive signal", "Receive signal snapshot", CLI_receiveSignal, between<0, 2>, kChanges,
         "receive signal [<line-id>] [<fdsignal-filename>] : { 0, fdsignal.out } "),
    exec("generate signal", "Generate a random signal", CLI_generateRandomSignal, between<0, 1>, kChanges,
         "generate signal [<signal-filename>] : { txsignal.dat }"),
};

}  // namespace

std::span<const Command> signalCommands() {
  return kSignalCommands;
}

}  // namespace gfast::console

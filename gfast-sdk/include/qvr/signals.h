// Signals that the test module generates, sends and captures, and what the inter-chip links report.
#pragma once

#include <qvr/types.h>

#ifdef __cplusplus
#include <complex>
#endif

QVR_BEGIN_C

// A point of a signal or a spectrum. Products are those of C99, not-a-number and infinity included.
#ifdef __cplusplus
typedef std::complex<double> QVR_complex_t;
#else
typedef double _Complex QVR_complex_t;
#endif

#define QVR_K_SIGNAL_POINTS 4096U  // of a symbol, in time or in frequency
#define QVR_K_SIGNAL_WORDS 2048U   // of a transmit signal
#define QVR_K_MTPR_TONES 96U       // subcarriers that a test signal leaves empty

// A symbol in time or, as the transform of a real symbol, in frequency.
typedef QVR_complex_t QVR_signal_t[QVR_K_SIGNAL_POINTS];

// A transmit signal: two 16-bit samples a word, two's complement.
typedef uint32_t QVR_txSignal_t[QVR_K_SIGNAL_WORDS];

// Missing-tone power ratios; the first QVR_K_MTPR_TONES are filled, entry i of subcarrier 20 * i + 60.
typedef double QVR_MTPR_t[1024];

// Inter-chip links (Extcom).
#define QVR_K_MAX_DEVICES_IN_CLUSTER 4  // that the chips' own programs address
#define E_EXTCOM_PORT_LAST 6
#define E_EXTCOM_LANE_LAST 2
#define QVR_K_NUMBER_OF_EXTCOM_PORTS_PER_DEVICE E_EXTCOM_PORT_LAST
#define QVR_K_NUMBER_OF_LANES_PER_EXTCOM_PORT E_EXTCOM_LANE_LAST

// What the check of the links between chips counted.
typedef struct QVR_extcomPortErrors_t {
  // Errors of the pseudo-random sequence by device, port and lane; -1: not measured.
  int32_t extcomPortErrorsOnDevice[2][QVR_K_NUMBER_OF_EXTCOM_PORTS_PER_DEVICE]
                                  [QVR_K_NUMBER_OF_LANES_PER_EXTCOM_PORT];
} QVR_extcomPortErrors_t;

// Steps of a device program.
QVR_ENUM(QVR_memop_t){QVR_MEMOP_READMEM = 0, QVR_MEMOP_WRITEMEM = 1};

// One step of a device program.
typedef struct QVR_instruction_t {
  QVR_memop_t memop;  // what is done
  int32_t deviceId;   // with which device
  uint32_t addr;      // where in its memory
  // Written: the word. Read: the slot of the module's results that takes it.
  uint32_t value;
} QVR_instruction_t;

// Start, enter and end the signal tests, which need none of it. Always QVR_E_STATUS_OK.
QVR_retval_t QVR_initTestModule(void);
QVR_retval_t QVR_enterTestMode(void);
QVR_retval_t QVR_exitTestMode(void);

// A test signal from a symbol of QPSK tones 43 to 1972, every twentieth left empty, largest sample 16384. Of
// the symbol's samples only the odd ones are used, each in the high half of a word and in the low half of the
// next one; the low half of the first word is 0. xi_startTone and xi_endTone are not consulted. xo_txSignal
// takes xi_numberOfTones words; with 43 or fewer no tone is loaded and all are 0, and with a number that is
// no power of two the tones are wrong ones.
// No tones at all are assertion 201.
//   QVR_E_INVALID_OPERATION          xi_numberOfTones is above QVR_K_SIGNAL_WORDS; nothing is written
//   QVR_E_FAILED_TO_ALLOCATE_MEMORY  no room for the transform; nothing is written
QVR_retval_t QVR_generateRandomTxSignal(uint32_t xi_startTone, uint32_t xi_endTone, uint32_t xi_numberOfTones,
                                        uint32_t* xo_txSignal);

// Puts a signal of QVR_K_SIGNAL_WORDS words, or the default signal for NULL, into the line's transmit
// buffer. An idle line is activated first, which takes a second, and stays so.
//   as QVR_getDeviceInfo and QVR_writemem
QVR_retval_t QVR_startSignalTransmission(QVR_lineId_t xi_lineId, const uint32_t* xi_txSignal);

// Captures a symbol of QVR_K_SIGNAL_POINTS real samples: the first QVR_K_SIGNAL_WORDS of them, and the
// unitary transform (gain 1/64) of all. An idle line is activated as for sending. A chip that does not report
// the capture within half a second is read all the same. On failure nothing is written.
//   as QVR_getDeviceInfo, QVR_readmem and QVR_writemem
//   QVR_E_FAILED_TO_ALLOCATE_MEMORY  no room for the transform
//   QVR_E_TIMEOUT_ERROR              the program ended a wait, here and in what waits below
QVR_retval_t QVR_receiveSignalSnapshot(QVR_lineId_t xi_lineId, QVR_complex_t* xo_timeDomainSignal,
                                       QVR_complex_t* xo_freqDomainSignal);

// Sends on one line, waits 50 ms and captures on the other, or the same.
//   as QVR_startSignalTransmission, then as QVR_receiveSignalSnapshot
QVR_retval_t QVR_testAfeTxRxPath(QVR_lineId_t xi_txLineId, QVR_lineId_t xi_rxLineId,
                                 const uint32_t* xi_txSignal, QVR_complex_t* xo_rxFreqDomainSignal);

// Missing-tone power ratio of each empty tone: the mean power of its neighbours over its own, linear. A tone
// without any power makes it infinite or not a number.
void QVR_calcMTPR(const QVR_complex_t* xi_rxFreqDomainSignal, double* xo_MTPR);

// Both in one: the ratios are linear, and untouched on failure.
//   as QVR_testAfeTxRxPath
QVR_retval_t QVR_testAfePerformanceMTPR(QVR_lineId_t xi_txLineId, QVR_lineId_t xi_rxLineId,
                                        const uint32_t* xi_txSignal, QVR_complex_t* xo_rxFreqDomainSignal,
                                        double* xo_MTPR);

// The same over several captures of the generated signal: xo_rxFreqDomainSignal is the summed power spectrum,
// linear, and the ratios are in dB. Prints the number of each capture to standard output, from 0. Without any
// capture the ratios are not numbers.
//   the last capture's result; a failed one adds the spectrum that the one before it left
QVR_retval_t QVR_testAfePerformanceMTPRInLoop(QVR_lineId_t xi_txLineId, QVR_lineId_t xi_rxLineId,
                                              int xi_numberOfIterations, QVR_complex_t* xo_rxFreqDomainSignal,
                                              double* xo_MTPR);

// Plays a program of a chip: its steps in order, up to the first that fails. What it reads goes to the slots
// of the module's results. A step that neither reads nor writes does nothing; a device id that this system
// cannot have ends the process in assertion "Unknown device handle".
//   as QVR_readmem and QVR_writemem; steps already done are not undone
//   QVR_E_INVALID_OPERATION  a step reads into a slot that there is not
QVR_retval_t QVR_executeProgram(const QVR_instruction_t* xi_program, int xi_programLength);

// Starts a check of the links between chips by a pseudo-random sequence, and tells the errors counted since.
// Their programs address four devices, so on this system they end in the assertion of QVR_executeProgram.
//   as QVR_executeProgram; the record is untouched on failure
QVR_retval_t QVR_startExtcomConnectivityTest(void);
QVR_retval_t QVR_getExtcomConnectivityTestResults(QVR_extcomPortErrors_t* xo_testResults);

QVR_END_C

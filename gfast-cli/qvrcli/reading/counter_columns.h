// The counters of an end as one table: where each is in the record, and what others call it.
#pragma once

#include <array>

#include "qvrcli/reading/line_reading.h"

namespace gfast::console {

enum class CounterOf { kLine, kChannel };

struct CounterColumn {
  uint32_t EndCounters::*field;
  CounterOf what;
  bool nearOnly;
  bool seconds;        // at most as many as the interval has
  const char* model;   // its leaf in the published model (TR-355)
  const char* metric;  // its name in metrics, without the beginning and the "_total" at the end
  const char* help;
};

using Ends = EndCounters;
constexpr std::array<CounterColumn, kCounters> kCounterColumns{{
    {&Ends::lossOfSignal, CounterOf::kLine, false, false, "loss-of-signal", "loss_of_signal",
     "Failures: loss of signal"},
    {&Ends::lossOfMargin, CounterOf::kLine, false, false, "loss-of-margin", "loss_of_margin",
     "Failures: loss of margin"},
    {&Ends::lossOfRmc, CounterOf::kLine, false, false, "loss-of-rmc", "loss_of_rmc",
     "Failures: loss of the robust management channel"},
    {&Ends::lossOfPower, CounterOf::kLine, false, false, "loss-of-power", "loss_of_power",
     "Failures: loss of power"},
    {&Ends::erroredSeconds, CounterOf::kLine, false, true, "errored-seconds", "errored_seconds",
     "Seconds with an error"},
    {&Ends::severelyErroredSeconds, CounterOf::kLine, false, true, "severely-errored-seconds",
     "severely_errored_seconds", "Seconds with many errors"},
    {&Ends::lossOfSignalSeconds, CounterOf::kLine, false, true, "loss-of-signal-seconds",
     "loss_of_signal_seconds", "Seconds without signal"},
    {&Ends::lossOfRmcSeconds, CounterOf::kLine, false, true, "loss-of-rmc-seconds", "loss_of_rmc_seconds",
     "Seconds without the robust management channel"},
    {&Ends::unavailableSeconds, CounterOf::kLine, false, true, "unavailable-seconds", "unavailable_seconds",
     "Seconds in which the line was unavailable"},
    {&Ends::bitSwaps, CounterOf::kLine, false, false, "successful-bit-swaps", "bit_swaps",
     "Bit swaps carried out"},
    {&Ends::rateAdaptations, CounterOf::kLine, false, false, "successful-autonomous-sra",
     "seamless_rate_adaptations", "Seamless rate adaptations carried out"},
    {&Ends::fastRateAdaptations, CounterOf::kLine, false, false, "successful-fra", "fast_rate_adaptations",
     "Fast rate adaptations carried out"},
    {&Ends::rmcAdaptations, CounterOf::kLine, false, false, "successful-rpa", "rmc_parameter_adjustments",
     "Adjustments of the robust management channel carried out"},
    {&Ends::codeViolations, CounterOf::kChannel, false, false, "code-violations", "code_violations",
     "Code violations"},
    {&Ends::uncorrectedDtus, CounterOf::kChannel, false, false, "uncorrected-dtus", "uncorrected_dtus",
     "Data transfer units that no retransmission corrected"},
    {&Ends::retransmittedDtus, CounterOf::kChannel, false, false, "retransmitted-dtus", "retransmitted_dtus",
     "Data transfer units sent again"},
    {&Ends::errorFreeBits, CounterOf::kChannel, false, false, "error-free-bits", "error_free_bits",
     "Error-free bits received"},
    {&Ends::gainAdjustments, CounterOf::kLine, true, false, "successful-tiga", "gain_adjustments",
     "Gain adjustments that the transmitter began"},
    {&Ends::fullInitialisations, CounterOf::kLine, true, false, "full-initializations",
     "full_initializations", "Full initialisations"},
    {&Ends::failedFullInitialisations, CounterOf::kLine, true, false, "failed-full-initializations",
     "failed_full_initializations", "Full initialisations that failed"},
    {&Ends::fastInitialisations, CounterOf::kLine, true, false, "fast-initializations",
     "fast_initializations", "Fast initialisations"},
    {&Ends::failedFastInitialisations, CounterOf::kLine, true, false, "failed-fast-initializations",
     "failed_fast_initializations", "Fast initialisations that failed"},
}};

// Bits of one count of the error-free bits.
constexpr uint64_t kErrorFreeBitsUnit = G9772_EFB_UNITS;

}  // namespace gfast::console

// The transform of a captured symbol, 4096 points, compared with FFTW's (planned by estimate) and the plain
// loop: in turns and by processor time, so that other load affects all of them alike.
#include <fftw3.h>

#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "qvrtest/fft.h"
#include "qvrtest/fft_stages.h"
#include "row.h"
#include "support/plain_transform.h"

using namespace gfast;

namespace {

constexpr int kPoints = 4096;
constexpr int kRounds = 500;
constexpr int kTransformsARound = 20;

struct Contender {
  std::string name;
  std::function<void()> transform;
  std::vector<double> times_us;  // of one transform, a value a round
};

double processorTime_us() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

void runRound(Contender& contender) {
  const double start = processorTime_us();
  for (int i = 0; i < kTransformsARound; i++) {
    contender.transform();
  }
  contender.times_us.push_back((processorTime_us() - start) / kTransformsARound);
}

// Vectors that FFTW allocates, aligned for it.
struct Yardstick {
  fftw_complex* input = fftw_alloc_complex(kPoints);
  fftw_complex* output = fftw_alloc_complex(kPoints);
  fftw_plan plan = fftw_plan_dft_1d(kPoints, input, output, FFTW_FORWARD, FFTW_ESTIMATE);

  explicit Yardstick(const Points& points) {
    for (size_t i = 0; i < points.size(); i++) {
      input[i][0] = points[i].real();
      input[i][1] = points[i].imag();
    }
  }
};

}  // namespace

int main() {
  const Points input = randomPoints(kPoints);
  Points output(input.size());
  const Yardstick yardstick(input);
  PlainTransform plain(kPoints, {"unitary", TRUE, TRUE}, Direction::kForward);
  if (!FFT_init(kPoints / 2, TRUE, TRUE)) {
    return 1;
  }
  std::vector<Contender> contenders{{"FFTW, estimate mode", [&] { fftw_execute(yardstick.plan); }, {}},
                                    {"plain loop", [&] { plain.run(input, output); }, {}}};
  for (const FftVariant& variant : fftVariants()) {
    contenders.push_back({std::string("FFT_transform, ") + variant.name,
                          [&] {
                            selectFftVariant(variant);
                            FFT_transform(output.data(), input.data());
                          },
                          {}});
  }
  for (int round = 0; round < kRounds; round++) {
    for (Contender& contender : contenders) {
      runRound(contender);
    }
  }
  const double fftw_us = medianOf(contenders.front().times_us);
  for (const Contender& contender : contenders) {
    const double median_us = medianOf(contender.times_us);
    std::printf("%-28s median %7.2f us, ratio %.2f\n", contender.name.c_str(), median_us,
                median_us / fftw_us);
  }
  // Behind the two yardsticks stands what the library chooses on this processor.
  printRow("FFT of 4096 points", medianOf(contenders[2].times_us), fftw_us, "us", "<= 1.2");
}

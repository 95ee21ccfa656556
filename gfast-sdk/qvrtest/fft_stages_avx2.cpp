// The stages on four butterflies at a time. Compiled for processors with AVX2, and called on those only.
#include "qvrtest/fft_stages_of_lanes.h"

using namespace gfast;

bool gfast::fourLaneStages(const FftWorkspace& work, FftDirection direction, const FftOutput& rule,
                           const double* input, double* output) {
  return stagesOf<FourLanes>(work, direction, rule, input, output);
}

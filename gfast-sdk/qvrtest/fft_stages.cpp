// Which variants of the stages there are, and which of them this machine runs.
#include "qvrtest/fft_stages_of_lanes.h"

using namespace gfast;

namespace {

#ifdef __SSE2__
constexpr FftVariant kVariants[] = {
#ifdef GFAST_FFT_AVX2
    {"four lanes", fourLaneStages},
#endif
    {"two lanes", stagesOf<TwoLanes>},
};
#else
constexpr FftVariant kVariants[] = {{"one lane", stagesOf<OneLane>}};
#endif

}  // namespace

std::span<const FftVariant> gfast::fftVariants() {
  const std::span<const FftVariant> variants(kVariants);
#ifdef GFAST_FFT_AVX2
  return __builtin_cpu_supports("avx2") ? variants : variants.subspan(1);
#else
  return variants;
#endif
}

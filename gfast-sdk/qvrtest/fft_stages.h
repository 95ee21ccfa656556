// The stages of a transform, carried out two at a time on as many butterflies at once as the processor has
// lanes for. Every value goes through the operations of the plain loop in their order, so that the results
// are the same bits.
#pragma once

#include <cstddef>
#include <span>

namespace gfast {

// The smallest power of two that the stages take.
constexpr size_t kLeastStagesSize = 16;

struct FftWorkspace {
  size_t size;              // points, a power of two
  const double* twiddleRe;  // of the stage of span s, factor t stands at s + t
  const double* twiddleIm;
  double* re;  // work vector
  double* im;
};

enum class FftDirection { kForward, kInverse };

// What is done to the transformed points before they are stored.
struct FftOutput {
  double gain;
  bool realOnly;  // imaginary parts are 0
};

// Transforms `input` (pairs of real and imaginary part) into `output`, which may be the same. false: values
// are so large, infinite or NaN that products may need the special cases of C99; nothing was written.
using FftStages = bool (*)(const FftWorkspace& work, FftDirection direction, const FftOutput& rule,
                           const double* input, double* output);

struct FftVariant {
  const char* name;
  FftStages stages;
};

// The variants that this machine runs, the fastest first. All give the same results.
std::span<const FftVariant> fftVariants();

// Transforms use this variant from now on; until then they use the fastest.
void selectFftVariant(const FftVariant& variant);

// The variant for processors with AVX2; on others it must not be called.
bool fourLaneStages(const FftWorkspace& work, FftDirection direction, const FftOutput& rule,
                    const double* input, double* output);

}  // namespace gfast

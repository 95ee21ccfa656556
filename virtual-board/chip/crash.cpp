#include "virtual-board/chip/crash.h"

#include <algorithm>

#include "std/byte_order.h"

namespace gfast::board {

namespace {

// Where a processor's record and its extension lie in the image.
struct Place {
  size_t record;
  size_t extension;
};

// By processor.
constexpr Place kPlaces[] = {{DEV_INF_LINK_ASSERT_INFO, DEV_INF_LINK_ASSERT_EXTENSION},
                             {DEV_INF_LINK_ASSERT_INFO + CPU_ASSERT_INFO_SIZE,
                              DEV_INF_LINK_ASSERT_EXTENSION + CPU_ASSERT_EXTENSION_SIZE},
                             {DEV_INF_CP_ASSERT_INFO, DEV_INF_CP_ASSERT_EXTENSION}};

constexpr ImagePart kParts[] = {
    {DEV_INF_LINK_ASSERT_INFO, DEV_INF_LINK_ASSERT_INFO + 2 * CPU_ASSERT_INFO_SIZE},
    {DEV_INF_LINK_ASSERT_EXTENSION, DEV_INF_CP_ASSERT_EXTENSION + CPU_ASSERT_EXTENSION_SIZE}};

}  // namespace

std::vector<ImagePart> assertionParts(size_t offset, size_t length) {
  std::vector<ImagePart> parts;
  for (const ImagePart& part : kParts) {
    const ImagePart within{std::max(part.begin, offset), std::min(part.end, offset + length)};
    if (within.begin < within.end) {
      parts.push_back(within);
    }
  }
  return parts;
}

void AssertionRecords::add(const Assertion& assertion) {
  const Place& place = kPlaces[static_cast<size_t>(assertion.processor)];
  uint8_t* const record = image_.data() + place.record;
  const uint32_t before = load_le32(record + CPU_ASSERT_INFO_NUMBER);
  store_le32(record + CPU_ASSERT_INFO_NUMBER, before + 1);
  if (before != 0) {
    return;
  }
  const size_t params = std::min(assertion.params.size(), CPU_ASSERT_MAX_PARAMS);
  store_le32(record + CPU_ASSERT_INFO_ASSERT_ID, assertion.id);
  store_le32(record + CPU_ASSERT_INFO_NUM_PARAMS, static_cast<uint32_t>(params));
  for (size_t i = 0; i < params; i++) {
    store_le32(record + CPU_ASSERT_INFO_PARAMS + 4 * i, assertion.params[i]);
  }
  uint8_t* const extension = image_.data() + place.extension;
  store_le32(extension + CPU_ASSERT_EXTENSION_SYMBOL_COUNTER, assertion.symbolCounter);
  store_le32(extension + CPU_ASSERT_EXTENSION_TBM_SYMBOL, assertion.tbmSymbol);
  store_le32(extension + CPU_ASSERT_EXTENSION_TBM_PHASE, assertion.tbmPhase);
  store_le32(extension + CPU_ASSERT_EXTENSION_TBM_SAMPLE, assertion.tbmSample);
}

void AssertionRecords::clear(size_t offset, size_t length) {
  for (const ImagePart& part : assertionParts(offset, length)) {
    std::fill(image_.data() + part.begin, image_.data() + part.end, uint8_t{0});
  }
}

void AssertionRecords::store(std::span<uint8_t> image) const {
  for (const ImagePart& part : kParts) {
    std::copy(image_.data() + part.begin, image_.data() + part.end, image.data() + part.begin);
  }
}

}  // namespace gfast::board

#include "crash.h"

#include <algorithm>

#include "std/byte_order.h"

namespace {

// One processor's record, and its extension elsewhere in the image.
constexpr size_t kNumberOfAssertions = 0;
constexpr size_t kAssertId = 4;
constexpr size_t kNumParams = 8;
constexpr size_t kParams = 12;
constexpr size_t kRecordSize = kParams + 4 * kMaxAssertParams;
constexpr size_t kSymbolCounter = 0;
constexpr size_t kTbmSymbol = 4;
constexpr size_t kTbmPhase = 8;
constexpr size_t kTbmSample = 12;
constexpr size_t kExtensionSize = 16;

struct Place {
  size_t record;
  size_t extension;
};

// By processor.
constexpr Place kPlaces[] = {
    {DEV_INF_LINK_ASSERT_INFO, DEV_INF_LINK_ASSERT_EXTENSION},
    {DEV_INF_LINK_ASSERT_INFO + kRecordSize, DEV_INF_LINK_ASSERT_EXTENSION + kExtensionSize},
    {DEV_INF_CP_ASSERT_INFO, DEV_INF_CP_ASSERT_EXTENSION}};

constexpr ImagePart kParts[] = {
    {DEV_INF_LINK_ASSERT_INFO, DEV_INF_LINK_ASSERT_INFO + 2 * kRecordSize},
    {DEV_INF_LINK_ASSERT_EXTENSION, DEV_INF_CP_ASSERT_EXTENSION + kExtensionSize}};

}  // namespace

std::span<const ImagePart> assertionParts() {
  return kParts;
}

void AssertionRecords::add(const Assertion& assertion) {
  const Place& place = kPlaces[static_cast<size_t>(assertion.processor)];
  uint8_t* const record = image_.data() + place.record;
  const uint32_t before = load_le32(record + kNumberOfAssertions);
  store_le32(record + kNumberOfAssertions, before + 1);
  if (before != 0) {
    return;
  }
  const size_t params = std::min(assertion.params.size(), kMaxAssertParams);
  store_le32(record + kAssertId, assertion.id);
  store_le32(record + kNumParams, static_cast<uint32_t>(params));
  for (size_t i = 0; i < params; ++i) {
    store_le32(record + kParams + 4 * i, assertion.params[i]);
  }
  uint8_t* const extension = image_.data() + place.extension;
  store_le32(extension + kSymbolCounter, assertion.symbolCounter);
  store_le32(extension + kTbmSymbol, assertion.tbmSymbol);
  store_le32(extension + kTbmPhase, assertion.tbmPhase);
  store_le32(extension + kTbmSample, assertion.tbmSample);
}

void AssertionRecords::clear(size_t offset, size_t length) {
  for (const ImagePart& part : kParts) {
    const size_t begin = std::max(part.begin, offset);
    const size_t end = std::min(part.end, offset + length);
    if (begin < end) {
      std::fill(image_.data() + begin, image_.data() + end, uint8_t{0});
    }
  }
}

void AssertionRecords::store(std::span<uint8_t> image) const {
  for (const ImagePart& part : kParts) {
    std::copy(image_.data() + part.begin, image_.data() + part.end, image.data() + part.begin);
  }
}

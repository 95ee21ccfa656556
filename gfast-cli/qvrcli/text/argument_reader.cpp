#include "qvrcli/text/argument_reader.h"

#include "qvrcli/text/arguments.h"

namespace gfast::console {

const char* ArgumentReader::word(int position) const {
  return position < argc_ && !refused_ ? argv_[position] : nullptr;
}

void ArgumentReader::refuse(const char* word, Refusal refusal) {
  cli_print(session_, "%s", fmt::vformat(refusal, fmt::make_format_args(word)).c_str());
  refused_ = true;
}

// A word without digits leaves the number as it is, so it begins as the default.
template <typename IsValid>
int ArgumentReader::judged(int position, Refusal refusal, int otherwise, IsValid isValid) {
  const char* const typed = word(position);
  int number = otherwise;
  if (typed == nullptr || isValid(typed, &number)) {
    return number;
  }
  refuse(typed, refusal);
  return otherwise;
}

QVR_lineId_t ArgumentReader::line(int position, Refusal refusal, QVR_lineId_t otherwise) {
  return judged(position, refusal, otherwise, isValidLineId);
}

QVR_deviceId_t ArgumentReader::device(int position, Refusal refusal) {
  return judged(position, refusal, 0, isValidDeviceId);
}

int ArgumentReader::number(int position, int low, int high, Refusal refusal, int otherwise) {
  return judged(position, refusal, otherwise, [low, high](const char* typed, int* value) {
    return isValidNumber(typed, low, high, value);
  });
}

uint32_t ArgumentReader::hexadecimal(int position, Refusal refusal) {
  const char* const typed = word(position);
  uint32_t value = 0;
  if (typed != nullptr && !parseHex(typed, &value)) {
    refuse(typed, refusal);
  }
  return value;
}

End ArgumentReader::end(int position, Refusal refusal, OtherWord other) {
  const char* const typed = word(position);
  if (typed == nullptr || isKeyword(typed, "ne")) {
    return End::kNear;
  }
  if (isKeyword(typed, "fe")) {
    return End::kFar;
  }
  refuse(typed, refusal);
  refused_ = other == OtherWord::kRefused;
  return End::kNear;
}

Direction ArgumentReader::direction(int position, Refusal refusal) {
  const char* const typed = word(position);
  if (typed == nullptr || isKeyword(typed, "us")) {
    return Direction::kUpstream;
  }
  if (!isKeyword(typed, "ds")) {
    refuse(typed, refusal);
    return Direction::kUpstream;
  }
  return Direction::kDownstream;
}

const char* ArgumentReader::text(int position, const char* otherwise) const {
  const char* const typed = word(position);
  return typed != nullptr ? typed : otherwise;
}

bool ArgumentReader::is(int position, const char* lowerCase) const {
  const char* const typed = word(position);
  return typed != nullptr && isKeyword(typed, lowerCase);
}

}  // namespace gfast::console

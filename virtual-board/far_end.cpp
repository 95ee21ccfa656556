#include "far_end.h"

#include <gfast_api.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace {

using Answer = int (*)(Chip& remote, std::span<const uint8_t> request, std::vector<uint8_t>& response);

// By message type; one without an answer is left unanswered by the modem.
constexpr Answer kAnswers[MGMT_FAR_END_REQ_TYPE_LAST] = {};

}  // namespace

FarEnd::FarEnd(int line, Chip& remote, const std::vector<FarEndReplacement>& replacements) : remote_(remote) {
  std::copy_if(replacements.begin(), replacements.end(), std::back_inserter(replacements_),
               [line](const FarEndReplacement& replacement) { return replacement.line == line; });
}

int FarEnd::answer(uint32_t type, std::span<const uint8_t> request, std::vector<uint8_t>& response) {
  const auto replaced = std::find_if(replacements_.begin(), replacements_.end(),
                                     [type](const FarEndReplacement& r) { return r.request == type; });
  if (replaced != replacements_.end()) {
    response = replaced->response;
    return replaced->error;
  }
  if (type >= MGMT_FAR_END_REQ_TYPE_LAST) {
    return EINVAL;
  }
  const Answer known = kAnswers[type];
  return known == nullptr ? EIO : known(remote_, request, response);
}

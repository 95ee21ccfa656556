// Version texts that come from equipment at a far end.
#pragma once

#include <qvr.h>

namespace gfast {

using QVR_versionText_t = char[sizeof QVR_inventoryParameters_t::VERSION];

// What a version text of three numbers and a word becomes: those, or with a 0 as fourth number before the
// word, as the network side counts versions.
enum class VersionForm { kThreeNumbers, kFourNumbers };

// Rewrites a version text, which need not end within its field, in place. It is taken apart like scanf's
// "%hhu.%hhu.%hhu %s": blanks may come before each number and before the word, and what follows the word is
// dropped. The result is cut to the field, zeros behind it, the last byte always one. A text of any other
// shape stays as it is, and so does one with a number above 255 or a sign: those are no version numbers.
void rewriteVersion(VersionForm form, QVR_versionText_t& text);

}  // namespace gfast

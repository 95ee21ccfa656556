// Version texts that the equipment at a far end reports.
#pragma once

#include <qvr.h>

namespace gfast {

using QVR_versionText_t = char[sizeof QVR_inventoryParameters_t::VERSION];

// How a version text of three numbers and a word is rewritten: with three numbers, or with a 0 as the fourth,
// as versions are counted at the network side.
enum class VersionForm { kThreeNumbers, kFourNumbers };

// Rewrites a version text in place; the text may fill its field without a terminator. It is parsed like
// scanf's "%hhu.%hhu.%hhu %s": blanks may come before each number and before the word, and what follows the
// word is dropped. The result is cut to the field and always ends in a zero byte. A text of any other shape
// stays unchanged, and so does one with a sign or a number above 255: those are not version numbers.
void rewriteVersion(VersionForm form, QVR_versionText_t& text);

}  // namespace gfast

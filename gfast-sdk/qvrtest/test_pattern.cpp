#include "qvrtest/test_pattern.h"

#include <string_view>

using namespace gfast;

namespace {

// Two bits a subcarrier, from subcarrier 1, the most significant first: the signs of the real and of the
// imaginary part, 1 being negative. The last two bits are padding.
constexpr std::string_view kPatternDigits =
    "7D179E3273B7E6118847F578329AD2354CC70C3B1D561F3DD9A6F7E0E9BE30B1"
    "53114DCEBA6E4F3A200388A4DFFBC4702269AB2F578A899639B26D371E669681"
    "2BEEB4754CE55F76348B494A7577CF31C736CB06EBAFEAEDBFC08C8B49807A7C"
    "1A8CED399337973B9965094B8AEF254E81139E3B4B7D22B122CFE8753DCB5A9F"
    "73778A97A4AB45C513BF113210F012E2A43F277D964CB47CBBC4AAC6298492F5"
    "58F25AB4BAE1C853E84C25AD327C9CF2B82D74609502EF8ADF46EDE6525204F3"
    "200132DC4D7007B8073E7388F359008E5084B298DB2B07A25F3D8053A08746E4"
    "3F26D15C734AF151BE1F8E3E0513A4753261900FC5BFA5C924D00375A50C5F2F"
    "8EBD27B448C830C16F6EA38097A62D27B207FB22C4FB08A7EF8777799DB51ECE"
    "4CB08967D4998FE4F626DE205D1F953024E9340E592FF940D3CACA93CD799737"
    "D3AC773AB5E3B2A045D265F88C01C7C524F813040E764A547C34FAA6299E7725"
    "485C7EA7310DD2304D6CEE58D0F4C1E81F5B965664647388FCF8E63EA4272A8D"
    "381BC2016C1919CAD69AB328B9686BA74443EEDF444C874F859B3C2BE6D9A61C"
    "B15D38EAF5373C3EE8FDE5AAA453E6F5DE4BEE40BFC52BF2D017E0775B800146"
    "3B8C578F2D9798C56324BEBB43A7EB0B531FCDD3D113FD3DC839826F67EC5D95"
    "4645FDACA4ACDD543F1E8D6B5C414A92D320FD999BB76A554A1532D1BBE6C158";

constexpr uint32_t kTonesPerDigit = 2;
static_assert(kPatternDigits.size() * kTonesPerDigit == kPatternTones);

constexpr unsigned valueOfDigit(char digit) {
  return static_cast<unsigned>(digit >= 'A' ? digit - 'A' + 10 : digit - '0');
}

constexpr std::array<QVR_complex_t, kPatternTones> decodePattern() {
  std::array<QVR_complex_t, kPatternTones> pattern{};
  pattern[0] = 1;
  for (uint32_t tone = 1; tone < kPatternTones; tone++) {
    const uint32_t place = tone - 1;
    const unsigned digit = valueOfDigit(kPatternDigits[place / kTonesPerDigit]);
    const unsigned signs = place % kTonesPerDigit == 0 ? digit >> 2 : digit & 3;
    pattern[tone] = {(signs & 2) != 0 ? -1.0 : 1.0, (signs & 1) != 0 ? -1.0 : 1.0};
  }
  return pattern;
}

}  // namespace

constexpr std::array<QVR_complex_t, kPatternTones> gfast::kpatternFreq = decodePattern();

void gfast::writePattern(QVR_complex_t* spectrum, uint32_t tones) {
  for (uint32_t tone = 0; tone < tones; tone++) {
    spectrum[tone] = isLoadedTone(tone) ? kpatternFreq[tone] : 0;
  }
}

// The words behind a command, read by their positions.
#pragma once

#include <fmt/format.h>
#include <libcli.h>
#include <qvr.h>

#include <cstdint>

namespace gfast::console {

enum class End { kNear, kFar };
enum class Direction { kUpstream, kDownstream };

// What happens when a word is neither ne nor fe: it is refused, or the command goes on with the near end.
enum class OtherWord { kRefused, kNearEnd };

// What is printed when a word is refused; {} stands for the word. Texts differ from command to command, and
// scripts look for them.
using Refusal = fmt::format_string<const char*>;

constexpr Refusal kNoSuchLine = "invalid parameter - line number must be between 0..1";
static_assert(QVR_K_LINE_ID_LAST == 1);

// A word that is not there gives its default. A word that is refused gives it too, after the given text was
// printed; from then on every word gives its default and nothing more is printed. So a handler reads its
// words one after the other and asks refused() once.
class ArgumentReader {
 public:
  ArgumentReader(cli_def* session, const char* const argv[], int argc)
      : session_(session), argv_(argv), argc_(argc) {}

  // Whether a word was refused.
  bool refused() const { return refused_; }

  // By default line 0.
  QVR_lineId_t line(int position, Refusal refusal = kNoSuchLine, QVR_lineId_t otherwise = 0);

  // By default device 0.
  QVR_deviceId_t device(int position, Refusal refusal);

  // Within inclusive bounds. A word without digits stands for the default, which is then judged like a number
  // that was typed.
  int number(int position, int low, int high, Refusal refusal, int otherwise);

  // A hexadecimal number that has to be there.
  uint32_t hexadecimal(int position, Refusal refusal);

  // ne or fe, by default the near end.
  End end(int position, Refusal refusal, OtherWord other = OtherWord::kRefused);

  // us or ds, by default upstream.
  Direction direction(int position, Refusal refusal);

  // A file name or another text, as it is.
  const char* text(int position, const char* otherwise) const;

  // Whether the word is there and is this one, in lower or upper case.
  bool is(int position, const char* lowerCase) const;

 private:
  // nullptr when the word is not there, or one was refused before.
  const char* word(int position) const;
  void refuse(const char* word, Refusal refusal);
  template <typename IsValid>
  int judged(int position, Refusal refusal, int otherwise, IsValid isValid);

  cli_def* session_;
  const char* const* argv_;
  int argc_;
  bool refused_ = false;
};

}  // namespace gfast::console

#include "qvrcli/session/typed_input.h"

#include <libcli.h>

#include <algorithm>
#include <utility>

namespace gfast::console {

namespace {

constexpr unsigned char kSubnegotiationEnd = 240;
constexpr unsigned char kSubnegotiationBegin = 250;
constexpr unsigned char kWill = 251;
constexpr unsigned char kDont = 254;
constexpr unsigned char kTelnet = 255;  // begins a command; two of them are one character of text

constexpr char kEscape = 27;

constexpr char control(char letter) {
  return static_cast<char>(letter - '@');
}

constexpr size_t kLongestLine = CLI_MAX_LINE_LENGTH - 1;

}  // namespace

void TypedInput::receive(std::string_view received, std::string& typed) {
  for (const char character : received) {
    take(character, typed);
  }
}

void TypedInput::take(char character, std::string& typed) {
  const auto byte = static_cast<unsigned char>(character);
  switch (state_) {
    case State::kText:
      takeText(character, typed);
      break;
    case State::kCommand:
      takeCommand(byte, typed);
      break;
    case State::kOption:
      state_ = State::kText;
      break;
    case State::kSubnegotiation:
      state_ = byte == kTelnet ? State::kSubnegotiationCommand : State::kSubnegotiation;
      break;
    case State::kSubnegotiationCommand:
      state_ = byte == kSubnegotiationEnd ? State::kText : State::kSubnegotiation;
      break;
    case State::kEscape:
    case State::kSequence:
      takeSequence(character, typed);
      break;
  }
}

void TypedInput::takeCommand(unsigned char character, std::string& typed) {
  state_ = State::kText;
  if (character == kTelnet) {
    typed += static_cast<char>(kTelnet);  // twice: the interpreter takes telnet commands out as well
    pass(static_cast<char>(kTelnet), typed);
  } else if (character == kSubnegotiationBegin) {
    state_ = State::kSubnegotiation;
  } else if (character >= kWill && character <= kDont) {
    state_ = State::kOption;
  }
}

// ESC [ up to the letter that ends the sequence. A control character ends it too, and is not part of it.
void TypedInput::takeSequence(char character, std::string& typed) {
  const auto byte = static_cast<unsigned char>(character);
  if (byte < ' ' || byte >= 0x7f) {
    state_ = State::kText;
    takeText(character, typed);
  } else if (state_ == State::kEscape) {
    state_ = character == '[' ? State::kSequence : State::kText;
    parameters_ = false;
  } else if (character < '@') {
    parameters_ = true;
  } else {
    state_ = State::kText;
    if (!parameters_ && character <= 'D' && character >= 'A') {
      const char arrow[] = {kEscape, '[', character};
      typed.append(arrow, sizeof arrow);
      recall();
    }
  }
}

void TypedInput::takeText(char character, std::string& typed) {
  if (static_cast<unsigned char>(character) == kTelnet) {
    state_ = State::kCommand;
    return;
  }
  const bool afterReturn = std::exchange(afterReturn_, character == '\r');
  switch (character) {
    case kEscape:
      state_ = State::kEscape;
      return;
    case '\t':
      if (length_ + kLongestCompletion > kLongestLine) {
        typed += control('C');
        return;
      }
      length_ += kLongestCompletion;
      lineHigh_ = std::max(lineHigh_, length_);
      typed += character;
      return;
    case '\r':
      endLine(typed);
      return;
    case '\n':
      if (!afterReturn) {
        endLine(typed);
      }
      return;
    case control('U'):
      length_ = 0;
      typed += character;
      return;
    case control('P'):
    case control('N'):
      recall();
      typed += character;
      return;
    default:
      pass(character, typed);
  }
}

void TypedInput::endLine(std::string& typed) {
  longest_ = std::max(longest_, lineHigh_);
  length_ = lineHigh_ = 0;
  typed += '\r';
}

void TypedInput::pass(char character, std::string& typed) {
  length_ = std::min(length_ + 1, kLongestLine);
  lineHigh_ = std::max(lineHigh_, length_);
  typed += character;
}

// The editor may show an earlier line again.
void TypedInput::recall() {
  length_ = std::max(length_, longest_);
  lineHigh_ = std::max(lineHigh_, length_);
}

}  // namespace gfast::console

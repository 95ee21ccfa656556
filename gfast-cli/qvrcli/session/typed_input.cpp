#include "qvrcli/session/typed_input.h"

#include <libcli.h>

#include <algorithm>
#include <utility>

namespace gfast::console {

namespace {

constexpr unsigned char kSubnegotiationEnd = 240;
constexpr unsigned char kBreak = 243;
constexpr unsigned char kInterruptProcess = 244;
constexpr unsigned char kSubnegotiationBegin = 250;
constexpr unsigned char kWill = 251;
constexpr unsigned char kDont = 254;
constexpr unsigned char kTelnet = 255;  // begins a command; two of them are one character of text

constexpr char kEscape = 27;

constexpr char control(char letter) {
  return static_cast<char>(letter - '@');
}

// Whether the editor may put the character into the line.
bool isText(char character) {
  return static_cast<unsigned char>(character) >= ' ' && character != '\x7f';
}

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
    if (!tooLong_) {
      typed += static_cast<char>(kTelnet);  // twice: the interpreter takes telnet commands out as well
      pass(static_cast<char>(kTelnet), typed);
    }
    return;
  }
  speaksTelnet_ = true;
  if (character == kSubnegotiationBegin) {
    state_ = State::kSubnegotiation;
  } else if (character >= kWill && character <= kDont) {
    state_ = State::kOption;
  } else if (character == kBreak || character == kInterruptProcess) {
    typed += kInterrupt;
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
      takeArrow(character, typed);
    }
  }
}

// Up and down bring back other lines, right and left stay in this one.
void TypedInput::takeArrow(char arrow, std::string& typed) {
  if (tooLong_) {
    return;
  }
  const char sequence[] = {kEscape, '[', arrow};
  typed.append(sequence, sizeof sequence);
  atEnd_ = false;
  if (arrow <= 'B') {
    recall();
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
    case '\r':
      endLine(typed);
      return;
    case '\n':
      if (!afterReturn) {
        endLine(typed);
      }
      return;
    case control('C'):
      typed += kInterrupt;
      return;
    case '\0':
      return;
    case control('U'):
      clearLine();
      typed += character;
      return;
    default:
      if (!tooLong_) {
        takeKey(character, typed);
      }
  }
}

// A key of a line that fits so far.
void TypedInput::takeKey(char character, std::string& typed) {
  switch (character) {
    case '\t':
      takeTab(typed);
      return;
    case control('P'):
    case control('N'):
      recall();
      break;
    case control('H'):
    case '\x7f':
      if (atEnd_ && length_ > 0) {
        length_--;
      }
      break;
    case control('A'):
    case control('B'):
    case control('F'):
    case control('E'):
      atEnd_ = false;
      break;
    case kRefusedLine:
      return;
    default:
      pass(character, typed);
      return;
  }
  typed += character;
}

void TypedInput::takeTab(std::string& typed) {
  if (length_ + kLongestCompletion > kLongestLine) {
    typed += control('C');
    return;
  }
  length_ += kLongestCompletion;
  lineHigh_ = std::max(lineHigh_, length_);
  atEnd_ = false;
  typed += '\t';
}

// The editor has the beginning of a line that is too long: it is cleared.
void TypedInput::endLine(std::string& typed) {
  if (tooLong_) {
    typed += control('U');
    typed += kRefusedLine;
    lineHigh_ = 0;  // the history does not get it
  }
  clearLine();
  longest_ = std::max(longest_, std::exchange(lineHigh_, 0));
  typed += '\r';
}

void TypedInput::clearLine() {
  length_ = 0;
  atEnd_ = true;
  tooLong_ = false;
}

void TypedInput::pass(char character, std::string& typed) {
  if (isText(character)) {
    tooLong_ = length_ == kLongestLine;
    length_ = std::min(length_ + 1, kLongestLine);
    lineHigh_ = std::max(lineHigh_, length_);
  }
  typed += character;
}

// The editor may show an earlier line again.
void TypedInput::recall() {
  length_ = std::max(length_, longest_);
  lineHigh_ = std::max(lineHigh_, length_);
  atEnd_ = false;
}

}  // namespace gfast::console

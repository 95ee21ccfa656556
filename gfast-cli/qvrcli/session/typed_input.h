// Filters what a session's peer sends, so that libcli's line editor can take it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "qvrcli/session/line_limit.h"

namespace gfast::console {

// Passes on typed characters and editing keys. Takes out telnet commands, with their options and
// subnegotiations, and the escape sequences of keys that the editor does not know. A line ends with a
// carriage return, with a line feed, or with both; the editor is given a carriage return.
//
// The editor completes words into its line buffer without checking the room that is left, and drops the
// characters of a line that does not fit. So the greatest length that the line can have is counted here. A
// TAB for which there might be no room is replaced by a Ctrl-C, which the editor answers with a bell. A line
// that is too long is replaced by kRefusedLine, which the session's printer answers with an error.
//
// A typed Ctrl-C, and telnet's interrupt and break, become kInterrupt: while a command runs, mayGoOn finds
// it; the editor ignores its first character and answers its second with a bell.
class TypedInput {
 public:
  static constexpr std::string_view kInterrupt{"\0\x03", 2};

  // The most characters that a completion inserts, with the blank behind it.
  static constexpr size_t kLongestCompletion = 64;

  // Appends the received bytes that are passed on to `typed`.
  void receive(std::string_view received, std::string& typed);

  // Whether a telnet command was received: nothing but telnet sends one.
  bool speaksTelnet() const { return speaksTelnet_; }

 private:
  enum class State { kText, kCommand, kOption, kSubnegotiation, kSubnegotiationCommand, kEscape, kSequence };

  void take(char character, std::string& typed);
  void takeCommand(unsigned char character, std::string& typed);
  void takeSequence(char character, std::string& typed);
  void takeArrow(char arrow, std::string& typed);
  void takeText(char character, std::string& typed);
  void takeKey(char character, std::string& typed);
  void takeTab(std::string& typed);
  void endLine(std::string& typed);
  void clearLine();
  void pass(char character, std::string& typed);
  void recall();

  State state_ = State::kText;
  bool speaksTelnet_ = false;
  bool afterReturn_ = false;  // the character before was a carriage return
  bool parameters_ = false;   // the escape sequence has more than its last letter
  bool atEnd_ = true;         // the cursor is behind the last character, and the line's length is known
  bool tooLong_ = false;
  // Upper bounds: of the line now, of this line at any time, of every earlier line.
  size_t length_ = 0;
  size_t lineHigh_ = 0;
  size_t longest_ = 0;
};

}  // namespace gfast::console

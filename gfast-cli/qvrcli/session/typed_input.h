// What a session's peer sends, made fit for libcli's line editor.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace gfast::console {

// Passes on typed characters and editing keys, and nothing else: telnet commands and their options,
// subnegotiations included, and the escape sequences of keys the editor does not know are taken out.
//
// The editor completes words into its line buffer without looking at the room that is left. So the length
// that the line can have reached is followed from outside, and a TAB for which there might be no room is
// turned into a Ctrl-C, which the editor answers with a bell.
class TypedInput {
 public:
  // No completion inserts more characters, the blank behind it included.
  static constexpr size_t kLongestCompletion = 64;

  // Appends to `typed` what of the received bytes is passed on.
  void receive(std::string_view received, std::string& typed);

 private:
  enum class State { kText, kCommand, kOption, kSubnegotiation, kSubnegotiationCommand, kEscape, kSequence };

  void take(char character, std::string& typed);
  void takeCommand(unsigned char character, std::string& typed);
  void takeSequence(char character, std::string& typed);
  void takeText(char character, std::string& typed);
  void pass(char character, std::string& typed);
  void recall();

  State state_ = State::kText;
  bool parameters_ = false;  // the escape sequence is not a plain letter
  // Upper bounds: of the line now, of this line at any time, of every earlier line.
  size_t length_ = 0;
  size_t lineHigh_ = 0;
  size_t longest_ = 0;
};

}  // namespace gfast::console

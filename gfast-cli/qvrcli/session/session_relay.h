// The relay between a session's connection and the interpreter, which never uses the network itself.
#pragma once

#include <string_view>
#include <thread>

#include "qvrcli/session/typed_input.h"

namespace gfast::console {

// Moves bytes between the connection and a socket that the interpreter is given, until one of them ends:
//  - The peer sends no more: the interpreter still runs what it was sent, and the output still reaches the
//    peer. A peer that speaks telnet is asked now and then whether it is there, and given up when it is not.
//  - The peer does not read: it is waited for as long as its system answers.
//  - The peer resets or vanishes: it is given up. The interpreter's socket then reports a hang-up and takes
//  no
//    more output, so whatever runs there ends soon.
//  - The interpreter closes its socket: what it wrote is still sent.
// While neither side sends anything, both threads sleep; one looks after the connection every ten seconds.
class SessionRelay {
 public:
  // Takes the ownership of the connection, also when it throws std::system_error because resources are short.
  explicit SessionRelay(int connection);

  // To be called when the interpreter has closed its socket. Returns when its output has been sent or given
  // up, and the connection is closed.
  ~SessionRelay();

  SessionRelay(const SessionRelay&) = delete;
  SessionRelay& operator=(const SessionRelay&) = delete;

  // For the interpreter, which closes it.
  int interpreterSocket() const { return interpreterSocket_; }

 private:
  void relayInput();
  void relayOutput();
  void discardInput();
  bool endsBeforeInput() const;
  bool deliver(std::string_view typed);
  void awaitLoss();
  bool askForPeer(short ready) const;
  void giveUp();

  const int connection_;
  int relaySocket_ = -1;
  int interpreterSocket_ = -1;
  TypedInput typedInput_;  // of the input thread
  std::thread input_;
  std::thread output_;
};

}  // namespace gfast::console

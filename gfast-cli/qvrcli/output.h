// Building lines: the column buffer for tables, fill text for labels, hexadecimal text; and the session's
// stream.
#pragma once

#include <libcli.h>
#include <qvr.h>

#include <chrono>
#include <cstdint>

// Appends blanks up to the column, then the text. A column already passed adds no blanks. The line holds 999
// characters; what does not fit is dropped.
void AddMessage(const char* xi_text, uint32_t xi_column);

// Prints the line built so far and starts the next.
void PrintMessage(cli_def* xi_cli);

// Name of a link state, padded to 15 characters (the tenth is longer).
const char* linkStateString(int xi_state);

// Copies xi_length bytes and puts a terminator behind them.
void copyToString(char* xo_text, const void* xi_bytes, int xi_length);

// "%02X " for each byte: three characters a byte and a terminator in xo_text.
void toHexString(const uint8_t* xi_bytes, uint32_t xi_count, char* xo_text);

// The inverse of toHexString: two characters at every third position. Text that ends early gives zero bytes.
void toHexNumber(const char* xi_text, uint32_t xi_count, uint8_t* xo_bytes);

// That many fill characters (at most 79), in one buffer that every call reuses.
const char* filler(char xi_fillCharacter, uint8_t xi_width);

// Buffers the session's stream for the length of a command; without a session it does nothing. A command that
// a script runs shares the buffer of the command that runs the script, and is sent when it ends.
class BufferedSession {
 public:
  explicit BufferedSession(cli_def* cli);
  ~BufferedSession();
  BufferedSession(const BufferedSession&) = delete;
  BufferedSession& operator=(const BufferedSession&) = delete;

 private:
  cli_def* cli_;
  FILE* session_ = nullptr;  // libcli's own stream while ours stands in its place
};

// Sends what is buffered: before anything that waits, so the operator sees what happened so far.
void flushSession(cli_def* cli);

// Sends what is buffered and sleeps. False when the session was lost meanwhile, which ends the sleep: nobody
// is left to wait for, and the next client must be served.
bool sleepInSession(cli_def* cli, std::chrono::seconds duration);

// Whether the session's peer can no longer be reached; without a session, false. A peer that only has nothing
// more to say is still there.
bool sessionLost(const cli_def* cli);

// Has the command thread print a line to the session: for every other thread, because the interpreter prints
// on one thread only. Lines wait for the end of the running command or for the idle interpreter's next look,
// a few seconds at most; a flood is cut at 100.
void printLater(const char* text);

// Prints what printLater was given; on the command thread. False when there was nothing.
bool printWaiting(cli_def* cli);

// Drops what printLater was given: it was meant for those who were there.
void forgetWaiting();

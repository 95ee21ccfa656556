// Who works with the chips: a command, or a reading that other machines asked for. Never both. A command has
// the turn from its first line to its last, but for the time that it sleeps; a reading has it for one
// operation of the library at a time. So nothing that a reading asks comes between two requests of a command,
// and a command waits for one operation at most. The notification thread takes no turn.
#pragma once

namespace gfast::console {

// Exists while a command works. A reading that has the turn ends its operation first; none begins meanwhile.
class CommandTurn {
 public:
  CommandTurn();
  ~CommandTurn();
  CommandTurn(const CommandTurn&) = delete;
  CommandTurn& operator=(const CommandTurn&) = delete;
};

// Exists while the command that runs only sleeps: readings may go on. Without a command it does nothing.
class TurnLent {
 public:
  TurnLent();
  ~TurnLent();
  TurnLent(const TurnLent&) = delete;
  TurnLent& operator=(const TurnLent&) = delete;

 private:
  bool lent_;
};

// Exists while a reading carries out one operation. Waits until no command works or waits.
class ReadingTurn {
 public:
  ReadingTurn();
  ~ReadingTurn();
  ReadingTurn(const ReadingTurn&) = delete;
  ReadingTurn& operator=(const ReadingTurn&) = delete;
};

}  // namespace gfast::console

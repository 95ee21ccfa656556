#include "qvrcli/session/turn.h"

#include <condition_variable>
#include <mutex>

namespace gfast::console {

namespace {

// The lock guards these three words only and is never held while somebody has the turn.
struct Turns {
  std::mutex lock;
  std::condition_variable changed;
  bool commandWorks = false;  // or waits for its turn, so that a reading with many operations lets it in
  bool readingWorks = false;
};

// Never destroyed: the reading thread may still use it while the process exits.
Turns& turns() {
  static auto& all = *new Turns;
  return all;
}

void takeForCommand() {
  std::unique_lock guard(turns().lock);
  turns().commandWorks = true;
  turns().changed.wait(guard, [] { return !turns().readingWorks; });
}

void set(bool Turns::*whose, bool works) {
  {
    const std::lock_guard guard(turns().lock);
    turns().*whose = works;
  }
  turns().changed.notify_all();
}

bool commandWorks() {
  const std::lock_guard guard(turns().lock);
  return turns().commandWorks;
}

}  // namespace

CommandTurn::CommandTurn() {
  takeForCommand();
}

CommandTurn::~CommandTurn() {
  set(&Turns::commandWorks, false);
}

TurnLent::TurnLent() : lent_(commandWorks()) {
  if (lent_) {
    set(&Turns::commandWorks, false);
  }
}

TurnLent::~TurnLent() {
  if (lent_) {
    takeForCommand();
  }
}

ReadingTurn::ReadingTurn() {
  std::unique_lock guard(turns().lock);
  turns().changed.wait(guard, [] { return !turns().commandWorks && !turns().readingWorks; });
  turns().readingWorks = true;
}

ReadingTurn::~ReadingTurn() {
  set(&Turns::readingWorks, false);
}

}  // namespace gfast::console

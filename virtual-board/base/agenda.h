// What the board will do later: boots that finish, lines that move on, events a board file announced.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace gfast::board {

class Agenda {
 public:
  using Ticket = uint64_t;
  static constexpr Ticket kNone = 0;

  // Seconds since power-up, as of the last advance; inside an action, the time the action was due.
  double now() const { return now_; }

  // Has the action run at that time, or with the next advance when the time has passed.
  Ticket at(double time, std::function<void()> action);
  Ticket after(double seconds, std::function<void()> action) { return at(now_ + seconds, std::move(action)); }

  // Forgets the action, if it still waits, and the ticket.
  void cancel(Ticket& ticket);

  // When the next action is due; nothing when none waits.
  std::optional<double> next() const;

  // Runs every action due by `now`, in order of time and then of entry; actions may enter and cancel others.
  void advance(double now);

 private:
  using Slot = std::pair<double, Ticket>;
  std::map<Slot, std::function<void()>> actions_;
  std::map<Ticket, double> times_;
  Ticket last_ = kNone;
  double now_ = 0;
};

}  // namespace gfast::board

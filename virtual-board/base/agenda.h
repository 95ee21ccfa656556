// What the board will do later: ends of boots, changes of line states, events of a board file.
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

  // Seconds since power-up at the last advance. Within an action: the time at which it was due.
  double now() const { return now_; }

  // Enters an action. When its time has passed already, it runs at the next advance.
  Ticket at(double time, std::function<void()> action);
  Ticket after(double seconds, std::function<void()> action) { return at(now_ + seconds, std::move(action)); }

  // Removes the action if it has not run yet. The ticket becomes kNone.
  void cancel(Ticket& ticket);

  // When the next action is due; empty when there is none.
  std::optional<double> next() const;

  // Runs every action that is due by `now`, in the order of time and then of entry. Actions may enter and
  // cancel others.
  void advance(double now);

 private:
  using Slot = std::pair<double, Ticket>;
  std::map<Slot, std::function<void()>> actions_;
  std::map<Ticket, double> times_;
  Ticket last_ = kNone;
  double now_ = 0;
};

}  // namespace gfast::board

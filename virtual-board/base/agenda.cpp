#include "virtual-board/base/agenda.h"

#include <algorithm>

namespace gfast::board {

Agenda::Ticket Agenda::at(double time, std::function<void()> action) {
  const Ticket ticket = ++last_;
  actions_.emplace(Slot{time, ticket}, std::move(action));
  times_.emplace(ticket, time);
  return ticket;
}

void Agenda::cancel(Ticket& ticket) {
  if (const auto found = times_.find(ticket); found != times_.end()) {
    actions_.erase(Slot{found->second, ticket});
    times_.erase(found);
  }
  ticket = kNone;
}

std::optional<double> Agenda::next() const {
  if (actions_.empty()) {
    return std::nullopt;
  }
  return actions_.begin()->first.first;
}

void Agenda::advance(double now) {
  while (!actions_.empty() && actions_.begin()->first.first <= now) {
    auto due = actions_.extract(actions_.begin());
    times_.erase(due.key().second);
    now_ = std::max(now_, due.key().first);
    due.mapped()();
  }
  now_ = std::max(now_, now);
}

}  // namespace gfast::board

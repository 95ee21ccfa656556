// The pair of wires between two chips and what the link on it is doing.
//
// Both ends ready: 0.5 s of silence, a handshake of about 1.2 s, training of about 2.4 s, showtime. An
// orderly end takes 0.4 s; an end that loses the other notices after 1 s.
#pragma once

#include <array>
#include <cstdint>
#include <random>

#include "agenda.h"
#include "board_config.h"
#include "chip.h"

class CopperLine {
 public:
  CopperLine(Chip& first, Chip& second, Agenda& agenda, uint32_t seed);
  CopperLine(const CopperLine&) = delete;
  CopperLine& operator=(const CopperLine&) = delete;

  // The line as it is at power-up; nothing is announced.
  void powerUp(LineState state, bool cut);

  void setCut(bool cut);
  bool inShowtime() const { return phase_ == Phase::Showtime; }

 private:
  // What both ends do together. Leaving: an orderly end or the end after a loss; Losing: in showtime still,
  // but nothing arrives any more.
  enum class Phase { Apart, Handshake, Training, Showtime, Losing, Leaving };

  bool canMeet() const;
  LineState restState(const Chip& chip) const;
  void reconsider();
  void rest();
  void schedule(double seconds, Phase next);
  void enterPhase(Phase phase);
  void drawDurations();
  void trained();
  void trainingFailed();
  void leave(Chip& initiator);
  void lost();
  void setBoth(LineState state);

  std::array<Chip*, 2> ends_;
  Agenda& agenda_;
  std::mt19937 random_;
  Phase phase_ = Phase::Apart;
  bool cut_ = false;
  Agenda::Ticket step_ = Agenda::kNone;
  Agenda::Ticket search_ = Agenda::kNone;
  double handshake_s_ = 0;
  double training_s_ = 0;
};

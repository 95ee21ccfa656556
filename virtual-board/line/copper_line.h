// The pair of wires between two chips and what the link on it is doing.
//
// Both ends ready: 1 s of silence, a handshake of about 1.2 s, training of about 2.4 s, showtime. An
// orderly end takes 0.4 s; an end that loses the other notices after 1 s. What fails is tried again after
// 10 s.
#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <span>

#include "virtual-board/base/agenda.h"
#include "virtual-board/chip/chip.h"
#include "virtual-board/line/line_ledger.h"
#include "virtual-board/line/loop_budget.h"
#include "virtual-board/line/loop_config.h"

namespace gfast::board {

class CopperLine {
 public:
  CopperLine(Chip& first, Chip& second, Agenda& agenda, const LoopConfig& loop, uint32_t seed);
  CopperLine(const CopperLine&) = delete;
  CopperLine& operator=(const CopperLine&) = delete;

  // The line as it is at power-up; nothing is announced.
  void powerUp(LineState state);

  void setCut(bool cut);
  bool cut() const { return cut_; }
  // The share of what either end sends that arrives corrupted: a burst of noise, until it is 0 again.
  void setErrors(double share);
  // The end's power goes; if the other end hears its last gasp, it knows why the line went down.
  void losePower(size_t end);

  bool inShowtime() const { return phase_ == Phase::kShowtime; }
  // What the last training found; empty before the first.
  const LoopBudget& budget() const { return budget_; }
  // What the chip at that end knows of its line now.
  EndView view(size_t end) { return ledger_.view(agenda_.now(), end); }

 private:
  // What both ends do together. Leaving: an orderly end or the end after a loss; Losing: in showtime still,
  // but nothing arrives any more.
  enum class Phase { kApart, kHandshake, kTraining, kShowtime, kLosing, kLeaving };

  bool canMeet() const;
  TonePlan plan() const;
  void survey();
  bool trainable();
  LineState restState(const Chip& chip) const;
  void reconsider();
  void rest();
  void schedule(double seconds, Phase next);
  void enterPhase(Phase phase);
  void setPhase(Phase phase);
  void updateTraffic();
  void drawDurations();
  void trained();
  void trainingInterrupted();
  void trainingFailed();
  void initialisationFailed(size_t end, uint32_t cause);
  void nobodyFound();
  void leave(Chip& initiator);
  void lost(uint32_t reason, EndCounter counter);
  void fail(size_t end, uint32_t reason, EndCounter counter);
  void setState(Chip& chip, LineState state);
  void setBoth(LineState state);
  void logState(Chip& chip, LineState before);

  std::array<Chip*, 2> ends_;
  Agenda& agenda_;
  Loop loop_;
  TonePlan plan_;      // of the next training
  bool heard_ = true;  // whether the ends hear each other with it
  LoopBudget next_;    // what it finds
  LoopBudget budget_;
  LineLedger ledger_;
  std::mt19937 random_;
  Phase phase_ = Phase::kApart;
  bool cut_;
  double errors_ = 0;
  Agenda::Ticket step_ = Agenda::kNone;
  Agenda::Ticket search_ = Agenda::kNone;
  Agenda::Ticket rmcLoss_ = Agenda::kNone;
  double handshake_s_ = 0;
  double training_s_ = 0;
};

}  // namespace gfast::board

// The pair of wires between two chips, and the state of the link over it.
//
// When both ends are ready: 1 s of silence, a handshake of about 1.2 s, training of about 2.4 s, showtime. An
// orderly deactivation takes 0.4 s. A loss of signal is detected after 1 s. A failed initialisation is tried
// again after 10 s.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
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

  // Puts the line into its state at power-up, without events.
  void powerUp(LineState state);

  void setCut(bool cut);
  bool cut() const { return cut_; }
  // The pair as it is now.
  const Cable& cable() const { return loop_.cable(); }
  // From now on this share of what either end sends arrives corrupted; 0: the line is healthy.
  void setErrors(double share);
  // The end loses its power. In showtime it tells the other end, which then reports the loss of power.
  void losePower(size_t end);

  bool inShowtime() const { return phase_ == Phase::kShowtime; }
  // The result of the last successful training; empty before the first.
  const LoopBudget& budget() const { return budget_; }
  // What the chip at that end knows of its line.
  EndView view(size_t end) { return ledger_.view(agenda_.now(), end); }

 private:
  enum class Phase {
    kApart,  // each end waits for the other
    kHandshake,
    kTraining,
    kShowtime,
    kLosing,  // showtime, but nothing arrives
    kLeaving  // on the way down
  };

  bool canMeet() const;
  TonePlan plan() const;
  void survey();
  bool trainable();
  void watchLoop();
  void loopChanged();
  void measureLine();
  void awaitAdaptation();
  void adaptLine();
  bool adaptDirection(size_t sender);
  bool judgeMargins();
  DirectionBudget& budgetOf(size_t sender);
  const DirectionPlan& planOf(size_t sender) const;
  LineState restState(const Chip& chip) const;
  void reconsider();
  void rest();
  void schedule(double seconds, Phase next);
  void enterPhase(Phase phase);
  void setPhase(Phase phase);
  void updateTraffic();
  void endAfter(Agenda::Ticket& ticket, bool wrong, double patience_s, uint32_t reason, EndCounter counter);
  void drawDurations();
  void trained();
  void trainingInterrupted();
  void trainingFailed();
  void initialisationFailed(size_t end, uint32_t cause);
  void nobodyFound();
  void leave(Chip& initiator);
  void lost(uint32_t reason, EndCounter counter);
  void fail(size_t end, uint32_t reason, EndCounter counter);  // null: no counter has this failure
  void setState(Chip& chip, LineState state);
  void setBoth(LineState state);
  void logState(Chip& chip, LineState before);

  std::array<Chip*, 2> ends_;
  Agenda& agenda_;
  Loop loop_;
  TonePlan plan_;      // of the next training
  bool heard_ = true;  // whether the ends hear each other with that plan
  LoopBudget next_;    // the result of that training; empty until it is needed
  LoopBudget budget_;  // of the last training
  LineLedger ledger_;
  std::mt19937 random_;
  Phase phase_ = Phase::kApart;
  bool cut_;
  double errors_ = 0;
  Agenda::Ticket step_ = Agenda::kNone;
  Agenda::Ticket search_ = Agenda::kNone;
  std::array<ErrorRates, kEnds> noiseErrors_;  // that follow from the noise, by the end that sends
  double trainedLoss_db_ = 0;                  // of what arrived when the line was trained
  double quietSince_ = 0;                      // when the loop or a loading changed last
  std::optional<double> withoutMarginSince_;
  Agenda::Ticket watch_ = Agenda::kNone;
  Agenda::Ticket adaptation_ = Agenda::kNone;
  Agenda::Ticket rmcLoss_ = Agenda::kNone;
  Agenda::Ticket severeSeconds_ = Agenda::kNone;
  double handshake_s_ = 0;
  double training_s_ = 0;
};

}  // namespace gfast::board

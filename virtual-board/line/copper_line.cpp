#include "virtual-board/line/copper_line.h"

#include <gfast_api.h>

#include <algorithm>
#include <cmath>

#include "chip/init_failure_causes.h"
#include "chip/log_records.h"
#include "virtual-board/line/adaptation.h"

namespace gfast::board {

namespace {

constexpr double kSilence_s = 1.0;
constexpr double kHandshake_s = 1.2;
constexpr double kTraining_s = 2.4;
constexpr double kJitter = 0.1;          // of handshake and training, as a share to either side
constexpr double kDeactivating_s = 0.2;  // each of the two steps
constexpr double kLossDetection_s = 1.0;
// A ready end that hears nobody for this time reports that there is no far end.
constexpr double kSearch_s = 5.0;
// From one failure to the next attempt.
constexpr double kRetry_s = 10.0;
// How long an end waits before it reports the loss of the robust management channel.
constexpr double kRmcLossDetection_s = 2.5;
// More than ten severely errored seconds in a row, the usual threshold of ITU-T G.997.2 for an
// initialisation.
constexpr double kSevereSeconds_s = 11.1;
// How long an end goes on without any margin before it reports that loss.
constexpr double kMarginLossDetection_s = 10;
// A signal that is so much weaker than in training counts as lost.
constexpr double kSignalLost_db = 30;

uint32_t milliseconds(double seconds) {
  return static_cast<uint32_t>(std::lround(seconds * 1000));
}

}  // namespace

CopperLine::CopperLine(Chip& first, Chip& second, Agenda& agenda, const LoopConfig& loop, uint32_t seed)
    : ends_{&first, &second},
      agenda_(agenda),
      loop_(loop, seed),
      ledger_(seed),
      random_(seed),
      cut_(loop.cut) {
  for (size_t i = 0; i < ends_.size(); i++) {
    Chip* const end = ends_[i];
    end->attachLine({[this] { reconsider(); },
                     [this, end] {
                       if (phase_ == Phase::kShowtime) {
                         leave(*end);
                       }
                     },
                     [this, i] {
                       ledger_.restarted(agenda_.now(), i);
                       survey();
                     }});
  }
}

void CopperLine::powerUp(LineState state) {
  drawDurations();
  watchLoop();
  survey();
  for (Chip* end : ends_) {
    end->resetLineState(restState(*end));
  }
  if (canMeet() && state >= LineState::kHandshake && trainable()) {
    for (Chip* end : ends_) {
      end->resetLineState(state);
    }
    switch (state) {
      case LineState::kHandshake:
        phase_ = Phase::kHandshake;
        schedule(handshake_s_, Phase::kTraining);
        return;
      case LineState::kTraining:
        phase_ = Phase::kTraining;
        schedule(training_s_, Phase::kShowtime);
        return;
      default:
        trained();
        setPhase(Phase::kShowtime);
        return;
    }
  }
  reconsider();
}

void CopperLine::setCut(bool cut) {
  cut_ = cut;
  reconsider();
}

void CopperLine::setErrors(double share) {
  errors_ = share;
  if (phase_ == Phase::kShowtime) {
    updateTraffic();
  }
}

void CopperLine::losePower(size_t end) {
  Chip& other = *ends_[1 - end];
  if (phase_ == Phase::kShowtime && !cut_ && other.lineState() == LineState::kShowtime) {
    // The last thing that it tells.
    ledger_.count(end, &EndCounts::lossOfPowerFailures);
    setPhase(Phase::kLeaving);
    fail(1 - end, LF_REASON_LOSS_OF_POWER, &EndCounts::lossOfPowerFailures);
    schedule(kDeactivating_s, Phase::kApart);
  }
  ends_[end]->powerOff();
}

bool CopperLine::canMeet() const {
  // In showtime nobody asks whether a handshake would be understood.
  const bool up = phase_ == Phase::kShowtime || phase_ == Phase::kLosing;
  const bool arrives = up ? loop_.arrivingLoss_db(*budget_.plan) < trainedLoss_db_ + kSignalLost_db : heard_;
  return !cut_ && arrives && ends_[0]->lineWanted() && ends_[1]->lineWanted() &&
         ends_[0]->networkSide() != ends_[1]->networkSide();
}

TonePlan CopperLine::plan() const {
  const bool first = ends_[0]->networkSide();
  TonePlan plan = tonePlan(ends_[first ? 0 : 1]->parameters(), ends_[first ? 1 : 0]->parameters(),
                           loop_.limits(), loop_.electricalLength_db(false));
  plan.networkEnd = first ? 0 : 1;
  return plan;
}

// Makes the plan of the next training. On the same loop the same plan gives the same result.
void CopperLine::survey() {
  if (TonePlan now = plan(); now != plan_) {
    plan_ = std::move(now);
    heard_ = loop_.heard(plan_);
    next_ = {};
  }
}

bool CopperLine::trainable() {
  if (next_.plan == nullptr) {
    next_ = loop_.budget(plan_);
  }
  return next_.trainable;
}

void CopperLine::watchLoop() {
  agenda_.cancel(watch_);
  if (const auto next = loop_.nextChange(agenda_.now())) {
    watch_ = agenda_.at(*next, [this] {
      watch_ = Agenda::kNone;
      loopChanged();
      watchLoop();
    });
  }
}

void CopperLine::loopChanged() {
  const size_t neighbours = loop_.vectoredNeighbours();
  if (!loop_.passTo(agenda_.now())) {
    return;
  }
  // What is sent through the new precoder has other gains (ITU-T G.9701, transmitter-initiated gain
  // adjustment).
  if (phase_ == Phase::kShowtime && budget_.plan->vectoring && loop_.vectoredNeighbours() != neighbours) {
    for (size_t end = 0; end < kEnds; end++) {
      ledger_.count(end, &EndCounts::gainAdjustments);
    }
  }
  next_ = {};
  heard_ = loop_.heard(plan_);
  if (phase_ == Phase::kShowtime || phase_ == Phase::kLosing) {
    measureLine();
  }
  reconsider();
}

DirectionBudget& CopperLine::budgetOf(size_t sender) {
  return sender == budget_.plan->networkEnd ? budget_.downstream : budget_.upstream;
}

const DirectionPlan& CopperLine::planOf(size_t sender) const {
  return sender == budget_.plan->networkEnd ? budget_.plan->downstream : budget_.plan->upstream;
}

// Both receivers measure the line as it is now. What they find wrong they change from a second later on.
void CopperLine::measureLine() {
  loop_.measure(budget_);
  quietSince_ = agenda_.now();
  noiseErrors_ = loop_.impulses(budget_);
  for (size_t sender = 0; sender < kEnds; sender++) {
    const DirectionBudget& direction = budgetOf(sender);
    noiseErrors_[sender].add(lastingErrors(*direction.spectrum, *direction.loading, planOf(sender).dtu,
                                           direction.state.rmcMargin));
  }
  updateTraffic();
  awaitAdaptation();
}

void CopperLine::awaitAdaptation() {
  if (adaptation_ == Agenda::kNone) {
    adaptation_ = agenda_.after(kAdaptationPeriod_s, [this] {
      adaptation_ = Agenda::kNone;
      adaptLine();
    });
  }
}

// Once a second until nothing is left to change.
void CopperLine::adaptLine() {
  if (phase_ == Phase::kLosing) {
    awaitAdaptation();  // the signal may come back
  }
  if (phase_ != Phase::kShowtime) {
    return;
  }
  bool again = false;
  bool changed = false;
  for (size_t sender = 0; sender < kEnds; sender++) {
    changed = adaptDirection(sender) || changed;
    again = again || mayRise(budgetOf(sender), planOf(sender));
  }
  if (changed) {
    measureLine();
  }
  if (!judgeMargins()) {
    return;
  }
  if (again || withoutMarginSince_) {
    awaitAdaptation();
  }
}

bool CopperLine::adaptDirection(size_t sender) {
  DirectionBudget& direction = budgetOf(sender);
  const Adaptation adaptation =
      adapt(direction, planOf(sender), noiseErrors_[sender].corrupted, agenda_.now() - quietSince_);
  if (!adaptation) {
    return false;
  }
  direction.load(adaptation.loading, planOf(sender));
  ledger_.adapted(sender, adaptation.kind, adaptation.exchanges);
  return true;
}

// False: the line went down because a receiver had no margin for too long.
bool CopperLine::judgeMargins() {
  const bool without = std::any_of(ends_.begin(), ends_.end(), [this](const Chip* end) {
    return budgetOf(end == ends_[0] ? 1 : 0).state.margin < 0;
  });
  if (!without) {
    withoutMarginSince_.reset();
    return true;
  }
  withoutMarginSince_ = withoutMarginSince_.value_or(agenda_.now());
  if (agenda_.now() - *withoutMarginSince_ < kMarginLossDetection_s) {
    return true;
  }
  lost(LF_REASON_LOSS_OF_MARGIN, &EndCounts::lossOfMarginFailures);
  return false;
}

LineState CopperLine::restState(const Chip& chip) const {
  if (!chip.running() || chip.stage() != Stage::kApp) {
    return LineState::kSelfTest;
  }
  return chip.lineWanted() ? LineState::kSilent : LineState::kIdle;
}

// Called when a condition has changed on which the state of the line depends.
void CopperLine::reconsider() {
  const bool meet = canMeet();
  switch (phase_) {
    case Phase::kApart:
      rest();
      break;
    case Phase::kHandshake:
    case Phase::kTraining:
      if (!meet) {
        trainingInterrupted();
      }
      break;
    case Phase::kShowtime:
      if (meet) {
        break;
      }
      for (Chip* end : ends_) {
        if (end->running() && end->stage() == Stage::kApp && !end->lineWanted() && !cut_) {
          leave(*end);
          return;
        }
      }
      setPhase(Phase::kLosing);
      agenda_.cancel(step_);
      step_ = agenda_.after(kLossDetection_s,
                            [this] { lost(LF_REASON_LOSS_OF_SIGNAL, &EndCounts::lossOfSignalFailures); });
      break;
    case Phase::kLosing:
      if (meet && ends_[0]->lineState() == LineState::kShowtime &&
          ends_[1]->lineState() == LineState::kShowtime) {
        agenda_.cancel(step_);
        setPhase(Phase::kShowtime);
      }
      break;
    case Phase::kLeaving:
      break;
  }
}

// Each end waits in its own state. Two ends that hear each other begin an initialisation.
void CopperLine::rest() {
  bool searching = false;
  for (Chip* end : ends_) {
    const LineState state = restState(*end);
    if (end->running()) {
      setState(*end, state);
    }
    searching = searching || state == LineState::kSilent;
  }
  const bool meet = canMeet();
  if (!meet) {
    agenda_.cancel(step_);
  } else if (step_ == Agenda::kNone) {
    schedule(kSilence_s, Phase::kHandshake);
  }
  if (meet || !searching) {
    agenda_.cancel(search_);
  } else if (search_ == Agenda::kNone) {
    search_ = agenda_.after(kSearch_s, [this] { nobodyFound(); });
  }
}

void CopperLine::nobodyFound() {
  for (size_t i = 0; i < ends_.size(); i++) {
    if (ends_[i]->lineState() == LineState::kSilent) {
      initialisationFailed(i, E_INITSFCAUSE_NO_FAR_END_FTU_DETECTED);
    }
  }
  search_ = agenda_.after(kRetry_s, [this] { nobodyFound(); });
}

void CopperLine::schedule(double seconds, Phase next) {
  agenda_.cancel(step_);
  step_ = agenda_.after(seconds, [this, next] {
    step_ = Agenda::kNone;
    enterPhase(next);
  });
}

void CopperLine::setPhase(Phase phase) {
  phase_ = phase;
  updateTraffic();
}

// Ends showtime when what is wrong lasts longer than this.
void CopperLine::endAfter(Agenda::Ticket& ticket, bool wrong, double patience_s, uint32_t reason,
                          EndCounter counter) {
  if (!wrong) {
    agenda_.cancel(ticket);
  } else if (ticket == Agenda::kNone) {
    ticket = agenda_.after(patience_s, [this, &ticket, reason, counter] {
      ticket = Agenda::kNone;
      lost(reason, counter);
    });
  }
}

// Tells the ledger whether data flows and a signal arrives.
void CopperLine::updateTraffic() {
  const double now = agenda_.now();
  const bool flows = phase_ == Phase::kShowtime || phase_ == Phase::kLosing;
  const ErrorRates burst = burstErrors(phase_ == Phase::kLosing ? 1 : errors_);
  std::array<ErrorRates, kEnds> errors{burst, burst};
  if (flows) {
    std::array<StreamFraming, kEnds> framing;
    for (size_t i = 0; i < kEnds; i++) {
      framing[i] = budgetOf(i).framing;
      errors[i].add(noiseErrors_[i]);
    }
    ledger_.flow(now, framing, errors);
  } else {
    ledger_.stop(now);
  }
  const bool up = phase_ == Phase::kShowtime;
  endAfter(rmcLoss_, up && (errors[0].rmcLost || errors[1].rmcLost), kRmcLossDetection_s,
           LF_REASON_LOSS_OF_RMC, &EndCounts::lossOfRmcFailures);
  endAfter(severeSeconds_, up && ledger_.severelyErrored(), kSevereSeconds_s,
           LF_REASON_SEVERELY_ERRORED_SECONDS, nullptr);
  if (phase_ == Phase::kLosing) {
    ledger_.signalLost(now, true);
  } else if (phase_ == Phase::kShowtime || phase_ == Phase::kHandshake) {
    ledger_.signalLost(now, false);
  }
}

void CopperLine::enterPhase(Phase phase) {
  if (phase == Phase::kShowtime) {
    // The loop may have changed during training.
    if (!trainable()) {
      trainingFailed();
      return;
    }
    trained();
  }
  setPhase(phase);
  switch (phase) {
    case Phase::kHandshake:
      survey();
      drawDurations();
      setBoth(LineState::kHandshake);
      schedule(handshake_s_, Phase::kTraining);
      break;
    case Phase::kTraining:
      setBoth(LineState::kTraining);
      if (trainable()) {
        schedule(training_s_, Phase::kShowtime);
      } else {
        agenda_.cancel(step_);
        step_ = agenda_.after(training_s_, [this] { trainingFailed(); });
      }
      break;
    case Phase::kShowtime:
      setBoth(LineState::kShowtime);
      break;
    default:
      rest();
      break;
  }
}

void CopperLine::drawDurations() {
  // Without std::uniform_real_distribution, whose draws differ from one standard library to another.
  const auto draw = [this](double usual) {
    const double unit = static_cast<double>(random_()) / static_cast<double>(std::mt19937::max());
    return usual * (1 + kJitter * (2 * unit - 1));
  };
  handshake_s_ = draw(kHandshake_s);
  training_s_ = draw(kTraining_s);
}

void CopperLine::trained() {
  budget_ = next_;
  noiseErrors_ = loop_.impulses(budget_);
  trainedLoss_db_ = loop_.arrivingLoss_db(plan_);
  withoutMarginSince_.reset();
  quietSince_ = agenda_.now();
  agenda_.cancel(adaptation_);
  for (size_t i = 0; i < ends_.size(); i++) {
    ends_[i]->setInitialisation(milliseconds(handshake_s_ + training_s_), milliseconds(handshake_s_),
                                E_INITSFCAUSE_SUCCESSS);
    ledger_.count(i, &EndCounts::initialisations);
  }
}

void CopperLine::initialisationFailed(size_t end, uint32_t cause) {
  ends_[end]->setInitialisation(0, 0, cause);
  ledger_.count(end, &EndCounts::initialisations);
  ledger_.count(end, &EndCounts::failedInitialisations);
  const uint32_t params[] = {cause};
  ends_[end]->log(CP_CORE, "initialisation failed, cause %u", params);
}

void CopperLine::trainingInterrupted() {
  for (size_t i = 0; i < ends_.size(); i++) {
    if (ends_[i]->running()) {
      initialisationFailed(i, E_INITSFCAUSE_COMM_PROBLEM);
    }
  }
  setPhase(Phase::kApart);
  agenda_.cancel(step_);
  rest();
}

// The loop carries too little. Both ends report it and try again later.
void CopperLine::trainingFailed() {
  step_ = Agenda::kNone;
  setPhase(Phase::kApart);
  for (size_t i = 0; i < ends_.size(); i++) {
    const uint32_t params[] = {LF_REASON_INIT_SF_FAILURE, 0};
    ends_[i]->raiseEvent(EVENT_TYPE_LINE_FAILURE, params);
    initialisationFailed(i, E_INITSFCAUSE_CONFIG_NOT_FEASIBLE);
  }
  rest();
  schedule(kRetry_s, Phase::kHandshake);
}

// An orderly deactivation: the initiator tells the other end, and both stop together.
void CopperLine::leave(Chip& initiator) {
  setPhase(Phase::kLeaving);
  for (Chip* end : ends_) {
    if (end->lineState() == LineState::kShowtime) {
      setState(*end, end == &initiator ? LineState::kDeactivating1 : LineState::kPreDeactivating1E);
    }
  }
  agenda_.cancel(step_);
  step_ = agenda_.after(kDeactivating_s, [this] {
    for (Chip* end : ends_) {
      if (end->lineState() == LineState::kDeactivating1 ||
          end->lineState() == LineState::kPreDeactivating1E) {
        setState(*end, LineState::kDeactivating2);
      }
    }
    schedule(kDeactivating_s, Phase::kApart);
  });
}

// Each end that is still in showtime reports the loss and goes down.
void CopperLine::lost(uint32_t reason, EndCounter counter) {
  setPhase(Phase::kLeaving);
  for (size_t i = 0; i < ends_.size(); i++) {
    if (ends_[i]->lineState() == LineState::kShowtime) {
      fail(i, reason, counter);
    }
  }
  schedule(kDeactivating_s, Phase::kApart);
}

void CopperLine::fail(size_t end, uint32_t reason, EndCounter counter) {
  ledger_.fail(end, counter);
  const uint32_t params[] = {reason, 0};
  ends_[end]->raiseEvent(EVENT_TYPE_LINE_FAILURE, params);
  ends_[end]->log(FRAMER_CORE, "line failure %u on link %u", params);
  setState(*ends_[end], LineState::kDeactivating1);
}

void CopperLine::setState(Chip& chip, LineState state) {
  const LineState before = chip.lineState();
  if (state != before) {
    chip.setLineState(state);
    logState(chip, before);
  }
}

void CopperLine::setBoth(LineState state) {
  for (Chip* end : ends_) {
    setState(*end, state);
  }
}

// The control processor logs every change, the other cores those that concern them.
void CopperLine::logState(Chip& chip, LineState before) {
  const LineState state = chip.lineState();
  const uint32_t change[] = {0, static_cast<uint32_t>(before), static_cast<uint32_t>(state)};
  chip.log(CP_CORE, "link %u: state %u to %u", change);
  if (state == LineState::kTraining) {
    const uint32_t tones[] = {kFirstTone, kLastTone};
    chip.log(FDU_CORE, "training on tones %u to %u", tones);
  } else if (state == LineState::kShowtime) {
    const EndView view = ledger_.view(agenda_.now(), &chip == ends_[0] ? 0 : 1);
    const uint32_t rates[] = {streamRates(view.sends.framing).net, streamRates(view.receives.framing).net};
    chip.log(FRAMER_CORE, "showtime: sends %u kbit/s, receives %u kbit/s", rates);
  }
}

}  // namespace gfast::board

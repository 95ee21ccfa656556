#include "copper_line.h"

#include <gfast_api.h>

#include <cmath>

namespace {

constexpr double kSilence_s = 0.5;
constexpr double kHandshake_s = 1.2;
constexpr double kTraining_s = 2.4;
constexpr double kJitter = 0.1;          // of a training's durations, to either side
constexpr double kDeactivating_s = 0.2;  // each of the two steps
constexpr double kLossDetection_s = 1.0;
// A ready end that hears nobody for so long reports that no far end was detected.
constexpr double kSearch_s = 5.0;

// Initialisation success/failure causes (ITU-T G.997.2 clause 7.20.1.1).
constexpr uint32_t kInitSuccess = 0;
constexpr uint32_t kInitCommunicationProblem = 3;
constexpr uint32_t kInitNoFarEnd = 4;

uint32_t milliseconds(double seconds) {
  return static_cast<uint32_t>(std::lround(seconds * 1000));
}

}  // namespace

CopperLine::CopperLine(Chip& first, Chip& second, Agenda& agenda, uint32_t seed)
    : ends_{&first, &second}, agenda_(agenda), random_(seed) {
  for (Chip* end : ends_) {
    end->attachLine({[this] { reconsider(); },
                     [this, end] {
                       if (phase_ == Phase::Showtime) {
                         leave(*end);
                       }
                     }});
  }
}

void CopperLine::powerUp(LineState state, bool cut) {
  cut_ = cut;
  drawDurations();
  for (Chip* end : ends_) {
    end->resetLineState(restState(*end));
  }
  if (canMeet() && state >= LineState::Handshake) {
    for (Chip* end : ends_) {
      end->resetLineState(state);
    }
    switch (state) {
      case LineState::Handshake:
        phase_ = Phase::Handshake;
        schedule(handshake_s_, Phase::Training);
        return;
      case LineState::Training:
        phase_ = Phase::Training;
        schedule(training_s_, Phase::Showtime);
        return;
      default:
        phase_ = Phase::Showtime;
        trained();
        return;
    }
  }
  reconsider();
}

void CopperLine::setCut(bool cut) {
  cut_ = cut;
  reconsider();
}

bool CopperLine::canMeet() const {
  return !cut_ && ends_[0]->lineWanted() && ends_[1]->lineWanted() &&
         ends_[0]->networkSide() != ends_[1]->networkSide();
}

LineState CopperLine::restState(const Chip& chip) const {
  if (!chip.running() || chip.stage() != Stage::App) {
    return LineState::SelfTest;
  }
  return chip.lineWanted() ? LineState::Silent : LineState::Idle;
}

// One of the conditions that decide about the line has changed.
void CopperLine::reconsider() {
  const bool meet = canMeet();
  switch (phase_) {
    case Phase::Apart:
      rest();
      break;
    case Phase::Handshake:
    case Phase::Training:
      if (!meet) {
        trainingFailed();
      }
      break;
    case Phase::Showtime:
      if (meet) {
        break;
      }
      for (Chip* end : ends_) {
        if (end->running() && end->stage() == Stage::App && !end->lineWanted() && !cut_) {
          leave(*end);
          return;
        }
      }
      phase_ = Phase::Losing;
      agenda_.cancel(step_);
      step_ = agenda_.after(kLossDetection_s, [this] { lost(); });
      break;
    case Phase::Losing:
      if (meet && ends_[0]->lineState() == LineState::Showtime &&
          ends_[1]->lineState() == LineState::Showtime) {
        agenda_.cancel(step_);
        phase_ = Phase::Showtime;
      }
      break;
    case Phase::Leaving:
      break;
  }
}

// Apart: every end waits where its own state puts it, and two that can hear each other start to talk.
void CopperLine::rest() {
  bool searching = false;
  for (Chip* end : ends_) {
    const LineState state = restState(*end);
    if (end->running()) {
      end->setLineState(state);
    }
    searching = searching || state == LineState::Silent;
  }
  const bool meet = canMeet();
  if (!meet) {
    agenda_.cancel(step_);
  } else if (step_ == Agenda::kNone) {
    schedule(kSilence_s, Phase::Handshake);
  }
  if (meet || !searching) {
    agenda_.cancel(search_);
  } else if (search_ == Agenda::kNone) {
    search_ = agenda_.after(kSearch_s, [this] {
      search_ = Agenda::kNone;
      for (Chip* end : ends_) {
        if (end->lineState() == LineState::Silent) {
          end->setInitialisation(0, 0, kInitNoFarEnd);
        }
      }
    });
  }
}

void CopperLine::schedule(double seconds, Phase next) {
  agenda_.cancel(step_);
  step_ = agenda_.after(seconds, [this, next] {
    step_ = Agenda::kNone;
    enterPhase(next);
  });
}

void CopperLine::enterPhase(Phase phase) {
  phase_ = phase;
  switch (phase) {
    case Phase::Handshake:
      drawDurations();
      setBoth(LineState::Handshake);
      schedule(handshake_s_, Phase::Training);
      break;
    case Phase::Training:
      setBoth(LineState::Training);
      schedule(training_s_, Phase::Showtime);
      break;
    case Phase::Showtime:
      trained();
      setBoth(LineState::Showtime);
      break;
    default:
      rest();
      break;
  }
}

void CopperLine::drawDurations() {
  // Not std::uniform_real_distribution: the same seed must give the same draw with every standard library.
  const auto draw = [this](double usual) {
    const double unit = static_cast<double>(random_()) / static_cast<double>(std::mt19937::max());
    return usual * (1 + kJitter * (2 * unit - 1));
  };
  handshake_s_ = draw(kHandshake_s);
  training_s_ = draw(kTraining_s);
}

void CopperLine::trained() {
  for (Chip* end : ends_) {
    end->setInitialisation(milliseconds(handshake_s_ + training_s_), milliseconds(handshake_s_),
                           kInitSuccess);
  }
}

void CopperLine::trainingFailed() {
  for (Chip* end : ends_) {
    if (end->running()) {
      end->setInitialisation(0, 0, kInitCommunicationProblem);
    }
  }
  phase_ = Phase::Apart;
  agenda_.cancel(step_);
  rest();
}

// The end that wants out tells the other; both fall silent together.
void CopperLine::leave(Chip& initiator) {
  phase_ = Phase::Leaving;
  for (Chip* end : ends_) {
    if (end->lineState() == LineState::Showtime) {
      end->setLineState(end == &initiator ? LineState::Deactivating1 : LineState::PreDeactivating1E);
    }
  }
  agenda_.cancel(step_);
  step_ = agenda_.after(kDeactivating_s, [this] {
    for (Chip* end : ends_) {
      if (end->lineState() == LineState::Deactivating1 || end->lineState() == LineState::PreDeactivating1E) {
        end->setLineState(LineState::Deactivating2);
      }
    }
    schedule(kDeactivating_s, Phase::Apart);
  });
}

// Nothing arrives any more: those still in showtime report it and go down by themselves.
void CopperLine::lost() {
  phase_ = Phase::Leaving;
  for (Chip* end : ends_) {
    if (end->lineState() == LineState::Showtime) {
      const uint32_t params[] = {LF_REASON_LOSS_OF_SIGNAL, 0};
      end->raiseEvent(EVENT_TYPE_LINE_FAILURE, params);
      end->setLineState(LineState::Deactivating1);
    }
  }
  schedule(kDeactivating_s, Phase::Apart);
}

void CopperLine::setBoth(LineState state) {
  for (Chip* end : ends_) {
    end->setLineState(state);
  }
}

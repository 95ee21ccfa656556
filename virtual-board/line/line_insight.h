// What a chip knows of its line at one moment.
#pragma once

#include "virtual-board/line/line_ledger.h"
#include "virtual-board/line/loop_budget.h"

namespace gfast::board {

struct LineInsight {
  EndView view;
  LoopBudget loop;  // of the last successful training
  bool networkSide = false;

  bool everTrained() const { return view.sends.framing.symbolsPerFrame != 0; }
  const DirectionBudget& sends() const { return networkSide ? loop.downstream : loop.upstream; }
  const DirectionBudget& receives() const { return networkSide ? loop.upstream : loop.downstream; }
  const DirectionPlan& sendPlan() const { return networkSide ? loop.plan->downstream : loop.plan->upstream; }
  const DirectionPlan& receivePlan() const {
    return networkSide ? loop.plan->upstream : loop.plan->downstream;
  }
};

}  // namespace gfast::board

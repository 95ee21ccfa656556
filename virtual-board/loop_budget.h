// What a loop lets through: the one place where a line's rates come from.
//
// A loop counts as so many metres of CAD55 with the usual noise as lose as much at 50 MHz: other wire types
// by their loss, a bridged tap with its own length, a decibel of noise more than usual as six metres more.
// The net rate of both directions together falls along a fixed line from there.
#pragma once

#include <cstdint>

#include "board_config.h"

struct LoopBudget {
  double equivalent_m = 0;
  bool heard = false;      // the ends understand each other's handshake
  bool trainable = false;  // and the loop carries enough to be worth a showtime
  // Data bytes a symbol carries (ITU-T G.9701 B_D); 0 on a loop that cannot be trained.
  uint32_t downstreamBytes = 0;
  uint32_t upstreamBytes = 0;
  // Noise margin, 0.1 dB; electrical length, 0.1 dB at 1 MHz; power sent and received, 0.1 dBm.
  uint32_t margin = 0;
  uint32_t electricalLength = 0;
  int32_t powerSent = 0;
  int32_t powerReceived = 0;
};

LoopBudget loopBudget(const LoopConfig& loop);

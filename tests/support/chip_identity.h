// What a chip answers about itself: boot register, device-information image, boot-stage registers.
#pragma once

#include <qvr.h>

#include "support/driver_script.h"

using namespace gfast;

struct ChipIdentity {
  ChipIdentity();
  void setWord(size_t infoOffset, uint32_t value);
  void setLinkState(G9701_linkState_t state);

  uint32_t sbr = 0x01800000;  // application firmware
  Bytes info;                 // DEV_INF_SIZE bytes
  Bytes b0Regs;               // B0_REGS_SIZE bytes
};

Script readsIdentity(int device, const ChipIdentity& chip);

// A chip whose only line is in this state.
ChipIdentity chipWithLine(G9701_linkState_t state);

// The library asks whether the device's line is up, and it is.
Script findsLineUp(int device);

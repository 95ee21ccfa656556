// The boot register of a chip: the stage it tells, and the requests of a reboot.
#pragma once

#include "chip/boot_register.h"
#include "support/chip_identity.h"

using namespace gfast;

constexpr uint32_t kInB0 = 0x00800000;
constexpr uint32_t kInB1 = 0x01000000;
constexpr uint32_t kInApp = 0x01800000;

inline ChipIdentity chipWithBootRegister(uint32_t sbr, G9701_linkState_t line = LS_IDLE) {
  ChipIdentity chip = chipWithLine(line);
  chip.sbr = sbr;
  return chip;
}

// The stage is written into the boot register, then the chip is reset.
inline Script reboots(int device, uint32_t before, uint32_t after) {
  return readsWord(device, SBR_REG_ADDRESS, before) + writesWord(device, SBR_REG_ADDRESS, after) +
         writesWord(device, 0xE0000018, 0) + writesWord(device, 0xE0000014, 0x80000000);
}

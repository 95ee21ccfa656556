#include "support/chip_identity.h"

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/registers.h"
#include "std/byte_order.h"

using namespace gfast;

ChipIdentity::ChipIdentity() : info(DEV_INF_SIZE), b0Regs(B0_REGS_SIZE) {
  setLinkState(LS_IDLE);
}

void ChipIdentity::setWord(size_t infoOffset, uint32_t value) {
  store_le32(&info[infoOffset], value);
}

void ChipIdentity::setLinkState(G9701_linkState_t state) {
  store_le32(&b0Regs[B0_REGS_LINK_STATES], state);
}

Script readsIdentity(int device, const ChipIdentity& chip) {
  return readsWord(device, SBR_REG_ADDRESS, chip.sbr) + reads(device, VIRT_ADDR_DEVICE_INFO_READ, chip.info) +
         reads(device, VIRT_ADDR_B0_REGS, chip.b0Regs);
}

ChipIdentity chipWithLine(G9701_linkState_t state) {
  ChipIdentity chip;
  chip.setLinkState(state);
  return chip;
}

Script findsLineUp(int device) {
  return readsIdentity(device, chipWithLine(LS_SHOWTIME));
}

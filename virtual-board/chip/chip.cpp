#include "virtual-board/chip/chip.h"

#include <gfast_api.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/flash_layout.h"
#include "chip/log_records.h"
#include "chip/registers.h"
#include "std/bits.h"
#include "std/byte_order.h"

namespace gfast::board {

namespace {

// From the write to the reset register until the chip answers again, by the stage that runs then.
constexpr double kBootTimeB0_s = 0.3;
constexpr double kBootTimeB1_s = 0.7;
constexpr double kBootTimeApp_s = 1.2;
// From the write to the user-activation register until the chip is in line state.
constexpr double kUserActivationTime_s = 0.4;

constexpr uint32_t kPllMuxAtPowerUp = 1;
constexpr std::string_view kFactoryBuilt = "2017-03-30T21:49:22";

constexpr uint32_t bit(uint32_t offset) {
  return 1U << offset;
}
constexpr uint32_t kFwStateMask = MASK(SBR_FW_STATE);
// Of both reset counters.
constexpr uint32_t kMaxResetCounter = (1U << SBR_RESET_COUNTER_SIZE) - 1;
static_assert(SBR_BOOT_RESET_COUNTER_SIZE == SBR_RESET_COUNTER_SIZE);
constexpr uint32_t kConfigurationState = bit(SBR_USER_ACTIVATION_STATE_OFFSET);

double bootTime(Stage stage) {
  switch (stage) {
    case Stage::kB0:
      return kBootTimeB0_s;
    case Stage::kB1:
      return kBootTimeB1_s;
    default:
      return kBootTimeApp_s;
  }
}

// Counts up to the highest value and stays there.
uint32_t countedUp(uint32_t sbr, uint32_t offset) {
  const uint32_t count = (sbr >> offset) & kMaxResetCounter;
  return (sbr & ~(kMaxResetCounter << offset)) | (std::min(count + 1, kMaxResetCounter) << offset);
}

// Bytes in place of machine code: pseudo-random, the same on every board.
Bytes factoryPayload(size_t length, uint32_t seed) {
  Bytes payload(length);
  uint32_t state = seed;
  for (uint8_t& byte : payload) {
    state = state * 1664525U + 1013904223U;
    byte = static_cast<uint8_t>(state >> 24);
  }
  return payload;
}

uint32_t sbrAtPowerUp(Stage boot) {
  switch (boot) {
    case Stage::kB0:
      return bit(SBR_DISABLE_FLASH_OFFSET);
    case Stage::kB1:
      return bit(SBR_DISABLE_FLASH_OVERRIDE_OFFSET);
    default:
      return 0;
  }
}

Bytes word(uint32_t value) {
  Bytes bytes(4);
  store_le32(bytes.data(), value);
  return bytes;
}

// Of the version, the ROM knows only the chipset.
Firmware romFirmware(uint8_t chipset) {
  return {{chipset, 1, 0, 0}, "Sep 14 2015", "08:30:00"};
}

}  // namespace

Chip::Chip(const ChipConfig& config, Agenda& agenda)
    : config_(config), agenda_(agenda), parameters_(config_.params), inventory_(config_), extcom_(agenda_) {
  constexpr size_t bootloaderSize = 24000;
  constexpr size_t applicationSize = 100000;
  constexpr size_t manufacturerSize = 1024;
  if (config.bootloaderInFlash) {
    flash_.program(FLASH_BOOTLOADER_START,
                   makeFirmware(FirmwareKind::kBootloader, {config.firmware.chipset, 2, 1, 0}, kFactoryBuilt,
                                factoryPayload(bootloaderSize, 1)));
  }
  if (config.manufacturerInFlash) {
    flash_.program(FLASH_MANUFACTURER_BLOCK_START, factoryPayload(manufacturerSize, 2));
  }
  if (config.applicationInFlash) {
    flash_.program(FLASH_APP_FIRMWARE_START, makeFirmware(FirmwareKind::kApplication, config.firmware,
                                                          kFactoryBuilt, factoryPayload(applicationSize, 3)));
  }
  identity_.mac = config.mac;
  identity_.temperature_c = config.temperature_c;
  sbr_ = sbrAtPowerUp(config.boot);
  lineProvisioned_ = config.line != LineState::kIdle;
  mapRegisters();
  mapIdentity();
  mapParameters();
  extcom_.map(memory_);
  enter(selectedStage());
}

int Chip::read(uint32_t address, std::span<uint8_t> out) {
  if (const int error = unreachable(); error != 0) {
    return error;
  }
  memory_.read(address, out);
  return 0;
}

int Chip::write(uint32_t address, std::span<const uint8_t> bytes) {
  const int error = unreachable();
  return error != 0 ? error : memory_.write(address, bytes);
}

int Chip::download(std::span<const uint8_t> image) {
  if (const int error = unreachable(); error != 0) {
    return error;
  }
  if (stage_ != Stage::kB0) {
    return EBUSY;
  }
  downloaded_.assign(image.begin(), image.end());
  return 0;
}

int Chip::activate(uint32_t address) {
  if (const int error = unreachable(); error != 0) {
    return error;
  }
  if (stage_ != Stage::kB0) {
    return EBUSY;
  }
  if (address != ROM_DEFAULT_ENTRY_POINT) {
    return EFAULT;
  }
  const auto firmware = parseFirmware(downloaded_, FirmwareKind::kBootloader);
  if (!firmware) {
    return ENOEXEC;
  }
  downloaded_.clear();
  identity_.firmware = *firmware;
  setFwState(Stage::kB1);
  return 0;
}

int Chip::eraseFlash(uint16_t type, uint32_t address) {
  const int error = unreachable();
  return error != 0 ? error : flash_.erase(type, address);
}

int Chip::programFlash(uint32_t address, std::span<const uint8_t> image) {
  const int error = unreachable();
  return error != 0 ? error : flash_.program(address, image);
}

int Chip::readFlash(uint32_t address, std::span<uint8_t> out) const {
  const int error = unreachable();
  return error != 0 ? error : flash_.read(address, out);
}

int Chip::unreachable() const {
  if (inReset_) {
    return EIO;
  }
  return hung_ ? ETIMEDOUT : 0;
}

bool Chip::lineWanted() const {
  return running() && stage_ == Stage::kApp && (sbr_ & kConfigurationState) == 0 && lineProvisioned_;
}

void Chip::setLineState(LineState state) {
  if (state == identity_.lineState) {
    return;
  }
  const uint32_t params[] = {static_cast<uint32_t>(identity_.lineState), static_cast<uint32_t>(state)};
  resetLineState(state);
  raiseEvent(EVENT_TYPE_LINKS_STATUS_CHANGED, params);
}

void Chip::resetLineState(LineState state) {
  identity_.lineState = state;
  identity_.initialisation.entered(state, agenda_.now());
  if (state == LineState::kShowtime && introduce_) {
    introduce_();
  }
}

void Chip::setInitialisation(uint32_t startup_ms, uint32_t handshake_ms, uint32_t failureCause) {
  identity_.initialisation.ended(startup_ms, handshake_ms, failureCause, networkSide(), agenda_.now());
}

void Chip::raiseEvent(uint32_t type, std::span<const uint32_t> params) {
  pending_.raiseEvent(agenda_.now(), type, params);
}

void Chip::log(uint8_t core, std::string_view text, std::span<const uint32_t> params) {
  if (running()) {
    say(core, text, params);
  }
}

void Chip::say(uint8_t core, std::string_view text, std::span<const uint32_t> params) {
  if (pending_.logsEnabled()) {
    pending_.raiseLog(core, 0, std::string(text) + '\n', params);
  }
}

void Chip::crash(const Assertion& assertion) {
  static constexpr uint8_t cores[] = {FRAMER_CORE, FDU_CORE, CP_CORE};  // by Processor
  if (inReset_ || stage_ != Stage::kApp) {
    return;
  }
  assertions_.add(assertion);
  const uint32_t params[] = {assertion.id, assertion.symbolCounter};
  say(cores[static_cast<size_t>(assertion.processor)], "assertion %u failed at symbol %u", params);
  if (crashed_) {
    return;
  }
  crashed_ = true;
  if (identity_.lineState != LineState::kIdle) {
    const uint32_t failure[] = {LF_REASON_QUELVOR_PROPRIETARY, 0};
    raiseEvent(EVENT_TYPE_LINE_FAILURE, failure);
  }
  setLineState(LineState::kUnitFail);
  lineConditionsChanged();
}

void Chip::mapRegisters() {
  const auto zero = [] { return word(0); };
  memory_.write(PLL_MUX_REG_ADDRESS, word(kPllMuxAtPowerUp));
  memory_.add({SBR_REG_ADDRESS,
               4,
               [this] { return word(sbr_); },
               [this](const Bytes& bytes) { sbrWritten(load_le32(bytes.data())); },
               {}});
  memory_.add({RESET_REG_ADDRESS,
               4,
               zero,
               [this](const Bytes& bytes) {
                 if ((load_le32(bytes.data()) & RESET_REGISTER_VALUE) != 0) {
                   reset();
                 }
               },
               {}});
  memory_.add({VIRT_ADDR_USER_ACTIVATION, 4, zero, [this](const Bytes&) { activateUser(); }, {}});
  memory_.add({VIRT_ADDR_REINIT(0),
               4,
               zero,
               [this](const Bytes&) {
                 if (stage_ == Stage::kApp && lineControl_.reinitialise) {
                   lineControl_.reinitialise();
                 }
               },
               {}});
  memory_.add({VIRT_ADDR_LINKS_PROVISION(0),
               4,
               [this] { return word(lineProvisioned_ ? 1 : 0); },
               [this](const Bytes& bytes) { provision(load_le32(bytes.data()) != 0); },
               {}});
}

void Chip::mapIdentity() {
  memory_.add({VIRT_ADDR_B0_REGS, B0_REGS_SIZE, [this] { return bootStageBlock(identity_); }, {}, {}});
  const auto deviceInfo = [this] {
    Bytes bytes = deviceInfoImage(identity_);
    assertions_.store(bytes);
    return bytes;
  };
  memory_.add({VIRT_ADDR_DEVICE_INFO_READ, DEV_INF_SIZE, deviceInfo, {}, {}});
  // The same image, overlay included. A read clears the assertion records.
  const auto readImage = [this] {
    Bytes image(DEV_INF_SIZE);
    memory_.read(VIRT_ADDR_DEVICE_INFO_READ, image);
    return image;
  };
  const auto clearAssertions = [this](uint32_t offset, uint32_t length) {
    assertions_.clear(offset, length);
    for (const ImagePart& part : assertionParts(offset, length)) {
      memory_.overlay().forget(static_cast<uint32_t>(VIRT_ADDR_DEVICE_INFO_READ + part.begin),
                               part.end - part.begin);
    }
  };
  memory_.add({VIRT_ADDR_DEVICE_INFO_READ_AND_CLEAR, DEV_INF_SIZE, readImage, {}, clearAssertions});
}

void Chip::mapParameters() {
  parameters_.map(memory_, {[this] { return stage_ == Stage::kApp; },
                            [this] { sbr_ |= bit(SBR_SYSTEM_PARAMETER_CHANGE_OFFSET); }});
  inventory_.map(memory_,
                 {[this] { return stage_ == Stage::kApp; }, [this] { return identity_.firmware.version; }});
}

// The host can write every field but the running stage.
void Chip::sbrWritten(uint32_t value) {
  sbr_ = (value & ~kFwStateMask) | (sbr_ & kFwStateMask);
  lineConditionsChanged();
}

void Chip::setFwState(Stage stage) {
  stage_ = stage;
  sbr_ = (sbr_ & ~kFwStateMask) | (static_cast<uint32_t>(stage) << SBR_FW_STATE_OFFSET);
}

void Chip::activateUser() {
  if (stage_ != Stage::kApp || (sbr_ & kConfigurationState) == 0 || activation_ != Agenda::kNone) {
    return;
  }
  activation_ = agenda_.after(kUserActivationTime_s, [this] {
    activation_ = Agenda::kNone;
    sbr_ &= ~kConfigurationState;
    lineConditionsChanged();
  });
}

void Chip::provision(bool wanted) {
  if (stage_ == Stage::kApp) {
    lineProvisioned_ = wanted;
    lineConditionsChanged();
  }
}

void Chip::reset() {
  goDown();
  sbr_ = countedUp(sbr_, SBR_RESET_COUNTER_OFFSET) & ~bit(SBR_SYSTEM_PARAMETER_CHANGE_OFFSET);
  boot();
  lineConditionsChanged();
}

void Chip::powerOff() {
  goDown();
  powered_ = false;
  hung_ = false;
  pending_.clear();
  memory_.forgetStored();
  parameters_.powerUp();
  inventory_.forgetOther();
  lineConditionsChanged();
}

void Chip::powerOn() {
  if (!powered_) {
    powered_ = true;
    sbr_ = sbrAtPowerUp(config_.boot);
    boot();
  }
}

void Chip::goDown() {
  agenda_.cancel(activation_);
  agenda_.cancel(boot_);
  inReset_ = true;
  crashed_ = false;
  assertions_.clear();
  downloaded_.clear();
  setFwState(Stage::kNone);
  identity_.initialisation = {};
  resetLineState(LineState::kSelfTest);
  extcom_.forget();
  for (const auto& forget : atReset_) {
    forget();
  }
}

void Chip::boot() {
  const Stage selected = selectedStage();
  boot_ = agenda_.after(bootTime(selected), [this, selected] {
    boot_ = Agenda::kNone;
    bootFinished(selected);
  });
}

void Chip::bootFinished(Stage selected) {
  inReset_ = false;
  memory_.write(PLL_MUX_REG_ADDRESS, word(kPllMuxAtPowerUp));
  lineProvisioned_ = (sbr_ & bit(SBR_DISABLE_AUTO_ACTIVATE_OFFSET)) == 0;
  enter(selected);
  raiseEvent(EVENT_TYPE_BOOT_SUCCEEDED, {});
  const FirmwareVersion& version = identity_.firmware.version;
  const uint32_t params[] = {version.chipset, version.ga, version.rc, version.profile};
  log(CP_CORE, "firmware %u.%u.%u.%u runs", params);
  if (lineControl_.restarted) {
    lineControl_.restarted();
  }
  lineConditionsChanged();
}

Stage Chip::selectedStage() const {
  if ((sbr_ & bit(SBR_DISABLE_FLASH_OFFSET)) != 0) {
    return Stage::kB0;
  }
  return (sbr_ & bit(SBR_DISABLE_FLASH_OVERRIDE_OFFSET)) != 0 ? Stage::kB1 : Stage::kApp;
}

// Loads the stage's firmware from ROM or flash. False: flash holds none that runs.
bool Chip::load(Stage stage) {
  if (stage == Stage::kB0) {
    identity_.firmware = romFirmware(config_.firmware.chipset);
    return true;
  }
  const auto firmware = stage == Stage::kB1
                            ? parseFirmware(flash_.region(kBootloaderRegion), FirmwareKind::kBootloader)
                            : parseFirmware(flash_.region(kAppRegion), FirmwareKind::kApplication);
  if (firmware) {
    identity_.firmware = *firmware;
  }
  return firmware.has_value();
}

// The ROM starts the boot loader, and that the application. Where flash holds no firmware for the next stage,
// the chip stays in the one before.
void Chip::enter(Stage stage) {
  Stage reached = Stage::kB0;
  load(Stage::kB0);
  if (stage != Stage::kB0 && load(Stage::kB1)) {
    reached = stage == Stage::kApp && load(Stage::kApp) ? Stage::kApp : Stage::kB1;
  }
  if (reached != stage) {
    sbr_ = countedUp(sbr_, SBR_BOOT_RESET_COUNTER_OFFSET);
  }
  setFwState(reached);
  if (reached == Stage::kApp) {
    parameters_.apply();
  }
  resetLineState(reached == Stage::kApp ? LineState::kIdle : LineState::kSelfTest);
}

void Chip::lineConditionsChanged() {
  if (lineControl_.conditionsChanged) {
    lineControl_.conditionsChanged();
  }
}

}  // namespace gfast::board

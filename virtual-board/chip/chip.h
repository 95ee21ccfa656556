// One G.fast chip: boot stages, registers, memory, flash, and its end of the line as the host sees it.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "virtual-board/base/address_space.h"
#include "virtual-board/base/agenda.h"
#include "virtual-board/chip/chip_config.h"
#include "virtual-board/chip/crash.h"
#include "virtual-board/chip/device_info.h"
#include "virtual-board/chip/extcom.h"
#include "virtual-board/chip/flash.h"
#include "virtual-board/chip/inventory.h"
#include "virtual-board/chip/parameters.h"
#include "virtual-board/chip/pending_records.h"

namespace gfast::board {

class Chip {
 public:
  // Called when something changed that decides whether the line may be up, when the host asks the chip to
  // initialise its line again, and when the chip has started anew.
  struct LineControl {
    std::function<void()> conditionsChanged;
    std::function<void()> reinitialise;
    std::function<void()> restarted;
  };

  Chip(const ChipConfig& config, Agenda& agenda);
  Chip(const Chip&) = delete;
  Chip& operator=(const Chip&) = delete;

  void attachLine(LineControl control) { lineControl_ = std::move(control); }
  // Called when the line has come up: the two ends introduce themselves.
  void onShowtime(std::function<void()> introduce) { introduce_ = std::move(introduce); }

  // Called whenever the chip goes down, by a reset or a loss of power.
  void atReset(std::function<void()> forget) { atReset_.push_back(std::move(forget)); }

  // ---- Requests: 0 or an errno. A chip in reset or without power answers none of these (EIO), nor does one
  // that hangs (ETIMEDOUT). ----

  // 0, or the errno of a chip that does not answer.
  int unreachable() const;

  int read(uint32_t address, std::span<uint8_t> out);
  int write(uint32_t address, std::span<const uint8_t> bytes);
  // Into the ROM stage's memory. EBUSY: another stage runs.
  int download(std::span<const uint8_t> image);
  // Starts the downloaded boot loader. EBUSY: not in the ROM stage; EFAULT: not its entry point; ENOEXEC:
  // what was downloaded is no boot loader.
  int activate(uint32_t address);
  int eraseFlash(uint16_t type, uint32_t address);
  int programFlash(uint32_t address, std::span<const uint8_t> image);
  int readFlash(uint32_t address, std::span<uint8_t> out) const;

  // ---- What befalls it ----

  // Its control processor stops answering the host and the far end; the line goes on.
  void setHung(bool hung) { hung_ = hung; }
  bool hung() const { return hung_; }
  // An assertion of one of its processors fails while the application runs: the line is gone until the chip
  // is reset, and the assertion can be read as long. The other stages know no assertions.
  void crash(const Assertion& assertion);
  // As by a switch: everything but flash is lost, and power brings it back as at the start.
  void powerOff();
  void powerOn();

  // ---- The line's view ----

  // Started, and not crashed since.
  bool running() const { return !inReset_ && !crashed_; }
  Stage stage() const { return stage_; }
  bool networkSide() const { return identity_.firmware.version.networkSide(); }
  // Application firmware, in line state, with its line provisioned.
  bool lineWanted() const;
  LineState lineState() const { return identity_.lineState; }
  // Announces the change to the host.
  void setLineState(LineState state);
  // As setLineState, but nobody hears of it: at power-up and when the chip itself goes down.
  void resetLineState(LineState state);
  void setInitialisation(uint32_t startup_ms, uint32_t handshake_ms, uint32_t failureCause);

  void raiseEvent(uint32_t type, std::span<const uint32_t> params);
  // A log record about the chip's line, if the host wants such. The line end is added: chips bring theirs.
  void log(uint8_t core, std::string_view text, std::span<const uint32_t> params);
  double distortion_db() const { return config_.distortion_db; }
  PendingRecords& pending() { return pending_; }
  AddressSpace& memory() { return memory_; }
  Inventory& inventory() { return inventory_; }
  Extcom& extcom() { return extcom_; }
  const Parameters& parameters() const { return parameters_; }

 private:
  void say(uint8_t core, std::string_view text, std::span<const uint32_t> params);
  void mapRegisters();
  void mapIdentity();
  void mapParameters();
  void sbrWritten(uint32_t value);
  void setFwState(Stage stage);
  void activateUser();
  void provision(bool wanted);
  void reset();
  void goDown();
  void boot();
  void bootFinished(Stage selected);
  Stage selectedStage() const;
  bool load(Stage stage);
  void enter(Stage stage);
  void lineConditionsChanged();

  const ChipConfig config_;
  Agenda& agenda_;
  AddressSpace memory_;
  Parameters parameters_;
  Inventory inventory_;
  Extcom extcom_;
  Flash flash_;
  std::vector<uint8_t> downloaded_;
  PendingRecords pending_;
  DeviceIdentity identity_;
  LineControl lineControl_;
  std::function<void()> introduce_;
  std::vector<std::function<void()>> atReset_;
  Stage stage_ = Stage::kNone;
  AssertionRecords assertions_;
  bool inReset_ = false;
  bool crashed_ = false;
  bool powered_ = true;
  bool hung_ = false;
  bool lineProvisioned_ = true;
  uint32_t sbr_ = 0;
  Agenda::Ticket activation_ = Agenda::kNone;
  Agenda::Ticket boot_ = Agenda::kNone;
};

}  // namespace gfast::board

// One G.fast chip: boot stages, registers, memory, flash, and its end of the line.
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
  // What the line wants to be told.
  struct LineControl {
    std::function<void()> conditionsChanged;  // something that lineWanted() depends on may have changed
    std::function<void()> reinitialise;       // the host asks for a new initialisation of the line
    std::function<void()> restarted;          // the chip has booted
  };

  Chip(const ChipConfig& config, Agenda& agenda);
  Chip(const Chip&) = delete;
  Chip& operator=(const Chip&) = delete;

  void attachLine(LineControl control) { lineControl_ = std::move(control); }
  // Called at each start of showtime.
  void onShowtime(std::function<void()> introduce) { introduce_ = std::move(introduce); }

  // Called at each reset and each loss of power.
  void atReset(std::function<void()> forget) { atReset_.push_back(std::move(forget)); }

  // ---- Requests. Each returns 0 or an errno; all fail with EIO while the chip is in reset or without power,
  // and with ETIMEDOUT while it hangs. ----

  // The errno of a chip that does not answer; 0 when it does.
  int unreachable() const;

  int read(uint32_t address, std::span<uint8_t> out);
  int write(uint32_t address, std::span<const uint8_t> bytes);
  // Loads an image into the memory of the ROM stage. EBUSY: another stage runs.
  int download(std::span<const uint8_t> image);
  // Starts the downloaded boot loader. EBUSY: another stage than the ROM runs; EFAULT: the address is not the
  // ROM's entry point; ENOEXEC: the download is no boot loader.
  int activate(uint32_t address);
  int eraseFlash(uint16_t type, uint32_t address);
  int programFlash(uint32_t address, std::span<const uint8_t> image);
  int readFlash(uint32_t address, std::span<uint8_t> out) const;

  // ---- Failures ----

  // The control processor does not answer host and far end. The line is not affected.
  void setHung(bool hung) { hung_ = hung; }
  bool hung() const { return hung_; }
  // An assertion of a processor fails. Until the next reset the line is down and the assertion can be read.
  // Without effect unless the application runs.
  void crash(const Assertion& assertion);
  // Without power, everything but flash and inventory is lost. With power again, the chip starts as
  // configured.
  void powerOff();
  void powerOn();

  // ---- For the line ----

  // Booted, and not crashed since.
  bool running() const { return !inReset_ && !crashed_; }
  Stage stage() const { return stage_; }
  bool networkSide() const { return identity_.firmware.version.networkSide(); }
  // The application runs, the chip is in line state, and the line is provisioned.
  bool lineWanted() const;
  const VendorId& vendorId() const { return vendorIdOf(identity_.firmware.version); }
  LineState lineState() const { return identity_.lineState; }
  // Raises the event of a change of state.
  void setLineState(LineState state);
  // The same without an event: at power-up, and when the chip itself goes down.
  void resetLineState(LineState state);
  void setInitialisation(uint32_t startup_ms, uint32_t handshake_ms, uint32_t failureCause);

  void raiseEvent(uint32_t type, std::span<const uint32_t> params);
  // Makes a log record about the line if the host has enabled logs. Adds the line end that chips send.
  void log(uint8_t core, std::string_view text, std::span<const uint32_t> params);
  // Of the analogue front end, relative to the signal.
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

#include "virtual-board/board/virtual_board.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "virtual-board/measured/tone_areas.h"

namespace gfast::board {

namespace {

int failWith(int error) {
  errno = error;
  return -1;
}

VirtualBoard::TimeSource realTime() {
  return [start = std::chrono::steady_clock::now()] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
}

// The line's state at power-up, which either device's configuration may set.
LineState lineAtPowerUp(const BoardConfig& config) {
  LineState state = LineState::kSilent;
  for (const ChipConfig& device : config.device) {
    state = std::max(state, device.line.value_or(LineState::kSilent));
  }
  return state;
}

}  // namespace

VirtualBoard::VirtualBoard(const BoardConfig& config, const TimeSource& time)
    : VirtualBoard(config, time ? time : realTime(), time ? std::nullopt : std::optional(1.0)) {}

VirtualBoard::VirtualBoard(const BoardConfig& config, const RunningTime& time)
    : VirtualBoard(config, time.now, time.speed) {}

VirtualBoard::VirtualBoard(const BoardConfig& config, const TimeSource& time, std::optional<double> speed)
    : devices_(config.devices), time_(time), speed_(speed), faults_(config.faults) {
  for (size_t i = 0; i < chips_.size(); i++) {
    chips_[i] = std::make_unique<Chip>(config.device[i], agenda_);
  }
  for (size_t i = 0; i < chips_.size(); i++) {
    mapCounters(i);
    farEnds_[i] = std::make_unique<FarEnd>(
        static_cast<int>(i), *chips_[1 - i], [this, i] { return insight(1 - i); }, config.farEnd);
  }
  for (size_t i = 0; i < chips_.size(); i++) {
    chips_[i]->onShowtime([this, i] { introduce(i); });
  }
  for (const MemoryOverlay& overlay : config.memory) {
    chips_[static_cast<size_t>(overlay.device)]->memory().overlay().write(overlay.address, overlay.bytes);
  }
  line_ = std::make_unique<CopperLine>(*chips_[0], *chips_[1], agenda_, config.loop, config.seed);
  testMemory_ = std::make_unique<TestMemory>(std::array{chips_[0].get(), chips_[1].get()}, *line_, agenda_,
                                             config.loop, config.seed);
  line_->powerUp(lineAtPowerUp(config));
  scheduleRecords(config);
  scheduleFailures(config);
  for (const ExtcomErrors& errors : config.extcomErrors) {
    disturbExtcom(errors);
  }
  if (speed_) {
    clock_ = std::thread([this] { runClock(); });
  }
}

VirtualBoard::~VirtualBoard() {
  if (clock_.joinable()) {
    {
      const std::lock_guard lock(mutex_);
      ending_ = true;
    }
    changed_.notify_all();
    clock_.join();
  }
  for (const auto& [descriptor, state] : descriptors_) {
    ::close(descriptor);
  }
}

// Maps counters and memory by subcarrier. Only the application has them.
void VirtualBoard::mapCounters(size_t device) {
  for (const CounterBlock& block : counterBlocks()) {
    const auto read = [this, device, &block] {
      return chips_[device]->stage() == Stage::kApp ? block.build(insight(device)) : Bytes(block.length);
    };
    chips_[device]->memory().add({block.address, block.length, read, {}, {}});
  }
  for (const ToneArea& area : toneAreas()) {
    const auto part = [this, device, &area](uint32_t offset, uint32_t length) {
      return chips_[device]->stage() == Stage::kApp ? area.read(insight(device), offset, length)
                                                    : Bytes(length);
    };
    const bool window = area.kind == ToneArea::Kind::kWindow;
    chips_[device]->memory().add({area.address, area.length, {}, {}, {}, part, window});
  }
}

// At the start of showtime a chip asks for the other end's inventory. Without an answer it keeps what it
// knows.
void VirtualBoard::introduce(size_t device) {
  FarEnd::Response response;
  if (farEnds_[device]->answer(MGMT_FAR_END_REQ_TYPE_INVENTORY, {}, response) == 0) {
    chips_[device]->inventory().hear(chips_[1 - device]->vendorId(), response);
  }
}

LineInsight VirtualBoard::insight(size_t device) {
  return {line_->view(device), line_->budget(), chips_[device]->networkSide()};
}

void VirtualBoard::scheduleRecords(const BoardConfig& config) {
  for (const TimedEvent& event : config.events) {
    agenda_.at(event.at_s, [this, event] {
      chips_[static_cast<size_t>(event.device)]->raiseEvent(event.type, event.params);
    });
  }
  for (const TimedLog& log : config.logs) {
    agenda_.at(log.at_s, [this, log] {
      chips_[static_cast<size_t>(log.device)]->pending().raiseLog(log.core, log.line, log.text, log.params);
    });
  }
}

void VirtualBoard::scheduleFailures(const BoardConfig& config) {
  for (const LoopEvent& event : config.loopEvents) {
    if (event.cut) {
      agenda_.at(event.at_s, [this, cut = *event.cut] { line_->setCut(cut); });
    } else {
      agenda_.at(event.at_s, [this, errors = event.errors] { line_->setErrors(errors); });
      agenda_.at(event.at_s + event.for_s, [this] { line_->setErrors(0); });
    }
  }
  for (const CrashEvent& event : config.crashes) {
    agenda_.at(event.at_s,
               [this, event] { chips_[static_cast<size_t>(event.device)]->crash(event.assertion); });
  }
  for (const DeviceEvent& event : config.deviceEvents) {
    const auto device = static_cast<size_t>(event.device);
    const bool hang = event.kind == DeviceEvent::Kind::kHang;
    agenda_.at(event.at_s, [this, device, hang] {
      if (hang) {
        chips_[device]->setHung(true);
      } else {
        line_->losePower(device);
      }
    });
    if (!event.for_s) {
      continue;
    }
    agenda_.at(event.at_s + *event.for_s, [this, device, hang] {
      if (hang) {
        chips_[device]->setHung(false);
      } else {
        chips_[device]->powerOn();
      }
    });
  }
}

void VirtualBoard::disturbExtcom(const ExtcomErrors& errors) {
  Extcom& extcom = chips_[static_cast<size_t>(errors.device)]->extcom();
  for (size_t lane = 0; lane < EXTCOM_LANES; lane++) {
    if (errors.lane.value_or(lane) == lane) {
      extcom.setErrorRate(lane, errors.errors_per_s);
    }
  }
}

// The clock's thread. It sleeps until something is due or somebody notifies it.
void VirtualBoard::runClock() {
  std::unique_lock lock(mutex_);
  while (!ending_) {
    clockWakes_ = agenda_.next();
    if (!clockWakes_) {
      changed_.wait(lock);
      continue;
    }
    const double left = *clockWakes_ - time_();
    if (left > 0) {
      // Events of a board file may be years away, which is too long for wait_for.
      constexpr double longest_s = 3600;
      changed_.wait_for(lock, std::chrono::duration<double>(std::min(left / *speed_, longest_s)));
      continue;
    }
    advanceLocked();
  }
}

// Wakes the clock only if something is due before it would wake, so that most requests let it sleep.
void VirtualBoard::wakeClock() {
  const auto next = agenda_.next();
  if (next && (!clockWakes_ || *next < *clockWakes_)) {
    changed_.notify_one();
  }
}

void VirtualBoard::advance() {
  const std::lock_guard lock(mutex_);
  advanceLocked();
}

std::optional<double> VirtualBoard::nextDue() {
  const std::lock_guard lock(mutex_);
  return agenda_.next();
}

void VirtualBoard::cutLoop(bool cut) {
  const std::lock_guard lock(mutex_);
  advanceLocked();
  line_->setCut(cut);
  showPending();
  wakeClock();
}

void VirtualBoard::advanceLocked() {
  agenda_.advance(time_());
  showPending();
}

// A descriptor is readable while its chip has an event or a log record for the host.
void VirtualBoard::showPending() {
  for (auto& [descriptor, state] : descriptors_) {
    Chip& chip = *chips_[static_cast<size_t>(state.device)];
    const bool pending = !chip.hung() && chip.pending().any();
    if (pending == state.readable) {
      continue;
    }
    eventfd_t value = 1;
    if (pending) {
      ::eventfd_write(descriptor, value);
    } else {
      ::eventfd_read(descriptor, &value);
    }
    state.readable = pending;
  }
}

int VirtualBoard::open(int device) {
  TracedRequest traced;
  traced.device = device;
  traced.kind = RequestKind::kOpen;
  int descriptor = -1;
  {
    const std::lock_guard lock(mutex_);
    advanceLocked();
    traced.time = agenda_.now();
    traced.error =
        device < 0 || device >= devices_ ? ENODEV : faults_.match(device, RequestKind::kOpen, 0, 0);
    if (traced.error == 0) {
      descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
      traced.error = descriptor < 0 ? errno : 0;
    }
    if (traced.error == 0) {
      descriptors_[descriptor] = {device, false};
      showPending();
    }
  }
  trace_.write(traced);
  return traced.error == 0 ? descriptor : failWith(traced.error);
}

void VirtualBoard::close(int descriptor) {
  const std::lock_guard lock(mutex_);
  if (descriptors_.erase(descriptor) != 0) {
    ::close(descriptor);
  }
}

std::optional<int> VirtualBoard::deviceOf(int descriptor) {
  const std::lock_guard lock(mutex_);
  const auto found = descriptors_.find(descriptor);
  return found == descriptors_.end() ? std::nullopt : std::optional(found->second.device);
}

int VirtualBoard::request(int descriptor, uint32_t code, gfast_iocreq& request) {
  const auto device = deviceOf(descriptor);
  if (!device) {
    return failWith(EBADF);
  }
  static constexpr RequestHandler unknown{0, RequestKind::kUnknown, nullptr, nullptr};
  const RequestHandler* handler = requestHandler(code);
  const RequestHandler& chosen = handler == nullptr ? unknown : *handler;
  const auto index = static_cast<size_t>(*device);
  Exchange exchange{*device, *chips_[index], *farEnds_[index], *line_, request, {}};
  // Not under the lock: this may read a file, and that may be slow.
  if (chosen.describe != nullptr) {
    chosen.describe(exchange);
  }
  TracedRequest traced;
  {
    const std::lock_guard lock(mutex_);
    advanceLocked();
    traced.time = agenda_.now();
    traced.error = handler == nullptr ? ENOTTY : serve(chosen, exchange);
    showPending();
    wakeClock();
  }
  if (speed_ && chosen.kind == RequestKind::kFarEnd && traced.error == 0) {
    std::this_thread::sleep_for(std::chrono::duration<double>(kFarEndExchange_s / *speed_));
  }
  traced.device = *device;
  traced.kind = chosen.kind;
  traced.where = exchange.where;
  traced.length = exchange.length;
  trace_.write(traced);
  return traced.error == 0 ? 0 : failWith(traced.error);
}

int VirtualBoard::serve(const RequestHandler& handler, Exchange& exchange) {
  const uint32_t touched = handler.kind == RequestKind::kFarEnd ? 1 : exchange.length;
  const int fault = faults_.match(exchange.device, handler.kind, exchange.where, touched);
  return fault != 0 ? fault : handler.serve(exchange);
}

}  // namespace gfast::board

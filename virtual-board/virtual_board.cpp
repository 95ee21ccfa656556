#include "virtual_board.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "host_file.h"

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

// 0, or what is wrong with a buffer that shall hold `length` bytes.
int checkBuffer(const char* buffer, uint32_t size, uint32_t length, uint32_t most) {
  if (length > most || size < length) {
    return EINVAL;
  }
  return buffer == nullptr && length > 0 ? EFAULT : 0;
}

std::span<uint8_t> bytesOf(char* buffer, size_t length) {
  return {reinterpret_cast<uint8_t*>(buffer), length};
}

// The state in which a line starts: what either device's configuration says about it.
LineState lineAtPowerUp(const BoardConfig& config) {
  LineState state = LineState::Silent;
  for (const DeviceConfig& device : config.device) {
    state = std::max(state, device.line.value_or(LineState::Silent));
  }
  return state;
}

}  // namespace

// A request on its way through the board.
struct VirtualBoard::Exchange {
  Chip& chip;
  int device;
  gfast_iocreq& request;
  HostFile image;       // of requests that name a file
  uint32_t where = 0;   // as traced and as faults match it
  uint32_t length = 0;  // likewise
};

struct VirtualBoard::Handler {
  uint32_t code;
  RequestKind kind;
  int (VirtualBoard::*serve)(Exchange&);
  // Notes what the request is about, before anything is done; none: nothing to note.
  void (*describe)(Exchange&);
};

const VirtualBoard::Handler* VirtualBoard::handlerFor(uint32_t code) {
  using Board = VirtualBoard;
  using Kind = RequestKind;
  static constexpr Handler handlers[] = {
      {DFEIOCMEMRD, Kind::MemRead, &Board::memRead,
       [](Exchange& e) {
         e.where = e.request.req_u.memread.hw_mem_addr;
         e.length = e.request.req_u.memread.hw_mem_len;
       }},
      {DFEIOCMEMWR, Kind::MemWrite, &Board::memWrite,
       [](Exchange& e) {
         e.where = e.request.req_u.memwrite.hw_mem_addr;
         e.length = e.request.req_u.memwrite.hw_mem_len;
       }},
      {DFEIOCIMGACT, Kind::Activate, &Board::activate,
       [](Exchange& e) { e.where = e.request.req_u.activate.hw_mem_addr; }},
      {DFEIOCIMGDNLD, Kind::ImgDnld, &Board::imgDnld,
       [](Exchange& e) {
         e.image = readHostFile(e.request.req_u.imgdnld.fw_filename, FLASH_SIZE);
         e.length = static_cast<uint32_t>(e.image.bytes.size());
       }},
      {DFEIOCFLASHRD, Kind::FlashRead, &Board::flashRead,
       [](Exchange& e) {
         e.where = e.request.req_u.flashread.hw_flash_addr;
         e.length = e.request.req_u.flashread.hw_flash_len;
       }},
      {DFEIOCFLASHERASE, Kind::FlashErase, &Board::flashErase,
       [](Exchange& e) { e.where = e.request.req_u.flasherase.hw_flash_addr; }},
      {DFEIOCFLASHPROG, Kind::FlashProg, &Board::flashProg,
       [](Exchange& e) {
         e.image = readHostFile(e.request.req_u.flashprog.fw_filename, FLASH_SIZE);
         e.where = e.request.req_u.flashprog.hw_flash_addr;
         e.length = static_cast<uint32_t>(e.image.bytes.size());
       }},
      {DFEIOCOAMGET, Kind::Unknown, &Board::notServed, nullptr},
      {DFEIOCOAMSET, Kind::Unknown, &Board::notServed, nullptr},
      {DFEIOCLOGCFG, Kind::LogCfg, &Board::logCfg, nullptr},
      {DFEIOCLOGRD, Kind::LogRead, &Board::logRead, nullptr},
      {DFEIOCALMRD, Kind::EventRead, &Board::eventRead, nullptr},
      {DFEIOCSETPORTTAG, Kind::Unknown, &Board::notServed, nullptr},
      {DFEIOCGETRESULT, Kind::Unknown, &Board::notServed, nullptr},
      {DFEIOCDEVINFO, Kind::Unknown, &Board::notServed, nullptr},
      {DFEIOCFARENDMSG, Kind::FarEnd, &Board::farEnd,
       [](Exchange& e) {
         e.where = e.request.req_u.farendmsg.port_idx;
         e.length = e.request.req_u.farendmsg.outmsg_datalen;
       }},
  };
  const auto* found = std::find_if(std::begin(handlers), std::end(handlers),
                                   [code](const Handler& handler) { return handler.code == code; });
  return found == std::end(handlers) ? nullptr : found;
}

VirtualBoard::VirtualBoard(const BoardConfig& config, const TimeSource& time)
    : devices_(config.devices), time_(time ? time : realTime()), realTime_(!time), faults_(config.faults) {
  for (size_t i = 0; i < chips_.size(); ++i) {
    chips_[i] = std::make_unique<Chip>(config.device[i], agenda_);
  }
  for (size_t i = 0; i < chips_.size(); ++i) {
    mapCounters(i);
    farEnds_[i] = std::make_unique<FarEnd>(
        static_cast<int>(i), *chips_[1 - i], [this, i] { return insight(1 - i); }, config.farEnd);
  }
  for (const MemoryOverlay& overlay : config.memory) {
    chips_[static_cast<size_t>(overlay.device)]->memory().overlay().write(overlay.address, overlay.bytes);
  }
  line_ = std::make_unique<CopperLine>(*chips_[0], *chips_[1], agenda_, config.loop, config.seed);
  line_->powerUp(lineAtPowerUp(config));
  scheduleConfigured(config);
  scheduleHappenings(config);
  if (!time) {
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

// The application computes the counters; the stages before it have none.
void VirtualBoard::mapCounters(size_t device) {
  for (const CounterBlock& block : counterBlocks()) {
    const auto read = [this, device, &block] {
      return chips_[device]->stage() == Stage::App ? block.build(insight(device)) : Bytes(block.length);
    };
    chips_[device]->memory().add({block.address, block.length, read, {}, {}});
  }
}

LineInsight VirtualBoard::insight(size_t device) {
  return {line_->view(device), line_->budget(), chips_[device]->networkSide()};
}

void VirtualBoard::scheduleConfigured(const BoardConfig& config) {
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

void VirtualBoard::scheduleHappenings(const BoardConfig& config) {
  for (const LoopEvent& event : config.loopEvents) {
    if (event.cut) {
      agenda_.at(event.at_s, [this, cut = *event.cut] { line_->setCut(cut); });
    } else {
      agenda_.at(event.at_s, [this, errors = event.errors] { line_->setErrors(errors); });
      agenda_.at(event.at_s + event.for_s, [this] { line_->setErrors(0); });
    }
  }
  for (const DeviceEvent& event : config.deviceEvents) {
    const auto device = static_cast<size_t>(event.device);
    const bool hang = event.kind == DeviceEvent::Kind::Hang;
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

// The clock's own thread: asleep until something is due, for good when nothing is.
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
      // A board file may look years ahead.
      constexpr double longest_s = 3600;
      changed_.wait_for(lock, std::chrono::duration<double>(std::min(left, longest_s)));
      continue;
    }
    advanceLocked();
  }
}

// Not on every request: at an idle prompt the clock sleeps on.
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

// Makes descriptors readable exactly while their chip has something to say.
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
  traced.kind = RequestKind::Open;
  int descriptor = -1;
  {
    const std::lock_guard lock(mutex_);
    advanceLocked();
    traced.time = agenda_.now();
    traced.error = device < 0 || device >= devices_ ? ENODEV : faults_.match(device, RequestKind::Open, 0, 0);
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
  static constexpr Handler unknown{0, RequestKind::Unknown, &VirtualBoard::notServed, nullptr};
  const Handler* handler = handlerFor(code);
  const Handler& chosen = handler == nullptr ? unknown : *handler;
  Exchange exchange{*chips_[static_cast<size_t>(*device)], *device, request, {}};
  // Reads a file where the request names one; not under the lock, a file may be slow.
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
  if (realTime_ && chosen.kind == RequestKind::FarEnd && traced.error == 0) {
    std::this_thread::sleep_for(std::chrono::duration<double>(kFarEndExchange_s));
  }
  traced.device = *device;
  traced.kind = chosen.kind;
  traced.where = exchange.where;
  traced.length = exchange.length;
  trace_.write(traced);
  return traced.error == 0 ? 0 : failWith(traced.error);
}

int VirtualBoard::serve(const Handler& handler, Exchange& exchange) {
  const uint32_t touched = handler.kind == RequestKind::FarEnd ? 1 : exchange.length;
  const int fault = faults_.match(exchange.device, handler.kind, exchange.where, touched);
  return fault != 0 ? fault : (this->*handler.serve)(exchange);
}

int VirtualBoard::memRead(Exchange& exchange) {
  auto& read = exchange.request.req_u.memread;
  read.datalen_rcvd_from_hw = 0;
  read.datalen_copied_to_user = 0;
  if (const int wrong = checkBuffer(read.buf, read.bufsize, read.hw_mem_len, IOCTL_MAX_READ_BYTES);
      wrong != 0) {
    return wrong;
  }
  if (!inAddressSpace(read.hw_mem_addr, read.hw_mem_len)) {
    return EINVAL;
  }
  const int error = exchange.chip.read(read.hw_mem_addr, bytesOf(read.buf, read.hw_mem_len));
  if (error == 0) {
    read.datalen_rcvd_from_hw = read.hw_mem_len;
    read.datalen_copied_to_user = read.hw_mem_len;
  }
  return error;
}

int VirtualBoard::memWrite(Exchange& exchange) {
  const auto& write = exchange.request.req_u.memwrite;
  if (const int wrong = checkBuffer(write.buf, write.bufsize, write.hw_mem_len, IOCTL_MAX_WRITE_BYTES);
      wrong != 0) {
    return wrong;
  }
  if (!inAddressSpace(write.hw_mem_addr, write.hw_mem_len)) {
    return EINVAL;
  }
  return exchange.chip.write(write.hw_mem_addr, bytesOf(write.buf, write.hw_mem_len));
}

int VirtualBoard::activate(Exchange& exchange) {
  return exchange.chip.activate(exchange.request.req_u.activate.hw_mem_addr);
}

int VirtualBoard::imgDnld(Exchange& exchange) {
  return exchange.image.error != 0 ? exchange.image.error : exchange.chip.download(exchange.image.bytes);
}

int VirtualBoard::flashErase(Exchange& exchange) {
  const auto& erase = exchange.request.req_u.flasherase;
  return exchange.chip.eraseFlash(erase.erasetype, erase.hw_flash_addr);
}

int VirtualBoard::flashProg(Exchange& exchange) {
  return exchange.image.error != 0
             ? exchange.image.error
             : exchange.chip.programFlash(exchange.request.req_u.flashprog.hw_flash_addr,
                                          exchange.image.bytes);
}

int VirtualBoard::flashRead(Exchange& exchange) {
  auto& read = exchange.request.req_u.flashread;
  read.datalen_rcvd_from_hw = 0;
  read.datalen_copied_to_user = 0;
  if (const int wrong = checkBuffer(read.buf, read.bufsize, read.hw_flash_len, IOCTL_MAX_READ_BYTES);
      wrong != 0) {
    return wrong;
  }
  const int error = exchange.chip.readFlash(read.hw_flash_addr, bytesOf(read.buf, read.hw_flash_len));
  if (error == 0) {
    read.datalen_rcvd_from_hw = read.hw_flash_len;
    read.datalen_copied_to_user = read.hw_flash_len;
  }
  return error;
}

int VirtualBoard::logCfg(Exchange& exchange) {
  const auto& config = exchange.request.req_u.logcfg;
  if (config.bufsize != GFAST_LOGCFG_BODY_SIZE) {
    return EINVAL;
  }
  if (config.buf == nullptr) {
    return EFAULT;
  }
  if (exchange.chip.hung()) {
    return ETIMEDOUT;
  }
  exchange.chip.pending().enableLogs();
  return 0;
}

// A chip that hangs has nothing to say until it is back.
int VirtualBoard::takeRecords(Exchange& exchange,
                              bool (PendingRecords::*take)(std::span<uint8_t> out, size_t& length)) {
  auto& read = exchange.request.req_u.logalm_read;
  read.datalen_rcvd_from_hw = 0;
  read.datalen_copied_to_user = 0;
  if (read.buf == nullptr) {
    return EFAULT;
  }
  if (exchange.chip.hung()) {
    return 0;
  }
  size_t length = 0;
  if (!(exchange.chip.pending().*take)(bytesOf(read.buf, read.bufsize), length)) {
    return EMSGSIZE;
  }
  read.datalen_rcvd_from_hw = static_cast<uint32_t>(length);
  read.datalen_copied_to_user = static_cast<uint32_t>(length);
  exchange.length = static_cast<uint32_t>(length);
  return 0;
}

int VirtualBoard::logRead(Exchange& exchange) {
  return takeRecords(exchange, &PendingRecords::takeLogs);
}

int VirtualBoard::eventRead(Exchange& exchange) {
  return takeRecords(exchange, &PendingRecords::takeEvent);
}

int VirtualBoard::farEnd(Exchange& exchange) {
  auto& message = exchange.request.req_u.farendmsg;
  message.datalen_copied_to_user = 0;
  constexpr uint32_t largestMessage = 65536;
  if (message.port_idx != 0 || message.bufsize > largestMessage) {
    return EINVAL;
  }
  if (const int wrong = checkBuffer(message.buf, message.bufsize, message.outmsg_datalen, largestMessage);
      wrong != 0) {
    return wrong;
  }
  if (const int unreachable = exchange.chip.unreachable(); unreachable != 0) {
    return unreachable;
  }
  if (!line_->inShowtime()) {
    return ENOTCONN;
  }
  std::vector<uint8_t> response;
  const std::span<const uint8_t> request = bytesOf(message.buf, message.outmsg_datalen);
  const int error =
      farEnds_[static_cast<size_t>(exchange.device)]->answer(message.farend_msg_req_type, request, response);
  if (error != 0) {
    return error;
  }
  const auto length = static_cast<uint32_t>(std::min<size_t>(response.size(), message.bufsize));
  if (length > 0 && message.buf == nullptr) {
    return EFAULT;
  }
  std::copy_n(response.begin(), length, bytesOf(message.buf, length).begin());
  message.datalen_copied_to_user = length;
  return 0;
}

int VirtualBoard::notServed(Exchange& /*exchange*/) {
  return EOPNOTSUPP;
}

// A field trace: every driver request of a run as text, with the bytes in both directions. The text is
// described in docs/field-traces.md.
#pragma once

#include <gfast_api.h>

#include <array>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace gfast {

constexpr std::string_view kTraceTitle = "gfast-trace 1";
constexpr std::string_view kTraceBlanked = "blanked";

// Most bytes that an exchange carries in one direction: as many as the largest far-end message has.
constexpr uint32_t kMostTracedBytes = 65536;
constexpr size_t kMostTracedNumbers = 4;

enum class TraceKind : uint8_t {
  kOpen,
  kClose,
  kRediscover,
  kMemRead,
  kMemWrite,
  kActivate,
  kImgDnld,
  kFlashRead,
  kFlashErase,
  kFlashProg,
  kLogCfg,
  kLogRead,
  kEventRead,
  kFarEnd,
  kOther
};

// What one side asks. The same request is the same value on every machine: it holds no pointers.
struct TraceRequest {
  TraceKind kind = TraceKind::kOther;
  int device = -1;                                     // -1: none
  std::array<uint32_t, kMostTracedNumbers> numbers{};  // its addresses and numbers, as TraceForm lists them
  std::string file{};                                  // the name of the file that the driver is to read
  std::vector<uint8_t> sent{};

  bool operator==(const TraceRequest&) const = default;
  bool operator<(const TraceRequest& other) const {
    return std::tie(kind, device, numbers, file, sent) <
           std::tie(other.kind, other.device, other.numbers, other.file, other.sent);
  }
};

// What the other side answers: an error, or none and what came back.
struct TraceAnswer {
  int error = 0;
  std::vector<uint8_t> returned{};

  bool operator==(const TraceAnswer&) const = default;
};

// Who asked: the thread that runs the commands, or the one that waits for the chips.
enum class TraceThread : char { kCommand = 'c', kNotification = 'n' };

// How a kind of request is written.
struct TraceForm {
  std::string_view name;
  // A letter for each argument: an address (a), a number (n), the number of bytes sent (s) or wanted (w), a
  // file's name (f).
  std::string_view arguments;
  TraceKind kind;
  bool answered = true;  // whether a result follows
  bool returns = false;  // whether bytes may come back
};

const TraceForm& traceForm(TraceKind kind);
const TraceForm* traceFormByName(std::string_view name);  // null: no such request

// The request in an envelope, and the answer to it. Nothing in the envelope is changed.
TraceRequest traceRequest(int device, uint32_t code, gfast_iocreq& envelope);
TraceAnswer traceAnswer(uint32_t code, gfast_iocreq& envelope, int error);

// A request in words, without what was sent: "memread e0000238 4".
std::string traceWords(const TraceRequest& request);

// An exchange as it stands in a trace. Without an answer it refers to the one before it of the same thread
// to the same request.
std::string traceText(uint64_t time_us, TraceThread thread, const TraceRequest& request,
                      const TraceAnswer* answer);

}  // namespace gfast

#include "driver/field_trace.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <span>

#include "driver/request_buffer.h"
#include "std/errno_names.h"

using namespace gfast;

namespace {

using Records = decltype(gfast_iocreq::req_u);
using Bytes = std::span<const uint8_t>;

constexpr size_t kWordSize = 4;
constexpr size_t kWordsInLine = 8;
constexpr size_t kShortestRun = 4;  // words; a shorter one is written out

constexpr TraceForm kForms[] = {
    {"open", "", TraceKind::kOpen},
    {"close", "", TraceKind::kClose, false},
    {"rediscover", "", TraceKind::kRediscover, false},
    {"memread", "aw", TraceKind::kMemRead, true, true},
    {"memwrite", "as", TraceKind::kMemWrite},
    {"activate", "a", TraceKind::kActivate},
    {"imgdnld", "f", TraceKind::kImgDnld},
    {"flashread", "aw", TraceKind::kFlashRead, true, true},
    {"flasherase", "an", TraceKind::kFlashErase},
    {"flashprog", "af", TraceKind::kFlashProg},
    {"logcfg", "s", TraceKind::kLogCfg},
    {"logread", "w", TraceKind::kLogRead, true, true},
    {"eventread", "w", TraceKind::kEventRead, true, true},
    {"farend", "nnws", TraceKind::kFarEnd, true, true},
    {"other", "a", TraceKind::kOther},
};
static_assert(std::size(kForms) == static_cast<size_t>(TraceKind::kOther) + 1);

struct Code {
  uint32_t code;
  TraceKind kind;
};

constexpr Code kCodes[] = {
    {DFEIOCMEMRD, TraceKind::kMemRead},       {DFEIOCMEMWR, TraceKind::kMemWrite},
    {DFEIOCIMGACT, TraceKind::kActivate},     {DFEIOCIMGDNLD, TraceKind::kImgDnld},
    {DFEIOCFLASHRD, TraceKind::kFlashRead},   {DFEIOCFLASHERASE, TraceKind::kFlashErase},
    {DFEIOCFLASHPROG, TraceKind::kFlashProg}, {DFEIOCLOGCFG, TraceKind::kLogCfg},
    {DFEIOCLOGRD, TraceKind::kLogRead},       {DFEIOCALMRD, TraceKind::kEventRead},
    {DFEIOCFARENDMSG, TraceKind::kFarEnd},
};

TraceKind kindOf(uint32_t code) {
  const auto* found = std::ranges::find(kCodes, code, &Code::code);
  return found == std::end(kCodes) ? TraceKind::kOther : found->kind;
}

std::string fileName(const char (&field)[MAX_FW_FN_SIZE]) {
  return {field, std::find(std::begin(field), std::end(field), '\0')};
}

// The addresses and numbers of a request, but for those of its buffer's bytes.
void takeArguments(uint32_t code, const Records& records, TraceRequest& request) {
  auto& numbers = request.numbers;
  switch (request.kind) {
    case TraceKind::kMemRead:
      numbers = {records.memread.hw_mem_addr, records.memread.hw_mem_len};
      break;
    case TraceKind::kMemWrite:
      numbers = {records.memwrite.hw_mem_addr};
      break;
    case TraceKind::kActivate:
      numbers = {records.activate.hw_mem_addr};
      break;
    case TraceKind::kImgDnld:
      request.file = fileName(records.imgdnld.fw_filename);
      break;
    case TraceKind::kFlashRead:
      numbers = {records.flashread.hw_flash_addr, records.flashread.hw_flash_len};
      break;
    case TraceKind::kFlashErase:
      numbers = {records.flasherase.hw_flash_addr, records.flasherase.erasetype};
      break;
    case TraceKind::kFlashProg:
      numbers = {records.flashprog.hw_flash_addr};
      request.file = fileName(records.flashprog.fw_filename);
      break;
    case TraceKind::kLogRead:
    case TraceKind::kEventRead:
      numbers = {records.logalm_read.bufsize};
      break;
    case TraceKind::kFarEnd:
      numbers = {records.farendmsg.port_idx, records.farendmsg.farend_msg_req_type,
                 records.farendmsg.bufsize};
      break;
    default:
      numbers = {code};
  }
}

std::vector<uint8_t> firstBytes(const char* buffer, uint32_t count) {
  return {buffer, buffer + std::min(count, kMostTracedBytes)};
}

template <typename... Values>
void append(std::string& text, const char* format, Values... values) {
  char piece[48];
  std::snprintf(piece, sizeof piece, format, values...);
  text += piece;
}

// In quotes; what could end it, or is no plain character, is a percent sign and two digits.
void appendFile(std::string& text, std::string_view name) {
  text += '"';
  for (const char c : name) {
    if (c > ' ' && c <= '~' && c != '"' && c != '%') {
      text += c;
    } else {
      append(text, "%%%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
  }
  text += '"';
}

bool sameWord(Bytes bytes, size_t a, size_t b) {
  return b + kWordSize <= bytes.size() && std::equal(&bytes[a], &bytes[a] + kWordSize, &bytes[b]);
}

// How many words there are like the one at this place, itself included.
size_t runOf(Bytes bytes, size_t place) {
  size_t count = 1;
  while (sameWord(bytes, place, place + count * kWordSize)) {
    count++;
  }
  return count;
}

// Words of chip memory in their order there, eight to a line. A run is one word and its number.
void appendBytes(std::string& text, char direction, Bytes bytes) {
  size_t inLine = 0;
  for (size_t place = 0; place < bytes.size();) {
    if (inLine++ % kWordsInLine == 0) {
      text += inLine == 1 ? "  " : "\n  ";
      text += direction;
    }
    text += ' ';
    for (const uint8_t byte : bytes.subspan(place, std::min(kWordSize, bytes.size() - place))) {
      append(text, "%02x", static_cast<unsigned>(byte));
    }
    const size_t run = runOf(bytes, place);
    if (run >= kShortestRun) {
      append(text, "*%zu", run);
    }
    place += kWordSize * (run >= kShortestRun ? run : 1);
  }
  if (inLine > 0) {
    text += '\n';
  }
}

void appendResult(std::string& text, const TraceAnswer* answer) {
  text += " = ";
  if (answer == nullptr) {
    text += "same";
  } else if (answer->error != 0) {
    text += errnoName(answer->error);
  } else {
    text += "ok";
    if (!answer->returned.empty()) {
      append(text, " %zu", answer->returned.size());
    }
  }
}

}  // namespace

const TraceForm& gfast::traceForm(TraceKind kind) {
  return kForms[static_cast<size_t>(kind)];
}

const TraceForm* gfast::traceFormByName(std::string_view name) {
  const auto* found = std::ranges::find(kForms, name, &TraceForm::name);
  return found == std::end(kForms) ? nullptr : found;
}

TraceRequest gfast::traceRequest(int device, uint32_t code, gfast_iocreq& envelope) {
  TraceRequest request;
  request.kind = kindOf(code);
  request.device = device;
  takeArguments(code, envelope.req_u, request);
  const std::string_view arguments = traceForm(request.kind).arguments;
  if (const size_t place = arguments.find('s'); place != std::string_view::npos) {
    const RequestBuffer buffer = requestBuffer(code, envelope);
    if (buffer.field != nullptr && *buffer.field != nullptr) {
      request.sent = firstBytes(*buffer.field, std::min(buffer.sent, buffer.size));
    }
    request.numbers[place] = static_cast<uint32_t>(request.sent.size());
  }
  return request;
}

TraceAnswer gfast::traceAnswer(uint32_t code, gfast_iocreq& envelope, int error) {
  TraceAnswer answer{error, {}};
  const RequestBuffer buffer = requestBuffer(code, envelope);
  if (error != 0 || buffer.copied == nullptr || *buffer.field == nullptr) {
    return answer;
  }
  // Who reads memory looks at the whole of his buffer, whatever count the driver gave.
  const uint32_t count = code == DFEIOCMEMRD     ? envelope.req_u.memread.hw_mem_len
                         : code == DFEIOCFLASHRD ? envelope.req_u.flashread.hw_flash_len
                                                 : *buffer.copied;
  answer.returned = firstBytes(*buffer.field, std::min(count, buffer.size));
  return answer;
}

std::string gfast::traceWords(const TraceRequest& request) {
  const TraceForm& form = traceForm(request.kind);
  std::string text(form.name);
  for (size_t i = 0; i < form.arguments.size(); i++) {
    text += ' ';
    switch (form.arguments[i]) {
      case 'a':
        append(text, "%08x", static_cast<unsigned>(request.numbers[i]));
        break;
      case 'f':
        appendFile(text, request.file);
        break;
      default:
        append(text, "%u", static_cast<unsigned>(request.numbers[i]));
    }
  }
  return text;
}

std::string gfast::traceText(uint64_t time_us, TraceThread thread, const TraceRequest& request,
                             const TraceAnswer* answer) {
  constexpr uint64_t second = 1000000;
  std::string text;
  append(text, "%llu.%06llu %c ", static_cast<unsigned long long>(time_us / second),
         static_cast<unsigned long long>(time_us % second), static_cast<char>(thread));
  text += request.device < 0 ? "-" : std::to_string(request.device);
  text += ' ';
  text += traceWords(request);
  if (traceForm(request.kind).answered) {
    appendResult(text, answer);
  }
  text += '\n';
  appendBytes(text, '>', request.sent);
  if (answer != nullptr) {
    appendBytes(text, '<', answer->returned);
  }
  return text;
}

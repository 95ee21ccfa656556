#include "gfast-lab/replay/trace_reader.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include "std/errno_names.h"

namespace gfast::replay {

namespace {

constexpr size_t kWordDigits = 8;
constexpr size_t kMostWords = 12;         // of a line; the longest request has fewer
constexpr size_t kMostSecondsDigits = 9;  // some thirty years
constexpr size_t kMicrosecondDigits = 6;
constexpr size_t kLongestQuote = 40;
constexpr int kMostErrno = 4095;

using Words = std::vector<std::string_view>;

// What is wrong with a line; its number is put before this later.
[[noreturn]] void fail(const std::string& what) {
  throw TraceError(what);
}

// With what stands in the file, shortened, and nothing in it that a terminal would obey.
[[noreturn]] void fail(const std::string& what, std::string_view word) {
  std::string text = what + ": ";
  for (const char c : word.substr(0, kLongestQuote)) {
    text += c >= ' ' && c <= '~' ? c : '?';
  }
  if (word.size() > kLongestQuote) {
    text += "...";
  }
  fail(text);
}

Words wordsOf(std::string_view line) {
  constexpr std::string_view blanks = " \t\r";
  Words words;
  for (;;) {
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    if (line.empty()) {
      return words;
    }
    if (words.size() == kMostWords) {
      fail("too many words");
    }
    const std::string_view word = line.substr(0, line.find_first_of(blanks));
    words.push_back(word);
    line.remove_prefix(word.size());
  }
}

std::optional<uint32_t> toNumber(std::string_view word, int base) {
  uint32_t value = 0;
  const char* const end = word.data() + word.size();
  const auto [rest, error] = std::from_chars(word.data(), end, value, base);
  return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

uint32_t numberOf(std::string_view word) {
  const auto number = toNumber(word, 10);
  if (!number) {
    fail("not a number", word);
  }
  return *number;
}

uint32_t addressOf(std::string_view word) {
  const auto address = word.size() == kWordDigits ? toNumber(word, 16) : std::nullopt;
  if (!address) {
    fail("not an address of 8 hexadecimal digits", word);
  }
  return *address;
}

uint32_t byteCountOf(std::string_view word) {
  const uint32_t count = numberOf(word);
  if (count > kMostTracedBytes) {
    fail("more bytes than a request carries", word);
  }
  return count;
}

uint64_t timeOf(std::string_view word) {
  const size_t point = std::min(word.find('.'), word.size());
  const std::string_view seconds = word.substr(0, point);
  const std::string_view fraction = word.substr(std::min(point + 1, word.size()));
  const auto whole = toNumber(seconds, 10);
  const auto part = toNumber(fraction, 10);
  if (!whole || !part || seconds.size() > kMostSecondsDigits || fraction.size() != kMicrosecondDigits) {
    fail("not a time such as 12.345678", word);
  }
  return uint64_t{*whole} * 1000000 + *part;
}

// A moment such as 2026-03-01T12:00:00.000000Z, in microseconds since the epoch.
int64_t momentOf(std::string_view word) {
  constexpr std::string_view pattern = "dddd-dd-ddTdd:dd:dd.ddddddZ";
  const auto fits = [](char c, char wanted) { return wanted == 'd' ? c >= '0' && c <= '9' : c == wanted; };
  if (!std::ranges::equal(word, pattern, fits)) {
    fail("not a moment such as 2026-03-01T12:00:00.000000Z", word);
  }
  const auto field = [word](size_t place, size_t length) {
    return toNumber(word.substr(place, length), 10).value_or(0);
  };
  using namespace std::chrono;
  const year_month_day date(year(static_cast<int>(field(0, 4))), month(field(5, 2)), day(field(8, 2)));
  if (!date.ok()) {
    fail("no such day", word);
  }
  const auto moment = sys_days(date) + hours(field(11, 2)) + minutes(field(14, 2)) + seconds(field(17, 2)) +
                      microseconds(field(20, 6));
  return duration_cast<microseconds>(moment.time_since_epoch()).count();
}

TraceThread threadOf(std::string_view word) {
  for (const TraceThread thread : {TraceThread::kCommand, TraceThread::kNotification}) {
    if (word.size() == 1 && word.front() == static_cast<char>(thread)) {
      return thread;
    }
  }
  fail("neither c nor n for the thread", word);
}

int deviceOf(std::string_view word) {
  if (word == "-") {
    return -1;
  }
  if (word.size() != 1 || word.front() < '0' || word.front() > '9') {
    fail("neither a device's digit nor -", word);
  }
  return word.front() - '0';
}

// Takes the quotes away and what stands for other characters back.
std::string fileOf(std::string_view word) {
  if (word.size() < 2 || word.front() != '"' || word.back() != '"') {
    fail("not a file name in quotes", word);
  }
  const std::string_view quoted = word.substr(1, word.size() - 2);
  std::string name;
  for (size_t i = 0; i < quoted.size(); i++) {
    if (quoted[i] != '%') {
      name += quoted[i];
      continue;
    }
    const std::string_view digits = quoted.substr(i + 1, 2);
    const auto code = toNumber(digits, 16);
    if (!code || digits.size() != 2) {
      fail("not two hexadecimal digits behind % in a file name", word);
    }
    name += static_cast<char>(*code);
    i += 2;
  }
  if (name.size() > MAX_FW_FN_SIZE) {
    fail("a file name longer than the driver's field", word);
  }
  return name;
}

// The bytes of one direction as they come line by line.
class ByteCollector {
 public:
  // Words of hexadecimal digits; one of four bytes may be repeated.
  void take(const Words& words, size_t wanted) {
    for (const std::string_view word : words) {
      takeWord(word, wanted);
    }
  }

  size_t size() const { return bytes_.size(); }
  std::vector<uint8_t> release() { return std::exchange(bytes_, {}); }

 private:
  void takeWord(std::string_view word, size_t wanted) {
    const std::string_view digits = word.substr(0, word.find('*'));
    uint32_t times = 1;
    if (digits.size() < word.size()) {
      times = byteCountOf(word.substr(digits.size() + 1));
    }
    if (digits.empty() || digits.size() > kWordDigits || digits.size() % 2 != 0 ||
        (times != 1 && digits.size() != kWordDigits)) {
      fail("not bytes in hexadecimal digits", word);
    }
    uint8_t bytes[kWordDigits / 2];
    const size_t length = digits.size() / 2;
    for (size_t i = 0; i < length; i++) {
      const auto byte = toNumber(digits.substr(2 * i, 2), 16);
      if (!byte) {
        fail("not bytes in hexadecimal digits", word);
      }
      bytes[i] = static_cast<uint8_t>(*byte);
    }
    if (length * times > wanted - bytes_.size()) {
      fail("more bytes than announced", word);
    }
    const size_t end = bytes_.size();
    bytes_.resize(end + length * times);
    for (uint32_t i = 0; i < times; i++) {
      std::memcpy(bytes_.data() + end + i * length, bytes, length);
    }
  }

  std::vector<uint8_t> bytes_;
};

// An exchange whose lines are being read.
struct Unfinished {
  TracedExchange exchange;
  TraceAnswer answer;
  size_t line = 0;
  size_t sentLength = 0;
  size_t returnedLength = 0;
  ByteCollector sent;
  ByteCollector returned;

  bool whole() const { return sent.size() == sentLength && returned.size() == returnedLength; }
};

class Parser {
 public:
  FieldTrace parse(std::string_view text);

 private:
  void takeLine(std::string_view line);
  void takeTitle(const Words& words);
  void takeHead(const Words& words);
  size_t takeArguments(const Words& words, size_t next, Unfinished& started);
  void takeResult(const Words& words, size_t next, Unfinished& started);
  void takeBytes(const Words& words);
  void finish();

  using Key = std::tuple<TraceThread, TraceRequest>;

  FieldTrace trace_;
  size_t line_ = 0;
  bool titled_ = false;
  std::optional<Unfinished> unfinished_;
  std::map<Key, std::shared_ptr<const TraceAnswer>> latest_;
  size_t carried_ = 0;
};

FieldTrace Parser::parse(std::string_view text) {
  try {
    while (!text.empty()) {
      const size_t end = text.find('\n');
      if (end == std::string_view::npos) {
        trace_.cut = true;
        break;
      }
      line_++;
      takeLine(text.substr(0, end));
      text.remove_prefix(end + 1);
    }
    if (!titled_) {
      line_ = 1;
      fail("the first line is not that of a field trace: gfast-trace 1");
    }
    if (unfinished_ && !unfinished_->whole()) {
      trace_.cut = true;
    } else {
      finish();
    }
  } catch (const TraceError& mistake) {
    throw TraceError(std::to_string(line_) + ": " + mistake.what());
  }
  return std::move(trace_);
}

void Parser::takeLine(std::string_view line) {
  if (!titled_) {
    takeTitle(line.starts_with(kTraceTitle) ? wordsOf(line) : Words());
    return;
  }
  const size_t start = line.find_first_not_of(" \t\r");
  if (start == std::string_view::npos || line[start] == '#') {
    return;
  }
  const Words words = wordsOf(line);
  if (words.front() == ">" || words.front() == "<") {
    takeBytes(words);
  } else {
    finish();
    takeHead(words);
  }
}

void Parser::takeTitle(const Words& words) {
  constexpr size_t started = 2;
  constexpr size_t blanked = 3;
  if (words.size() < 2 || words[1] != "1" || words.size() > blanked + 1 ||
      (words.size() > blanked && words[blanked] != kTraceBlanked)) {
    fail("the first line is not that of a field trace: gfast-trace 1");
  }
  titled_ = true;
  trace_.blanked = words.size() > blanked;
  if (words.size() > started && words[started] != kUnknownMoment) {
    trace_.started_us = momentOf(words[started]);
    trace_.started = words[started];
  }
}

void Parser::takeHead(const Words& words) {
  constexpr size_t fixed = 4;
  if (words.size() < fixed) {
    fail("an exchange begins with time, thread, device and request");
  }
  Unfinished started;
  started.line = line_;
  started.exchange.time_us = timeOf(words[0]);
  started.exchange.thread = threadOf(words[1]);
  started.exchange.request.device = deviceOf(words[2]);
  const TraceForm* const form = traceFormByName(words[3]);
  if (form == nullptr) {
    fail("no such request", words[3]);
  }
  started.exchange.request.kind = form->kind;
  const size_t next = takeArguments(words, fixed, started);
  if (form->answered) {
    takeResult(words, next, started);
  } else if (next != words.size()) {
    fail("more than this request has", words[next]);
  }
  unfinished_ = std::move(started);
}

size_t Parser::takeArguments(const Words& words, size_t next, Unfinished& started) {
  TraceRequest& request = started.exchange.request;
  const std::string_view arguments = traceForm(request.kind).arguments;
  if (words.size() - next < arguments.size()) {
    fail("an argument is missing");
  }
  for (size_t i = 0; i < arguments.size(); i++) {
    const std::string_view word = words[next + i];
    switch (arguments[i]) {
      case 'a':
        request.numbers[i] = addressOf(word);
        break;
      case 'f':
        request.file = fileOf(word);
        break;
      case 's':
        started.sentLength = request.numbers[i] = byteCountOf(word);
        break;
      default:
        request.numbers[i] = numberOf(word);
    }
  }
  return next + arguments.size();
}

void Parser::takeResult(const Words& words, size_t next, Unfinished& started) {
  if (words.size() < next + 2 || words[next] != "=") {
    fail("the result is missing");
  }
  const std::string_view result = words[next + 1];
  const bool returns = traceForm(started.exchange.request.kind).returns;
  size_t used = next + 2;
  if (result == "same" && returns) {
    started.exchange.same = true;
  } else if (result == "ok") {
    if (returns && used < words.size()) {
      started.returnedLength = byteCountOf(words[used++]);
    }
  } else if (const auto named = errnoByName(result)) {
    started.answer.error = *named;
  } else if (const auto number = toNumber(result, 10); number && *number >= 1 && *number <= kMostErrno) {
    started.answer.error = static_cast<int>(*number);
  } else {
    fail("not a result", result);
  }
  if (used != words.size()) {
    fail("more than this request has", words[used]);
  }
}

void Parser::takeBytes(const Words& words) {
  if (!unfinished_) {
    fail("bytes without a request before them");
  }
  const bool sent = words.front() == ">";
  ByteCollector& bytes = sent ? unfinished_->sent : unfinished_->returned;
  bytes.take(Words(words.begin() + 1, words.end()),
             sent ? unfinished_->sentLength : unfinished_->returnedLength);
}

void Parser::finish() {
  if (!unfinished_) {
    return;
  }
  Unfinished finished = std::move(*unfinished_);
  unfinished_.reset();
  if (!finished.whole()) {
    line_ = finished.line;
    fail("fewer bytes follow than announced");
  }
  carried_ += finished.sentLength + finished.returnedLength;
  if (carried_ > kMostCarriedBytes) {
    fail("the exchanges carry too many bytes in all");
  }
  TracedExchange& exchange = finished.exchange;
  exchange.request.sent = finished.sent.release();
  auto& latest = latest_[{exchange.thread, exchange.request}];
  if (!exchange.same) {
    finished.answer.returned = finished.returned.release();
    latest = std::make_shared<const TraceAnswer>(std::move(finished.answer));
  } else if (latest == nullptr) {
    line_ = finished.line;
    fail("no earlier answer that this could be the same as");
  }
  exchange.answer = latest;
  trace_.exchanges.push_back(std::move(exchange));
}

// The whole file, or as much as a trace may have and a byte more.
std::string contentOf(std::FILE* file) {
  std::string content;
  char piece[65536];
  for (size_t got = 0;
       content.size() <= kMostTraceBytes && (got = std::fread(piece, 1, sizeof piece, file)) > 0;) {
    content.append(piece, got);
  }
  return content;
}

}  // namespace

FieldTrace parseTrace(std::string_view text) {
  if (text.size() > kMostTraceBytes) {
    throw TraceError("1: the trace is larger than " + std::to_string(kMostTraceBytes >> 20) + " MiB");
  }
  return Parser().parse(text);
}

FieldTrace readTrace(const std::string& file) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> opened(std::fopen(file.c_str(), "re"), std::fclose);
  errno = opened == nullptr ? errno : 0;
  const std::string content = opened == nullptr ? "" : contentOf(opened.get());
  if (opened == nullptr || std::ferror(opened.get()) != 0) {
    throw TraceError(file + ": " + std::strerror(errno));
  }
  try {
    return parseTrace(content);
  } catch (const TraceError& error) {
    throw TraceError(file + ":" + error.what());
  }
}

}  // namespace gfast::replay

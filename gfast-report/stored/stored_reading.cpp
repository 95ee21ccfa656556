#include "gfast-report/stored/stored_reading.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "gfast-report/report_error.h"
#include "qvrcli/text/printable.h"

namespace gfast::report {

namespace {

using namespace gfast::console;
using Json = nlohmann::json;

constexpr size_t kMostOfFile = size_t{16} << 20;
constexpr size_t kMostOfText = 400;
constexpr size_t kMostFindings = 50;

// ---- Parts of a document ----

const Json& nothing() {
  static const Json none;
  return none;
}

const Json& at(const Json& json, const char* key) {
  const auto found = json.is_object() ? json.find(key) : json.end();
  return json.is_object() && found != json.end() ? *found : nothing();
}

const Json& at(const Json& json, std::initializer_list<const char*> path) {
  const Json* part = &json;
  for (const char* key : path) {
    part = &at(*part, key);
  }
  return *part;
}

const Json& firstOf(const Json& json) {
  return json.is_array() && !json.empty() ? json.front() : nothing();
}

std::string textOf(const Json& json) {
  return json.is_string() ? printable(json.get_ref<const std::string&>().substr(0, kMostOfText)) : "";
}

std::optional<int64_t> numberOf(const Json& json, int64_t least, int64_t most) {
  if (!json.is_number_integer()) {
    return std::nullopt;
  }
  const auto number = json.get<int64_t>();
  return number >= least && number <= most ? std::optional(number) : std::nullopt;
}

std::optional<uint32_t> countOf(const Json& json) {
  const auto number = numberOf(json, 0, UINT32_MAX);
  return number ? std::optional(static_cast<uint32_t>(*number)) : std::nullopt;
}

std::optional<double> tenthsOf(const Json& json) {
  constexpr int64_t kMost = 10000;
  const auto number = numberOf(json, -kMost, kMost);
  return number ? std::optional(static_cast<double>(*number) / 10) : std::nullopt;
}

// ---- Bytes ----

int sixBitsOf(char character) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const size_t place = kDigits.find(character);
  return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

// No bytes when it is not base 64.
std::vector<uint8_t> bytesOf(const Json& json) {
  if (!json.is_string()) {
    return {};
  }
  std::vector<uint8_t> bytes;
  uint32_t collected = 0;
  int bits = 0;
  for (const char character : json.get_ref<const std::string&>()) {
    if (character == '=') {
      break;
    }
    const int digit = sixBitsOf(character);
    if (digit < 0) {
      return {};
    }
    collected = (collected << 6 | static_cast<uint32_t>(digit)) & 0xFFFFFF;
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      bytes.push_back(static_cast<uint8_t>(collected >> bits));
    }
  }
  return bytes;
}

std::string textInBytes(const Json& json) {
  const std::vector<uint8_t> bytes = bytesOf(json);
  return printable(std::string(bytes.begin(), std::ranges::find(bytes, 0)));
}

// ---- Tones ----

std::vector<uint8_t> bitsIn(const Json& json) {
  std::vector<uint8_t> bits;
  for (const uint8_t pair : bytesOf(json)) {
    bits.push_back(pair >> 4);
    bits.push_back(pair & 15);
  }
  bits.resize(std::min<size_t>(bits.size(), QVR_MAX_NUMBER_OF_TONES));
  return bits;
}

constexpr uint8_t kNoOctet = 255;
constexpr int kLeastNoHlog = 1022;

float snrOf(uint8_t code) {
  return static_cast<float>(code) / 2 - 32;
}

float noiseOf(uint8_t code) {
  return -35 - static_cast<float>(code) / 2;
}

std::vector<std::optional<float>> levelsIn(const Json& json, float (*decibels)(uint8_t)) {
  std::vector<std::optional<float>> levels;
  for (const uint8_t code : bytesOf(json)) {
    levels.push_back(code == kNoOctet ? std::nullopt : std::optional(decibels(code)));
  }
  levels.resize(std::min<size_t>(levels.size(), QVR_MAX_NUMBER_OF_TONES));
  return levels;
}

std::vector<std::optional<float>> hlogIn(const Json& json) {
  const std::vector<uint8_t> bytes = bytesOf(json);
  std::vector<std::optional<float>> levels;
  for (size_t i = 0; i + 1 < bytes.size() && levels.size() < QVR_MAX_NUMBER_OF_TONES; i += 2) {
    const int code = bytes[i] * 256 + bytes[i + 1];
    levels.push_back(code >= kLeastNoHlog ? std::nullopt : std::optional(6 - static_cast<float>(code) / 10));
  }
  return levels;
}

ToneDirection tonesIn(const Json& status, const Json& own) {
  ToneDirection tones;
  tones.bits = bitsIn(at(status, "bitsps"));
  tones.snr_db = levelsIn(at(status, {"snr", "snrps"}), snrOf);
  tones.noise_dbmHz = levelsIn(at(own, "noise"), noiseOf);
  tones.hlog_db = hlogIn(at(own, "hlog"));
  tones.attenuation_db = tenthsOf(at(status, "signal-attenuation"));
  return tones;
}

// ---- The rest ----

DirectionReading directionIn(const Json& channel, const Json& status) {
  DirectionReading direction;
  direction.netDataRate_kbps = countOf(at(channel, "net-data-rate"));
  direction.attainableNetDataRate_kbps = countOf(at(channel, "attainable-net-data-rate"));
  direction.snrMargin_db = tenthsOf(at(status, "snr-margin"));
  direction.transmitPower_dbm = tenthsOf(at(status, "actual-aggregate-transmit-power"));
  return direction;
}

StoredEnd endIn(const Json& inventory) {
  return {textInBytes(at(inventory, "system-vendor-id")), textInBytes(at(inventory, "version-number")),
          textInBytes(at(inventory, "system-serial-number"))};
}

void addErrors(const Json& interval, StoredErrors& errors) {
  errors.measured_s += countOf(at(interval, {"ftu-o", "measured-time"})).value_or(0);
  errors.network += countOf(at(interval, {"ftu-o", "errored-seconds"})).value_or(0);
  errors.subscriber += countOf(at(interval, {"ftu-r", "errored-seconds"})).value_or(0);
}

StoredErrors errorsIn(const Json& intervals) {
  StoredErrors errors;
  addErrors(at(intervals, "current"), errors);
  const Json& history = at(intervals, "history");
  for (size_t i = 0; history.is_array() && i < history.size(); i++) {
    addErrors(history[i], errors);
  }
  return errors;
}

std::vector<StoredFinding> findingsIn(const Json& list) {
  std::vector<StoredFinding> findings;
  for (size_t i = 0; list.is_array() && i < std::min(list.size(), kMostFindings); i++) {
    findings.push_back({textOf(at(list[i], "what")), textOf(at(list[i], "text"))});
  }
  return findings;
}

}  // namespace

StoredReading storedIn(const std::string& text, const std::string& name) {
  const Json document = Json::parse(text, nullptr, false);
  const Json& interface = firstOf(at(document, {"ietf-interfaces:interfaces-state", "interface"}));
  const Json& reading = at(document, "gfast-cli-reading:reading");
  const Json& own = firstOf(at(reading, "line"));
  if (document.is_discarded() || !interface.is_object() || !own.is_object()) {
    throw ReportError(name + ": is no reading of a line");
  }
  const Json& fast = at(interface, {"bbf-fastdsl:line", "bbf-fast:line"});
  const Json& channel = at(fast, {"channel", "status"});
  const Json& status = at(fast, "status");
  StoredReading stored;
  stored.name = textOf(at(interface, "name"));
  stored.time = textOf(at(reading, "time"));
  stored.state = textOf(at(own, "state"));
  stored.firmware = textOf(at(own, "firmware"));
  stored.downstream = directionIn(at(channel, "downstream"), at(status, "downstream"));
  stored.upstream = directionIn(at(channel, "upstream"), at(status, "upstream"));
  stored.tones.downstream = tonesIn(at(status, "downstream"), at(own, {"tones", "downstream"}));
  stored.tones.upstream = tonesIn(at(status, "upstream"), at(own, {"tones", "upstream"}));
  stored.network = endIn(at(fast, {"inventory", "ftu-o"}));
  stored.subscriber = endIn(at(fast, {"inventory", "ftu-r"}));
  stored.errors = errorsIn(at(fast, {"performance", "intervals-15min"}));
  stored.findings = findingsIn(at(own, "finding"));
  return stored;
}

StoredReading readStored(const std::string& file) {
  const std::unique_ptr<FILE, int (*)(FILE*)> in(std::fopen(file.c_str(), "rb"), std::fclose);
  if (in == nullptr) {
    throw ReportError(file + ": " + std::strerror(errno));
  }
  std::string text;
  std::array<char, 65536> piece;
  for (size_t count = 0; (count = std::fread(piece.data(), 1, piece.size(), in.get())) > 0;) {
    text.append(piece.data(), count);
    if (text.size() > kMostOfFile) {
      throw ReportError(file + ": is too large for a reading of a line");
    }
  }
  if (std::ferror(in.get()) != 0) {
    throw ReportError(file + ": " + std::strerror(errno));
  }
  return storedIn(text, file);
}

}  // namespace gfast::report

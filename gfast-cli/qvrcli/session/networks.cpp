#include "qvrcli/session/networks.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <string>

namespace gfast::console {

namespace {

constexpr uint32_t kAddressBits = 32;
constexpr uint32_t kLargestPort = 65535;
constexpr const char* kSeparators = ", \t";

std::optional<uint32_t> parseAddress(std::string_view text) {
  in_addr address{};
  if (inet_pton(AF_INET, std::string(text).c_str(), &address) != 1) {
    return std::nullopt;
  }
  return ntohl(address.s_addr);
}

std::optional<uint32_t> parseNumber(std::string_view text, uint32_t largest) {
  uint32_t number = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, number);
  if (error != std::errc() || end != last || number > largest) {
    return std::nullopt;
  }
  return number;
}

std::optional<Network> parseNetwork(std::string_view text) {
  const size_t slash = text.find('/');
  const auto address = parseAddress(text.substr(0, slash));
  const auto prefix = slash == std::string_view::npos ? std::optional(kAddressBits)
                                                      : parseNumber(text.substr(slash + 1), kAddressBits);
  if (!address || !prefix) {
    return std::nullopt;
  }
  const uint32_t mask = *prefix == 0 ? 0 : ~uint32_t{0} << (kAddressBits - *prefix);
  if ((*address & ~mask) != 0) {
    return std::nullopt;
  }
  return Network{*address, mask};
}

}  // namespace

std::optional<Endpoint> parseEndpoint(std::string_view text) {
  const size_t colon = text.find(':');
  const auto address = parseAddress(text.substr(0, colon));
  if (!address) {
    return std::nullopt;
  }
  if (colon == std::string_view::npos) {
    return Endpoint{*address, std::nullopt};
  }
  const auto port = parseNumber(text.substr(colon + 1), kLargestPort);
  if (!port) {
    return std::nullopt;
  }
  return Endpoint{*address, static_cast<uint16_t>(*port)};
}

std::optional<std::vector<Network>> parseNetworks(std::string_view text) {
  std::vector<Network> networks;
  for (;;) {
    text.remove_prefix(std::min(text.find_first_not_of(kSeparators), text.size()));
    if (text.empty()) {
      break;
    }
    const size_t length = std::min(text.find_first_of(kSeparators), text.size());
    const auto network = parseNetwork(text.substr(0, length));
    if (!network) {
      return std::nullopt;
    }
    networks.push_back(*network);
    text.remove_prefix(length);
  }
  if (networks.empty()) {
    return std::nullopt;
  }
  return networks;
}

}  // namespace gfast::console

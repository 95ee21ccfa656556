// IPv4 addresses and networks as an operator writes them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace gfast::console {

// Where a server listens. Addresses are in host order.
struct Endpoint {
  uint32_t address;
  std::optional<uint16_t> port;
};

struct Network {
  uint32_t address;  // its lowest
  uint32_t mask;

  bool contains(uint32_t other) const { return (other & mask) == address; }
};

// "192.0.2.1", or "192.0.2.1:9000" with a port of 0 to 65535.
std::optional<Endpoint> parseEndpoint(std::string_view text);

// Addresses ("192.0.2.1") and networks ("192.0.2.0/24"), separated by commas or blanks; at least one. Of a
// network's address the bits behind its prefix must be zero: it could be a slip of the prefix.
std::optional<std::vector<Network>> parseNetworks(std::string_view text);

}  // namespace gfast::console

// What a chip's receiver adds to the signal that arrives on the pair.
#pragma once

namespace gfast::board {

struct Receiver {
  double noise_dbm_hz;  // its own
  double loss_db;       // of the signal, before it is measured
};

// The network side takes its power from the subscriber over the same pair. The filter for it weakens what
// arrives, and its converter is heard.
constexpr Receiver kNetworkReceiver{-145, 1};
constexpr Receiver kSubscriberReceiver{-150, 0};

constexpr const Receiver& receiverOf(bool networkSide) {
  return networkSide ? kNetworkReceiver : kSubscriberReceiver;
}

}  // namespace gfast::board

// A place for one function that somebody registers and another thread calls.
#pragma once

#include <atomic>

namespace gfast {

// One registered function, or none. Registering while another thread calls is safe.
template <typename Callback>
class CallbackSlot {
 public:
  void store(Callback callback) { callback_.store(callback); }
  Callback load() const { return callback_.load(); }

  // Takes the slot if it is empty: whether it was.
  bool claim(Callback callback) {
    Callback empty = nullptr;
    return callback_.compare_exchange_strong(empty, callback);
  }

  // Calls what is registered at this moment.
  template <typename... Arguments>
  void notify(Arguments... arguments) const {
    if (const Callback callback = load()) {
      callback(arguments...);
    }
  }

 private:
  std::atomic<Callback> callback_{nullptr};
};

}  // namespace gfast

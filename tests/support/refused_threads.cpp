#include "support/refused_threads.h"

#include <atomic>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace {

std::atomic<bool> refused = false;

}  // namespace

// The linker leads calls of std::thread::_M_start_thread here; its first parameter is the thread itself.
extern "C" {
void __real__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
    std::thread* self, std::unique_ptr<std::thread::_State> work, void (*depends)());
void __wrap__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
    std::thread* self, std::unique_ptr<std::thread::_State> work, void (*depends)());
}

void __wrap__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
    std::thread* self, std::unique_ptr<std::thread::_State> work, void (*depends)()) {
  if (refused) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  }
  __real__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
      self, std::move(work), depends);
}

RefusedThreads::RefusedThreads() {
  refused = true;
}

RefusedThreads::~RefusedThreads() {
  refused = false;
}

// What the fuzzers share: a console in showtime whose chips answer some requests with a fuzzer's bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "driver/driver.h"
#include "support/simulated_console.h"

using Input = std::span<const uint8_t>;

inline std::string_view textOf(Input input) {
  return {reinterpret_cast<const char*>(input.data()), input.size()};
}

// Passes on to the board what the answer does not take over.
class AnsweringDriver final : public gfast::Driver {
 public:
  // Answers a request, or returns false.
  using Answer = std::function<bool(uint32_t code, gfast_iocreq& request)>;

  explicit AnsweringDriver(SimulatedConsole& console) : console_(console) {}

  void answer(Answer answer) { answer_ = std::move(answer); }

  int open(int device) override { return console_.board().open(device); }
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override;
  void close(int descriptor) override { console_.board().close(descriptor); }
  void rediscover() override { console_.rediscovered(); }

 private:
  SimulatedConsole& console_;
  Answer answer_;
};

// In a folder of its own, which holds the files that the sweeps' commands read.
class FuzzedConsole {
 public:
  // The process's console, started at the first call.
  static FuzzedConsole& get();

  SimulatedConsole& console() { return console_; }

  // Runs lines while requests are answered like this. An assertion ends them, not the process.
  void run(const std::string& lines, AnsweringDriver::Answer answer);

  // Calls something that may end in an assertion.
  void act(const std::function<void()>& action, AnsweringDriver::Answer answer = {});

 private:
  FuzzedConsole();
  void comeBack();

  SimulatedConsole console_;
  AnsweringDriver driver_;
  unsigned runs_ = 0;
};

// The answer to a memory read: the area's bytes are those of the input, and zero behind them.
bool answerRead(gfast_iocreq& request, uint32_t address, uint32_t length, Input bytes);

// A file of the input's bytes, as long as the object lives.
class InputFile {
 public:
  explicit InputFile(Input input);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  int descriptor_;
  std::string path_;
};

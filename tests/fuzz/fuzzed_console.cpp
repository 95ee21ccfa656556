#include "fuzz/fuzzed_console.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "qvrcli/session/libcli_structs.h"
#include "support/temporary_folder.h"
#include "sweeps/swept_commands.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr double kLongestWait_s = 3600;           // on the board
constexpr size_t kMostPrinted = size_t{4} << 20;  // by the lines of one input
constexpr unsigned kRunsBetweenCleanings = 300;

struct Asserted {};

BoardConfig boardInShowtime() {
  BoardConfig config;
  for (ChipConfig& device : config.device) {
    device.line = LineState::kShowtime;
  }
  return config;
}

// Its folder is left behind when the process ends: a fuzzer ends in many ways.
void enterFolder() {
  static const auto& folder = *new TemporaryFolder;
  if (chdir(folder.path().c_str()) < 0) {
    std::abort();
  }
}

void cleanFolder() {
  for (const auto& entry : std::filesystem::directory_iterator(".")) {
    std::error_code ignored;
    std::filesystem::remove_all(entry.path(), ignored);
  }
  writeSweptFiles();
}

void printNowhere() {
  const int nowhere = open("/dev/null", O_WRONLY);
  dup2(nowhere, STDOUT_FILENO);
  close(nowhere);
}

}  // namespace

// Linked in the place of gfast::DoAssert, whose end of the process would be taken for a finding.
extern "C" void __wrap__ZN5gfast8DoAssertEjPKciS1_jz() {
  throw Asserted();
}

int AnsweringDriver::request(int descriptor, uint32_t code, gfast_iocreq& request) {
  return answer_ && answer_(code, request) ? 0 : console_.board().request(descriptor, code, request);
}

FuzzedConsole& FuzzedConsole::get() {
  static auto& console = *new FuzzedConsole;
  return console;
}

FuzzedConsole::FuzzedConsole() : console_(boardInShowtime()), driver_(console_) {
  std::signal(SIGPIPE, SIG_IGN);
  printNowhere();
  enterFolder();
  cleanFolder();
  console_.loseOutputAfter(kMostPrinted);
  console_.start(driver_);
  console_.run("start logging");
}

void FuzzedConsole::run(const std::string& lines, AnsweringDriver::Answer answer) {
  act([&] { console_.run(lines); }, std::move(answer));
}

void FuzzedConsole::act(const std::function<void()>& action, AnsweringDriver::Answer answer) {
  if (++runs_ % kRunsBetweenCleanings == 0) {
    cleanFolder();
  }
  printNowhere();
  console_.clock().endWaitsAt(console_.clock().seconds() + kLongestWait_s);
  driver_.answer(std::move(answer));
  try {
    action();
  } catch (const Asserted&) {
    // What the interpreter had for the line is lost.
    cli_def* const cli = console_.interpreter();
    cli->pipeline = nullptr;
    cli->found_optargs = nullptr;
    cli->filters = nullptr;
  }
  driver_.answer({});
  console_.clock().endWaitsAt(1e18);
  printNowhere();
  comeBack();
}

// A fuzzer erases flash and resets chips: the next input finds a board in showtime all the same.
void FuzzedConsole::comeBack() {
  const std::string states = console_.run("show line state");
  if (states.find("show time") == std::string::npos ||
      states.find("show time") == states.rfind("show time")) {
    console_.renewBoard();
  }
}

bool answerRead(gfast_iocreq& request, uint32_t address, uint32_t length, Input bytes) {
  gfast_memread& read = request.req_u.memread;
  if (read.hw_mem_addr < address || read.hw_mem_addr - address >= length) {
    return false;
  }
  const size_t from = std::min<size_t>(read.hw_mem_addr - address, bytes.size());
  const size_t count = std::min<size_t>(read.hw_mem_len, bytes.size() - from);
  std::fill_n(read.buf, read.hw_mem_len, char{0});
  std::ranges::copy(bytes.subspan(from, count), read.buf);
  read.datalen_rcvd_from_hw = read.datalen_copied_to_user = read.hw_mem_len;
  return true;
}

InputFile::InputFile(Input input)
    : descriptor_(memfd_create("input", MFD_CLOEXEC)), path_("/proc/self/fd/" + std::to_string(descriptor_)) {
  if (write(descriptor_, input.data(), input.size()) != static_cast<ssize_t>(input.size())) {
    std::abort();
  }
}

InputFile::~InputFile() {
  close(descriptor_);
}

// Lets each driver request of each command fail, vanish, come late or answer nonsense, and looks at whether
// the console goes on. Each case runs in a fork of a console in showtime, so it begins as all others do, and
// a process that ends is counted, not suffered.
//
//   fault_sweep [--faults N] [--bytes N] [--only TEXT] [--verbose]
//
// --faults N takes each N-th case of requests that fail, --bytes N each N-th of answers with other bytes,
// --only those of commands that contain the text. The last lines tell how many commands, requests and cases
// there were and which processes ended. Exit status 1: a case failed; 2: a command of the vocabulary is not
// in the list.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/simulated_console.h"
#include "support/temporary_folder.h"
#include "sweeps/faulty_driver.h"
#include "sweeps/swept_commands.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr double kLongestWait_s = 4 * 3600;  // on the board; then the session is lost
constexpr unsigned kLongestCase_s = 20;      // of the processor's time
constexpr unsigned kLongestStop_s = 300;     // of real time, also on a busy machine
constexpr double kRecovery_s = 30;

// Commands that ask more often ask the same in a loop, and take so long that only so many cases of theirs
// run.
constexpr uint32_t kManyRequests = 500;
constexpr size_t kEveryOfMany = 2003;

constexpr const char* kVersion = "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $\n";

// Commands that end the process, or wait without limit, by the product's own rules (docs/console.md).
struct KnownEnd {
  const char* command;
  const char* message;  // of the assertion
};
constexpr KnownEnd kKnownEnds[] = {
    {"start extcom-test", "Unknown device handle"},
    {"show extcom-results", "Unknown device handle"},
};
constexpr const char* kMayWaitForEver[] = {"restart system"};

// What a case leaves for the sweep to read.
struct Report {
  bool done;
  bool waitedForEver;
  char failure[400];
  SeenRequests seen;
};

// Requests that fail, and answers with other bytes.
struct Half {
  const char* name;
  size_t every;  // one case of so many is run
  size_t cases = 0;
  size_t run = 0;
};

struct Options {
  size_t faults = 1;
  size_t bytes = 1;
  std::string only;
  bool verbose = false;
};

// What is swept: a command, the start, or a minute in which nobody types.
struct Subject {
  std::string name;
  std::function<void(SimulatedConsole&, FaultyDriver&)> prepare;
  std::function<void(SimulatedConsole&, FaultyDriver&)> act;
};

BoardConfig boardInShowtime() {
  BoardConfig config;
  for (ChipConfig& device : config.device) {
    device.line = LineState::kShowtime;
  }
  return config;
}

bool isTrue(const std::string& printed, const char* expected, const char* what, Report& report) {
  if (printed == expected) {
    return true;
  }
  std::snprintf(report.failure, sizeof report.failure, "%s: %s", what, printed.c_str());
  return false;
}

bool showsBootRegister(const std::string& printed) {
  return printed.size() == std::strlen("e0000238: 01800000\n") && printed.starts_with("e0000238: ");
}

// The next commands work: one that asks nobody, and one of each chip.
void lookAround(SimulatedConsole& console, Report& report) {
  if (!isTrue(console.run("show version"), kVersion, "show version", report)) {
    return;
  }
  console.pass(kRecovery_s);
  for (const char* const line : {"read memory 0 e0000238 4", "read memory 1 e0000238 4"}) {
    std::string printed = console.run(line);
    if (!showsBootRegister(printed)) {
      console.run("rediscover");
      printed = console.run(line);
    }
    if (!showsBootRegister(printed)) {
      std::snprintf(report.failure, sizeof report.failure, "%s: %s", line, printed.c_str());
    }
  }
}

// What a chip says reaches no terminal as a control character.
void expectPrintable(const std::string& printed, Report& report) {
  const auto isPrintable = [](char character) {
    return (character >= ' ' && character <= '~') || character == '\n' || character == '\t';
  };
  const auto found = std::ranges::find_if_not(printed, isPrintable);
  if (found != printed.end()) {
    std::snprintf(report.failure, sizeof report.failure, "prints the byte %d in: %s",
                  static_cast<unsigned char>(*found), printed.c_str());
  }
}

class Sweep {
 public:
  explicit Sweep(const Options& options)
      : options_(options),
        faults_{"fault sweep", options.faults},
        bytes_{"byte sweep", options.bytes},
        console_(boardInShowtime()),
        report_(shareReport()),
        driver_(console_, report_->seen),
        log_(folder_.file("log.txt")) {
    if (chdir(folder_.path().c_str()) < 0) {
      std::abort();
    }
    writeSweptFiles();
  }

  int sweepAll() {
    const auto nothing = [](SimulatedConsole&, FaultyDriver&) {};
    sweep(
        {"(start)", nothing, [](SimulatedConsole& console, FaultyDriver& driver) { console.start(driver); }});
    console_.start(driver_);
    console_.clock().awaitOtherThread();
    console_.pass(2);
    sweep({"(a minute)", nothing, [](SimulatedConsole& console, FaultyDriver&) { console.pass(60); }});
    sweep({"(a reboot, seen by the notification thread)",
           [](SimulatedConsole& console, FaultyDriver&) { console.run("start logging\nreboot"); },
           [](SimulatedConsole& console, FaultyDriver&) { console.pass(20); }});
    sweep({"(a quarter hour)", nothing, [](SimulatedConsole& console, FaultyDriver&) { console.pass(910); }});
    for (const SweptCommand& command : sweptCommands()) {
      const bool configures = command.mode == MODE_CONFIG;
      const std::string typed = configures ? "configure\n" + command.line : command.line;
      sweep({(configures ? "configure; " : "") + command.line,
             [&](SimulatedConsole& console, FaultyDriver&) { console.run(command.setup); },
             [this, typed](SimulatedConsole& console, FaultyDriver&) {
               expectPrintable(console.run(typed), *report_);
             }});
    }
    return conclude();
  }

 private:
  static Report* shareReport() {
    return static_cast<Report*>(
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  }

  void sweep(const Subject& subject) {
    if (subject.name.find(options_.only) == std::string::npos) {
      return;
    }
    commands_++;
    runCase(subject, nullptr);
    const std::vector<SeenRequest> seen(
        report_->seen.list, report_->seen.list + std::min<size_t>(report_->seen.count, kMostSeen));
    requests_ += seen.size();
    const size_t before = faults_.run + bytes_.run;
    for (uint32_t i = 0; i < seen.size(); i++) {
      for (const Fault& fault : faultsOf(i, seen[i])) {
        Half& half = fault.spoilsBytes() ? bytes_ : faults_;
        if (half.cases++ % (half.every * (seen.size() > kManyRequests ? kEveryOfMany : 1)) == 0) {
          half.run++;
          runCase(subject, &fault);
        }
      }
    }
    if (options_.verbose) {
      std::printf("%-50s %5zu requests %7zu cases\n", subject.name.c_str(), seen.size(),
                  faults_.run + bytes_.run - before);
      std::fflush(stdout);
    }
  }

  void runCase(const Subject& subject, const Fault* fault) {
    report_->done = false;
    report_->waitedForEver = false;
    report_->failure[0] = '\0';
    report_->seen.count = 0;
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
      beChild(subject, fault);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const std::string name = subject.name + " (" + (fault == nullptr ? "no fault" : fault->text()) + ")";
    if (!report_->done || status != 0) {
      ended(subject, name, status);
    } else if (report_->failure[0] != '\0') {
      fail(name + ": " + report_->failure);
    } else if (report_->waitedForEver) {
      waited(subject, name);
    }
  }

  [[noreturn]] void beChild(const Subject& subject, const Fault* fault) {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    const rlimit processorTime{kLongestCase_s, kLongestCase_s};
    setrlimit(RLIMIT_CPU, &processorTime);
    alarm(kLongestStop_s);
    const int log = open(log_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    subject.prepare(console_, driver_);
    console_.clock().endWaitsAt(console_.clock().seconds() + kLongestWait_s);
    driver_.begin(fault);
    subject.act(console_, driver_);
    driver_.end();
    report_->waitedForEver = console_.clock().waitsEnded();
    console_.clock().endWaitsAt(1e18);
    if (console_.interpreter() != nullptr) {
      lookAround(console_, *report_);
    }
    report_->done = true;
    std::fflush(nullptr);
    _exit(0);
  }

  std::string printedByChild() const {
    std::string text;
    if (FILE* const log = std::fopen(log_.c_str(), "r"); log != nullptr) {
      char part[4096];
      size_t count;
      while ((count = std::fread(part, 1, sizeof part, log)) > 0) {
        text.append(part, count);
      }
      std::fclose(log);
    }
    return text;
  }

  void ended(const Subject& subject, const std::string& name, int status) {
    const std::string printed = printedByChild();
    for (const KnownEnd& known : kKnownEnds) {
      if (subject.name == known.command && printed.find(known.message) != std::string::npos) {
        knownEnds_[std::string(known.command) + ": " + known.message]++;
        return;
      }
    }
    const std::string how = WIFSIGNALED(status) ? "ended by signal " + std::to_string(WTERMSIG(status))
                                                : "ended with " + std::to_string(WEXITSTATUS(status));
    fail(name + ": " + how + "\n" + printed.substr(printed.size() - std::min<size_t>(printed.size(), 2000)));
  }

  void waited(const Subject& subject, const std::string& name) {
    for (const char* const command : kMayWaitForEver) {
      if (subject.name.starts_with(command)) {
        waits_[command]++;
        return;
      }
    }
    fail(name + ": waits without end");
  }

  void fail(const std::string& text) {
    failures_++;
    std::printf("FAILED %s\n", text.c_str());
  }

  int conclude() const {
    const std::string missing = missingCommands();
    if (!missing.empty()) {
      std::printf("not in the list of commands:\n%s", missing.c_str());
    }
    for (const auto& [what, times] : knownEnds_) {
      std::printf("ended %zu times, as it must: %s\n", times, what.c_str());
    }
    for (const auto& [what, times] : waits_) {
      std::printf("waited %zu times until its session was lost, as it must: %s\n", times, what.c_str());
    }
    for (const Half& half : {faults_, bytes_}) {
      std::printf("%s: %zu commands, %zu requests, %zu of %zu cases run\n", half.name, commands_, requests_,
                  half.run, half.cases);
    }
    std::printf("%zu failed\n", failures_);
    return failures_ > 0 ? 1 : missing.empty() ? 0 : 2;
  }

  const Options options_;
  Half faults_;
  Half bytes_;
  const TemporaryFolder folder_;
  SimulatedConsole console_;
  Report* const report_;
  FaultyDriver driver_;
  const std::string log_;
  size_t commands_ = 0;
  size_t requests_ = 0;
  size_t failures_ = 0;
  std::map<std::string, size_t> knownEnds_;
  std::map<std::string, size_t> waits_;
};

Options readOptions(int argc, char* argv[]) {
  Options options;
  for (int i = 1; i < argc; i++) {
    const std::string word = argv[i];
    if (word == "--faults" && i + 1 < argc) {
      options.faults = std::max(1UL, std::strtoul(argv[++i], nullptr, 10));
    } else if (word == "--bytes" && i + 1 < argc) {
      options.bytes = std::max(1UL, std::strtoul(argv[++i], nullptr, 10));
    } else if (word == "--only" && i + 1 < argc) {
      options.only = argv[++i];
    } else if (word == "--verbose") {
      options.verbose = true;
    } else {
      std::fprintf(stderr, "usage: fault_sweep [--faults N] [--bytes N] [--only TEXT] [--verbose]\n");
      std::exit(2);
    }
  }
  return options;
}

}  // namespace

int main(int argc, char* argv[]) {
  // Never destroyed: the library's own thread still uses it when the process ends.
  auto* const sweep = new Sweep(readOptions(argc, argv));
  const int status = sweep->sweepAll();
  std::fflush(nullptr);
  _exit(status);
}

#include "qvrcli/session/scripts.h"

#include "qvrcli/session/libcli_structs.h"
#include "qvrcli/session/script_lines.h"
#include "qvrcli/session/stop.h"
#include "qvrcli/text/text_files.h"

namespace gfast::console {

namespace {

constexpr int kDeepest = 10;  // runs inside each other

class ScriptRun;
ScriptRun* innermost = nullptr;  // of the runs in progress
bool stopping = false;           // all runs in progress are to end, because they nest too deeply

// While a script runs, puts aside what the interpreter holds for the line that runs the script, because the
// script's lines would free it. What the script prints goes through the filters of that line.
class ScriptRun {
 public:
  explicit ScriptRun(cli_def* cli)
      : cli_(cli),
        outer_(innermost),
        filters_(cli->filters),
        pipeline_(cli->pipeline),
        optargs_(cli->found_optargs),
        printCallback_(cli->print_callback),
        depth_(outer_ == nullptr ? 1 : outer_->depth_ + 1) {
    cli->filters = nullptr;
    cli->pipeline = nullptr;
    cli->found_optargs = nullptr;
    if (filters_ != nullptr) {
      cli_print_callback(cli, printFiltered);
    }
    innermost = this;
  }

  ~ScriptRun() {
    innermost = outer_;
    cli_->filters = filters_;
    cli_->pipeline = pipeline_;
    cli_->found_optargs = optargs_;
    cli_print_callback(cli_, printCallback_);
    if (outer_ == nullptr) {
      stopping = false;
    }
  }

  ScriptRun(const ScriptRun&) = delete;
  ScriptRun& operator=(const ScriptRun&) = delete;

  int depth() const { return depth_; }

  // What the line that runs this script returns to libcli.
  int result() const { return stopping && outer_ != nullptr ? CLI_QUIT : CLI_OK; }

 private:
  // Passes a line that a script prints through the filters of all lines that led to the script, innermost
  // first. It cannot call cli_print, which is running already.
  static void printFiltered(cli_def* cli, const char* line) {
    for (const ScriptRun* run = innermost; run != nullptr; run = run->outer_) {
      for (cli_filter* filter = run->filters_; filter != nullptr; filter = filter->next) {
        if (filter->filter(cli, line, filter->data) != CLI_OK) {
          return;
        }
      }
      if (run->printCallback_ != nullptr && run->printCallback_ != printFiltered) {
        run->printCallback_(cli, line);
        return;
      }
    }
    if (cli->client != nullptr) {
      std::fprintf(cli->client, "%s\r\n", line);
    }
  }

  cli_def* cli_;
  ScriptRun* outer_;
  cli_filter* filters_;
  cli_pipeline* pipeline_;
  cli_optarg_pair* optargs_;
  void (*printCallback_)(cli_def*, const char*);
  int depth_;
};

bool runOnce(cli_def* cli, const char* filename) {
  const TextFile script = openForReading(filename);
  if (script == nullptr) {
    cli_print(cli, "Unable to open file [%s]", filename);
    return false;
  }
  runLines(cli, script.get());
  return true;
}

}  // namespace

int runScript(cli_def* cli, const char* filename, uint32_t iterations) {
  const ScriptRun run(cli);
  if (run.depth() > kDeepest) {
    cli_print(cli, "Scripts run each other more than %d deep, stopped at [%s]", kDeepest, filename);
    stopping = true;
  }
  for (uint32_t i = 0; i < iterations && !stopping && mayGoOn(cli); i++) {
    if (iterations > 1) {
      cli_print(cli, ">run %s %d of %d", filename, static_cast<int>(i + 1), static_cast<int>(iterations));
    }
    if (!runOnce(cli, filename)) {
      break;
    }
  }
  return run.result();
}

}  // namespace gfast::console

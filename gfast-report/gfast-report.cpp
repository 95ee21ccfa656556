// A report of a line, read from a running console.
#include <qvr/version.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "gfast-report/board/read_board.h"
#include "gfast-report/console/console_client.h"
#include "gfast-report/console/read_console.h"
#include "gfast-report/report_error.h"
#include "gfast-report/stored/changes.h"
#include "gfast-report/stored/stored_reading.h"
#include "gfast-report/writing/html_page.h"
#include "gfast-report/writing/svg_plot.h"
#include "gfast-report/writing/text_page.h"
#include "gfast-report/writing/tone_rows.h"
#include "qvrcli/serve/field_model.h"

using namespace gfast;
using namespace gfast::console;
using namespace gfast::report;

namespace {

constexpr int kNotRead = 1;
constexpr int kUsageError = 2;

constexpr const char* kDescription =
    "Reads a line of a G.fast console and writes a report: figures, tones, counters, and what they mean.\n"
    "\n"
    "It types commands that only read at the console, as a user does. A console has one session at a time:\n"
    "while another one is open, it waits.";

constexpr const char* kFooter =
    "The ending of -o FILE says what is written: .txt plots for a terminal, .html the server's page with\n"
    "everything in one file, .json what the server tells other machines, .csv a row for each tone, .svg the\n"
    "plots as a drawing. Without -o the text goes to standard output.\n"
    "\n"
    "Exit status: 1 when the line cannot be read, 2 for a mistake on the command line.";

struct Options {
  QVR_lineId_t line = 0;
  std::string from = "127.0.0.1:9000";
  std::string out;
  double wait_s = 60;
  std::string board;
  double after_s = 30;
  std::string replayed;
  std::vector<std::string> diff;
};

ConsoleClient::Address addressIn(const std::string& text) {
  const size_t colon = text.rfind(':');
  std::string host = text.substr(0, colon);
  if (host.starts_with('[') && host.ends_with(']')) {
    host = host.substr(1, host.size() - 2);
  }
  return {host, text.substr(colon + 1)};
}

std::string addressCheck(const std::string& text) {
  const ConsoleClient::Address address = addressIn(text);
  return text.find(':') == std::string::npos || address.host.empty() || address.port.empty()
             ? "must be HOST:PORT"
             : "";
}

// ---- What is written ----

std::string jsonOf(const Reading& reading, const std::string& /*source*/) {
  return lineDocument(reading, reading.lines.at(0).line).value_or("");
}

std::string rowsOf(const Reading& reading, const std::string& /*source*/) {
  return toneRows(reading.lines.at(0));
}

std::string pageOf(const Reading& reading, const std::string& /*source*/) {
  return htmlPage(reading);
}

std::string drawingOf(const Reading& reading, const std::string& source) {
  return svgPlot(reading.lines.at(0), headOf(reading, source));
}

struct Format {
  const char* ending;
  std::string (*write)(const Reading& reading, const std::string& source);
};

constexpr Format kFormats[] = {
    {".txt", textPage}, {".html", pageOf}, {".json", jsonOf}, {".csv", rowsOf}, {".svg", drawingOf}};

const Format* formatOf(const std::string& file) {
  for (const Format& format : kFormats) {
    if (file.empty() || file.ends_with(format.ending)) {
      return &format;
    }
  }
  return nullptr;
}

std::string fileCheck(const std::string& file) {
  std::string endings;
  for (const Format& format : kFormats) {
    endings += std::string(" ") + format.ending;
  }
  return formatOf(file) == nullptr ? "must end in one of" + endings : "";
}

std::optional<int> parseOptions(int argc, char* argv[], Options& options) {
  CLI::App app(kDescription, "gfast-report");
  app.footer(kFooter);
  app.set_version_flag("--version", "gfast-report " QVR_VERSION, "Print the version and end");
  app.add_option("--line", options.line, "The line")
      ->type_name("N")
      ->check(CLI::Range(0, QVR_K_MAX_LINES - 1))
      ->capture_default_str();
  CLI::Option* const from = app.add_option("--from", options.from, "The console")
                                ->type_name("HOST:PORT")
                                ->check(addressCheck)
                                ->capture_default_str();
  app.add_option("--wait", options.wait_s, "How long to wait for a busy console, seconds")
      ->type_name("S")
      ->check(CLI::Range(0.0, 86400.0))
      ->capture_default_str();
  CLI::Option* const board = app.add_option("--board", options.board,
                                            "A board file: read the virtual board that it describes, instead")
                                 ->type_name("FILE")
                                 ->excludes(from);
  app.add_option("--after", options.after_s, "How long after it is switched on, seconds of the board")
      ->type_name("S")
      ->check(CLI::Range(0.0, 1e7))
      ->needs(board)
      ->capture_default_str();
  app.add_option("--replay", options.replayed, "A field trace: read what it holds, instead")
      ->type_name("FILE")
      ->excludes(from, board);
  app.add_option("--diff", options.diff,
                 "Tell what changed between two readings that were kept as JSON, instead")
      ->type_name("A.json B.json")
      ->expected(2)
      ->excludes("--line", "--from", "--wait", "--board", "--after", "--replay");
  app.add_option("-o,--output", options.out, "The report")->type_name("FILE")->check(fileCheck);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {
    return app.exit(asked);
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "gfast-report: %s (--help explains)\n", error.what());
    return kUsageError;
  }
  return std::nullopt;
}

// ---- Progress ----

// One line that is written anew, on a terminal only.
class ProgressLine {
 public:
  ProgressLine() = default;
  ~ProgressLine() { clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void show(const std::string& what) {
    if (shown_) {
      std::fprintf(stderr, "\r\033[KReading: %s", what.c_str());
    }
  }
  void tell(const std::string& line) {
    clear();
    std::fprintf(stderr, "gfast-report: %s\n", line.c_str());
  }
  void clear() {
    if (shown_) {
      std::fputs("\r\033[K", stderr);
    }
  }

 private:
  const bool shown_ = isatty(STDERR_FILENO) != 0;
};

TakenReading readFrom(const Options& options, ProgressLine& progress) {
  if (!options.board.empty()) {
    progress.show("virtual board");
    return readBoard(options.board, options.line, options.after_s);
  }
  if (!options.replayed.empty()) {
    progress.show("field trace");
    return readTraced(options.replayed, options.line);
  }
  ConsoleClient::Limits limits;
  limits.busy = std::chrono::milliseconds(static_cast<int64_t>(options.wait_s * 1000));
  ConsoleClient console(addressIn(options.from), limits,
                        [&progress](const std::string& line) { progress.tell(line); });
  return readConsole([&console](const std::string& command) { return console.ask(command); }, options.line,
                     std::time(nullptr), [&progress](const std::string& what) { progress.show(what); });
}

// What a report says about where the line is.
std::string sourceOf(const Options& options) {
  if (!options.board.empty()) {
    return options.board;
  }
  return options.replayed.empty() ? options.from : options.replayed;
}

// False after a message.
bool write(const std::string& text, const std::string& file) {
  FILE* const out = file.empty() ? stdout : std::fopen(file.c_str(), "wb");
  const bool written = out != nullptr && std::fwrite(text.data(), 1, text.size(), out) == text.size();
  const bool closed = out != nullptr && (file.empty() ? std::fflush(out) : std::fclose(out)) == 0;
  if (!written || !closed) {
    std::fprintf(stderr, "gfast-report: %s: %s\n", file.empty() ? "standard output" : file.c_str(),
                 std::strerror(errno));
  }
  return written && closed;
}

int tellChanges(const Options& options) {
  if (!options.out.empty() && !options.out.ends_with(".txt")) {
    std::fprintf(stderr, "gfast-report: -o: changes are written as .txt only\n");
    return kUsageError;
  }
  return write(changesOf(readStored(options.diff.at(0)), readStored(options.diff.at(1))), options.out)
             ? 0
             : kNotRead;
}

int run(const Options& options) {
  if (!options.diff.empty()) {
    return tellChanges(options);
  }
  ProgressLine progress;
  const TakenReading taken = readFrom(options, progress);
  for (const std::string& remark : taken.remarks) {
    progress.tell(remark);
  }
  progress.clear();
  return write(formatOf(options.out)->write(taken.reading, sourceOf(options)), options.out) ? 0 : kNotRead;
}

}  // namespace

int main(int argc, char* argv[]) {
  try {
    Options options;
    const auto status = parseOptions(argc, argv, options);
    return status ? *status : run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "gfast-report: %s\n", error.what());
  }
  return kNotRead;
}

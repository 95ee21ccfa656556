// The instructions that the longest commands take on the board's processor, beside those that printf takes
// for the same rows. Under the emulator with instruction_counter.c a count is printed at each mark; the
// program itself prints names.
//
// A command runs in front of answers that a virtual board gave before, so the board's own work is not
// counted; the interpreter's and the library's is. What is printed goes through the session's buffered stream
// into /dev/null.
//
// usage: instructions-bench [COMMAND...]   counts these commands, without a yardstick
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "qvrcli/session/session_printer.h"
#include "remembered_board.h"
#include "support/simulated_console.h"
#include "support/temporary_folder.h"

using namespace gfast::board;
using namespace gfast::console;

namespace {

constexpr double kTraining_s = 60;

// A number of a row, as each format may ask for it.
struct Number {
  double real;
  int whole;
};

using Row = std::vector<Number>;
// Where a row goes by printf's rules: to a file, or, as a line, to an interpreter.
struct Output {
  FILE* file;
  cli_def* cli = nullptr;

  template <typename... Values>
  void print(const char* format, Values... values) const {
    if (cli == nullptr) {
      std::fprintf(file, format, values...);
    } else {
      cli_print(cli, format, values...);
    }
  }
};

using PrintRow = void (*)(const Output& out, const Row& row);

void printSnr(const Output& out, const Row& row) {
  out.print("%.5f  %d  %.1f", row[0].real, row[1].whole, row[2].real);
}

void printNoise(const Output& out, const Row& row) {
  out.print("%.5f %d %.1f", row[0].real, row[1].whole, row[2].real);
}

void printPhyInfo(const Output& out, const Row& row) {
  out.print("%09.5f\t%d\t%d\t%.5f\t%.5f\t%.5f", row[0].real, row[1].whole, row[2].whole, row[3].real,
            row[4].real, row[5].real);
}

void printMatrix(const Output& out, const Row& row) {
  out.print("%09.5f ", row[0].real);
  for (size_t i = 1; i < row.size(); i += 2) {
    out.print("%f %f ", row[i].real, row[i + 1].real);
  }
  out.print("%s", "\n");
}

struct LongCommand {
  const char* line;
  size_t numbers;  // in a row
  PrintRow printRow;
  bool isToFile = false;

  const char* lineEnd() const { return isToFile ? "\n" : ""; }  // what the row's format has
};

constexpr size_t kMatrixNumbers = 1 + 2 * COEF_NUM_USERS * COEF_NUM_USERS;

constexpr LongCommand kLongCommands[] = {
    {"show vectoring canceler 0", kMatrixNumbers, printMatrix, true},
    {"show vectoring precoder 0", kMatrixNumbers, printMatrix, true},
    {"show phy info 0 ne", 6, printPhyInfo},
    {"show phy info 0 fe", 6, printPhyInfo},
    {"show ALNps 0 us", 3, printNoise},
    {"show ALNps 0 ds", 3, printNoise},
    {"show HLOGps 0 us", 3, printNoise},
    {"show HLOGps 0 ds", 3, printNoise},
    {"show SNRps 0 us", 3, printSnr},
    {"show SNRps 0 ds", 3, printSnr},

};

// The counter prints here.
void mark() {
  getppid();
}

void name(const std::string& what) {
  std::printf("name\t%s\n", what.c_str());
  std::fflush(stdout);
}

// The words of a line, as numbers whether they are some or not.
Row rowOf(std::string line) {
  for (char& character : line) {
    character = character == '\t' ? ' ' : character;
  }
  Row row;
  std::istringstream words(line);
  for (std::string word; words >> word;) {
    row.push_back({std::strtod(word.c_str(), nullptr), std::atoi(word.c_str())});
  }
  return row;
}

std::string printed(PrintRow printRow, const Row& row) {
  char* text = nullptr;
  size_t length = 0;
  FILE* const out = open_memstream(&text, &length);
  printRow({out}, row);
  std::fclose(out);
  std::string result(text, length);
  std::free(text);
  return result;
}

// A line of the output: a row, or text.
struct Line {
  bool isRow;
  Row row;
  std::string text;
};

std::vector<Line> linesOf(const std::string& output, const LongCommand& command) {
  std::vector<Line> lines;
  std::istringstream stream(output);
  for (std::string text; std::getline(stream, text);) {
    const Row row = rowOf(text);
    const bool isRow =
        row.size() == command.numbers && printed(command.printRow, row) == text + command.lineEnd();
    lines.push_back({isRow, row, text});
  }
  return lines;
}

class Console {
 public:
  Console() : simulated_(inShowtime()), chips_(simulated_.board()) {
    simulated_.start(chips_);
    simulated_.clock().awaitOtherThread();
    simulated_.pass(kTraining_s);
    std::setvbuf(session_, buffer_, _IOFBF, sizeof buffer_);
  }

  // The output of a command, in which every answer of the chips is remembered.
  std::string run(const std::string& line) {
    chips_.listen();
    simulated_.run(line);  // what is asked once only
    chips_.listen();
    const std::string output = simulated_.run(line);
    chips_.repeat();
    if (simulated_.run(line) != output || !chips_.isThrough()) {
      std::fprintf(stderr, "%s: another text or other requests\n", line.c_str());
      std::exit(EXIT_FAILURE);
    }
    return output;
  }

  void countAgain(const std::string& line) {
    chips_.repeat();
    cli_def* const cli = simulated_.interpreter();
    cli_print_callback(cli, printToSession);
    FILE* const before = cli->client;
    cli->client = session_;
    mark();
    cli_run_command(cli, line.c_str());
    std::fflush(session_);
    mark();
    cli->client = before;
    simulated_.keepPrints();
  }

  void countPrintf(const std::vector<Line>& lines, const LongCommand& command) {
    cli_def* const cli = simulated_.interpreter();
    cli_print_callback(cli, nullptr);
    FILE* const before = cli->client;
    cli->client = session_;
    const Output out{session_, command.isToFile ? nullptr : cli};
    mark();
    for (const Line& line : lines) {
      if (line.isRow) {
        command.printRow(out, line.row);
      } else {
        out.print("%s%s", line.text.c_str(), command.lineEnd());
      }
    }
    std::fflush(session_);
    mark();
    cli->client = before;
    simulated_.keepPrints();
  }

 private:
  static BoardConfig inShowtime() {
    BoardConfig config;
    for (auto& device : config.device) {
      device.line = LineState::kShowtime;
    }
    return config;
  }

  SimulatedConsole simulated_;
  RememberedBoard chips_;
  FILE* session_ = std::fopen("/dev/null", "w");
  char buffer_[64 * 1024];
};

}  // namespace

int main(int argc, char* argv[]) {
  static Console console;
  for (int i = 1; i < argc; i++) {
    const std::string output = console.run(argv[i]);
    name(std::string(argv[i]) + ", " + std::to_string(output.size()) + " bytes");
    console.countAgain(argv[i]);
  }
  if (argc > 1) {
    return 0;
  }
  const TemporaryFolder folder;
  for (const LongCommand& command : kLongCommands) {
    const std::string line = command.line + (command.isToFile ? " " + folder.file("rows") : std::string());
    const std::string output = console.run(line);
    const std::vector<Line> lines = linesOf(command.isToFile ? folder.read("rows") : output, command);
    name(command.line);
    console.countAgain(line);
    console.countPrintf(lines, command);
  }
}

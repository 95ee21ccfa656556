#include "gfast-report/board/read_board.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <utility>

#include "clock/clock.h"
#include "driver/driver.h"
#include "gfast-lab/replay/replay_clock.h"
#include "gfast-lab/replay/replayed_board.h"
#include "gfast-lab/replay/trace_reader.h"
#include "gfast-lab/time/event_clock.h"
#include "gfast-report/report_error.h"
#include "qvrcli/reading/collect_reading.h"
#include "virtual-board/board/virtual_board.h"
#include "virtual-board/description/board_file.h"

namespace gfast::report {

namespace {

using namespace gfast::board;
using namespace gfast::console;
using namespace gfast::lab;
using namespace gfast::replay;

constexpr time_t kSwitchedOn = 1704067200;  // 2024-01-01T00:00:00 UTC

// Of the driver and the clock that are installed.
Reading readAfter(double seconds, QVR_lineId_t line) {
  QVR_initFastModule(FALSE);
  clockSource().sleep(std::chrono::microseconds(static_cast<int64_t>(seconds * 1e6)));
  QVR_observeOnly(TRUE);  // nothing of it is printed
  Reading reading = collectReading();
  const auto found = std::ranges::find(reading.lines, line, &LineReading::line);
  if (found == reading.lines.end()) {
    throw ReportError(fmt::format("there is no line {}: the board has {}", line, reading.lines.size()));
  }
  found->tones = collectTones(line);
  reading.lines = {*found};
  reading.countedSince = reading.time;
  reading.number = 1;
  return reading;
}

}  // namespace

// Clock and board are never deleted: the library's thread uses them until the process ends.
TakenReading readBoard(const std::string& file, QVR_lineId_t line, double seconds) {
  auto* const clock = new EventClock(kSwitchedOn);
  auto* const board = new VirtualBoard(readBoardFile(file), [clock] { return clock->elapsed_s(); });
  clock->setEvents({[board] { return board->nextDue(); }, [board] { board->advance(); }});
  installClock(*clock);
  installDriver(*board);
  return {readAfter(seconds, line), {}};
}

TakenReading readTraced(const std::string& file, QVR_lineId_t line) {
  FieldTrace trace = readTrace(file);
  std::vector<std::string> remarks;
  if (trace.cut) {
    remarks.emplace_back("the last exchange of the trace is not whole and is left out");
  }
  const auto started_us = trace.started_us;
  // Requests of the library's thread are reported, too, so this is guarded.
  struct Missing {
    std::mutex lock;
    size_t requests = 0;
  };
  const auto missing = std::make_shared<Missing>();
  const auto count = [missing](const std::string& /*line*/) {
    const std::lock_guard guard(missing->lock);
    missing->requests++;
  };
  auto* const board = new ReplayedBoard(std::move(trace), count, [] { return uint64_t{0}; });
  if (started_us) {
    installClock(*new ReplayClock(*board, *started_us, clockSource()));
  }
  installDriver(*board);
  TakenReading taken{readAfter(0, line), std::move(remarks)};
  const std::lock_guard guard(missing->lock);
  if (missing->requests > 0) {
    taken.remarks.push_back(fmt::format("the trace does not hold {} requests", missing->requests));
  }
  return taken;
}

}  // namespace gfast::report

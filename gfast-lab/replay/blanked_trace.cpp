#include "gfast-lab/replay/blanked_trace.h"

#include <cerrno>
#include <cstdio>
#include <utility>

#include "driver/trace_blanks.h"

namespace gfast::replay {

std::string blankedText(FieldTrace&& trace) {
  std::string text(kTraceTitle);
  text.append(" ").append(trace.started).append(" ").append(kTraceBlanked).append("\n");
  for (TracedExchange& exchange : trace.exchanges) {
    blankRequest(exchange.request);
    TraceAnswer answer = *exchange.answer;
    blankAnswer(exchange.request, answer);
    text += traceText(exchange.time_us, exchange.thread, exchange.request, exchange.same ? nullptr : &answer);
  }
  return text;
}

int writeBlanked(FieldTrace&& trace, const std::string& file) {
  const std::string text = blankedText(std::move(trace));
  std::FILE* const opened = std::fopen(file.c_str(), "we");
  if (opened == nullptr) {
    return errno;
  }
  // Some C libraries do not tell a failure when the file is closed.
  const bool written = std::fwrite(text.data(), 1, text.size(), opened) == text.size() &&
                       std::fflush(opened) == 0 && std::ferror(opened) == 0;
  const int error = errno;
  std::fclose(opened);
  return written ? 0 : error;
}

}  // namespace gfast::replay

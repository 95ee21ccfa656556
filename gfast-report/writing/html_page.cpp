#include "gfast-report/writing/html_page.h"

#include <fmt/format.h>

#include <string_view>

#include "qvrcli/serve/field_model.h"
#include "qvrcli/serve/page.h"

namespace gfast::report {

namespace {

using namespace gfast::console;

// In JSON a '<' is in strings only; written like this it ends no script.
std::string withinScript(const std::string& json) {
  std::string text;
  for (const char character : json) {
    text += character == '<' ? "\\u003c" : std::string(1, character);
  }
  return text;
}

std::string documentsOf(const Reading& reading) {
  std::string documents = fmt::format("{{\"/data/lines.json\":{}", linesDocument(reading));
  for (const LineReading& line : reading.lines) {
    documents += fmt::format(",\"/data/lines/{}.json\":{}", line.line,
                             lineDocument(reading, line.line).value_or("null"));
  }
  return documents + "}";
}

}  // namespace

std::string htmlPage(const Reading& reading) {
  constexpr std::string_view kBody = "\n<body>\n";
  const std::string_view whole(page, pageSize);
  const size_t at = whole.find(kBody) + kBody.size();
  return fmt::format("{}<script type=\"application/json\" id=\"stored\">{}</script>\n{}", whole.substr(0, at),
                     withinScript(documentsOf(reading)), whole.substr(at));
}

}  // namespace gfast::report

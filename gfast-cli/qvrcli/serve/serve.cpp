#include "qvrcli/serve/serve.h"

#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "qvrcli/reading/readings.h"
#include "qvrcli/serve/field_model.h"
#include "qvrcli/serve/metrics.h"
#include "qvrcli/serve/page.h"
#include "qvrcli/serve/web_server.h"

namespace gfast::console {

namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr const char* kJson = "application/json";
constexpr const char* kText = "text/plain; charset=utf-8";

std::optional<int> numberIn(std::string_view text, int most) {
  int number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && number >= 0 && number <= most ? std::optional(number) : std::nullopt;
}

struct Where {
  std::string address;
  int port;
};

std::optional<Where> placeIn(std::string_view where) {
  const size_t colon = where.rfind(':');
  std::string_view address = kLoopback;
  if (colon != std::string_view::npos) {
    address = where.substr(0, colon);
    where.remove_prefix(colon + 1);
    if (address.starts_with('[') && address.ends_with(']')) {
      address = address.substr(1, address.size() - 2);
    }
  }
  const auto port = numberIn(where, 65535);
  return port && !address.empty() ? std::optional(Where{std::string(address), *port}) : std::nullopt;
}

// What a reader gets while there has been no reading yet, because a command works all the time.
WebAnswer notYet() {
  return {503, kText, "The lines have not been read yet.\n"};
}

WebAnswer lines(Readings& readings) {
  const auto reading = readings.latest(kTonesForFigures);
  return reading ? WebAnswer{200, kJson, linesDocument(*reading)} : notYet();
}

WebAnswer metrics(Readings& readings) {
  const auto reading = readings.latest(kTonesForFigures);
  return reading ? WebAnswer{200, kMetricsType, metricsText(*reading)} : notYet();
}

WebAnswer oneLine(Readings& readings, int line) {
  const auto reading = readings.latest(kTonesForPlots);
  if (!reading) {
    return notYet();
  }
  const auto document = lineDocument(*reading, line);
  return document ? WebAnswer{200, kJson, *document} : WebAnswer{404, kText, "No such line.\n"};
}

WebAnswer start(Readings& /*readings*/) {
  return {200, "text/html; charset=utf-8", {page, pageSize}};
}

struct Page {
  std::string_view path;
  WebAnswer (*answer)(Readings&);
};

constexpr Page kPages[] = {
    {"/", start},
    {"/data/lines.json", lines},
    {"/metrics", metrics},
};

// N of /data/lines/N.json.
std::optional<int> lineIn(std::string_view path) {
  constexpr std::string_view kBefore = "/data/lines/";
  constexpr std::string_view kBehind = ".json";
  if (!path.starts_with(kBefore) || !path.ends_with(kBehind) ||
      path.size() < kBefore.size() + kBehind.size()) {
    return std::nullopt;
  }
  path.remove_prefix(kBefore.size());
  path.remove_suffix(kBehind.size());
  return numberIn(path, QVR_K_LINE_ID_LAST);
}

WebAnswer answerTo(Readings& readings, const std::string& path) {
  for (const Page& known : kPages) {
    if (known.path == path) {
      return known.answer(readings);
    }
  }
  if (const auto line = lineIn(path)) {
    return oneLine(readings, *line);
  }
  return {404, kText, "Nothing is here.\n"};
}

}  // namespace

bool serveReadings(const std::string& where, std::function<bool(int connection)> admits) {
  const auto place = placeIn(where);
  if (!place) {
    std::fprintf(stderr, "%s: no [address:]port\n", where.c_str());
    return false;
  }
  Readings& readings = Readings::start();
  auto server = std::make_unique<WebServer>(
      [&readings](const std::string& path) { return answerTo(readings, path); }, std::move(admits));
  const int port = server->bind(place->address, place->port);
  if (port < 0) {
    std::fprintf(stderr, "%s: cannot serve there\n", where.c_str());
    return false;
  }
  const bool bracketed = place->address.find(':') != std::string::npos;
  std::printf("Serving http://%s%s%s:%d/\n", bracketed ? "[" : "", place->address.c_str(),
              bracketed ? "]" : "", port);
  // Never destroyed: its threads serve until the process ends.
  std::thread([served = server.release()] { served->run(); }).detach();
  return true;
}

}  // namespace gfast::console

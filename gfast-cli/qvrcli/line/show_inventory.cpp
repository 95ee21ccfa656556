#include "qvrcli/line/show_inventory.h"

#include <qvr.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "qvrcli/text/argument_reader.h"

namespace gfast::console {

namespace {

constexpr bool isPrintable(char c) {
  return c >= ' ' && c <= '~';
}

// What the equipment wrote must not steer the operator's terminal.
std::string printable(std::string_view bytes) {
  std::string text(bytes);
  std::ranges::replace_if(
      text, [](char c) { return !isPrintable(c); }, '.');
  return text;
}

// A text ends at its first zero byte or fills its field.
template <size_t Size>
std::string textOf(const char (&field)[Size]) {
  const std::string_view whole(field, Size);
  return printable(whole.substr(0, whole.find('\0')));
}

// A vendor id has binary bytes around its letters (ITU-T G.994.1), so it ends at its last
// byte that is not zero.
template <size_t Size>
std::string vendorOf(const char (&field)[Size]) {
  const std::string_view whole(field, Size);
  return printable(whole.substr(0, whole.find_last_not_of('\0') + 1));
}

void printEnd(cli_def* cli, const QVR_inventoryParameters_t& end) {
  cli_print(cli, "GHS_VENDOR:    %s", vendorOf(end.GHS_VENDOR).c_str());
  cli_print(cli, "SYSTEM_VENDOR: %s", vendorOf(end.SYSTEM_VENDOR).c_str());
  cli_print(cli, "SERIALNR:      %s", textOf(end.SERIALNR).c_str());
  cli_print(cli, "VERSION:       %s", textOf(end.VERSION).c_str());
}

}  // namespace

int CLI_showInventory(cli_def* cli, const char* /*command*/, char* argv[], int argc) {
  ArgumentReader words(cli, argv, argc);
  const QVR_lineId_t line = words.line(0);
  if (words.refused()) {
    return CLI_OK;
  }
  QVR_inventoryObject_t inventory{};
  const QVR_retval_t result = QVR_getInventory(line, &inventory);
  if (QVR_STATUS_ERROR(result)) {
    cli_print(cli, "QVR_getInventory failed (%d)", static_cast<int>(result));
    return CLI_OK;
  }
  cli_print(cli, "\nFTU-O:\n");
  printEnd(cli, inventory.FTU_O);
  cli_print(cli, "\nFTU-R:\n");
  printEnd(cli, inventory.FTU_R);
  return CLI_OK;
}

}  // namespace gfast::console

#include "qvrcli/text/line_argument.h"

#include "qvrcli/text/arguments.h"

namespace gfast::console {

bool takeLine(cli_def* cli, const char* const words[], int count, QVR_lineId_t* line) {
  *line = 0;
  if (count > 0 && !isValidLineId(words[0], line)) {
    cli_print(cli, "invalid parameter - line number must be between 0..%1d", QVR_K_LINE_ID_LAST);
    return false;
  }
  return true;
}

}  // namespace gfast::console

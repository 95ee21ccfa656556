#include "qvrcli/session/interpreter.h"

namespace gfast::console {

cli_def* cli = nullptr;

}  // namespace gfast::console

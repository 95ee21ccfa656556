// The vectoring coefficients of a line, written to a file.
#pragma once

#include <libcli.h>

namespace gfast::console {

int CLI_showCancelerMatrix(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showPrecoderMatrix(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console

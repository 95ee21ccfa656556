// The console on the board: the kernel driver behind it, a script file as its only argument.
#include <qvr/kernel_driver.h>

#include <cstdlib>

#include "qvrcli/run_console.h"

using namespace gfast::console;

int main(int argc, char* argv[]) {
  QVR_useKernelDriver();
  return runConsole(argc >= 2 ? argv[1] : nullptr, kConsolePort, std::getenv("GFAST_HTTP"));
}

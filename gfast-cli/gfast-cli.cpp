// The console on the board: the kernel driver behind it, a script file as its only argument.
#include "driver/kernel_driver.h"
#include "qvrcli/session/server.h"

using namespace gfast;
using namespace gfast::console;

int main(int argc, char* argv[]) {
  installDriver(*new KernelDriver);  // for as long as the process lives
  return runConsole(argc >= 2 ? argv[1] : nullptr, kConsolePort);
}

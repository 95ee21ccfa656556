// A program in C++ that uses the installed library, without a driver: no device can be opened.
#include <qvr.h>

#include <iostream>
#include <string>

int main() {
  std::cout << "start: " << QVR_resultText(QVR_initFastModule(FALSE)) << '\n';
  std::cout << "device 0: " << QVR_resultText(QVR_getDeviceInfo(0, nullptr)) << '\n';
  return std::string(QVR_VERSION) == PACKAGE_VERSION ? 0 : 1;
}

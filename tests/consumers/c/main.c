/* A program in C that uses the installed library, with the board's driver. There is no board here. */
#include <qvr.h>
#include <qvr/kernel_driver.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  QVR_deviceInfo_t info;
  QVR_useKernelDriver();
  printf("start: %s\n", QVR_resultText(QVR_initFastModule(FALSE)));
  printf("device 0: %s\n", QVR_resultText(QVR_getDeviceInfo(0, &info)));
  return strcmp(QVR_VERSION, PACKAGE_VERSION) == 0 ? 0 : 1;
}

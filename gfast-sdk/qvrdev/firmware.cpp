// Images and flash: downloading and starting, erasing and programming.

#include <qvr.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "chip/boot_register.h"
#include "chip/flash_layout.h"
#include "chip/registers.h"
#include "driver/envelope.h"
#include "qvrdev/requests.h"
#include "qvrdev/require.h"
#include "qvrdev/sbr.h"
#include "qvrlog/qvrlog.h"

using namespace gfast;

namespace {

// A name that fills the field is not terminated; the driver expects it so.
void copyFilename(char (&field)[MAX_FW_FN_SIZE], const char* filename) {
  std::memcpy(field, filename, strnlen(filename, sizeof field));
}

struct FlashRegion {
  const char* name;
  uint32_t start;
  uint32_t end;  // one behind the last byte
};

constexpr FlashRegion kAppFirmware{"APP firmware", FLASH_APP_FIRMWARE_START, FLASH_SIZE};
constexpr FlashRegion kBootloader{"boot loader", FLASH_BOOTLOADER_START, FLASH_MANUFACTURER_BLOCK_START};
constexpr FlashRegion kManufacturerBlock{"Manufacturer Block", FLASH_MANUFACTURER_BLOCK_START,
                                         FLASH_APP_FIRMWARE_START};

// Only a chip that runs its boot loader lets its flash be changed. Messages carry the operation's name.
QVR_retval_t requireBootloader(const char* operation, QVR_deviceId_t device) {
  const QVR_retval_t status = QVR_isValidFWState(device, FW_B1);
  if (QVR_STATUS_ERROR(status)) {
    QVR_traceLogMessage(QVRLOG_WARNING, operation, __LINE__, "Invalid FW state (%1u)\n", status);
  }
  return status;
}

QVR_retval_t eraseRegion(const char* operation, QVR_deviceId_t device, const FlashRegion& region) {
  if (const QVR_retval_t status = requireBootloader(operation, device); QVR_STATUS_ERROR(status)) {
    return status;
  }
  for (uint32_t sector = region.start; sector < region.end; sector += FLASH_SECTOR_64KB) {
    const QVR_retval_t status = QVR_eraseFlashSector(device, FLASHERASE_64KB, sector);
    if (QVR_STATUS_ERROR(status)) {
      QVR_traceLogMessage(QVRLOG_WARNING, operation, __LINE__, "Failed erasing sector at address (%08x)\n",
                          sector);
      return status;
    }
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_programFlash(QVR_deviceId_t device, const char* filename, uint32_t address) {
  gfast_iocreq request = emptyRequest();
  copyFilename(request.req_u.flashprog.fw_filename, filename);
  request.req_u.flashprog.hw_flash_addr = address;
  return sendRequest(device, DFEIOCFLASHPROG, request, QVR_E_FLASH_PROGRAM_ERROR);
}

QVR_retval_t upgradeRegion(const char* operation, QVR_deviceId_t device, const char* filename,
                           QVR_retval_t (*erase)(QVR_deviceId_t), const FlashRegion& region) {
  if (const QVR_retval_t status = requireBootloader(operation, device); QVR_STATUS_ERROR(status)) {
    return status;
  }
  if (const QVR_retval_t status = erase(device); QVR_STATUS_ERROR(status)) {
    QVR_traceLogMessage(QVRLOG_WARNING, operation, __LINE__, "Failed erasing %s for device (%1d)\n",
                        region.name, device);
    return status;
  }
  return QVR_programFlash(device, filename, region.start);
}

}  // namespace

QVR_retval_t QVR_loadImageFile(QVR_deviceId_t xi_deviceId, const char* xi_filename) {
  requireDevice(xi_deviceId, kUnknownDeviceHandle);
  gfast_iocreq request = emptyRequest();
  copyFilename(request.req_u.imgdnld.fw_filename, xi_filename);
  return sendRequest(xi_deviceId, DFEIOCIMGDNLD, request, QVR_E_IMAGE_DOWNLOAD_ERROR);
}

QVR_retval_t QVR_activateImage(QVR_deviceId_t xi_deviceId, uint32_t xi_startAddress) {
  requireDevice(xi_deviceId, kUnknownDeviceHandle);
  gfast_iocreq request = emptyRequest();
  request.req_u.activate.hw_mem_addr = xi_startAddress;
  const QVR_retval_t status = sendRequest(xi_deviceId, DFEIOCIMGACT, request, QVR_E_IMAGE_ACTIVATE_ERROR);
  if (status == QVR_E_IMAGE_ACTIVATE_ERROR) {
    const int reason = errno;
    std::perror("QVR_activateImage: Activate image ERROR");
    errno = reason;  // callers show it too
  }
  return status;
}

QVR_retval_t QVR_loadBootloader(QVR_deviceId_t xi_deviceId, const char* xi_filename) {
  uint32_t sbr = 0;
  QVR_retval_t status = readSBR(xi_deviceId, sbr);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  if (SBR_FW_STATE(sbr) != FW_B0) {
    return QVR_E_INVALID_FW_STATE;
  }
  status = QVR_loadImageFile(xi_deviceId, xi_filename);
  if (QVR_STATUS_ERROR(status)) {
    TRACE_LOG(QVRLOG_WARNING, "Failed loading image file %s\n", xi_filename);
    return status;
  }
  return QVR_activateImage(xi_deviceId, ROM_DEFAULT_ENTRY_POINT);
}

QVR_retval_t QVR_eraseFlashSector(QVR_deviceId_t xi_deviceId, int xi_eraseType, uint32_t xi_address) {
  requireDevice(xi_deviceId, kUnknownDeviceHandle);
  gfast_iocreq request = emptyRequest();
  request.req_u.flasherase.hw_flash_addr = xi_address;
  request.req_u.flasherase.erasetype = static_cast<uint16_t>(xi_eraseType);
  return sendRequest(xi_deviceId, DFEIOCFLASHERASE, request, QVR_E_ERASE_ERROR);
}

QVR_retval_t QVR_eraseFlash(QVR_deviceId_t xi_deviceId) {
  return QVR_eraseFlashSector(xi_deviceId, FLASHERASE_ALL, 0);
}

QVR_retval_t QVR_eraseAppFirmware(QVR_deviceId_t xi_deviceId) {
  return eraseRegion(__func__, xi_deviceId, kAppFirmware);
}

QVR_retval_t QVR_eraseBootloader(QVR_deviceId_t xi_deviceId) {
  return eraseRegion(__func__, xi_deviceId, kBootloader);
}

QVR_retval_t QVR_eraseManufacturerBlock(QVR_deviceId_t xi_deviceId) {
  return eraseRegion(__func__, xi_deviceId, kManufacturerBlock);
}

QVR_retval_t QVR_upgradeAppFirmware(QVR_deviceId_t xi_deviceId, const char* xi_filename) {
  return upgradeRegion(__func__, xi_deviceId, xi_filename, QVR_eraseAppFirmware, kAppFirmware);
}

QVR_retval_t QVR_upgradeBootloader(QVR_deviceId_t xi_deviceId, const char* xi_filename) {
  return upgradeRegion(__func__, xi_deviceId, xi_filename, QVR_eraseBootloader, kBootloader);
}

QVR_retval_t QVR_upgradeManufactureBlock(QVR_deviceId_t xi_deviceId, const char* xi_filename) {
  return upgradeRegion(__func__, xi_deviceId, xi_filename, QVR_eraseManufacturerBlock, kManufacturerBlock);
}

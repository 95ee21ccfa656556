// Chip memory, and the firmware in memory and in flash.
#pragma once

#include <qvr/devices.h>
#include <qvr/types.h>

QVR_BEGIN_C

// Reads bytes of chip memory (chip words are little-endian) in requests of at most 900 bytes. A count of 0
// still makes one request. On failure the bytes already read stay in the buffer. An odd count is assertion
// 101.
//   QVR_E_DEVICE_NOT_EXISTS  the device cannot be opened
//   QVR_E_MEMREAD_ERROR      a request failed
QVR_retval_t QVR_readmem(QVR_deviceId_t xi_deviceId, uint32_t xi_address, void* xo_buffer,
                         uint32_t xi_numBytes);

// Writes bytes to chip memory in requests of at most 128 bytes; otherwise as QVR_readmem.
//   QVR_E_DEVICE_NOT_EXISTS  the device cannot be opened
//   QVR_E_MEMWRITE_ERROR     a request failed
QVR_retval_t QVR_writemem(QVR_deviceId_t xi_deviceId, uint32_t xi_address, const void* xi_buffer,
                          uint32_t xi_numBytes);

// Clears the bits of xi_mask in the chip's software boot register and sets those of xi_value (not masked).
// Not atomic against the chip.
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_MEMWRITE_ERROR  the first failing access
QVR_retval_t QVR_readModifyWriteSBR(QVR_deviceId_t xi_deviceId, uint32_t xi_mask, uint32_t xi_value);

// ---- Firmware ----

// Downloads an image file (read by the driver; names of up to 127 characters) into the chip's RAM.
//   QVR_E_DEVICE_NOT_EXISTS     the device cannot be opened
//   QVR_E_IMAGE_DOWNLOAD_ERROR  the driver refused; errno says why
QVR_retval_t QVR_loadImageFile(QVR_deviceId_t xi_deviceId, const char* xi_filename);

// Starts a downloaded image at a chip address. A failure is also printed with perror.
//   QVR_E_DEVICE_NOT_EXISTS     the device cannot be opened
//   QVR_E_IMAGE_ACTIVATE_ERROR  the driver refused
QVR_retval_t QVR_activateImage(QVR_deviceId_t xi_deviceId, uint32_t xi_startAddress);

// Downloads a boot loader into a chip in its ROM boot stage and starts it at the ROM entry point. Of a
// refused request errno says why.
//   QVR_E_INVALID_FW_STATE  the chip is not in FW_B0
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_IMAGE_DOWNLOAD_ERROR, QVR_E_IMAGE_ACTIVATE_ERROR
QVR_retval_t QVR_loadBootloader(QVR_deviceId_t xi_deviceId, const char* xi_filename);

// Erases one flash sector to 0xFF (or all of flash: FLASHERASE_ALL ignores the address). No state check.
//   QVR_E_DEVICE_NOT_EXISTS  the device cannot be opened
//   QVR_E_ERASE_ERROR        the driver refused
QVR_retval_t QVR_eraseFlashSector(QVR_deviceId_t xi_deviceId, int xi_eraseType, uint32_t xi_address);
QVR_retval_t QVR_eraseFlash(QVR_deviceId_t xi_deviceId);

// Erase a region of flash, 64 KiB sectors in ascending order, stopping at the first failure: application
// firmware 0x20000-0xFFFFF, boot loader 0x00000-0x0FFFF, manufacturer block 0x10000-0x1FFFF.
//   QVR_E_INVALID_FW_STATE  the chip is not in FW_B1
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_ERASE_ERROR
QVR_retval_t QVR_eraseAppFirmware(QVR_deviceId_t xi_deviceId);
QVR_retval_t QVR_eraseBootloader(QVR_deviceId_t xi_deviceId);
QVR_retval_t QVR_eraseManufacturerBlock(QVR_deviceId_t xi_deviceId);

// Erase a region and program it from a file (read by the driver).
//   as the erasures, and QVR_E_FLASH_PROGRAM_ERROR when the driver could not program
QVR_retval_t QVR_upgradeAppFirmware(QVR_deviceId_t xi_deviceId, const char* xi_filename);
QVR_retval_t QVR_upgradeBootloader(QVR_deviceId_t xi_deviceId, const char* xi_filename);
QVR_retval_t QVR_upgradeManufactureBlock(QVR_deviceId_t xi_deviceId, const char* xi_filename);

// Resets the chip into a firmware stage (FW_B0, FW_B1 or FW_APP).
//   QVR_E_ERROR  another state was asked for; nothing is written
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_MEMWRITE_ERROR  the boot register could not be
//   changed
QVR_retval_t QVR_rebootDevice(QVR_deviceId_t xi_deviceId, QVR_fwState_t xi_nextState);

// QVR_rebootDevice into FW_APP when xi_reboot is TRUE, into FW_B0 otherwise.
//   as QVR_rebootDevice
QVR_retval_t QVR_reset(QVR_deviceId_t xi_deviceId, QVR_bool_t xi_reboot);

// Moves the whole system between line state and system configuration state.
// From line state it resets the device and waits, without limit, until it answers again (and, with
// xi_waitForConfig, until its line is idle), then rediscovers all devices. From configuration state it ends
// configuration, waiting up to 41 reads of 250 ms for each device; with xi_waitForConfig there is nothing to
// do.
//   QVR_E_ERROR  a device did not reach line state in time
//   QVR_E_TIMEOUT_ERROR  the program ended the wait; the devices are not rediscovered
//   QVR_E_DEVICE_NOT_EXISTS, QVR_E_MEMREAD_ERROR, QVR_E_MEMWRITE_ERROR  a boot register could not be changed
QVR_retval_t QVR_restartDevice(QVR_deviceId_t xi_deviceId, QVR_bool_t xi_waitForConfig);

QVR_END_C

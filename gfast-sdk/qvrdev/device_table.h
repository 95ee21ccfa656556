// The table of devices: what is known of each chip, and the descriptor it is reached through. The command
// thread and the notification thread both use it; one lock guards it and is never held across a driver
// request.
#pragma once

#include <qvr.h>

#include "qvrdev/device_image.h"

namespace gfast {

constexpr bool isDeviceId(QVR_deviceId_t device) {
  return device >= QVR_K_DEVICE_ID_FIRST && device <= QVR_K_DEVICE_ID_LAST;
}

// The device's record as it is at this moment. The library uses this copy, never a pointer into the table.
QVR_deviceInfo_t deviceRecord(QVR_deviceId_t device);

// The device's descriptor if it is open, else -1. Opens nothing.
int openDescriptor(QVR_deviceId_t device);

// Stores the new state of a line, by its index within the device. An index without a line changes nothing.
void setLineState(QVR_deviceId_t device, int narrowLine, QVR_lineState_t state);

// Stores how many seconds of the quarter hour were left when the line's counters began to be collected.
void setStartOfCollection(QVR_deviceId_t device, int narrowLine, uint32_t secondsLeft);

// Stores what the device answered in its record, counts the device if it was inactive, and returns the
// record.
QVR_deviceInfo_t storeDeviceImages(QVR_deviceId_t device, const DeviceImages& images);

// The record that storeDeviceImages would make, without storing it.
QVR_deviceInfo_t recordWithImages(QVR_deviceId_t device, const DeviceImages& images);

// Clears every record and closes every descriptor; the count of devices stays.
void clearDeviceTable();

// Closes every open descriptor; those devices become inactive.
void closeDevices();

// Makes every device inactive and sets the counts of devices and of their lines to zero. Both in one step: a
// device that another thread has found since closeDevices is counted when it is read again.
void forgetDevices();

}  // namespace gfast

// The table of devices: what is known of each chip, and the descriptor it is reached through. The command
// thread and the notification thread both use it; one lock guards it, and never across a driver request.
#pragma once

#include <qvr.h>

#include "qvrdev/device_image.h"

namespace gfast {

constexpr bool isDeviceId(QVR_deviceId_t device) {
  return device >= QVR_K_DEVICE_ID_FIRST && device <= QVR_K_DEVICE_ID_LAST;
}

// The device's record as it is at this moment. Inside the library always this copy, never a pointer.
QVR_deviceInfo_t deviceRecord(QVR_deviceId_t device);

// The device's descriptor if it is open, else -1. Opens nothing.
int openDescriptor(QVR_deviceId_t device);

// A line of the device, by its index within the device, has changed its state. An index that the device has
// no line for changes nothing.
void setLineState(QVR_deviceId_t device, int narrowLine, QVR_lineState_t state);

// Seconds that were left of the quarter hour when counters of the line began to be collected.
void setStartOfCollection(QVR_deviceId_t device, int narrowLine, uint32_t secondsLeft);

// The device has answered: takes what it said into its record, counts it when it was inactive, and answers
// the record.
QVR_deviceInfo_t storeDeviceImages(QVR_deviceId_t device, const DeviceImages& images);

// Every record zero and every descriptor closed; the count of devices goes on.
void clearDeviceTable();

// Closes every open descriptor; those devices become inactive.
void closeDevices();

// Counting of devices and their lines starts afresh.
void clearDeviceCounts();

}  // namespace gfast

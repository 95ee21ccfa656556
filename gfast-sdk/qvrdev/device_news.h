// Tells when something new comes on a descriptor that is readable all the time.
#pragma once

namespace gfast {

// A driver has one readiness for events and log records. While log records are left in it, select returns at
// once and does not tell when an event comes behind them. What is watched here is a descriptor of its own: it
// becomes readable when the driver wakes whoever waits for a device, which it does for every record.
class DeviceNews {
 public:
  DeviceNews();
  ~DeviceNews();
  DeviceNews(const DeviceNews&) = delete;
  DeviceNews& operator=(const DeviceNews&) = delete;

  // Watches this device descriptor until it is closed. False when it cannot be watched. At the first time it
  // counts as news.
  bool watch(int device);

  // What to wait for; -1: the system has none left.
  int descriptor() const { return descriptor_; }

  // Forgets the news so far. To be called before the devices are read.
  void forget();

 private:
  const int descriptor_;
};

}  // namespace gfast

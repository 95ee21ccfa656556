// The names under which the kernel driver shows itself, and how its files may be opened.
#pragma once

#include <fcntl.h>

#include <cerrno>
#include <optional>
#include <string_view>

namespace gfast::device_files {

constexpr int kDevices = 2;
constexpr std::string_view kDeviceFolder = "/dev/";
constexpr std::string_view kDeviceName = "gfdfe";  // and the device's digit
constexpr std::string_view kRediscoverFile = "/proc/gfast/rediscover";
constexpr std::string_view kRediscoverRequest = "1";  // a line written to it

// The device that a full file name means.
constexpr std::optional<int> deviceOfPath(std::string_view path) {
  if (!path.starts_with(kDeviceFolder)) {
    return std::nullopt;
  }
  path.remove_prefix(kDeviceFolder.size());
  if (path.size() != kDeviceName.size() + 1 || !path.starts_with(kDeviceName)) {
    return std::nullopt;
  }
  const int device = path.back() - '0';
  return device >= 0 && device < kDevices ? std::optional(device) : std::nullopt;
}

// 0, or why the driver refuses these open flags. Every request both tells and asks, so a device is opened for
// reading and writing or not at all.
constexpr int refusalOfDeviceOpen(int flags) {
  return (flags & O_ACCMODE) == O_RDWR ? 0 : EACCES;
}

}  // namespace gfast::device_files

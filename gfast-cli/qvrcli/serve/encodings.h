// Values as the published model and JSON after RFC 7951 write them.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace gfast::console {

// Bytes in base 64.
std::string base64(const std::vector<uint8_t>& bytes);

// A date and time in UTC, "2026-11-22T05:43:31Z".
std::string dateAndTime(time_t time);

// The nearest whole number of the units within the limits: inTenths(3.14, ...) is 31.
int inTenths(double value, int least, int most);

// Tones per group of the values that the model has for groups only.
constexpr size_t kGroupSize = 4;

using Levels = std::vector<std::optional<float>>;

// Half a byte for each tone, that of tone 0 first.
std::vector<uint8_t> bitNibbles(const std::vector<uint8_t>& bits);

// SNR from -32 dB in steps of 0.5 dB; 255 without a value.
std::vector<uint8_t> snrOctets(const Levels& snr_db);

// Noise from -35 dBm/Hz down in steps of 0.5 dB, for groups of tones, each with the value of its first tone
// that has one. 255 without a value, 254 for a group that the direction does not use.
std::vector<uint8_t> noiseOctets(const Levels& noise_dbmHz, const std::vector<bool>& inUse);

// HLOG from 6 dB down in steps of 0.1 dB, for groups as above, two bytes each, the high byte first. 1023
// without a value, 1022 for a group that the direction does not use.
std::vector<uint8_t> hlogOctets(const Levels& hlog_db, const std::vector<bool>& inUse);

// Of each tone, in the same steps as the two above: one byte, two bytes.
std::vector<uint8_t> noiseOfTones(const Levels& noise_dbmHz);
std::vector<uint8_t> hlogOfTones(const Levels& hlog_db);

}  // namespace gfast::console

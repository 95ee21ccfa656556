// Bit loading, SNR, noise and channel magnitude of every subcarrier, and the attenuation of the whole band.
#pragma once

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

std::span<const Command> toneCommands();

}  // namespace gfast::console

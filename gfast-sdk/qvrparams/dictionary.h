// The dictionary of the firmware's parameters, read from device 0 once and then kept as it was read.
#pragma once

#include <qvr.h>

#include <cstdint>
#include <vector>

#include "chip/parameters.h"
#include "qvrparams/startup_parameters.h"

namespace gfast {

struct QVR_paramsDictionary_t {
  QVR_retval_t loadStatus = QVR_E_STATUS_OK;  // of an error the rest is empty
  sParamsDictionaryHeader params_header{};    // as the chip tells it
  std::vector<QVR_paramInfo_t> param_info;    // indexed by id
  StartupParameters startupParameters;        // the one part that changes

  // The slot of the parameter; nullptr when no entry has filled it.
  const QVR_paramInfo_t* slotOf(uint32_t id) const;
};

// The dictionary, loaded by the first call; it lives as long as the process.
QVR_paramsDictionary_t& paramsDictionary();

}  // namespace gfast

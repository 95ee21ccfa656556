// The dictionary of the firmware's parameters. It is read from device 0 once and then does not change.
#pragma once

#include <qvr.h>

#include <cstdint>
#include <vector>

#include "chip/parameters.h"
#include "qvrparams/startup_parameters.h"

namespace gfast {

struct QVR_paramsDictionary_t {
  QVR_retval_t loadStatus = QVR_E_STATUS_OK;  // if it is an error, the rest is empty
  sParamsDictionaryHeader params_header{};    // as the chip reports it
  std::vector<QVR_paramInfo_t> param_info;    // indexed by id
  StartupParameters startupParameters;        // the only part that changes

  // The slot of a parameter; nullptr if no entry has filled it.
  const QVR_paramInfo_t* slotOf(uint32_t id) const;
};

// Returns the dictionary; the first call loads it. It is never freed.
QVR_paramsDictionary_t& paramsDictionary();

}  // namespace gfast

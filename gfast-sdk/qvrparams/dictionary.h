// The dictionary of the firmware's parameters. It is read from device 0 once and then does not change, but
// for entries that could not be read at first.
#pragma once

#include <qvr.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "chip/parameter_records.h"
#include "qvrparams/startup_parameters.h"

namespace gfast {

// One reading of the dictionary's entries.
struct DictionaryEntries {
  std::vector<QVR_paramInfo_t> slots;  // indexed by id
  bool complete = false;               // all words were read

  // The reading that this one replaces. Callers may still use its slots.
  std::unique_ptr<const DictionaryEntries> before;

  // The slot of a parameter; nullptr if no entry has filled it.
  const QVR_paramInfo_t* slotOf(uint32_t id) const;
};

struct QVR_paramsDictionary_t {
  QVR_retval_t loadStatus = QVR_E_STATUS_OK;  // if it is an error, the rest is empty
  sParamsDictionaryHeader params_header{};    // as the chip reports it
  StartupParameters startupParameters;
  std::atomic<DictionaryEntries*> entries{nullptr};

  QVR_paramsDictionary_t() = default;
  QVR_paramsDictionary_t(const QVR_paramsDictionary_t&) = delete;
  QVR_paramsDictionary_t& operator=(const QVR_paramsDictionary_t&) = delete;
  ~QVR_paramsDictionary_t();

  size_t numOfEntries() const;                       // slots
  const QVR_paramInfo_t* slotOf(uint32_t id) const;  // as DictionaryEntries
};

struct LoadedDictionary {
  QVR_paramsDictionary_t& dictionary;  // never freed
  QVR_retval_t status;
};

// Returns the dictionary. The first call loads it, and its status says whether all was read. After a failed
// header or without memory every later call has that status too. Entries that could not be read are read
// again by each later call until that succeeds; meanwhile those that were read are used.
LoadedDictionary loadedDictionary();

}  // namespace gfast

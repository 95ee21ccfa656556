#include "qvrparams/dictionary.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>

#include "chip/parameters.h"
#include "qvrlog/qvrlog.h"
#include "qvrparams/covered_memory.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

constexpr uint32_t kBytesOfWord = 4;
constexpr uint32_t kMostIds = 1024;           // an id has ten bits
constexpr uint32_t kMostAreaBytes = 0x10000;  // a larger size is not believed
constexpr uint32_t kReachOfEntries = PARAMS_ENTRY_OFFSET(~0U) + PARAMS_ENTRY_LENGTH(~0U);  // bytes
constexpr uint32_t kUnusedEntry = 0xFFFF;  // param_entry of a slot with every bit set

// Never freed, because any thread may use it until the process ends.
constinit std::atomic<QVR_paramsDictionary_t*> loadedDictionary{nullptr};

QVR_paramInfo_t unusedSlot() {
  QVR_paramInfo_t slot;
  std::memset(&slot, 0xFF, sizeof slot);
  return slot;
}

// Returns the size, or `instead` if the size is too large: a chip must not make the library read for minutes.
uint32_t believedSize(const char* what, uint32_t size, uint32_t most, uint32_t instead) {
  if (size % kBytesOfWord != 0) {
    TRACE_LOG(QVRLOG_WARNING, "Size of %s is not a multiple of 4 (%u)\n", what, size);
  }
  if (size <= most) {
    return size;
  }
  TRACE_LOG(QVRLOG_WARNING, "Size of %s is too large (%u), taken as %u\n", what, size, instead);
  return instead;
}

QVR_retval_t readHeader(sParamsDictionaryHeader& header) {
  std::array<uint8_t, PARAMS_DICTIONARY_HEADER_SIZE> bytes{};
  const QVR_retval_t status = QVR_readmem(
      QVR_K_DEVICE_ID_FIRST, VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY, bytes.data(), bytes.size());
  header = {load_le32(&bytes[PARAMS_DICTIONARY_ADDRESS]), load_le32(&bytes[PARAMS_DICTIONARY_PARAMS_SIZE]),
            load_le32(&bytes[PARAMS_DICTIONARY_SIZE])};
  return status;
}

QVR_retval_t readEntryWords(uint32_t dictionarySize, std::vector<uint32_t>& words) {
  std::vector<uint8_t> bytes(
      believedSize("the dictionary", dictionarySize, kMostIds * kBytesOfWord, kMostIds * kBytesOfWord));
  const QVR_retval_t status =
      readCovered(QVR_K_DEVICE_ID_FIRST,
                  VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY + PARAMS_DICTIONARY_HEADER_SIZE, bytes);
  for (size_t at = 0; at + kBytesOfWord <= bytes.size(); at += kBytesOfWord) {
    words.push_back(load_le32(&bytes[at]));
  }
  return status;
}

// One slot for every id up to the highest, however many words there are.
size_t slotsFor(const std::vector<uint32_t>& words) {
  size_t slots = 0;
  for (const uint32_t word : words) {
    slots = std::max<size_t>(slots, size_t{PARAMS_ENTRY_ID(word)} + 1);
  }
  return slots;
}

void fillSlot(QVR_paramsDictionary_t& dictionary, uint32_t position, uint32_t word) {
  const uint32_t id = PARAMS_ENTRY_ID(word);
  const uint32_t length = PARAMS_ENTRY_LENGTH(word);
  const uint32_t offset = PARAMS_ENTRY_OFFSET(word);
  if (length == 0) {
    return;
  }
  if (offset + length > dictionary.startupParameters.size()) {
    TRACE_LOG(QVRLOG_WARNING, "Parameter with ID=%u leaves the parameter area (offset %u, length %u)\n", id,
              offset, length);
    return;
  }
  if (dictionary.slotOf(id) != nullptr) {
    TRACE_LOG(QVRLOG_WARNING, "Parameter with ID=%u is more than once in dictionary\n", id);
  }
  QVR_paramInfo_t& slot = dictionary.param_info[id];
  slot.param_id = id & 0x3FFU;
  slot.param_len = length & 0x1FFU;
  slot.param_offset = offset & 0x7FFU;
  slot.param_config_state = PARAMS_ENTRY_STATE(word) & 1U;
  slot.param_config_type = PARAMS_ENTRY_TYPE(word) & 1U;
  slot.param_address = dictionary.params_header.params_address + offset;
  slot.param_entry = position & 0xFFFFU;
}

// A firmware lists its parameters without gaps, so no more words are used than there are slots.
void fillSlots(QVR_paramsDictionary_t& dictionary, const std::vector<uint32_t>& words) {
  dictionary.param_info.assign(slotsFor(words), unusedSlot());
  if (words.size() != dictionary.param_info.size()) {
    TRACE_LOG(QVRLOG_WARNING, "Dictionary has %zu words for %zu parameters\n", words.size(),
              dictionary.param_info.size());
  }
  const size_t looked = std::min(words.size(), dictionary.param_info.size());
  for (size_t i = 0; i < looked; i++) {
    fillSlot(dictionary, static_cast<uint32_t>(i), words[i]);
  }
}

QVR_retval_t QVR_loadParamsDictionary(QVR_paramsDictionary_t& dictionary) {
  if (const QVR_retval_t status = readHeader(dictionary.params_header); QVR_STATUS_ERROR(status)) {
    return status;
  }
  try {
    std::vector<uint32_t> words;
    const QVR_retval_t status = readEntryWords(dictionary.params_header.dictionary_size, words);
    dictionary.startupParameters.allocate(believedSize(
        "the parameter area", dictionary.params_header.params_size, kMostAreaBytes, kReachOfEntries));
    if (QVR_STATUS_OK(status)) {
      fillSlots(dictionary, words);
    }
    return status;
  } catch (const std::bad_alloc&) {
    return QVR_E_FAILED_TO_ALLOCATE_MEMORY;
  }
}

}  // namespace

const QVR_paramInfo_t* QVR_paramsDictionary_t::slotOf(uint32_t id) const {
  if (id >= param_info.size()) {
    return nullptr;
  }
  const QVR_paramInfo_t& slot = param_info[id];
  // An unused slot has id 1023, which is a possible index too.
  return slot.param_id == id && slot.param_entry != kUnusedEntry ? &slot : nullptr;
}

QVR_paramsDictionary_t& gfast::paramsDictionary() {
  if (QVR_paramsDictionary_t* known = loadedDictionary) {
    return *known;
  }
  auto loading = std::make_unique<QVR_paramsDictionary_t>();
  loading->loadStatus = QVR_loadParamsDictionary(*loading);
  // If two threads load at the same time, the second one uses the dictionary of the first and drops its own.
  QVR_paramsDictionary_t* known = nullptr;
  return loadedDictionary.compare_exchange_strong(known, loading.get()) ? *loading.release() : *known;
}

#include "qvrparams/dictionary.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>

#include "chip/parameter_records.h"
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
constinit std::atomic<QVR_paramsDictionary_t*> paramsDictionary{nullptr};

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

// Fills the slots of a dictionary's entries.
class SlotFiller {
 public:
  SlotFiller(const QVR_paramsDictionary_t& dictionary, DictionaryEntries& entries)
      : dictionary_(dictionary), entries_(entries) {}

  // A firmware lists its parameters without gaps, so no more words are used than there are slots.
  void fillSlots(const std::vector<uint32_t>& words) {
    entries_.slots.assign(slotsFor(words), unusedSlot());
    if (words.size() != entries_.slots.size() && entries_.complete) {
      TRACE_LOG(QVRLOG_WARNING, "Dictionary has %zu words for %zu parameters\n", words.size(),
                entries_.slots.size());
    }
    const size_t looked = std::min(words.size(), entries_.slots.size());
    for (size_t i = 0; i < looked; i++) {
      fillSlot(static_cast<uint32_t>(i), words[i]);
    }
  }

 private:
  void fillSlot(uint32_t position, uint32_t word) {
    const uint32_t id = PARAMS_ENTRY_ID(word);
    const uint32_t length = PARAMS_ENTRY_LENGTH(word);
    const uint32_t offset = PARAMS_ENTRY_OFFSET(word);
    if (length == 0) {
      return;
    }
    if (offset + length > dictionary_.startupParameters.size()) {
      TRACE_LOG(QVRLOG_WARNING, "Parameter with ID=%u leaves the parameter area (offset %u, length %u)\n", id,
                offset, length);
      return;
    }
    if (entries_.slotOf(id) != nullptr) {
      TRACE_LOG(QVRLOG_WARNING, "Parameter with ID=%u is more than once in dictionary\n", id);
    }
    QVR_paramInfo_t& slot = entries_.slots[id];
    slot.param_id = id & 0x3FFU;
    slot.param_len = length & 0x1FFU;
    slot.param_offset = offset & 0x7FFU;
    slot.param_config_state = PARAMS_ENTRY_STATE(word) & 1U;
    slot.param_config_type = PARAMS_ENTRY_TYPE(word) & 1U;
    slot.param_address = dictionary_.params_header.params_address + offset;
    slot.param_entry = position & 0xFFFFU;
  }

  const QVR_paramsDictionary_t& dictionary_;
  DictionaryEntries& entries_;
};

// Words that could not be read are zero, which fills no slot.
std::unique_ptr<DictionaryEntries> entriesOf(const QVR_paramsDictionary_t& dictionary,
                                             const std::vector<uint32_t>& words, bool complete) {
  auto entries = std::make_unique<DictionaryEntries>();
  entries->complete = complete;
  SlotFiller(dictionary, *entries).fillSlots(words);
  return entries;
}

QVR_retval_t QVR_loadParamsDictionary(QVR_paramsDictionary_t& dictionary) {
  dictionary.loadStatus = readHeader(dictionary.params_header);
  if (QVR_STATUS_ERROR(dictionary.loadStatus)) {
    return dictionary.loadStatus;
  }
  try {
    std::vector<uint32_t> words;
    const QVR_retval_t status = readEntryWords(dictionary.params_header.dictionary_size, words);
    dictionary.startupParameters.allocate(believedSize(
        "the parameter area", dictionary.params_header.params_size, kMostAreaBytes, kReachOfEntries));
    dictionary.entries = entriesOf(dictionary, words, QVR_STATUS_OK(status)).release();
    return status;
  } catch (const std::bad_alloc&) {
    return dictionary.loadStatus = QVR_E_FAILED_TO_ALLOCATE_MEMORY;
  }
}

// Reads the entries again. If another thread was faster, its reading stays.
void completeEntries(QVR_paramsDictionary_t& dictionary, DictionaryEntries* known) {
  try {
    std::vector<uint32_t> words;
    if (QVR_STATUS_ERROR(readEntryWords(dictionary.params_header.dictionary_size, words))) {
      return;
    }
    auto entries = entriesOf(dictionary, words, true);
    entries->before.reset(known);
    if (dictionary.entries.compare_exchange_strong(known, entries.get())) {
      static_cast<void>(entries.release());  // the dictionary has it now
    } else {
      static_cast<void>(entries->before.release());  // it is still the dictionary's
    }
  } catch (const std::bad_alloc&) {
    return;
  }
}

}  // namespace

const QVR_paramInfo_t* DictionaryEntries::slotOf(uint32_t id) const {
  if (id >= slots.size()) {
    return nullptr;
  }
  const QVR_paramInfo_t& slot = slots[id];
  // An unused slot has id 1023, which is a possible index too.
  return slot.param_id == id && slot.param_entry != kUnusedEntry ? &slot : nullptr;
}

QVR_paramsDictionary_t::~QVR_paramsDictionary_t() {
  delete entries;
}

size_t QVR_paramsDictionary_t::numOfEntries() const {
  const DictionaryEntries* known = entries;
  return known == nullptr ? 0 : known->slots.size();
}

const QVR_paramInfo_t* QVR_paramsDictionary_t::slotOf(uint32_t id) const {
  const DictionaryEntries* known = entries;
  return known == nullptr ? nullptr : known->slotOf(id);
}

LoadedDictionary gfast::loadedDictionary() {
  QVR_paramsDictionary_t* known = paramsDictionary;
  if (known == nullptr) {
    auto loading = std::make_unique<QVR_paramsDictionary_t>();
    const QVR_retval_t status = QVR_loadParamsDictionary(*loading);
    // If two threads load at the same time, the second one uses the dictionary of the first.
    if (paramsDictionary.compare_exchange_strong(known, loading.get())) {
      return {*loading.release(), status};
    }
  }
  DictionaryEntries* const entries = known->entries;
  if (entries != nullptr && !entries->complete) {
    completeEntries(*known, entries);
  }
  return {*known, known->loadStatus};
}

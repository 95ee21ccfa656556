// A dictionary for which there is no memory. This program's own allocation can be told to refuse.
#include <cstdlib>
#include <new>

#include "unit/sdk/qvrparams/parameters.h"

using namespace gfast;

namespace {

size_t refusedFrom = SIZE_MAX;  // bytes; smaller allocations succeed

}  // namespace

// Inlined, these would look to the compiler like a free of what new has allocated.
[[gnu::noinline]] void* operator new(size_t size) {
  void* memory = size >= refusedFrom ? nullptr : std::malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, size_t /*size*/) noexcept {
  std::free(memory);
}

namespace {

class ParametersWithoutMemory : public Parameters {
 protected:
  // The largest allocation of a test is the library's copy of the area, or its words of the dictionary.
  static QVR_retval_t loadRefusing(size_t from) {
    refusedFrom = from;
    const QVR_retval_t status = QVR_initParams();
    refusedFrom = SIZE_MAX;
    return status;
  }
};

TEST_F(ParametersWithoutMemory, TheCopyOfTheAreaIsMissedAfterTheEntriesWereRead) {
  driver_.expect(readsDictionary(0x10000, {{0, 4, 0}}));
  EXPECT_EQ(loadRefusing(0x10000), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
}

TEST_F(ParametersWithoutMemory, ItIsMissedEvenWhenTheEntriesCouldNotBeRead) {
  driver_.expect(readsDictionary(0x10000, {{0, 4, 0}}).fails(EIO));
  EXPECT_EQ(loadRefusing(0x10000), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
}

TEST_F(ParametersWithoutMemory, EveryLaterOperationFailsAlike) {
  driver_.expect(readsDictionary(0x10000, {{0, 4, 0}}));
  ASSERT_EQ(loadRefusing(0x10000), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
  uint32_t value = 7;
  EXPECT_EQ(QVR_initParams(), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
  EXPECT_EQ(QVR_getConfigParam(0, id(0), &value), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
  EXPECT_EQ(QVR_setConfigParam(0, id(0), &value), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
  EXPECT_EQ(QVR_loadConfigParams(0), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
  EXPECT_EQ(QVR_getParamDictionaryEntry(id(0)), nullptr);
  EXPECT_EQ(value, 7U);
}

TEST_F(ParametersWithoutMemory, TheEntriesAreMissedBeforeTheyAreRead) {
  driver_.expect(readsHeader(kArea, 64, 4096));
  EXPECT_EQ(loadRefusing(4096), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
}

}  // namespace

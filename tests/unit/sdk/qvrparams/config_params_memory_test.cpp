// A dictionary for which there is no memory.
#include "support/scarce_memory.h"
#include "unit/sdk/qvrparams/parameters.h"

using namespace gfast;

namespace {

class ParametersWithoutMemory : public Parameters {
 protected:
  // The largest allocation of a test is the library's copy of the area, or its words of the dictionary.
  static QVR_retval_t loadRefusing(size_t from) { return refusing(from, QVR_initParams); }
};

TEST_F(ParametersWithoutMemory, FailToLoadWithoutMemoryForTheArea) {
  driver_.expect(readsDictionary(0x10000, {{0, 4, 0}}));
  EXPECT_EQ(loadRefusing(0x10000), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
}

TEST_F(ParametersWithoutMemory, ReportMissingMemoryAlsoAfterAFailedRead) {
  driver_.expect(readsDictionary(0x10000, {{0, 4, 0}}).fails(EIO));
  EXPECT_EQ(loadRefusing(0x10000), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
}

TEST_F(ParametersWithoutMemory, MakeEveryLaterOperationFail) {
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

TEST_F(ParametersWithoutMemory, FailToLoadWithoutMemoryForTheEntries) {
  driver_.expect(readsHeader(kArea, 64, 4096));
  EXPECT_EQ(loadRefusing(4096), QVR_E_FAILED_TO_ALLOCATE_MEMORY);
}

}  // namespace

// A device or line that this system cannot have is a mistake of the caller, which ends the process: every
// operation that takes an id, but for those that say otherwise.
#include <array>
#include <type_traits>

#include <qvr.h>

#include "support/assertions.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;

// An argument that does no harm.
template <typename Argument>
Argument harmless() {
  static std::array<double, 4096> room{};
  if constexpr (std::is_pointer_v<Argument>) {
    return std::is_function_v<std::remove_pointer_t<Argument>> ? nullptr
                                                               : reinterpret_cast<Argument>(room.data());
  } else {
    return static_cast<Argument>(2);
  }
}

template <auto kOperation>
struct Call;

template <typename Result, typename... Others, Result (*kOperation)(int32_t, Others...)>
struct Call<kOperation> {
  static void with(int32_t id) { static_cast<void>(kOperation(id, harmless<Others>()...)); }
};

struct Operation {
  const char* name;
  void (*callWith)(int32_t id);
};

#define OPERATION(name) \
  { #name, Call < name> ::with }

constexpr Operation kOfLines[] = {
    OPERATION(QVR_readGfastFramerInitCounters),
    OPERATION(QVR_readGfastFduInitCounters),
    OPERATION(QVR_readGfastFramerRawCounters),
    OPERATION(QVR_readGfastFduRawCounters),
    OPERATION(QVR_readGfastDerivedCounters),
    OPERATION(QVR_readGfastETRdbCounters),
    OPERATION(QVR_readPerformanceMonitoringCounters),
    OPERATION(QVR_readGfastFramerInitCountersFE),
    OPERATION(QVR_readGfastFduInitCountersFE),
    OPERATION(QVR_readGfastFramerRawCountersFE),
    OPERATION(QVR_readGfastFduRawCountersFE),
    OPERATION(QVR_readGfastDerivedCountersFE),
    OPERATION(QVR_readFarEndFTUmanagementCounters),
    OPERATION(QVR_readFarEndPMDTestParameters),
    OPERATION(QVR_getCurrNELinePerformance),
    OPERATION(QVR_getCurrFELinePerformance),
    OPERATION(QVR_getCurrNEChannelPerformance),
    OPERATION(QVR_getCurrFEChannelPerformance),
    OPERATION(QVR_numberOf15minHistoryIntervals),
    OPERATION(QVR_numberOf24hrHistoryIntervals),
    OPERATION(QVR_getCurr15minCounters),
    OPERATION(QVR_getCurr24hrCounters),
    OPERATION(QVR_getPrev15minCounters),
    OPERATION(QVR_getPrev24hrCounters),
    OPERATION(QVR_dump15minCounterHistoryDB),
    OPERATION(QVR_dump24hrCounterHistoryDB),
    OPERATION(QVR_deviceIdforLine),
    OPERATION(QVR_isNetworkSideLine),
    OPERATION(QVR_isLineUp),
    OPERATION(QVR_resetLine),
    OPERATION(QVR_activateLine),
    OPERATION(QVR_readmemFarEnd),
    OPERATION(QVR_startSignalTransmission),
    OPERATION(QVR_receiveSignalSnapshot),
    OPERATION(QVR_testAfeTxRxPath),
    OPERATION(QVR_testAfePerformanceMTPR),
    OPERATION(QVR_testAfePerformanceMTPRInLoop),
    OPERATION(QVR_getLineStatus),
    OPERATION(QVR_getLineStatusInitialization),
    OPERATION(QVR_getChannelStatusus),
    OPERATION(QVR_getChannelStatusds),
    OPERATION(QVR_getInventory),
    OPERATION(QVR_getInventoryFarEnd),
    OPERATION(QVR_getLinePhyParams),
    OPERATION(QVR_getMedleySet),
    OPERATION(QVR_readTxBitLoadingTable),
    OPERATION(QVR_readRxBitLoadingTable),
    OPERATION(QVR_readTxRMCBitLoadingTable),
    OPERATION(QVR_readRxRMCBitLoadingTable),
    OPERATION(QVR_readSNRTable),
    OPERATION(QVR_readFarEndSNRTable),
    OPERATION(QVR_readRxSignal),
    OPERATION(QVR_readFarEndRxSignal),
    OPERATION(QVR_readTxSignal),
    OPERATION(QVR_readFarEndTxSignal),
    OPERATION(QVR_readTxFEQ),
    OPERATION(QVR_readFarEndTxFEQ),
    OPERATION(QVR_getLineStatusBITSpsds),
    OPERATION(QVR_getLineStatusBITSpsus),
    OPERATION(QVR_getLineStatusBITSRMCpsds),
    OPERATION(QVR_getLineStatusBITSRMCpsus),
    OPERATION(QVR_getLineStatusSNRpsds),
    OPERATION(QVR_getLineStatusSNRpsus),
    OPERATION(QVR_getLineStatusALNpsds),
    OPERATION(QVR_getLineStatusALNpsus),
    OPERATION(QVR_getLineStatusHLOGpsds),
    OPERATION(QVR_getLineStatusHLOGpsus),
    OPERATION(QVR_getSignalAttenuationds),
    OPERATION(QVR_getSignalAttenuationus),
    OPERATION(QVR_getLineStatusHLOGps),
    OPERATION(QVR_calcETRsForLine),
    OPERATION(QVR_readVectMatrix),
    OPERATION(QVR_readCancelerMatrixForLine),
    OPERATION(QVR_readPrecoderMatrixForLine),
    OPERATION(QVR_getAfeParams),
    OPERATION(QVR_getFarEndAfeParams),
};

constexpr Operation kOfDevices[] = {
    OPERATION(QVR_deviceInfoForDevice),
    OPERATION(QVR_isDeviceActive),
    OPERATION(QVR_getDeviceInfo),
    OPERATION(QVR_isValidFWState),
    OPERATION(QVR_readmem),
    OPERATION(QVR_writemem),
    OPERATION(QVR_readModifyWriteSBR),
    OPERATION(QVR_loadImageFile),
    OPERATION(QVR_activateImage),
    OPERATION(QVR_loadBootloader),
    OPERATION(QVR_eraseFlashSector),
    OPERATION(QVR_eraseFlash),
    OPERATION(QVR_eraseAppFirmware),
    OPERATION(QVR_eraseBootloader),
    OPERATION(QVR_eraseManufacturerBlock),
    OPERATION(QVR_upgradeAppFirmware),
    OPERATION(QVR_upgradeBootloader),
    OPERATION(QVR_upgradeManufactureBlock),
    OPERATION(QVR_rebootDevice),
    OPERATION(QVR_reset),
    OPERATION(QVR_restartDevice),
    OPERATION(QVR_setInventoryParams),
};

TEST(IdsOutOfRange, OfLinesEndTheProcess) {
  for (const Operation& operation : kOfLines) {
    for (const QVR_lineId_t line : {-1, QVR_K_MAX_LINES}) {
      SCOPED_TRACE(operation.name);
      EXPECT_ASSERTION(operation.callWith(line), asserts(200, "Invalid Line Identifier", line, "../qvrline"));
    }
  }
}

TEST(IdsOutOfRange, OfDevicesEndTheProcess) {
  for (const Operation& operation : kOfDevices) {
    for (const QVR_deviceId_t device : {-1, QVR_K_MAX_DEVICES}) {
      SCOPED_TRACE(operation.name);
      EXPECT_ASSERTION(operation.callWith(device),
                       AllOf(HasSubstr("Assert 100 in file ../qvrdev.c at line "),
                             HasSubstr("\nParam 0 = " + std::to_string(device) + "\n")));
    }
  }
}

TEST(IdsOutOfRange, OfDevicesThatAnAnswerTellsOf) {
  EXPECT_EQ(QVR_deviceHandle(QVR_K_MAX_DEVICES), -1);
  EXPECT_EQ(QVR_deviceHandle(-1), -1);
  uint8_t message[8] = {};
  uint32_t received = 7;
  EXPECT_EQ(QVR_sendMsgToFarEnd(QVR_K_MAX_DEVICES, 0, MGMT_FAR_END_REQ_TYPE_READMEM, message, sizeof message,
                                sizeof message, &received),
            QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(received, 0U);
}

}  // namespace

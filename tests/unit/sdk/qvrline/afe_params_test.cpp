// Gain and mode of the analogue front end at either end.
#include "unit/sdk/qvrline/tone_test.h"

using namespace gfast;

namespace {

struct Reader {
  const char* name;
  QVR_retval_t (*read)(QVR_lineId_t line, QVR_AFE_PARAMS_t* afe);
  bool far;
};
constexpr Reader kReaders[] = {
    {"near", QVR_getAfeParams, false},
    {"far", QVR_getFarEndAfeParams, true},
};

class AfeParams : public ToneTest {
 protected:
  Script readsAfe(bool far, int device, uint32_t gain, uint32_t mode) {
    return findsTones(device, 43, 1929) + readsEqualiser(far, device, {}, {}, gain, mode);
  }

  QVR_AFE_PARAMS_t afe_{-1, 99};
};

TEST_F(AfeParams, TakeSixBitsOfTheGainAndOneOfTheMode) {
  struct Case {
    uint32_t gain;
    uint32_t mode;
    double rxGain;
    uint32_t aceOnOff;
  };
  const Case cases[] = {
      {0, 0, 0, 0},
      {23, 1, 23, 1},
      {63, 2, 63, 0},
      {64, 3, 0, 1},
      {0xFFFFFFD7, 0xFFFFFFFF, 23, 1},
      {0x17000000, 0x01000000, 0, 0},
  };
  for (const Reader& reader : kReaders) {
    for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
      for (const Case& each : cases) {
        SCOPED_TRACE(reader.name);
        driver_.expect(readsAfe(reader.far, line, each.gain, each.mode));
        EXPECT_EQ(reader.read(line, &afe_), QVR_E_STATUS_OK);
        EXPECT_EQ(afe_.rxGain, each.rxGain);
        EXPECT_EQ(afe_.aceOnOff, each.aceOnOff);
        driver_.verify();
      }
    }
  }
}

TEST_F(AfeParams, ReadTheFramingOfTheLineAgain) {
  driver_.expect(readsAfe(false, 0, 1, 0));
  EXPECT_EQ(QVR_getAfeParams(0, &afe_), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_lineDescriptorForLine(0).phyParams.numProcessedTones, 1929U);
}

TEST_F(AfeParams, FailAndFillNothingWhenAnyRequestFails) {
  for (const Reader& reader : kReaders) {
    SCOPED_TRACE(reader.name);
    expectEachFailureAnswered([&] { return readsAfe(reader.far, 1, 23, 1); },
                              [&](bool& untouched) {
                                const QVR_retval_t status = reader.read(1, &afe_);
                                untouched = afe_.rxGain == -1 && afe_.aceOnOff == 99;
                                return status;
                              });
  }
}

TEST_F(AfeParams, FailWhenTheFarEndRefuses) {
  driver_.expect(findsTones(0, 43, 1929) +
                 asksFarEndMemory(0, 1, 0xE4280000, 4, farEndHeader(0xFFFF, 0, 1, 0)));
  EXPECT_EQ(QVR_getFarEndAfeParams(0, &afe_), QVR_E_FAREND_EOC_NACK);
  EXPECT_EQ(afe_.aceOnOff, 99U);
}

TEST_F(AfeParams, FailForALineThatIsDownOrHasNoDevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  for (const Reader& reader : kReaders) {
    driver_.expect(readsIdentity(0, chipWithLine(LS_SILENT)));
    EXPECT_EQ(reader.read(0, &afe_), QVR_E_ERROR);
    EXPECT_EQ(reader.read(1, &afe_), QVR_E_ERROR);
    EXPECT_ASSERTION(reader.read(2, &afe_), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  }
  EXPECT_EQ(afe_.aceOnOff, 99U);
}

}  // namespace

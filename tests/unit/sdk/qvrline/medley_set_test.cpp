// Medley sets: which of the two is read, and which bands it may have.
#include "qvrline/medley_set.h"

#include "unit/sdk/qvrline/tone_test.h"

using namespace gfast;

namespace {

class MedleySets : public ToneTest {
 protected:
  // Reads the set that the chip of line 0 transmits on; this is the answer.
  QVR_retval_t readAnswered(const Bytes& answer) {
    driver_.expect(reads(0, kSentSet, answer));
    return QVR_getMedleySetLUT(QVR_lineDescriptorForLine(0), FALSE, &set_, table_);
  }

  std::vector<Band> bandsOfTable() const {
    std::vector<Band> bands;
    for (uint32_t tone = 0; tone < QVR_MAX_NUMBER_OF_TONES; tone++) {
      if (table_[tone] != TRUE) {
        continue;
      }
      if (!bands.empty() && bands.back().last + 1U == tone) {
        bands.back().last = static_cast<uint16_t>(tone);
      } else {
        bands.push_back({static_cast<uint16_t>(tone), static_cast<uint16_t>(tone)});
      }
    }
    return bands;
  }

  QVR_medleyset_t set_{};
  QVR_medleySetLUT_t table_ = {};
};

TEST_F(MedleySets, DependOnSideAndDirection) {
  struct Case {
    QVR_lineId_t line;
    BOOL isUpstream;
    uint32_t address;
  };
  const Case cases[] = {
      {kNetworkSide, TRUE, kReceivedSet},
      {kNetworkSide, FALSE, kSentSet},
      {kSubscriberSide, TRUE, kSentSet},
      {kSubscriberSide, FALSE, kReceivedSet},
  };
  for (const Case& each : cases) {
    driver_.expect(reads(each.line, each.address, medleySet({{100, 200}})));
    EXPECT_EQ(QVR_getMedleySetLUT(QVR_lineDescriptorForLine(each.line), each.isUpstream, &set_, table_),
              QVR_E_STATUS_OK);
    EXPECT_EQ(bandsOfTable(), (std::vector<Band>{{100, 200}}));
    driver_.verify();
  }
}

TEST_F(MedleySets, AddressDependsOnTheLineIndex) {
  addLine(0, 0, 3, TRUE);
  driver_.expect(reads(0, 0xE6300000, medleySet({})) + reads(0, 0xE6380000, medleySet({})));
  EXPECT_EQ(QVR_getMedleySetLUT(QVR_lineDescriptorForLine(0), TRUE, &set_, table_), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_getMedleySetLUT(QVR_lineDescriptorForLine(0), FALSE, &set_, table_), QVR_E_STATUS_OK);
}

TEST_F(MedleySets, AreLittleEndianRecords) {
  Bytes answer(132);
  answer[0] = 0x34;
  answer[1] = 0x02;  // 0x0234
  answer[2] = 0x01;
  answer[3] = 0x04;    // 0x0401
  answer[128] = 1;     // bands
  answer[130] = 0xCE;  // subcarriers
  answer[131] = 0x01;
  EXPECT_EQ(readAnswered(answer), QVR_E_STATUS_OK);
  EXPECT_EQ(set_.bands[0].firstSubCarrier, 0x0234);
  EXPECT_EQ(set_.bands[0].lastSubCarrier, 0x0401);
  EXPECT_EQ(set_.numBands, 1);
  EXPECT_EQ(set_.numSubCarriers, 0x01CE);
  EXPECT_EQ(bandsOfTable(), (std::vector<Band>{{0x0234, 0x0401}}));
}

TEST_F(MedleySets, ReplaceTheTable) {
  std::fill_n(table_, QVR_MAX_NUMBER_OF_TONES, BOOL{TRUE});
  EXPECT_EQ(readAnswered(medleySet({{0, 0}, {43, 44}, {2047, 2047}})), QVR_E_STATUS_OK);
  EXPECT_EQ(bandsOfTable(), (std::vector<Band>{{0, 0}, {43, 44}, {2047, 2047}}));
}

TEST_F(MedleySets, HaveAtMost31Bands) {
  std::vector<Band> bands;
  for (uint16_t i = 0; i < 31; i++) {
    bands.push_back({static_cast<uint16_t>(i * 60), static_cast<uint16_t>(i * 60 + 10)});
  }
  EXPECT_EQ(readAnswered(medleySet(bands)), QVR_E_STATUS_OK);
  EXPECT_EQ(bandsOfTable(), bands);
  for (const int claimed : {32, 33, 0x100, 0xFFFF}) {
    EXPECT_EQ(readAnswered(medleySet({{5, 6}}, static_cast<uint16_t>(claimed))), QVR_E_ERROR) << claimed;
    EXPECT_EQ(bandsOfTable(), bands) << claimed;
  }
}

TEST_F(MedleySets, IgnoreBandsBeyondTheirNumber) {
  EXPECT_EQ(readAnswered(medleySet({{5, 6}, {0, 0xFFFF}}, 1)), QVR_E_STATUS_OK);
  EXPECT_EQ(bandsOfTable(), (std::vector<Band>{{5, 6}}));
}

TEST_F(MedleySets, FailForABandPastTheGridAndKeepWhatWasMarked) {
  for (const Band& band : {Band{2040, 2048}, Band{2040, 0xFFFF}}) {
    EXPECT_EQ(readAnswered(medleySet({{5, 6}, band, {7, 8}})), QVR_E_ERROR);
    EXPECT_EQ(bandsOfTable(), (std::vector<Band>{{5, 6}, {2040, 2047}}));
  }
  EXPECT_EQ(readAnswered(medleySet({{2048, 2048}})), QVR_E_ERROR);
  EXPECT_TRUE(bandsOfTable().empty());
  EXPECT_EQ(readAnswered(medleySet({{0xFFFF, 0xFFFF}})), QVR_E_ERROR);
}

TEST_F(MedleySets, BandThatEndsBeforeItBeginsHasNoSubcarriers) {
  EXPECT_EQ(readAnswered(medleySet({{200, 100}, {0xFFFF, 0}, {7, 8}})), QVR_E_STATUS_OK);
  EXPECT_EQ(bandsOfTable(), (std::vector<Band>{{7, 8}}));
}

TEST_F(MedleySets, FailAndFillNothingWhenTheReadFails) {
  table_[9] = TRUE;
  set_.numBands = 77;
  driver_.expect(reads(0, kSentSet, medleySet({{1, 2}})).fails(EIO));
  EXPECT_EQ(QVR_getMedleySetLUT(QVR_lineDescriptorForLine(0), FALSE, &set_, table_), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(set_.numBands, 77);
  EXPECT_EQ(bandsOfTable(), (std::vector<Band>{{9, 9}}));
}

TEST_F(MedleySets, HaveALowestAndAHighestSubcarrier) {
  QVR_medleySetLUT_t table = {};
  EXPECT_EQ(QVR_findLowestSubcarrierInMedleySet(table, 2048), 2048U);
  EXPECT_EQ(QVR_findHighestSubcarrierInMedleySet(table, 2048), 0U);
  table[0] = TRUE;
  EXPECT_EQ(QVR_findLowestSubcarrierInMedleySet(table, 2048), 0U);
  EXPECT_EQ(QVR_findHighestSubcarrierInMedleySet(table, 2048), 0U);
  table[2047] = TRUE;
  EXPECT_EQ(QVR_findHighestSubcarrierInMedleySet(table, 2048), 2047U);
  table[0] = FALSE;
  EXPECT_EQ(QVR_findLowestSubcarrierInMedleySet(table, 2048), 2047U);
  EXPECT_EQ(QVR_findLowestSubcarrierInMedleySet(table, 2047), 2047U);  // the size: there is none
  EXPECT_EQ(QVR_findHighestSubcarrierInMedleySet(table, 2047), 0U);
  EXPECT_EQ(QVR_findLowestSubcarrierInMedleySet(table, 0), 0U);
  EXPECT_EQ(QVR_findHighestSubcarrierInMedleySet(table, 0), 0U);
}

TEST_F(MedleySets, SpanFromTheLowestToTheHighestSubcarrier) {
  MedleySet set;
  driver_.expect(reads(0, kSentSet, medleySet({{100, 110}, {190, 200}})) + reads(0, kSentSet, medleySet({})) +
                 reads(0, kSentSet, medleySet({{0, 0}})) + reads(0, kSentSet, medleySet({{0, 2047}})));
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(0);
  ASSERT_EQ(readMedleySet(line, false, &set), QVR_E_STATUS_OK);
  EXPECT_EQ(set.lowest, 100U);
  EXPECT_EQ(set.highest, 200U);
  EXPECT_EQ(set.span(), 101U);
  ASSERT_EQ(readMedleySet(line, false, &set), QVR_E_STATUS_OK);
  EXPECT_EQ(set.span(), 0U);
  ASSERT_EQ(readMedleySet(line, false, &set), QVR_E_STATUS_OK);
  EXPECT_EQ(set.span(), 1U);
  ASSERT_EQ(readMedleySet(line, false, &set), QVR_E_STATUS_OK);
  EXPECT_EQ(set.span(), 2048U);
}

TEST_F(MedleySets, OfALineAreReadForSendingAndReceiving) {
  for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
    driver_.expect(reads(line, kSentSet, medleySet({{43, 99}})) +
                   reads(line, kReceivedSet, medleySet({{50, 60}, {70, 80}})));
    EXPECT_EQ(QVR_getMedleySet(line, TRUE, &set_), QVR_E_STATUS_OK);
    EXPECT_EQ(set_.numBands, 1);
    EXPECT_EQ(set_.bands[0].lastSubCarrier, 99);
    EXPECT_EQ(QVR_getMedleySet(line, FALSE, &set_), QVR_E_STATUS_OK);
    EXPECT_EQ(set_.numBands, 2);
    EXPECT_EQ(set_.bands[1].firstSubCarrier, 70);
  }
}

TEST_F(MedleySets, OfALineFailWhenUnreadableOrImpossible) {
  driver_.expect(reads(0, kSentSet, medleySet({})).fails(EIO) + reads(0, kSentSet, medleySet({}, 32)) +
                 reads(0, kSentSet, medleySet({{2048, 2048}})));
  EXPECT_EQ(QVR_getMedleySet(0, TRUE, &set_), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(QVR_getMedleySet(0, TRUE, &set_), QVR_E_ERROR);
  EXPECT_EQ(QVR_getMedleySet(0, TRUE, &set_), QVR_E_ERROR);
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_EQ(QVR_getMedleySet(1, TRUE, &set_), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_ASSERTION(QVR_getMedleySet(2, TRUE, &set_),
                   asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
}

}  // namespace

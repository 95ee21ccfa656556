// Link failures, reported as the line failures of the management model.
#include "qvrfast/line_failures.h"
#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

constexpr time_t kWhen = 1700043300;  // 2023-11-15 10:15:00 UTC

struct Failure {
  QVR_lineId_t line;
  QVR_lineFailures_t record;
};

std::vector<Failure>& failures() {
  static auto& all = *new std::vector<Failure>;
  return all;
}

void note(QVR_lineId_t line, const QVR_lineFailures_t* record) {
  failures().push_back({line, *record});
}

// A reason, and the failures that it is reported as.
struct Reason {
  const char* name;
  LINK_FAILURE_TYPE_E reason;
  BOOL los;
  BOOL lom;
  BOOL lor;
};

void PrintTo(const Reason& reason, std::ostream* out) {
  *out << reason.name;
}

class LineFailures : public testing::TestWithParam<Reason> {};

TEST_P(LineFailures, AreReportedByReason) {
  setZone("UTC0");
  QVR_registerlineFailuresCB(note);
  QVR_LinkFailureEventHandler(1, GetParam().reason, kWhen);
  ASSERT_EQ(failures().size(), 1U);
  EXPECT_EQ(failures()[0].line, 1);
  const QVR_lineFailures_t& record = failures()[0].record;
  EXPECT_EQ(record.timeStamp, kWhen);
  EXPECT_STREQ(record.timeStampString, "2023-11-15T10:15:00+UTC");
  EXPECT_EQ(record.lineFailures.LOS, GetParam().los);
  EXPECT_EQ(record.lineFailures.LOM, GetParam().lom);
  EXPECT_EQ(record.lineFailures.LOR, GetParam().lor);
}

INSTANTIATE_TEST_SUITE_P(Reasons, LineFailures,
                         testing::Values(Reason{"LossOfRmc", LF_REASON_LOSS_OF_RMC, FALSE, FALSE, TRUE},
                                         Reason{"LossOfMargin", LF_REASON_LOSS_OF_MARGIN, FALSE, TRUE, FALSE},
                                         Reason{"LossOfSignal", LF_REASON_LOSS_OF_SIGNAL, TRUE, FALSE, FALSE},
                                         Reason{"LossOfPower", LF_REASON_LOSS_OF_POWER, TRUE, FALSE, FALSE},
                                         Reason{"HighBer", LF_REASON_HIGH_BER, TRUE, FALSE, FALSE},
                                         Reason{"NoError", LF_REASON_NO_ERROR, TRUE, FALSE, FALSE},
                                         Reason{"UnknownReason", static_cast<LINK_FAILURE_TYPE_E>(4711), TRUE,
                                                FALSE, FALSE}),
                         [](const auto& reason) { return reason.param.name; });

TEST(LineFailuresCallback, IsNotCalledBeforeRegistrationOrAfterRemoval) {
  QVR_LinkFailureEventHandler(0, LF_REASON_LOSS_OF_RMC, kWhen);
  QVR_registerlineFailuresCB(note);
  QVR_registerlineFailuresCB(nullptr);
  QVR_LinkFailureEventHandler(0, LF_REASON_LOSS_OF_RMC, kWhen);
  EXPECT_TRUE(failures().empty());
}

}  // namespace

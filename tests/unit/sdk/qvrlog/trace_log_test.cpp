// The trace log: which messages pass, where they go, what they look like.
#include "qvrlog/qvrlog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

struct Received {
  QVR_logSeverity_t severity;
  std::string message;
};

std::vector<Received>& received() {
  static auto* all = new std::vector<Received>;
  return *all;
}

void receive(QVR_logSeverity_t severity, const char* message) {
  received().push_back({severity, message});
}

std::string printedAt(QVR_logSeverity_t severity) {
  CaptureStdout();
  QVR_traceLogMessage(severity, "function", 12, "text %d\n", 34);
  return GetCapturedStdout();
}

TEST(TraceLog, StartsAtErrorLevel) {
  EXPECT_EQ(QVR_initTraceLogModule(), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_traceLogLevel(), QVRLOG_ERR);
}

TEST(TraceLog, PrintsNoWarningAtErrorLevel) {
  EXPECT_EQ(printedAt(QVRLOG_WARNING), "");
  EXPECT_EQ(printedAt(QVRLOG_INFO), "");
  EXPECT_EQ(printedAt(QVRLOG_DEBUG), "");
}

TEST(TraceLog, PrintsSeverityFunctionLineAndText) {
  EXPECT_EQ(printedAt(QVRLOG_CRIT), "[LOG_CRIT] function:12 text 34\n");
  EXPECT_EQ(printedAt(QVRLOG_ERR), "[LOG_ERR] function:12 text 34\n");
}

TEST(TraceLog, PrintsEveryMessageAtDebugLevel) {
  QVR_setTraceLogLevel(QVRLOG_DEBUG);
  EXPECT_EQ(QVR_traceLogLevel(), QVRLOG_DEBUG);
  EXPECT_EQ(printedAt(QVRLOG_WARNING), "[LOG_WARNING] function:12 text 34\n");
  EXPECT_EQ(printedAt(QVRLOG_INFO), "[LOG_INFO] function:12 text 34\n");
  EXPECT_EQ(printedAt(QVRLOG_DEBUG), "[LOG_DEBUG] function:12 text 34\n");
}

TEST(TraceLog, KeepsALevelOutOfRangeAndPrintsUnknownSeverities) {
  QVR_setTraceLogLevel(static_cast<QVR_logSeverity_t>(9));
  EXPECT_EQ(QVR_traceLogLevel(), static_cast<QVR_logSeverity_t>(9));
  EXPECT_EQ(printedAt(static_cast<QVR_logSeverity_t>(7)), "[LOG_UNKNOWN] function:12 text 34\n");
  EXPECT_EQ(printedAt(static_cast<QVR_logSeverity_t>(10)), "");
}

TEST(TraceLog, AddsNoLineEnd) {
  CaptureStdout();
  QVR_traceLogMessage(QVRLOG_ERR, "function", 12, "text");
  EXPECT_EQ(GetCapturedStdout(), "[LOG_ERR] function:12 text");
}

TEST(TraceLog, NamesSeveritiesAndCallsOthersUnknown) {
  EXPECT_STREQ(QVR_traceLogLevelString(QVRLOG_CRIT), "LOG_CRIT");
  EXPECT_STREQ(QVR_traceLogLevelString(QVRLOG_ERR), "LOG_ERR");
  EXPECT_STREQ(QVR_traceLogLevelString(QVRLOG_WARNING), "LOG_WARNING");
  EXPECT_STREQ(QVR_traceLogLevelString(QVRLOG_INFO), "LOG_INFO");
  EXPECT_STREQ(QVR_traceLogLevelString(QVRLOG_DEBUG), "LOG_DEBUG");
  EXPECT_STREQ(QVR_traceLogLevelString(static_cast<QVR_logSeverity_t>(5)), "LOG_UNKNOWN");
  EXPECT_STREQ(QVR_traceLogLevelString(static_cast<QVR_logSeverity_t>(0xFFFFFFFFU)), "LOG_UNKNOWN");
}

TEST(TraceLog, PassesMessagesToTheHandlerInsteadOfStandardOutput) {
  QVR_registerTraceLogHandlerCB(receive);
  EXPECT_EQ(printedAt(QVRLOG_ERR), "");
  EXPECT_EQ(printedAt(QVRLOG_WARNING), "");
  ASSERT_EQ(received().size(), 1U);
  EXPECT_EQ(received()[0].severity, QVRLOG_ERR);
  EXPECT_EQ(received()[0].message, "[LOG_ERR] function:12 text 34\n");
}

TEST(TraceLog, PrintsAgainAfterTheHandlerIsRemoved) {
  QVR_registerTraceLogHandlerCB(receive);
  QVR_registerTraceLogHandlerCB(nullptr);
  EXPECT_EQ(printedAt(QVRLOG_ERR), "[LOG_ERR] function:12 text 34\n");
  EXPECT_TRUE(received().empty());
}

TEST(TraceLog, CutsMessagesForTheHandlerAt255Characters) {
  QVR_registerTraceLogHandlerCB(receive);
  const std::string longText(1000, 'x');
  QVR_traceLogMessage(QVRLOG_ERR, "function", 12, "%s", longText.c_str());
  ASSERT_EQ(received().size(), 1U);
  EXPECT_EQ(received()[0].message, ("[LOG_ERR] function:12 " + longText).substr(0, 255));
}

TEST(TraceLog, CutsALongFunctionNameAt255Characters) {
  QVR_registerTraceLogHandlerCB(receive);
  const std::string longName(300, 'f');
  QVR_traceLogMessage(QVRLOG_ERR, longName.c_str(), 12, "text\n");
  ASSERT_EQ(received().size(), 1U);
  EXPECT_EQ(received()[0].message, ("[LOG_ERR] " + longName).substr(0, 255));
}

TEST(TraceLog, PrintsConversionsInTheFunctionNameAsText) {
  QVR_registerTraceLogHandlerCB(receive);
  QVR_traceLogMessage(QVRLOG_ERR, "%s%n", 12, "%d%%\n", 7);
  ASSERT_EQ(received().size(), 1U);
  EXPECT_EQ(received()[0].message, "[LOG_ERR] %s%n:12 7%\n");
}

TEST(TraceLog, MacroNamesItsCaller) {
  QVR_registerTraceLogHandlerCB(receive);
  const int line = __LINE__ + 1;
  TRACE_LOG(QVRLOG_ERR, "text\n");
  ASSERT_EQ(received().size(), 1U);
  EXPECT_EQ(received()[0].message, "[LOG_ERR] TestBody:" + std::to_string(line) + " text\n");
}

}  // namespace

// A reading as OpenMetrics text.
#include "qvrcli/serve/metrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

using namespace gfast::console;

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

Reading readingOf(const LineReading& line) {
  Reading reading;
  reading.lines.push_back(line);
  return reading;
}

LineReading inShowtime() {
  LineReading line;
  line.answers = true;
  line.state = LS_SHOWTIME;
  return line;
}

TEST(Metrics, OfALineThatDoesNotAnswerAreThatItIsDown) {
  const std::string text = metricsText(readingOf({}));
  EXPECT_THAT(text, HasSubstr("dsl_up{line=\"0\"} 0\n"));
  EXPECT_THAT(text, Not(HasSubstr("\ndsl_link_state{")));
  EXPECT_THAT(text, EndsWith("\n# EOF\n"));
}

TEST(Metrics, HaveNoSampleOfWhatHasNoValue) {
  LineReading line = inShowtime();
  line.upstream.snrMargin_db = -0.5;
  const std::string text = metricsText(readingOf(line));
  EXPECT_THAT(text, HasSubstr("\ndsl_snr_margin_db{line=\"0\",direction=\"upstream\"} -0.5\n"));
  EXPECT_THAT(text, Not(HasSubstr("dsl_snr_margin_db{line=\"0\",direction=\"downstream\"}")));
}

TEST(Metrics, CountErrorFreeBitsInBitsBeyond32) {
  LineReading line = inShowtime();
  line.networkEnd.emplace();
  line.networkTotals.emplace();
  (*line.networkTotals)[16] = 0x100000001;
  EXPECT_THAT(metricsText(readingOf(line)),
              HasSubstr("\ndsl_error_free_bits_total{line=\"0\",end=\"network\"} 281474976776192\n"));
}

TEST(Metrics, HaveNoCounterThatAnEndDoesNotKeep) {
  LineReading line = inShowtime();
  line.networkEnd.emplace().countsNearOnly = true;
  line.networkTotals.emplace();
  line.subscriberEnd.emplace();
  line.subscriberTotals.emplace();
  const std::string text = metricsText(readingOf(line));
  EXPECT_THAT(text, HasSubstr("\ndsl_full_initializations_total{line=\"0\",end=\"network\"} 0\n"));
  EXPECT_THAT(text, Not(HasSubstr("dsl_full_initializations_total{line=\"0\",end=\"subscriber\"}")));
}

// The far end may send any bytes as its name.
TEST(Metrics, KeepBytesOfTheEquipmentWithinTheirLabel) {
  LineReading line = inShowtime();
  line.inventory.emplace();
  std::memcpy(line.inventory->FTU_R.SYSTEM_VENDOR, "a\"b\\c\n\xFF\x01", 8);
  EXPECT_THAT(metricsText(readingOf(line)), HasSubstr("subscriber_vendor=\"a\\\"b\\\\c...\""));
}

}  // namespace

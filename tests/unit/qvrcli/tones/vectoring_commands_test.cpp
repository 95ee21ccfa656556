// The vectoring matrices at the console: given the coefficients of a chip, this is written into the file.
#include <fmt/format.h>

#include "support/vectoring.h"
#include "unit/qvrcli/tones/tone_requests.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr size_t kUsers = 16;

class ShowVectoring : public ToneConsole {
 protected:
  struct Kind {
    std::string name;
    uint32_t area;
  };
  const Kind kKinds[2] = {{"canceler", 0xE4000000}, {"precoder", 0xE4380000}};

  // A coefficient in units of 2^-12: its real part; the imaginary part is the negative of it.
  static int coefficient(size_t i, size_t j, size_t pair) {
    return static_cast<int>(16 * (kUsers * i + j) + 4096 * pair);
  }

  // The chip's area.
  static Script readsArea(int device, uint32_t area, size_t pairs) {
    std::vector<int> values;
    for (size_t i = 0; i < kUsers; i++) {
      for (size_t j = 0; j < kUsers; j++) {
        for (size_t pair = 0; pair < pairs; pair++) {
          values.push_back(coefficient(i, j, pair));
          values.push_back(-coefficient(i, j, pair));
        }
      }
    }
    return readsCoefficients(device, area, littleEndian16(values));
  }

  // A row of the file: the chip's j-th value of user i stands in line j, column i.
  static std::string rowOf(const std::string& frequency, size_t pair) {
    std::string row = frequency + " ";
    for (size_t line = 0; line < kUsers; line++) {
      for (size_t column = 0; column < kUsers; column++) {
        const double value = coefficient(column, line, pair) / 4096.0;
        // std::to_string does what the C library's printf does, which may round .5 away from zero.
        row += fmt::format("{:f} {:f} ", value, value == 0 ? 0 : -value);
      }
    }
    return row + "\n";
  }

  static Script finds(int device, uint32_t tones) {
    return findsLineUp(device) + readsFraming(device, kFirstTone, tones);
  }
};

TEST_F(ShowVectoring, WritesTheCoefficientsOfAPairForBothItsSubcarriers) {
  for (const Kind& kind : kKinds) {
    for (const int device : {0, 1}) {
      expect(finds(device, 3) + readsArea(device, kind.area, 2));
      EXPECT_THAT(typed("show vectoring " + kind.name + " " + std::to_string(device) + " " + file_.file()),
                  IsEmpty());
      EXPECT_EQ(file_.content(), rowOf("005.17500", 0) + rowOf("005.22675", 0) + rowOf("005.27850", 1));
      EXPECT_EQ(result(), CLI_OK);
      verify();
    }
  }
}

TEST_F(ShowVectoring, Writes4096As1) {
  expect(finds(0, 3) + readsArea(0, 0xE4000000, 2));
  typed("show vectoring canceler 0 " + file_.file());
  EXPECT_NE(file_.content().find("005.27850 1.000000 -1.000000 1.062500 -1.062500 "), std::string::npos);
}

TEST_F(ShowVectoring, WritesNoRowWithoutProcessedSubcarriers) {
  for (const Kind& kind : kKinds) {
    expect(finds(0, 0));
    EXPECT_THAT(typed("show vectoring " + kind.name + " 0 " + file_.file()), IsEmpty());
    EXPECT_EQ(file_.content(), "");
  }
}

TEST_F(ShowVectoring, WritesAsManyRowsAsTheChipHasRoomFor) {
  expect(finds(0, 4000000000) + readsArea(0, 0xE4380000, 512));
  EXPECT_THAT(typed("show vectoring precoder 0 " + file_.file()), IsEmpty());
  const std::string content = file_.content();
  EXPECT_EQ(std::ranges::count(content, '\n'), 1024);
  EXPECT_TRUE(content.substr(content.rfind('\n', content.size() - 2) + 1).starts_with("058.11525 "));
}

TEST_F(ShowVectoring, ReportsTheResultOfAFailedRead) {
  for (const Kind& kind : kKinds) {
    const std::string command = "show vectoring " + kind.name + " 1 " + file_.file();
    Bytes window(256);
    window[0] = 1;  // the guard words differ
    expect(finds(1, 2) + reads(1, kind.area, window).times(16));
    EXPECT_THAT(typed(command), ElementsAre("Failed reading " + kind.name + " matrix (1)"));
    EXPECT_EQ(file_.content(), "");
    verify();
    expect(finds(1, 2) + reads(1, kind.area, window).fails(EIO).times(16));
    EXPECT_THAT(typed(command), ElementsAre("Failed reading " + kind.name + " matrix (1)"));
    verify();
    expect(findsLineUp(1) + readsFraming(1).fails(EIO));
    EXPECT_THAT(typed(command), ElementsAre("Failed reading " + kind.name + " matrix (12)"));
    EXPECT_EQ(result(), CLI_OK);
    verify();
  }
}

TEST_F(ShowVectoring, ReportsAFileThatCannotBeWritten) {
  expect(finds(0, 2) + readsArea(0, 0xE4000000, 1));
  EXPECT_THAT(typed("show vectoring canceler 0 /dev/full"), ElementsAre("Could not write file /dev/full"));
}

TEST_F(ShowVectoring, TouchesNoFileForALineThatIsNotUp) {
  for (const Kind& kind : kKinds) {
    expect(readsIdentity(0, chipWithLine(LS_IDLE)));
    EXPECT_THAT(typed("show vectoring " + kind.name + " 0 " + file_.file()),
                ElementsAre("Line 0 is not in SHOWTIME"));
    EXPECT_EQ(file_.content(), "no file");
  }
}

TEST_F(ShowVectoring, ChecksTheLineThenItsStateThenTheFile) {
  const std::string noFile = file_.path() + "/no/file";
  for (const Kind& kind : kKinds) {
    const std::string show = "show vectoring " + kind.name;
    EXPECT_THAT(typed(show + " 2 " + noFile),
                ElementsAre("invalid parameter - line number must be between 0..1"));
    expect(findsLineUp(0));
    EXPECT_THAT(typed(show + " 0 " + noFile), ElementsAre("Could not open file " + noFile));
    for (const std::string words : {"", " 0", " 0 ?", " 0 file 1"}) {
      EXPECT_THAT(typed(show + words), ElementsAre(show + " <line-id> <filename>"));
    }
  }
}

}  // namespace

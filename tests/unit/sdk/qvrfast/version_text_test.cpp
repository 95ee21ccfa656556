// Version texts of every shape, rewritten in their field.
#include "qvrfast/version_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace gfast;

namespace {

// A field of 16 bytes with this text, zeros behind it.
std::string fieldWith(const std::string& text) {
  std::string bytes = text;
  bytes.resize(sizeof(QVR_versionText_t));
  return bytes;
}

struct Rewriting {
  const char* text;
  const char* three;
  const char* four;
};

// The field after its text was rewritten.
std::string rewritten(const std::string& text, VersionForm form) {
  QVR_versionText_t field;
  std::memcpy(field, fieldWith(text).data(), sizeof field);
  rewriteVersion(form, field);
  return {field, sizeof field};
}

TEST(VersionText, RewritesThreeNumbersAndAWord) {
  for (const Rewriting& expected : {
           Rewriting{"1.2.3 abc", "1.2.3 abc", "1.2.3.0 abc"},
           Rewriting{"7.1.4 rel", "7.1.4 rel", "7.1.4.0 rel"},
           Rewriting{"255.0.255 x", "255.0.255 x", "255.0.255.0 x"},
           Rewriting{"007.01.04 rel", "7.1.4 rel", "7.1.4.0 rel"},
           Rewriting{"7.1.4rel", "7.1.4 rel", "7.1.4.0 rel"},
           Rewriting{" 7. 1.\t4 \n rel", "7.1.4 rel", "7.1.4.0 rel"},
           Rewriting{"7.1.4 rel two", "7.1.4 rel", "7.1.4.0 rel"},
           Rewriting{"7.1.4.9 rel", "7.1.4 .9", "7.1.4.0 .9"},
           Rewriting{"1.2.3 %n%s%d", "1.2.3 %n%s%d", "1.2.3.0 %n%s%d"},
       }) {
    EXPECT_EQ(rewritten(expected.text, VersionForm::kThreeNumbers), fieldWith(expected.three))
        << expected.text;
    EXPECT_EQ(rewritten(expected.text, VersionForm::kFourNumbers), fieldWith(expected.four)) << expected.text;
  }
}

TEST(VersionText, CutsAndTerminatesATextThatFillsItsField) {
  EXPECT_EQ(rewritten("1.2.3 abcdefghij", VersionForm::kThreeNumbers), fieldWith("1.2.3 abcdefghi"));
  EXPECT_EQ(rewritten("1.2.3 abcdefghij", VersionForm::kFourNumbers), fieldWith("1.2.3.0 abcdefg"));
  EXPECT_EQ(rewritten("255.255.255 abcd", VersionForm::kFourNumbers), fieldWith("255.255.255.0 a"));
}

TEST(VersionText, KeepsTextsOfAnyOtherShape) {
  for (const char* text : {"",
                           " ",
                           "rel",
                           "1",
                           "1.",
                           "1.2",
                           "1.2.",
                           "1.2.3",
                           "1.2.3 ",
                           "1 .2.3 rel",
                           "1,2,3 rel",
                           "1..3 rel",
                           "v1.2.3 rel",
                           "256.2.3 rel",
                           "1.2.999 rel",
                           "-1.2.3 rel",
                           "+1.2.3 rel",
                           "4294967297.0.0 a",
                           "9999999999999999",
                           "1111111111111.1 ",
                           "\xFF\xFF\xFF\xFF\xFF\xFF",
                           "0x1.2.3 rel"}) {
    EXPECT_EQ(rewritten(text, VersionForm::kThreeNumbers), fieldWith(text)) << text;
    EXPECT_EQ(rewritten(text, VersionForm::kFourNumbers), fieldWith(text)) << text;
  }
  const std::string hidden("1.2.3 rel\0abc", 13);  // the text ends at the first zero byte
  EXPECT_EQ(rewritten(hidden, VersionForm::kFourNumbers), fieldWith("1.2.3.0 rel"));
  EXPECT_EQ(rewritten(std::string("1.2\0.3 rel", 10), VersionForm::kFourNumbers),
            fieldWith(std::string("1.2\0.3 rel", 10)));
}

}  // namespace

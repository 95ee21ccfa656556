// An assertion prints its report and ends the process by a memory fault.
#include "qvrassert/qvrassert.h"

#include "support/assertions.h"

using namespace gfast;

namespace {

using testing::HasSubstr;
using testing::Not;

TEST(Assertion, PrintsParametersInOrderAndEndsTheProcess) {
  EXPECT_ASSERTION(DoAssert(100, "../file.c", 77, "the message", 3, 5, -6, 7),
                   HasSubstr("Assert 100 in file ../file.c at line 77\n"
                             "the message\n"
                             "Param 0 = 5\n"
                             "Param 1 = -6\n"
                             "Param 2 = 7\n"));
}

TEST(Assertion, PrintsNoParameterLinesWithoutParameters) {
  EXPECT_ASSERTION(
      DoAssert(201, "../fft.c", 1, "size must be a power of 2", 0),
      testing::AllOf(HasSubstr("Assert 201 in file ../fft.c at line 1\nsize must be a power of 2\n"),
                     Not(HasSubstr("Param"))));
}

TEST(Assertion, PrintsConversionsInTheMessageAsText) {
  EXPECT_ASSERTION(DoAssert(1, "%s%n", 1, "%s%n", 0), HasSubstr("Assert 1 in file %s%n at line 1\n%s%n\n"));
}

}  // namespace

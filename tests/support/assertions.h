// Assertions of the library, which end the process.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <string>

// The statement ends the process by a memory fault. The matcher gets what it printed on standard output. No
// request that the test does not expect is made.
#define EXPECT_ASSERTION(statement, matcher) \
  EXPECT_EXIT(                               \
      {                                      \
        std::signal(SIGSEGV, SIG_DFL);       \
        dup2(STDERR_FILENO, STDOUT_FILENO);  \
        statement;                           \
      },                                     \
      testing::KilledBySignal(SIGSEGV),      \
      testing::AllOf(testing::Not(testing::HasSubstr("expected was")), matcher))

// The report of an assertion of the device layer, or of another layer by its source name.
inline auto asserts(int id, const std::string& message, int parameter,
                    const std::string& file = "../qvrdev.c") {
  return testing::ContainsRegex("Assert " + std::to_string(id) + " in file " + file + " at line [0-9]+\n" +
                                message + "\nParam 0 = " + std::to_string(parameter) + "\n");
}

// Texts that are stored beside the tests and compared byte for byte.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/text_file.h"

// The text is the stored one.
//
// To renew stored texts after an intended change, run the tests once with GFAST_RENEW_TEXTS=1. Each text is
// then written over the stored one, and its test fails, so that such a run is not mistaken for a pass. Read
// the differences before they are committed.
inline void expectStored(const std::string& path, const std::string& text) {
  if (std::getenv("GFAST_RENEW_TEXTS") != nullptr) {
    writeText(path, text);
    ADD_FAILURE() << "renewed: " << path;
    return;
  }
  EXPECT_EQ(text, readText(path)) << path;
}

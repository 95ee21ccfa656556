// Records that are made of words: as chip bytes, and word by word.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/bytes.h"

// Word i of the record.
template <typename Record>
uint32_t wordOf(const Record& record, size_t i) {
  static_assert(sizeof(Record) % 4 == 0);
  uint32_t word = 0;
  std::memcpy(&word, reinterpret_cast<const char*>(&record) + i * 4, sizeof word);
  return word;
}

// The record as it lies in chip memory.
template <typename Record>
Bytes chipBytes(const Record& record) {
  Bytes bytes;
  for (size_t i = 0; i < sizeof record / 4; i++) {
    append32(bytes, wordOf(record, i));
  }
  return bytes;
}

// The record's words count up from this one.
template <typename Record>
void expectCountingWords(const Record& record, uint32_t first) {
  for (uint32_t i = 0; i < sizeof(Record) / 4; i++) {
    EXPECT_EQ(wordOf(record, i), first + i) << "word " << i;
  }
}

template <typename Record>
bool isZero(const Record& record) {
  const auto* bytes = reinterpret_cast<const char*>(&record);
  return std::all_of(bytes, bytes + sizeof record, [](char byte) { return byte == 0; });
}

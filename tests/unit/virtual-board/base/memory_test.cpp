#include <gtest/gtest.h>

#include <cerrno>

#include "virtual-board/base/address_space.h"
#include "virtual-board/base/sparse_memory.h"

using namespace gfast;
using namespace gfast::board;

TEST(SparseMemory, HoldsAtMostItsLimit) {
  SparseMemory memory;
  const uint8_t byte[] = {0x5A};
  for (uint32_t page = 0; page < SparseMemory::kMaxPages; page++) {
    ASSERT_TRUE(memory.write(page * SparseMemory::kPageSize, byte));
  }
  EXPECT_FALSE(memory.write(0xF0000000, byte));
  EXPECT_TRUE(memory.write(7, byte));  // a page it already has
  const uint8_t two[] = {1, 2};
  const uint32_t end = static_cast<uint32_t>(SparseMemory::kMaxPages) * SparseMemory::kPageSize;
  EXPECT_FALSE(memory.write(end - 1, two));
  uint8_t out[1] = {0xEE};
  memory.copyOver(end - 1, out);
  EXPECT_EQ(out[0], 0xEE);
}

TEST(AddressSpace, RefusesAWriteThatDoesNotFit) {
  AddressSpace space;
  const uint8_t byte[] = {0x5A};
  for (uint32_t page = 0; page < SparseMemory::kMaxPages; page++) {
    ASSERT_EQ(space.write(page * SparseMemory::kPageSize, byte), 0);
  }
  EXPECT_EQ(space.write(0xF0000000, byte), ENOMEM);
  uint8_t out[2];
  space.read(0, out);
  EXPECT_EQ(out[0], 0x5A);
  EXPECT_EQ(out[1], 0);
}

// MAC addresses and serial numbers are gone from what is asked and answered, and nothing else is.
#include "driver/trace_blanks.h"

#include <gtest/gtest.h>

#include <string>

#include "chip/inventory_records.h"
#include "chip/registers.h"

using namespace gfast;

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kInventory = VIRT_BASE_ADDR_INVENTORY_READ;

Bytes counted(size_t length) {
  Bytes bytes(length);
  for (size_t i = 0; i < length; i++) {
    bytes[i] = static_cast<uint8_t>(i + 1);
  }
  return bytes;
}

// So many bytes from `first` on overwritten by the value.
Bytes with(Bytes bytes, size_t first, size_t count, uint8_t value) {
  std::fill_n(bytes.begin() + static_cast<long>(first), count, value);
  return bytes;
}

Bytes blankedRead(uint32_t address, const Bytes& bytes) {
  const TraceRequest request{TraceKind::kMemRead, 0, {address, static_cast<uint32_t>(bytes.size())}};
  TraceAnswer answer{0, bytes};
  blankAnswer(request, answer);
  return answer.returned;
}

TEST(TraceBlanks, MacAddressOfTheBootRegisters) {
  const Bytes registers = counted(B0_REGS_SIZE);
  EXPECT_EQ(blankedRead(VIRT_ADDR_B0_REGS, registers), with(registers, B0_REGS_MAC_ADDRESS, 6, 0));
}

TEST(TraceBlanks, PartOfAMacAddress) {
  EXPECT_EQ(blankedRead(VIRT_ADDR_B0_REGS + 12, {1, 2, 3, 4}), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(blankedRead(VIRT_ADDR_B0_REGS + 14, {1, 2, 3, 4}), (Bytes{0, 0, 3, 4}));
  EXPECT_EQ(blankedRead(VIRT_ADDR_B0_REGS + 8, {1, 2, 3, 4}), (Bytes{1, 2, 0, 0}));
}

TEST(TraceBlanks, SerialNumbersOfBothEndsKeepTheirLength) {
  const Bytes area = with(counted(NE_AND_FE_INVENTORY_SIZE), 40, 12, 0);
  const Bytes blanked = with(with(area, 20, 20, 'X'), 60 + 24, 32, 'X');
  EXPECT_EQ(blankedRead(kInventory, area), blanked);
  EXPECT_EQ(blankedRead(VIRT_BASE_ADDR_INVENTORY_PER_LINE_PARAMS(1), area), blanked);
}

TEST(TraceBlanks, NothingElsewhere) {
  EXPECT_EQ(blankedRead(0xD0000000, counted(900)), counted(900));
  EXPECT_EQ(blankedRead(0xFFFFFFFF, counted(900)), counted(900));
  EXPECT_EQ(blankedRead(0xE3100000, counted(260)), counted(260));
}

TEST(TraceBlanks, SerialNumberThatIsWritten) {
  TraceRequest request{TraceKind::kMemWrite, 0, {kInventory, 60}, "", counted(60)};
  blankRequest(request);
  EXPECT_EQ(request.sent, with(counted(60), 20, 32, 'X'));
}

TEST(TraceBlanks, InventoryThatTheFarEndSends) {
  const TraceRequest request{TraceKind::kFarEnd, 0, {0, MGMT_FAR_END_REQ_TYPE_INVENTORY, 56, 0}};
  TraceAnswer answer{0, counted(56)};
  blankAnswer(request, answer);
  EXPECT_EQ(answer.returned, with(counted(56), 24, 32, 'X'));
}

TEST(TraceBlanks, FarEndMemory) {
  Bytes header{2, 0, 4, 0, 0, 0, 0, 0, 0x0C, 0, 0, 0xE1};
  const TraceRequest request{TraceKind::kFarEnd, 0, {0, MGMT_FAR_END_REQ_TYPE_READMEM, 16, 12}, "", header};
  header.insert(header.end(), {1, 2, 3, 4});
  TraceAnswer answer{0, header};
  blankAnswer(request, answer);
  EXPECT_EQ(answer.returned, with(header, 12, 4, 0));
}

TEST(TraceBlanks, SurviveAFarEndThatSendsTooLittle) {
  for (const size_t length : {0U, 1U, 11U, 12U, 13U}) {
    const TraceRequest request{
        TraceKind::kFarEnd, 0, {0, MGMT_FAR_END_REQ_TYPE_READMEM, 16, 12}, "", counted(length)};
    TraceAnswer answer{0, counted(length)};
    blankAnswer(request, answer);
    EXPECT_EQ(answer.returned, counted(length));
  }
}

}  // namespace

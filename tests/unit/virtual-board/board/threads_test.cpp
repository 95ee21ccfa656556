// Requests from several threads at the same time, as a console makes them.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "chip/boot_register.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

TEST(Threads, RequestsOnOneDescriptorAtTheSameTime) {
  BoardConfig config;
  for (uint32_t i = 0; i < 200; i++) {
    config.events.push_back({0, i * 0.001, 3, {i}});
  }
  VirtualBoard board(config);
  const TempFile trace;
  ASSERT_EQ(board.traceRequests(trace.path()), 0);
  const int descriptor = board.open(0);

  std::thread notification([&] {
    uint32_t next = 0;
    while (next < 200) {
      char buffer[QVR_K_MAX_EVT_BUFFER_LEN];
      gfast_iocreq request{};
      request.req_u.logalm_read = {buffer, sizeof buffer, 0, 0};
      ASSERT_EQ(board.request(descriptor, DFEIOCALMRD, request), 0);
      if (request.req_u.logalm_read.datalen_copied_to_user != 0 &&
          load_le32(buffer + GFAST_EVENT_TYPE) == EVENT_TYPE_MODEM_IS_READY) {
        EXPECT_EQ(load_le32(buffer + GFAST_EVENT_PARAMS), next++);
      }
    }
  });
  for (uint32_t i = 0; i < 2000; i++) {
    char word[4];
    store_le32(word, i);
    gfast_iocreq request{};
    request.req_u.memwrite = {0xEF000000, 4, word, 4};
    ASSERT_EQ(board.request(descriptor, DFEIOCMEMWR, request), 0);
    request = {};
    request.req_u.memread = {0xEF000000, 4, word, 4, 0, 0};
    ASSERT_EQ(board.request(descriptor, DFEIOCMEMRD, request), 0);
    ASSERT_EQ(load_le32(word), i);
  }
  notification.join();
}

TEST(Threads, OpeningAndClosingDuringRequestsOfOthers) {
  VirtualBoard board{BoardConfig()};
  const int descriptor = board.open(1);
  std::thread other([&] {
    for (int i = 0; i < 500; i++) {
      board.close(board.open(0));
      board.rediscover();
    }
  });
  for (int i = 0; i < 2000; i++) {
    char word[4];
    gfast_iocreq request{};
    request.req_u.memread = {SBR_REG_ADDRESS, 4, word, 4, 0, 0};
    ASSERT_EQ(board.request(descriptor, DFEIOCMEMRD, request), 0);
  }
  other.join();
}

TEST(Threads, OthersAreServedDuringAnExchangeWithTheFarEnd) {
  BoardConfig config;
  config.device[0].line = LineState::kShowtime;
  VirtualBoard board(config);
  const int descriptor = board.open(0);
  std::atomic<bool> exchanging = true;
  std::thread command([&] {
    for (int i = 0; i < 50; i++) {
      char response[44];
      gfast_iocreq request{};
      request.req_u.farendmsg = {0, 0, response, sizeof response, 0, sizeof response, 0};
      ASSERT_EQ(board.request(descriptor, DFEIOCFARENDMSG, request), 0);
    }
    exchanging = false;
  });
  int served = 0;
  for (; exchanging; served++) {
    char block[340];
    gfast_iocreq request{};
    request.req_u.memread = {0xE2440000, sizeof block, block, sizeof block, 0, 0};
    ASSERT_EQ(board.request(descriptor, DFEIOCMEMRD, request), 0);
  }
  command.join();
  EXPECT_GT(served, 50);
}

// A command and a reading never work with the chips at the same time.
#include "qvrcli/session/turn.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

using namespace gfast::console;
using namespace std::chrono_literals;

namespace {

TEST(Turn, IsOfOneAtATime) {
  std::atomic<int> working{0};
  std::atomic<bool> both{false};
  std::atomic<int> commands{0};
  std::thread reader([&] {
    while (commands < 200) {
      const ReadingTurn turn;
      both = both || ++working > 1;
      std::this_thread::yield();
      working--;
    }
  });
  for (; commands < 200; commands++) {
    const CommandTurn turn;
    both = both || ++working > 1;
    std::this_thread::yield();
    working--;
  }
  reader.join();
  EXPECT_FALSE(both);
}

// Otherwise a reading of many operations would be over before the command begins.
TEST(Turn, GoesToACommandBetweenTwoOperationsOfAReading) {
  std::atomic<int> operations{0};
  std::atomic<bool> end{false};
  std::thread reader([&] {
    while (!end) {
      const ReadingTurn turn;
      operations++;
      std::this_thread::sleep_for(1ms);
    }
  });
  while (operations == 0) {
    std::this_thread::yield();
  }
  const int before = operations;
  {
    const CommandTurn turn;
    EXPECT_LE(operations - before, 2);
    const int then = operations;
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(operations, then);
  }
  end = true;
  reader.join();
}

TEST(Turn, IsLentWhileACommandSleeps) {
  const CommandTurn turn;
  std::atomic<bool> read{false};
  std::thread reader([&] {
    const ReadingTurn reading;
    read = true;
  });
  std::this_thread::sleep_for(20ms);
  EXPECT_FALSE(read);
  {
    const TurnLent lent;
    reader.join();
  }
  EXPECT_TRUE(read);
}

TEST(Turn, CannotBeLentWithoutACommand) {
  { const TurnLent lent; }
  const ReadingTurn turn;  // would wait for ever
}

}  // namespace

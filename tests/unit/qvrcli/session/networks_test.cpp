#include "qvrcli/session/networks.h"

#include <gtest/gtest.h>

using namespace gfast::console;

namespace {

constexpr uint32_t kLoopback = 0x7F000001;

TEST(Endpoint, IsAnAddressPerhapsWithAPort) {
  const auto alone = parseEndpoint("127.0.0.1");
  ASSERT_TRUE(alone);
  EXPECT_EQ(alone->address, kLoopback);
  EXPECT_FALSE(alone->port);
  const auto both = parseEndpoint("0.0.0.0:65535");
  ASSERT_TRUE(both);
  EXPECT_EQ(both->address, 0U);
  EXPECT_EQ(both->port, 65535);
  EXPECT_EQ(parseEndpoint("127.0.0.1:0")->port, 0);
}

TEST(Endpoint, IsNothingElse) {
  for (const char* const text : {"",
                                 ":9000",
                                 "9000",
                                 "localhost",
                                 "127.0.0.1:",
                                 "127.0.0.1:65536",
                                 "127.0.0.1:-1",
                                 "127.0.0.1:+1",
                                 "127.0.0.1: 1",
                                 "127.0.0.1:1 ",
                                 "127.0.0.1:0x10",
                                 "127.0.0.1:1:2",
                                 " 127.0.0.1",
                                 "127.0.0.1 ",
                                 "127.0.0",
                                 "256.0.0.1",
                                 "127.0.0.1/8",
                                 "::1",
                                 "[::1]:9000",
                                 "127.0.0.1:4294967297"}) {
    EXPECT_FALSE(parseEndpoint(text)) << text;
  }
}

TEST(Networks, ContainTheAddressesBehindTheirPrefix) {
  const auto networks = parseNetworks("10.0.0.0/8");
  ASSERT_TRUE(networks);
  ASSERT_EQ(networks->size(), 1U);
  EXPECT_TRUE(networks->front().contains(0x0A000000));
  EXPECT_TRUE(networks->front().contains(0x0AFFFFFF));
  EXPECT_FALSE(networks->front().contains(0x09FFFFFF));
  EXPECT_FALSE(networks->front().contains(0x0B000000));
}

TEST(Networks, ContainOneAddressWithoutAPrefix) {
  for (const char* const text : {"127.0.0.1", "127.0.0.1/32"}) {
    const auto networks = parseNetworks(text);
    ASSERT_TRUE(networks) << text;
    EXPECT_TRUE(networks->front().contains(kLoopback));
    EXPECT_FALSE(networks->front().contains(kLoopback + 1));
    EXPECT_FALSE(networks->front().contains(kLoopback - 1));
  }
}

TEST(Networks, ContainEverythingWithAPrefixOf0) {
  const auto networks = parseNetworks("0.0.0.0/0");
  ASSERT_TRUE(networks);
  EXPECT_TRUE(networks->front().contains(0));
  EXPECT_TRUE(networks->front().contains(0xFFFFFFFF));
}

TEST(Networks, StandBetweenCommasAndBlanks) {
  const auto networks = parseNetworks(" 10.0.0.0/8,192.0.2.7 ,\t198.51.100.4/30 ");
  ASSERT_TRUE(networks);
  ASSERT_EQ(networks->size(), 3U);
  EXPECT_TRUE(networks->at(1).contains(0xC0000207));
  EXPECT_TRUE(networks->at(2).contains(0xC6336407));
  EXPECT_FALSE(networks->at(2).contains(0xC6336408));
}

TEST(Networks, AreNothingElse) {
  for (const char* const text :
       {"", " ", ",", "10.0.0.0/33", "10.0.0.0/", "10.0.0.0/-1", "10.0.0.0/+8", "10.0.0.0/8x", "10.0.0.0/8/8",
        "10.0.0.0/255.0.0.0", "10/8", "10.0.0.1/8", "0.0.0.1/0", "lab", "::1", "10.0.0.0/8;11.0.0.0/8",
        "10.0.0.0/8,lab", "127.0.0.1:9000"}) {
    EXPECT_FALSE(parseNetworks(text)) << text;
  }
}

}  // namespace

#include <gtest/gtest.h>
#include <kolum/server.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "server/running_echo_server.h"
#include "support/appliance_sandbox.h"
#include "support/descriptors.h"

namespace {

using kolum::test::openDescriptorCount;
using kolum::test::runInAppliance;
using kolum::test::RunningEchoServer;
using kolum::test::sandboxUnavailable;
using kolum::tool::EchoRequest;
using MediaLibrary::LUM::SocketResp_t;
namespace wire = MediaLibrary::LUM::wire;

TEST(SendCommandConcurrently, LosesAndMixesNothingFromEightThreads) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    constexpr int kThreads = 8;
    constexpr int kCommands = 1250;  // per thread
    std::atomic<int> served{0};
    std::atomic<int> failed{0};
    std::atomic<int> mixed{0};
    const int before = openDescriptorCount();
    {
      const RunningEchoServer server(wire::kSocketPath, [&](const EchoRequest&) { ++served; });
      std::vector<std::thread> threads;
      for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
          for (int i = 0; i < kCommands; ++i) {
            const std::string payload = std::to_string(thread) + "/" + std::to_string(i);
            SocketResp_t resp{};
            failed += sendCommand(&resp, i, payload.data(), payload.size());
            mixed += resp.data != nullptr && resp.data == payload ? 0 : 1;
            std::free(resp.data);
          }
        });
      }
      for (std::thread& thread : threads) thread.join();
    }
    EXPECT_EQ(served, kThreads * kCommands);
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(mixed, 0);
    EXPECT_EQ(openDescriptorCount(), before);
  });
}

}  // namespace

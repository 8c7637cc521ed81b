#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/server.h>
#include <malloc.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "server/scripted_server.h"
#include "support/appliance_sandbox.h"
#include "support/descriptors.h"

#ifdef KOLUM_SANITIZED_ADDRESS
#include <sanitizer/lsan_interface.h>
#define KOLUM_ALLOW_LEAK() const __lsan::ScopedDisabler allowLeak
#else
#define KOLUM_ALLOW_LEAK() (void)0
#endif

namespace {

// The time-outs that the library requested, and whether to replace them with short ones, because
// the real ones would take too long.
std::vector<timeval> g_timeOuts;
bool g_usesShortTimeOuts = false;

constexpr timeval kShortTimeOut{.tv_sec = 0, .tv_usec = 200'000};

}  // namespace

// Replaces the system's function in this program.
extern "C" int setsockopt(int fd, int level, int option, const void* value,
                          socklen_t size) noexcept {
  const bool isTimeOut = level == SOL_SOCKET && (option == SO_RCVTIMEO || option == SO_SNDTIMEO);
  if (isTimeOut) g_timeOuts.push_back(*static_cast<const timeval*>(value));
  if (isTimeOut && g_usesShortTimeOuts) value = &kShortTimeOut;
  return static_cast<int>(syscall(SYS_setsockopt, fd, level, option, value, size));
}

namespace {

using kolum::test::openDescriptorCount;
using kolum::test::runInAppliance;
using kolum::test::sandboxUnavailable;
using kolum::test::ScriptedServer;
using MediaLibrary::LUM::SocketResp_t;
using MediaLibrary::LUM::UnixSocket;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
namespace wire = MediaLibrary::LUM::wire;

constexpr std::uint64_t kUntouchedLength = 77;
char g_untouched[] = "untouched";

std::string number64(std::int64_t number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

// An answer as a server writes it: LENGTH is the length that it claims, TEXT what it sends.
std::string answer(std::int64_t result, std::uint64_t length, std::string_view text) {
  return number64(result) + number64(static_cast<std::int64_t>(length)) + number64(0x5555) +
         std::string(text);
}

std::string readRequest(UnixSocket& client) {
  std::array<char, 8192> buffer{};
  const int count = client.Read(buffer.data(), buffer.size());
  return count < 0 ? "failed" : std::string(buffer.data(), static_cast<std::size_t>(count));
}

void say(UnixSocket& client, std::string words) {
  EXPECT_EQ(client.Write(words.data(), words.size()), static_cast<int>(words.size()));
}

ScriptedServer answering(std::string words) {
  return {wire::kSocketPath, [words = std::move(words)](UnixSocket& client) {
            readRequest(client);
            say(client, words);
          }};
}

// A record that shows of every field whether it was written.
SocketResp_t presetResponse() {
  return {.result = 66, .length = kUntouchedLength, .data = g_untouched};
}

auto isUntouched() {
  return AllOf(Field(&SocketResp_t::result, 66), Field(&SocketResp_t::length, kUntouchedLength),
               Field(&SocketResp_t::data, static_cast<char*>(g_untouched)));
}

struct Outcome {
  int code = -1;
  SocketResp_t resp{};
  std::string text;
};

// Sends one command to a server that answers with WORDS; checks that no descriptor is leaked.
Outcome sendTo(const std::string& words) {
  const ScriptedServer server = answering(words);
  const int before = openDescriptorCount();
  Outcome outcome;
  outcome.code = sendCommand(&outcome.resp, 1, nullptr, 0);
  // The server's end of the connection may be open for a moment longer.
  for (int i = 0; i < 100 && openDescriptorCount() > before; ++i) usleep(1000);
  EXPECT_EQ(openDescriptorCount(), before);
  if (outcome.resp.data != nullptr) outcome.text = outcome.resp.data;
  std::free(outcome.resp.data);
  outcome.resp.data = nullptr;
  return outcome;
}

TEST(ServerWireLayout, MatchesTheProtocol) {
  EXPECT_STREQ(wire::kSocketPath, "/tmp/.mllumsocket.xxx");
  EXPECT_EQ(wire::kRequestCommandOffset, 0U);
  EXPECT_EQ(wire::kRequestLengthOffset, 8U);
  EXPECT_EQ(wire::kRequestPayloadOffset, 16U);
  EXPECT_EQ(wire::kRequestPayloadMax, 4080U);
  EXPECT_EQ(wire::kAnswerResultOffset, 0U);
  EXPECT_EQ(wire::kAnswerLengthOffset, 8U);
  EXPECT_EQ(wire::kAnswerReadMax, 4095U);
  EXPECT_EQ(wire::kAnswerTextMax, 4071U);
}

TEST(ServerWireLayout, PutsAnswerTextEightBytesBeyondRequestPayload) {
  EXPECT_EQ(wire::kAnswerTextOffset, 24U);
  EXPECT_EQ(wire::kAnswerTextOffset - wire::kRequestPayloadOffset, 8U);
}

TEST(ServerStatusNames, AreIndexedByStatusNumber) {
  EXPECT_THAT(kLumServerStatusName,
              ElementsAre(testing::StrEq("idle"), testing::StrEq("busy"), testing::StrEq("stop"),
                          testing::StrEq("pause"), testing::StrEq("sleep")));
}

class SendCommand : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  }
};

class SendActionToLumServer : public SendCommand {};

TEST_F(SendCommand, ReturnsOneAndKeepsResponseWithoutServer) {
  runInAppliance([] {
    SocketResp_t resp = presetResponse();
    EXPECT_EQ(sendCommand(&resp, 1, nullptr, 0), 1);
    EXPECT_THAT(resp, isUntouched());
    EXPECT_EQ(sendActionToLumServer(1, 2, 3), 3);
  });
}

TEST_F(SendCommand, ReturnsOneForStaleSocketFile) {
  runInAppliance([] {
    {
      UnixSocket server;
      ASSERT_EQ(server.Open(wire::kSocketPath), 0);
      ASSERT_EQ(server.Bind(), 0);
      ASSERT_EQ(server.Listen(1), 0);
    }
    ASSERT_TRUE(std::filesystem::is_socket(wire::kSocketPath));
    SocketResp_t resp = presetResponse();
    EXPECT_EQ(sendCommand(&resp, 1, nullptr, 0), 1);
    EXPECT_THAT(resp, isUntouched());
  });
}

TEST_F(SendCommand, SendsRequestInTheProtocolsLayout) {
  const std::string longest(4080, 'x');
  const struct {
    const char* name;
    int command;
    const char* data;
    unsigned long len;
    std::string expected;
  } kRows[] = {
      {"no payload is 16 bytes", 5, nullptr, 0, number64(5) + number64(0)},
      {"empty payload", 5, "", 0, number64(5) + number64(0)},
      {"payload", 7, "hello", 5, number64(7) + number64(5) + "hello"},
      {"bytes unchanged", 7, "a\0\xff", 3, number64(7) + number64(3) + std::string("a\0\xff", 3)},
      {"negative command", -2, nullptr, 0, number64(-2) + number64(0)},
      {"least command", INT_MIN, nullptr, 0, number64(INT_MIN) + number64(0)},
      {"longest payload", 7, longest.data(), 4080, number64(7) + number64(4080) + longest},
  };
  runInAppliance([&] {
    for (const auto& row : kRows) {
      SCOPED_TRACE(row.name);
      std::string request;
      const ScriptedServer server(wire::kSocketPath, [&](UnixSocket& client) {
        request = readRequest(client);
        say(client, answer(1, 0, ""));
      });
      SocketResp_t resp{};
      EXPECT_EQ(sendCommand(&resp, row.command, row.data, row.len), 0);
      EXPECT_EQ(request, row.expected);
    }
  });
}

TEST_F(SendCommand, SendsZeroLengthAndZeroBytesForLengthWithoutPayload) {
  runInAppliance([] {
    for (const unsigned long length : {1UL, 100UL, 4080UL}) {
      SCOPED_TRACE(length);
      std::string request;
      const ScriptedServer server(wire::kSocketPath, [&](UnixSocket& client) {
        request = readRequest(client);
        say(client, answer(1, 0, ""));
      });
      SocketResp_t resp{};
      EXPECT_EQ(sendCommand(&resp, 9, nullptr, length), 0);
      EXPECT_EQ(request, number64(9) + number64(0) + std::string(length, '\0'));
    }
  });
}

TEST_F(SendCommand, RejectsPayloadTooLongForItsBuffer) {
  runInAppliance([] {
    std::atomic<int> connections{0};
    {
      const ScriptedServer server(wire::kSocketPath, [&](UnixSocket&) { ++connections; });
      const std::string payload(8192, 'x');
      for (const unsigned long length : {4081UL, 8192UL, ULONG_MAX, ULONG_MAX - 15}) {
        SCOPED_TRACE(length);
        for (const char* data : {payload.data(), static_cast<const char*>(nullptr)}) {
          SocketResp_t resp = presetResponse();
          EXPECT_EQ(sendCommand(&resp, 1, data, length), 1);
          EXPECT_THAT(resp, isUntouched());
        }
      }
    }
    EXPECT_EQ(connections, 0);
  });
}

TEST_F(SendCommand, RejectsNullResponse) {
  runInAppliance([] {
    const ScriptedServer server = answering(answer(1, 0, ""));
    EXPECT_EQ(sendCommand(nullptr, 1, nullptr, 0), 1);
  });
}

TEST_F(SendCommand, KeepsDataOnSuccessWithoutText) {
  runInAppliance([] {
    const ScriptedServer server = answering(answer(1, 0, "text that nobody announced"));
    SocketResp_t resp = presetResponse();
    EXPECT_EQ(sendCommand(&resp, 1, nullptr, 0), 0);
    EXPECT_EQ(resp.result, 1);
    EXPECT_EQ(resp.length, 0U);
    EXPECT_EQ(resp.data, g_untouched);
  });
}

TEST_F(SendCommand, ReturnsAnswersAsRead) {
  const std::string longest(4071, 'x');
  const struct {
    const char* name;
    std::string words;
    int code;
    std::int64_t result;
    std::uint64_t length;
    std::string text;
  } kRows[] = {
      {"success with text", answer(1, 5, std::string("hello\0", 6)), 0, 1, 5, "hello"},
      {"failure with text", answer(2, 3, std::string("why\0", 4)), 1, 2, 3, "why"},
      {"negative result", answer(-1, 0, ""), 1, -1, 0, ""},
      {"result beyond 32 bits", answer(0x100000001, 0, ""), 1, 0x100000001, 0, ""},
      {"text without terminator", answer(1, 5, "hello"), 0, 1, 5, "hello"},
      {"no text though announced", answer(1, 5, ""), 0, 1, 5, ""},
      {"4095 bytes", answer(1, 4071, longest), 0, 1, 4071, longest},
      {"4096 bytes", answer(1, 4072, longest + "y"), 0, 1, 4072, longest},
      {"8000 bytes", answer(1, 7976, longest + std::string(3905, 'y')), 0, 1, 7976, longest},
      {"length too small", answer(1, 1, "hello"), 0, 1, 1, "hello"},
      {"length too large", answer(1, 4000, "hello"), 0, 1, 4000, "hello"},
      {"length without end", answer(1, UINT64_MAX, "hello"), 0, 1, UINT64_MAX, "hello"},
      {"length without end, full text", answer(1, UINT64_MAX, longest), 0, 1, UINT64_MAX, longest},
      {"result alone", number64(1), 0, 1, 0, ""},
      {"half a result", std::string("\1\0\0", 3), 0, 1, 0, ""},
      {"no reserved bytes", number64(1) + number64(2), 0, 1, 2, ""},
  };
  runInAppliance([&] {
    for (const auto& row : kRows) {
      SCOPED_TRACE(row.name);
      const Outcome outcome = sendTo(row.words);
      EXPECT_EQ(outcome.code, row.code);
      EXPECT_EQ(outcome.resp.result, row.result);
      EXPECT_EQ(outcome.resp.length, row.length);
      EXPECT_EQ(outcome.text, row.text);
    }
  });
}

TEST_F(SendCommand, MakesTextReadableUpToItsLength) {
  runInAppliance([] {
    const std::string text("one\0two\0", 8);
    const ScriptedServer server = answering(answer(1, text.size(), text));
    SocketResp_t resp{};
    ASSERT_EQ(sendCommand(&resp, 1, nullptr, 0), 0);
    EXPECT_EQ(std::string(resp.data, resp.length), text);
    std::free(resp.data);
  });
}

TEST_F(SendCommand, ReadsClosedConnectionAsResultZero) {
  runInAppliance([] {
    const ScriptedServer server(wire::kSocketPath, [](UnixSocket& client) { readRequest(client); });
    SocketResp_t resp = presetResponse();
    EXPECT_EQ(sendCommand(&resp, 1, nullptr, 0), 1);
    EXPECT_EQ(resp.result, 0);
    EXPECT_EQ(resp.length, 0U);
    EXPECT_EQ(resp.data, g_untouched);
    EXPECT_EQ(sendActionToLumServer(1, 2, 3), 3);
  });
}

// Whenever the server closes with the request unread, the result is a failure and not a signal.
TEST_F(SendCommand, FailsIfTheServerClosesAtOnce) {
  runInAppliance([] {
    const ScriptedServer server(wire::kSocketPath, [](UnixSocket&) {});
    for (int i = 0; i < 200; ++i) {
      SocketResp_t resp{};
      EXPECT_EQ(sendCommand(&resp, 1, "payload", 7), 1);
      EXPECT_EQ(resp.data, nullptr);
    }
  });
}

TEST_F(SendCommand, ReadsOnlyTheFirstPieceOfAnAnswer) {
  runInAppliance([] {
    std::atomic<bool> firstIsRead{false};
    const ScriptedServer server(wire::kSocketPath, [&](UnixSocket& client) {
      readRequest(client);
      say(client, answer(1, 10, "hello"));
      while (!firstIsRead) usleep(1000);
      char rest[] = "world";
      client.Write(rest, 5);  // the connection is already closed
    });
    SocketResp_t resp{};
    EXPECT_EQ(sendCommand(&resp, 1, nullptr, 0), 0);
    firstIsRead = true;
    EXPECT_EQ(resp.length, 10U);
    EXPECT_STREQ(resp.data, "hello");
    std::free(resp.data);
  });
}

TEST_F(SendCommand, LimitsWriteAndReadToThirtySeconds) {
  runInAppliance([] {
    const ScriptedServer server = answering(answer(1, 0, ""));
    g_timeOuts.clear();
    SocketResp_t resp{};
    ASSERT_EQ(sendCommand(&resp, 1, nullptr, 0), 0);
    const auto isThirtySeconds = AllOf(Field(&timeval::tv_sec, 30), Field(&timeval::tv_usec, 0));
    EXPECT_THAT(g_timeOuts, ElementsAre(isThirtySeconds, isThirtySeconds));
  });
}

TEST_F(SendCommand, FailsForSilentServerAfterTheTimeOut) {
  runInAppliance([] {
    std::atomic<bool> isOver{false};
    const ScriptedServer server(wire::kSocketPath, [&](UnixSocket&) {
      while (!isOver) usleep(1000);
    });
    g_usesShortTimeOuts = true;
    const auto start = std::chrono::steady_clock::now();
    SocketResp_t resp = presetResponse();
    EXPECT_EQ(sendCommand(&resp, 1, nullptr, 0), 1);
    const auto took = std::chrono::steady_clock::now() - start;
    g_usesShortTimeOuts = false;
    isOver = true;
    EXPECT_GE(took, std::chrono::milliseconds(150));
    EXPECT_LT(took, std::chrono::seconds(20));
    EXPECT_THAT(resp, isUntouched());
  });
}

TEST_F(SendActionToLumServer, SignExtendsBothValues) {
  runInAppliance([] {
    std::string request;
    const ScriptedServer server(wire::kSocketPath, [&](UnixSocket& client) {
      request = readRequest(client);
      say(client, answer(1, 0, ""));
    });
    EXPECT_EQ(sendActionToLumServer(12, -1, 5), 0);
    EXPECT_EQ(request, number64(12) + number64(16) + number64(-1) + number64(5));
  });
}

TEST_F(SendActionToLumServer, ReturnsZeroOrThree) {
  const struct {
    const char* name;
    std::string words;
    int code;
  } kRows[] = {
      {"success", answer(1, 0, ""), 0},
      {"success with text", answer(1, 5, "hello"), 0},
      {"other result", answer(2, 0, ""), 3},
      {"result 0", answer(0, 0, ""), 3},
      {"no answer", "", 3},
  };
  runInAppliance([&] {
    for (const auto& row : kRows) {
      SCOPED_TRACE(row.name);
      const ScriptedServer server = answering(row.words);
      EXPECT_EQ(sendActionToLumServer(1, 2, 3), row.code);
    }
  });
}

TEST_F(SendActionToLumServer, LeaksTextOnFailure) {
  runInAppliance([] {
    constexpr int kCalls = 200;
    const ScriptedServer server = answering(answer(2, 5, "hello"));
    KOLUM_ALLOW_LEAK();
    const std::size_t before = mallinfo2().uordblks;
    for (int i = 0; i < kCalls; ++i) EXPECT_EQ(sendActionToLumServer(1, 2, 3), 3);
#ifndef KOLUM_SANITIZED
    EXPECT_GE(mallinfo2().uordblks, before + kCalls * (wire::kAnswerTextMax + 1));
#else
    (void)before;  // mallinfo2() does not cover these allocators
#endif
  });
}

TEST_F(SendActionToLumServer, FreesTextOnSuccess) {
  runInAppliance([] {
    constexpr int kCalls = 200;
    const ScriptedServer server = answering(answer(1, 5, "hello"));
    const std::size_t before = mallinfo2().uordblks;
    for (int i = 0; i < kCalls; ++i) EXPECT_EQ(sendActionToLumServer(1, 2, 3), 0);
    EXPECT_LT(mallinfo2().uordblks, before + kCalls * wire::kAnswerTextMax / 2);
  });
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/server.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "server/running_echo_server.h"
#include "support/appliance_sandbox.h"
#include "support/temp_dir.h"

namespace {

using kolum::test::runInAppliance;
using kolum::test::RunningEchoServer;
using kolum::test::sandboxUnavailable;
using kolum::test::TempDir;
using kolum::tool::EchoRequest;
using kolum::tool::EchoServer;
using kolum::tool::echoText;
using MediaLibrary::LUM::SocketResp_t;
using MediaLibrary::LUM::UnixSocket;
namespace wire = MediaLibrary::LUM::wire;

// The answer of the server at PATH to the bytes REQUEST: result and text together.
std::string exchange(const std::string& path, std::string request) {
  UnixSocket client;
  std::array<char, wire::kBufferSize> answer{};
  EXPECT_EQ(client.Open(path), 0);
  EXPECT_EQ(client.Connect(10, 0), 0);
  EXPECT_EQ(client.Write(request.data(), request.size()), static_cast<int>(request.size()));
  EXPECT_GE(client.Read(answer.data(), wire::kAnswerReadMax), 24);
  std::int64_t result = -1;
  std::memcpy(&result, answer.data(), sizeof result);
  return std::to_string(result) + " " + &answer[wire::kAnswerTextOffset];
}

std::string number64(std::int64_t number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

TEST(EchoText, RendersPayload) {
  const struct {
    std::string payload;
    std::string text;
  } kRows[] = {
      {"", ""},
      {"hello world~", "hello world~"},
      {"a\\b", "a\\\\b"},
      {std::string("\0\n\x1f\x7f\xff", 5), "\\x00\\x0a\\x1f\\x7f\\xff"},
      {std::string(4080, 'x'), std::string(4070, 'x')},
  };
  for (const auto& row : kRows) EXPECT_EQ(echoText(row.payload), row.text);
  EXPECT_EQ(echoText(std::string(4080, '\1')).size(), 4068U) << "cut between escapes";
}

TEST(EchoServer, AnswersCommandWithItsPayload) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    EchoRequest seen;
    const RunningEchoServer server(wire::kSocketPath, [&](const EchoRequest& one) { seen = one; });
    SocketResp_t resp{};
    ASSERT_EQ(sendCommand(&resp, 7, "hello", 5), 0);
    EXPECT_EQ(resp.result, 1);
    EXPECT_EQ(resp.length, 5U);
    EXPECT_STREQ(resp.data, "hello");
    std::free(resp.data);
    EXPECT_EQ(seen.command, 7);
    EXPECT_EQ(seen.payload, "hello");

    SocketResp_t empty{};
    EXPECT_EQ(sendCommand(&empty, 7, nullptr, 0), 0);
    EXPECT_EQ(empty.data, nullptr);
    EXPECT_EQ(sendCommand(&empty, 7, nullptr, 100), 0);
    EXPECT_EQ(sendActionToLumServer(1, -1, 5), 0);
  });
}

TEST(EchoServer, AssemblesRequestSentInPieces) {
  const TempDir dir;
  const std::string path = dir.path("socket");
  const RunningEchoServer server(path);
  UnixSocket client;
  ASSERT_EQ(client.Open(path), 0);
  ASSERT_EQ(client.Connect(10, 0), 0);
  std::string request = number64(3) + number64(5) + "hello";
  for (char& byte : request) ASSERT_EQ(client.Write(&byte, 1), 1);
  std::array<char, 64> answer{};
  ASSERT_EQ(client.Read(answer.data(), answer.size()), 24 + 6);
  EXPECT_STREQ(&answer[wire::kAnswerTextOffset], "hello");
}

TEST(EchoServer, AnswersTooLongRequestWithResultZero) {
  const TempDir dir;
  const std::string path = dir.path("socket");
  const RunningEchoServer server(path);
  EXPECT_EQ(exchange(path, number64(3) + number64(4081) + "x"), "0 incomplete request");
  EXPECT_EQ(exchange(path, number64(3) + number64(-1)), "0 incomplete request");
}

TEST(EchoServer, IsNotBlockedBySilentOrVanishingClients) {
  const TempDir dir;
  const std::string path = dir.path("socket");
  const RunningEchoServer server(path);
  std::vector<UnixSocket> silent(5);
  for (UnixSocket& client : silent) {
    ASSERT_EQ(client.Open(path), 0);
    ASSERT_EQ(client.Connect(10, 0), 0);
  }
  for (int i = 0; i < 20; ++i) {
    UnixSocket vanishing;
    ASSERT_EQ(vanishing.Open(path), 0);
    ASSERT_EQ(vanishing.Connect(10, 0), 0);
    std::string half = number64(3);
    vanishing.Write(half.data(), half.size());
  }
  EXPECT_EQ(exchange(path, number64(3) + number64(2) + "hi"), "1 hi");
}

TEST(EchoServer, ReplacesStaleSocketFileAndRemovesItsOwn) {
  const TempDir dir;
  const std::string path = dir.path("socket");
  {
    UnixSocket stale;
    ASSERT_EQ(stale.Open(path), 0);
    ASSERT_EQ(stale.Bind(), 0);
  }
  ASSERT_TRUE(std::filesystem::exists(path));
  {
    const RunningEchoServer server(path);
    EXPECT_EQ(exchange(path, number64(3) + number64(2) + "hi"), "1 hi");
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(EchoServer, NeverReplacesServerThatAnswers) {
  const TempDir dir;
  const std::string path = dir.path("socket");
  const RunningEchoServer first(path);
  EXPECT_THROW(EchoServer second(path), std::runtime_error);
  EXPECT_EQ(exchange(path, number64(3) + number64(2) + "hi"), "1 hi");
}

TEST(EchoServer, ReportsWhyItCannotListen) {
  const TempDir dir;
  EXPECT_THROW(EchoServer(dir.path("missing/socket")), std::runtime_error);
  EXPECT_THROW(EchoServer(""), std::runtime_error);
}

}  // namespace

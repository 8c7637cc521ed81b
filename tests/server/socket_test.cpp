#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/socket.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <thread>

#include "server/scripted_server.h"
#include "support/descriptors.h"
#include "support/log_recorder.h"
#include "support/temp_dir.h"

namespace MediaLibrary::LUM {

struct UnixSocketFields {
  static int state(const UnixSocket& socket) { return socket.m_state; }
  static int fd(const UnixSocket& socket) { return socket.m_socketFd; }
  static const sockaddr_un& address(const UnixSocket& socket) { return socket.m_sockAddr; }
  static const std::string& path(const UnixSocket& socket) { return socket.m_socketPath; }

  static constexpr std::array<std::size_t, 6> kOffsets = {
      offsetof(UnixSocket, m_sockAddr), offsetof(UnixSocket, m_socketFd),
      offsetof(UnixSocket, m_errno),    offsetof(UnixSocket, m_errorCode),
      offsetof(UnixSocket, m_state),    offsetof(UnixSocket, m_socketPath)};
};

}  // namespace MediaLibrary::LUM

namespace {

std::atomic<bool> g_memoryIsOut{false};

}  // namespace

// Accept allocates with this function, so a test can make it fail.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (g_memoryIsOut) return nullptr;
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

namespace {

using kolum::test::LogMessage;
using kolum::test::LogRecorder;
using kolum::test::openDescriptorCount;
using kolum::test::ScriptedServer;
using kolum::test::TempDir;
using MediaLibrary::LUM::UnixSocket;
using MediaLibrary::LUM::UnixSocketFields;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kStateNone = 0;
constexpr int kStateConnected = 1;
constexpr int kStateAccepted = 2;
constexpr int kStateListening = 3;

std::string reason(int error) {
  return "errno=" + std::to_string(error) + ", strerror=" + std::strerror(error) + "\n";
}

std::string readReason(int fd, int error) {
  return "socket=" + std::to_string(fd) + ", errno=" + std::to_string(error) +
         " ,strerror=" + std::strerror(error) + "\n";
}

// A path in DIR of exactly LENGTH characters.
std::string pathOfLength(const TempDir& dir, std::size_t length) {
  std::string path = dir.folder();
  EXPECT_LT(path.size(), length);
  path.resize(length, 's');
  return path;
}

// While it exists, no further descriptor can be opened.
class NoMoreDescriptors {
 public:
  NoMoreDescriptors() {
    getrlimit(RLIMIT_NOFILE, &before_);
    const int next = dup(0);
    close(next);
    rlimit none = before_;
    none.rlim_cur = static_cast<rlim_t>(next);
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoMoreDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
  NoMoreDescriptors(const NoMoreDescriptors&) = delete;
  NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

 private:
  rlimit before_{};
};

class UnixSocketTest : public testing::Test {
 protected:
  // The only message of the last operation, after a check that it comes from FUNCTION.
  std::string loggedBy(const std::string& function) {
    const std::vector<LogMessage> messages = log_.messages();
    log_.clear();
    if (messages.size() != 1) return std::to_string(messages.size()) + " messages";
    const LogMessage& message = messages.front();
    EXPECT_EQ(message.level, 5);
    EXPECT_EQ(message.colour, std::nullopt);
    EXPECT_EQ(message.source, "SocketUtil");
    EXPECT_GT(message.line, 0);
    EXPECT_EQ(message.function, function);
    return message.text;
  }

  void listenAt(UnixSocket& socket, const std::string& path) {
    ASSERT_EQ(socket.Open(path), 0);
    ASSERT_EQ(socket.Bind(), 0);
    ASSERT_EQ(socket.Listen(1), 0);
  }

  void connectTo(UnixSocket& socket, const std::string& path, long usec = 0) {
    ASSERT_EQ(socket.Open(path), 0);
    ASSERT_EQ(socket.Connect(usec == 0 ? 30 : 0, usec), 0);
  }

  TempDir dir_;
  std::string path_ = dir_.path("socket");
  LogRecorder log_;
  std::array<char, 64> buffer_{};
};

TEST_F(UnixSocketTest, HasFixedFieldOrder) {
  EXPECT_THAT(UnixSocketFields::kOffsets, ElementsAre(0, 112, 116, 120, 124, 128));
  EXPECT_EQ(sizeof(UnixSocket), 128 + sizeof(std::string));
  EXPECT_EQ(sizeof(sockaddr_un), 110U);
}

TEST_F(UnixSocketTest, StartsWithoutSocket) {
  UnixSocket socket;
  EXPECT_EQ(UnixSocketFields::fd(socket), -1);
  EXPECT_EQ(UnixSocketFields::state(socket), kStateNone);
  EXPECT_EQ(UnixSocketFields::path(socket), "");
  EXPECT_EQ(UnixSocketFields::address(socket).sun_family, 0);
  EXPECT_EQ(socket.getErrno(), 0);
  EXPECT_EQ(socket.getErrorCode(), 0);
  EXPECT_FALSE(socket.isValid());
}

TEST_F(UnixSocketTest, WrapsConnectedDescriptorAsAccepted) {
  UnixSocket socket(dup(0));
  EXPECT_EQ(UnixSocketFields::state(socket), kStateAccepted);
  EXPECT_EQ(UnixSocketFields::path(socket), "");
  EXPECT_EQ(socket.getErrno(), 0);
  EXPECT_EQ(socket.getErrorCode(), 0);
  EXPECT_TRUE(socket.isValid());
}

TEST_F(UnixSocketTest, ClosesSilentlyOnDestruction) {
  const int before = openDescriptorCount();
  {
    UnixSocket socket;
    ASSERT_EQ(socket.Open(path_), 0);
    EXPECT_EQ(openDescriptorCount(), before + 1);
  }
  EXPECT_EQ(openDescriptorCount(), before);
  { const UnixSocket socket(9999); }  // no such descriptor
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(UnixSocketTest, OpenReturnsTwoForEmptyPathAndCreatesNoSocket) {
  const int before = openDescriptorCount();
  const std::string empty[] = {"", std::string("\0hidden", 7)};
  for (const std::string& path : empty) {
    UnixSocket socket;
    EXPECT_EQ(socket.Open(path), 2);
    EXPECT_EQ(socket.getErrorCode(), 2);
    EXPECT_EQ(socket.getErrno(), 0);
    EXPECT_EQ(UnixSocketFields::fd(socket), -1);
    EXPECT_EQ(loggedBy("Open"), "socketPath is empty\n");
  }
  EXPECT_EQ(openDescriptorCount(), before);
}

TEST_F(UnixSocketTest, OpenPreparesAddressWithoutTouchingFiles) {
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  EXPECT_EQ(UnixSocketFields::address(socket).sun_family, AF_UNIX);
  EXPECT_STREQ(UnixSocketFields::address(socket).sun_path, path_.c_str());
  EXPECT_EQ(UnixSocketFields::path(socket), path_);
  EXPECT_EQ(UnixSocketFields::state(socket), kStateNone);
  EXPECT_FALSE(socket.isValid());
  EXPECT_FALSE(std::filesystem::exists(path_));
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(UnixSocketTest, OpenReturnsThreeWithoutFreeDescriptors) {
  UnixSocket socket;
  {
    const NoMoreDescriptors none;
    EXPECT_EQ(socket.Open(path_), 3);
  }
  EXPECT_EQ(socket.getErrorCode(), 3);
  EXPECT_EQ(socket.getErrno(), EMFILE);
  EXPECT_EQ(loggedBy("Open"), "create socket fail, " + reason(EMFILE));
}

TEST_F(UnixSocketTest, SecondOpenOverwritesEarlierDescriptor) {
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  const int first = UnixSocketFields::fd(socket);
  ASSERT_EQ(socket.Open(dir_.path("x")), 0);
  EXPECT_NE(UnixSocketFields::fd(socket), first);
  EXPECT_STREQ(UnixSocketFields::address(socket).sun_path, dir_.path("x").c_str());
  EXPECT_EQ(close(first), 0) << "the earlier descriptor stays open";
}

TEST_F(UnixSocketTest, OpenCutsLongPathAt107Characters) {
  for (const std::size_t length : {107U, 108U, 200U}) {
    SCOPED_TRACE(length);
    const std::string path = pathOfLength(dir_, length);
    UnixSocket socket;
    ASSERT_EQ(socket.Open(path), 0);
    const sockaddr_un& address = UnixSocketFields::address(socket);
    EXPECT_EQ(std::string(address.sun_path), path.substr(0, 107));
    EXPECT_EQ(address.sun_path[107], '\0');
    EXPECT_EQ(UnixSocketFields::path(socket), path);
  }
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(UnixSocketTest, ServesAtPathOf107Characters) {
  const std::string path = pathOfLength(dir_, 107);
  UnixSocket server;
  listenAt(server, path);
  UnixSocket client;
  connectTo(client, path);
  EXPECT_TRUE(std::filesystem::is_socket(path));
  EXPECT_THAT(log_.texts(), IsEmpty());
}

// Both ends cut the path alike and so meet; only the mode is set on the wrong path.
TEST_F(UnixSocketTest, ServesAtCutPathForLongerPath) {
  for (const std::size_t length : {108U, 200U}) {
    SCOPED_TRACE(length);
    const TempDir dir;
    const std::string path = pathOfLength(dir, length);
    UnixSocket server;
    listenAt(server, path);
    EXPECT_TRUE(std::filesystem::is_socket(path.substr(0, 107)));
    EXPECT_EQ(loggedBy("Bind"), "chmod " + path + " fail, errno=" + std::to_string(ENOENT) +
                                    " strerror=" + std::strerror(ENOENT) + "\n");
    UnixSocket client;
    connectTo(client, path);
  }
}

TEST_F(UnixSocketTest, BindMakesSocketFileAccessibleToEveryUser) {
  const mode_t before = umask(077);
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  EXPECT_EQ(socket.Bind(), 0);
  umask(before);
  struct stat status {};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_TRUE(S_ISSOCK(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777U, 0777U);
  EXPECT_EQ(UnixSocketFields::state(socket), kStateNone);
  EXPECT_FALSE(socket.isValid());
}

TEST_F(UnixSocketTest, BindRemovesExistingFile) {
  {
    UnixSocket earlier;
    listenAt(earlier, path_);
  }
  ASSERT_TRUE(std::filesystem::is_socket(path_)) << "a stale socket file";
  UnixSocket overStale;
  listenAt(overStale, path_);

  const std::string file = dir_.write("file", "text");
  UnixSocket overFile;
  listenAt(overFile, file);
  EXPECT_TRUE(std::filesystem::is_socket(file));
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(UnixSocketTest, BindReturnsTenIfTheFileCannotBeRemoved) {
  dir_.write("socket/inside", "keeps the folder");
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  EXPECT_EQ(socket.Bind(), 10);
  EXPECT_EQ(socket.getErrorCode(), 10);
  EXPECT_EQ(socket.getErrno(), ENOTEMPTY);
  EXPECT_EQ(loggedBy("Bind"), "remove() sockFilePath " + path_ + " fail, " + reason(ENOTEMPTY));
}

TEST_F(UnixSocketTest, BindReturnsFourOnFailure) {
  UnixSocket unopened;
  EXPECT_EQ(unopened.Bind(), 4);
  EXPECT_EQ(unopened.getErrorCode(), 4);
  EXPECT_EQ(unopened.getErrno(), EBADF);
  EXPECT_EQ(loggedBy("Bind"), "server bind() fail, " + reason(EBADF));

  UnixSocket nowhere;
  ASSERT_EQ(nowhere.Open(dir_.path("missing/socket")), 0);
  EXPECT_EQ(nowhere.Bind(), 4);
  EXPECT_EQ(nowhere.getErrno(), ENOENT);
  EXPECT_EQ(loggedBy("Bind"), "server bind() fail, " + reason(ENOENT));

  // stat follows the link and sees nothing to remove, bind sees the link.
  std::filesystem::create_symlink(dir_.path("missing"), path_);
  UnixSocket dangling;
  ASSERT_EQ(dangling.Open(path_), 0);
  EXPECT_EQ(dangling.Bind(), 4);
  EXPECT_EQ(dangling.getErrno(), EADDRINUSE);
}

TEST_F(UnixSocketTest, BindSucceedsIfOnlyChmodFails) {
  const std::string path = pathOfLength(dir_, 108);
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path), 0);
  EXPECT_EQ(socket.Bind(), 0);
  EXPECT_EQ(socket.getErrorCode(), 0);
  EXPECT_EQ(socket.getErrno(), ENOENT);
}

TEST_F(UnixSocketTest, ListenOnBoundSocketSetsState) {
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  ASSERT_EQ(socket.Bind(), 0);
  EXPECT_EQ(socket.Listen(1), 0);
  EXPECT_EQ(UnixSocketFields::state(socket), kStateListening);
  EXPECT_TRUE(socket.isValid());
}

TEST_F(UnixSocketTest, ListenRejectsBacklogBelowOne) {
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  ASSERT_EQ(socket.Bind(), 0);
  for (const int backlog : {0, -1}) {
    EXPECT_EQ(socket.Listen(backlog), 2);
    EXPECT_EQ(socket.getErrorCode(), 2);
    EXPECT_EQ(socket.getErrno(), 0);
    EXPECT_EQ(UnixSocketFields::state(socket), kStateNone);
    EXPECT_EQ(loggedBy("Listen"), "listen invalid : " + std::to_string(backlog) + "\n");
  }
}

TEST_F(UnixSocketTest, ListenReturnsFiveOnFailure) {
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  EXPECT_EQ(socket.Listen(1), 5) << "not bound";
  EXPECT_EQ(socket.getErrorCode(), 5);
  EXPECT_EQ(socket.getErrno(), EINVAL);
  EXPECT_EQ(UnixSocketFields::state(socket), kStateNone);
  EXPECT_EQ(loggedBy("Listen"), "listen() failed, " + reason(EINVAL));
}

TEST_F(UnixSocketTest, AcceptReturnsNewConnection) {
  UnixSocket server;
  listenAt(server, path_);
  UnixSocket client;
  connectTo(client, path_);
  const std::unique_ptr<UnixSocket> accepted(server.Accept());
  ASSERT_NE(accepted, nullptr);
  EXPECT_EQ(UnixSocketFields::state(*accepted), kStateAccepted);
  EXPECT_TRUE(accepted->isValid());
  EXPECT_EQ(server.getErrorCode(), 0);

  char word[] = "ping";
  EXPECT_EQ(client.Write(word, 4), 4);
  EXPECT_EQ(accepted->Read(buffer_.data(), buffer_.size()), 4);
  EXPECT_STREQ(buffer_.data(), "ping");
}

TEST_F(UnixSocketTest, AcceptReturnsSixOnFailure) {
  UnixSocket unopened;
  EXPECT_EQ(unopened.Accept(), nullptr);
  EXPECT_EQ(unopened.getErrorCode(), 6);
  EXPECT_EQ(unopened.getErrno(), EBADF);
  EXPECT_EQ(loggedBy("Accept"), "accept() fail, " + reason(EBADF));

  UnixSocket notListening;
  ASSERT_EQ(notListening.Open(path_), 0);
  EXPECT_EQ(notListening.Accept(), nullptr);
  EXPECT_EQ(notListening.getErrno(), EINVAL);
  EXPECT_EQ(loggedBy("Accept"), "accept() fail, " + reason(EINVAL));
}

TEST_F(UnixSocketTest, AcceptReturnsSixWithoutFreeDescriptors) {
  UnixSocket server;
  listenAt(server, path_);
  UnixSocket client;
  connectTo(client, path_);
  const NoMoreDescriptors none;
  EXPECT_EQ(server.Accept(), nullptr);
  EXPECT_EQ(server.getErrorCode(), 6);
  EXPECT_EQ(server.getErrno(), EMFILE);
}

TEST_F(UnixSocketTest, AcceptReturnsNullAndLeavesDescriptorOpenWithoutMemory) {
  UnixSocket server;
  listenAt(server, path_);
  UnixSocket client;
  connectTo(client, path_);
  const int expected = dup(0);
  close(expected);
  g_memoryIsOut = true;
  UnixSocket* accepted = server.Accept();
  g_memoryIsOut = false;
  EXPECT_EQ(accepted, nullptr);
  EXPECT_EQ(server.getErrorCode(), 0);
  EXPECT_THAT(log_.texts(), IsEmpty());
  EXPECT_EQ(close(expected), 0) << "the accepted descriptor stays open";
}

TEST_F(UnixSocketTest, AcceptContinuesAfterSignals) {
  static std::atomic<int> signals{0};
  struct sigaction count {};
  count.sa_handler = [](int) { ++signals; };  // no SA_RESTART: accept() ends with EINTR
  struct sigaction before {};
  ASSERT_EQ(sigaction(SIGUSR1, &count, &before), 0);

  UnixSocket server;
  listenAt(server, path_);
  std::unique_ptr<UnixSocket> accepted;
  std::atomic<bool> started{false};
  std::thread waiting([&] {
    started = true;
    accepted.reset(server.Accept());
  });
  while (!started) std::this_thread::yield();
  for (int i = 1; i <= 3; ++i) {
    std::this_thread::sleep_for(milliseconds(30));
    pthread_kill(waiting.native_handle(), SIGUSR1);
    const auto bound = steady_clock::now() + seconds(10);
    while (signals < i && steady_clock::now() < bound) std::this_thread::yield();
  }
  UnixSocket client;
  connectTo(client, path_);
  waiting.join();
  sigaction(SIGUSR1, &before, nullptr);

  EXPECT_EQ(signals, 3);
  ASSERT_NE(accepted, nullptr);
  EXPECT_EQ(server.getErrorCode(), 0);
  EXPECT_EQ(server.getErrno(), EINTR) << "the interruption is still recorded";
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(UnixSocketTest, ConnectRejectsNegativeTimes) {
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  EXPECT_EQ(socket.Connect(-1, 0), 2);
  EXPECT_EQ(socket.getErrorCode(), 2);
  EXPECT_EQ(loggedBy("Connect"), "invalid timeout : sec:-1, micro sec :0\n");
  EXPECT_EQ(socket.Connect(0, -1), 2);
  EXPECT_EQ(socket.getErrno(), 0);
  EXPECT_EQ(loggedBy("Connect"), "invalid timeout : sec:0, micro sec :-1\n");

  timeval bound{};
  socklen_t size = sizeof bound;
  ASSERT_EQ(getsockopt(UnixSocketFields::fd(socket), SOL_SOCKET, SO_RCVTIMEO, &bound, &size), 0);
  EXPECT_EQ(bound.tv_sec, 0) << "the socket is not touched";
  EXPECT_EQ(UnixSocketFields::state(socket), kStateNone);
}

TEST_F(UnixSocketTest, ConnectReturnsSevenWithoutListener) {
  const struct {
    const char* name;
    std::string path;
    int error;
  } kRows[] = {
      {"no file", dir_.path("missing"), ENOENT},
      {"no socket", dir_.write("file", "text"), ECONNREFUSED},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    UnixSocket socket;
    ASSERT_EQ(socket.Open(row.path), 0);
    EXPECT_EQ(socket.Connect(30, 0), 7);
    EXPECT_EQ(socket.getErrorCode(), 7);
    EXPECT_EQ(socket.getErrno(), row.error);
    EXPECT_EQ(UnixSocketFields::state(socket), kStateNone);
    EXPECT_EQ(loggedBy("Connect"), "connect() fail, " + reason(row.error));
  }
}

TEST_F(UnixSocketTest, ConnectReturnsSevenForStaleSocketFile) {
  {
    UnixSocket server;
    listenAt(server, path_);
  }
  UnixSocket client;
  ASSERT_EQ(client.Open(path_), 0);
  EXPECT_EQ(client.Connect(30, 0), 7);
  EXPECT_EQ(client.getErrno(), ECONNREFUSED);
}

TEST_F(UnixSocketTest, ConnectReturnsEightIfTheTimeOutCannotBeSet) {
  UnixSocket unopened;
  EXPECT_EQ(unopened.Connect(30, 0), 8);
  EXPECT_EQ(unopened.getErrorCode(), 8);
  EXPECT_EQ(unopened.getErrno(), EBADF);
  EXPECT_EQ(loggedBy("Connect"), "setsockopt() timeout fail, " + reason(EBADF));

  UnixSocket wholeSecond;
  ASSERT_EQ(wholeSecond.Open(path_), 0);
  EXPECT_EQ(wholeSecond.Connect(0, 1'000'000), 8);
  EXPECT_EQ(wholeSecond.getErrno(), EDOM);
  EXPECT_EQ(loggedBy("Connect"), "setsockopt() timeout fail, " + reason(EDOM));
}

TEST_F(UnixSocketTest, ConnectSetsBothTimeOutsAndState) {
  UnixSocket server;
  listenAt(server, path_);
  UnixSocket client;
  ASSERT_EQ(client.Open(path_), 0);
  EXPECT_EQ(client.Connect(7, 500'000), 0);
  EXPECT_EQ(UnixSocketFields::state(client), kStateConnected);
  EXPECT_TRUE(client.isValid());
  for (const int direction : {SO_RCVTIMEO, SO_SNDTIMEO}) {
    timeval bound{};
    socklen_t size = sizeof bound;
    ASSERT_EQ(getsockopt(UnixSocketFields::fd(client), SOL_SOCKET, direction, &bound, &size), 0);
    EXPECT_EQ(bound.tv_sec, 7);
    EXPECT_EQ(bound.tv_usec, 500'000);
  }
}

TEST_F(UnixSocketTest, ReadTimesOutForSilentServer) {
  UnixSocket server;
  listenAt(server, path_);
  UnixSocket client;
  connectTo(client, path_, 200'000);
  const auto start = steady_clock::now();
  buffer_.fill('x');
  EXPECT_LT(client.Read(buffer_.data(), 4), 0);
  const auto took = steady_clock::now() - start;
  EXPECT_GE(took, milliseconds(150));
  EXPECT_LT(took, seconds(20));
  EXPECT_EQ(client.getErrorCode(), 9);
  EXPECT_EQ(loggedBy("Read"), "read() failed, " + readReason(UnixSocketFields::fd(client), EAGAIN));
  EXPECT_EQ(std::string(buffer_.data(), 5), std::string("\0\0\0\0x", 5)) << "zeroed first";
}

TEST_F(UnixSocketTest, WriteTimesOutIfTheServerDoesNotRead) {
  UnixSocket server;
  listenAt(server, path_);
  UnixSocket client;
  connectTo(client, path_, 100'000);
  std::string block(1 << 20, 'x');
  int count = 0;
  for (int i = 0; i < 100 && count >= 0; ++i) count = client.Write(block.data(), block.size());
  EXPECT_LT(count, 0);
  EXPECT_EQ(client.getErrorCode(), 9);
  EXPECT_EQ(loggedBy("Write"),
            "write() failed, " + readReason(UnixSocketFields::fd(client), EAGAIN));
}

TEST_F(UnixSocketTest, ShortWriteIsNotRetried) {
  UnixSocket server;
  listenAt(server, path_);
  UnixSocket client;
  connectTo(client, path_, 100'000);
  std::string block(8 << 20, 'x');
  const int count = client.Write(block.data(), block.size());
  EXPECT_GT(count, 0);
  EXPECT_LT(count, static_cast<int>(block.size()));
  EXPECT_EQ(client.getErrorCode(), 0);
}

TEST_F(UnixSocketTest, ShortReadIsNotRetried) {
  ScriptedServer server(path_, [](UnixSocket& client) {
    char word[] = "one";
    client.Write(word, 3);
    char end = 0;
    client.Read(&end, 1);
  });
  UnixSocket client;
  connectTo(client, path_);
  EXPECT_EQ(client.Read(buffer_.data(), buffer_.size()), 3);
  EXPECT_STREQ(buffer_.data(), "one");
}

TEST_F(UnixSocketTest, ReadZeroesWholeBufferFirst) {
  ScriptedServer server(path_, [](UnixSocket& client) {
    char word[] = "one";
    client.Write(word, 3);
  });
  UnixSocket client;
  connectTo(client, path_);
  buffer_.fill('x');
  EXPECT_EQ(client.Read(buffer_.data(), buffer_.size() - 1), 3);
  std::array<char, 64> expected{'o', 'n', 'e'};
  expected.back() = 'x';
  EXPECT_EQ(buffer_, expected);
}

TEST_F(UnixSocketTest, ReadAfterPeerClosedReturnsZeroWithoutError) {
  ScriptedServer server(path_, [](UnixSocket&) {});
  UnixSocket client;
  connectTo(client, path_);
  EXPECT_EQ(client.Read(buffer_.data(), buffer_.size()), 0);
  EXPECT_EQ(client.getErrorCode(), 0);
  EXPECT_THAT(log_.texts(), IsEmpty());
}

// The default action of SIGPIPE would end this program.
TEST_F(UnixSocketTest, WriteAfterPeerClosedFailsWithoutSignal) {
  signal(SIGPIPE, SIG_DFL);
  std::array<int, 2> ends{};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
  close(ends[1]);
  UnixSocket socket(ends[0]);
  char word[] = "one";
  EXPECT_LT(socket.Write(word, 3), 0);
  EXPECT_EQ(loggedBy("Write"), "write() failed, " + readReason(ends[0], EPIPE));
}

TEST_F(UnixSocketTest, ReadAndWriteWorkOnAnyDescriptor) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  UnixSocket reader(ends[0]);
  UnixSocket writer(ends[1]);
  char word[] = "one";
  EXPECT_EQ(writer.Write(word, 3), 3);
  EXPECT_EQ(reader.Read(buffer_.data(), buffer_.size()), 3);
  EXPECT_STREQ(buffer_.data(), "one");
}

TEST_F(UnixSocketTest, ReadWithoutSocketReturnsMinusOneAndErrorNine) {
  UnixSocket socket;
  buffer_.fill('x');
  EXPECT_EQ(socket.Read(buffer_.data(), 4), -1);
  EXPECT_EQ(buffer_[0], 'x') << "untouched";
  EXPECT_EQ(socket.getErrorCode(), 9);
  EXPECT_EQ(loggedBy("Read"), "invalid read, no socket to read.\n");
}

TEST_F(UnixSocketTest, ReadOnClosedObjectReturnsMinusOneAndErrorNine) {
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  ASSERT_EQ(socket.Close(), 0);
  EXPECT_EQ(socket.Read(buffer_.data(), buffer_.size()), -1);
  EXPECT_EQ(socket.getErrorCode(), 9);
}

TEST_F(UnixSocketTest, WriteWithoutSocketReturnsMinusOneAndErrorNine) {
  UnixSocket socket;
  EXPECT_EQ(socket.Write(buffer_.data(), 4), -1);
  EXPECT_EQ(socket.getErrorCode(), 9);
  EXPECT_EQ(loggedBy("Write"), "invalid write, no socket to write.\n");
}

TEST_F(UnixSocketTest, FailedReadOrWriteStoresNoErrno) {
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);  // not connected
  EXPECT_LT(socket.Read(buffer_.data(), 4), 0);
  EXPECT_EQ(socket.getErrorCode(), 9);
  EXPECT_EQ(socket.getErrno(), 0);
  EXPECT_LT(socket.Write(buffer_.data(), 4), 0);
  EXPECT_EQ(socket.getErrorCode(), 9);
  EXPECT_EQ(socket.getErrno(), 0);
}

TEST_F(UnixSocketTest, ReadAndWriteOfZeroBytesReturnZero) {
  UnixSocket server;
  listenAt(server, path_);
  UnixSocket client;
  connectTo(client, path_);
  EXPECT_EQ(client.Write(nullptr, 0), 0);
  EXPECT_EQ(client.Read(nullptr, 0), 0);
}

TEST_F(UnixSocketTest, CloseOfNeverOpenedObjectReturnsZero) {
  UnixSocket socket;
  EXPECT_EQ(socket.Close(), 0);
  EXPECT_EQ(socket.getErrorCode(), 0);
}

TEST_F(UnixSocketTest, CloseTwiceReturnsZeroBothTimes) {
  UnixSocket socket;
  listenAt(socket, path_);
  EXPECT_EQ(socket.Close(), 0);
  EXPECT_EQ(UnixSocketFields::fd(socket), -1);
  EXPECT_EQ(UnixSocketFields::state(socket), kStateNone);
  EXPECT_FALSE(socket.isValid());
  EXPECT_EQ(socket.Close(), 0);
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(UnixSocketTest, SuccessfulCloseKeepsEarlierCodes) {
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  ASSERT_EQ(socket.Connect(30, 0), 7);
  EXPECT_EQ(socket.Close(), 0);
  EXPECT_EQ(socket.getErrorCode(), 7);
  EXPECT_EQ(socket.getErrno(), ENOENT);
  socket.resetErrorCodes();
  EXPECT_EQ(socket.getErrorCode(), 0);
  EXPECT_EQ(socket.getErrno(), 0);
}

TEST_F(UnixSocketTest, FailedCloseReturnsOneAndChangesNothing) {
  UnixSocket socket(9999);  // no such descriptor
  EXPECT_EQ(socket.Close(), 1);
  EXPECT_EQ(socket.getErrorCode(), 11);
  EXPECT_EQ(socket.getErrno(), EBADF);
  EXPECT_EQ(UnixSocketFields::fd(socket), 9999);
  EXPECT_EQ(UnixSocketFields::state(socket), kStateAccepted);
  EXPECT_EQ(loggedBy("Close"), "close m_socketFd 9999 fail, " + reason(EBADF));
}

TEST_F(UnixSocketTest, DescriptorZeroCountsAsNoSocket) {
  const int spare = dup(0);
  {
    UnixSocket socket(0);
    EXPECT_FALSE(socket.isValid());
    EXPECT_EQ(socket.Close(), 0);
    EXPECT_EQ(UnixSocketFields::state(socket), kStateAccepted);
  }
  EXPECT_NE(fcntl(0, F_GETFD), -1) << "closed";
  close(spare);
}

TEST_F(UnixSocketTest, DescriptorZeroCanBeReadAndWritten) {
  const int spare = dup(0);
  std::array<int, 2> ends{};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
  ASSERT_EQ(dup2(ends[0], 0), 0);
  UnixSocket socket(0);
  std::string text = "there";
  EXPECT_EQ(socket.Write(text.data(), text.size()), 5);
  std::array<char, 8> got{};
  EXPECT_EQ(read(ends[1], got.data(), got.size()), 5);
  EXPECT_EQ(write(ends[1], "back", 4), 4);
  EXPECT_EQ(socket.Read(got.data(), got.size()), 4);
  EXPECT_STREQ(got.data(), "back");
  EXPECT_EQ(socket.getErrorCode(), 0);
  ASSERT_EQ(dup2(spare, 0), 0);
  for (const int descriptor : {spare, ends[0], ends[1]}) close(descriptor);
}

TEST_F(UnixSocketTest, OperationsResetTheCodesFirst) {
  UnixSocket socket;
  ASSERT_EQ(socket.Open(path_), 0);
  ASSERT_EQ(socket.Connect(30, 0), 7);
  ASSERT_EQ(socket.Bind(), 0);
  EXPECT_EQ(socket.getErrorCode(), 0);
  EXPECT_EQ(socket.getErrno(), 0);
}

}  // namespace

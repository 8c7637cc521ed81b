#include "commands/echo_server.h"

#include <kolum/server.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

namespace kolum::tool {

namespace wire = MediaLibrary::LUM::wire;
using MediaLibrary::LUM::UnixSocket;

namespace {

constexpr int kBacklog = 64;
constexpr std::chrono::milliseconds kRetryPause{10};
constexpr std::chrono::seconds kFarewell{2};

using Buffer = std::array<char, wire::kBufferSize>;

struct Answer {
  std::int64_t result = 0;
  std::string text;
};

[[noreturn]] void fail(const std::string& path, UnixSocket& socket) {
  throw std::runtime_error(path + ": " + std::system_category().message(socket.getErrno()));
}

bool answersAt(const std::string& path) {
  UnixSocket client;
  return client.Open(path) == 0 && client.Connect(1, 0) == 0;
}

// Reads until the request is complete; false if it never is.
bool readRequest(UnixSocket& client, EchoRequest& request) {
  Buffer buffer{};
  std::size_t have = 0;
  std::size_t want = wire::kRequestPayloadOffset;
  while (have < want) {
    const int count = client.Read(buffer.data() + have, buffer.size() - have);
    if (count <= 0) return false;
    have += static_cast<std::size_t>(count);
    if (have < wire::kRequestPayloadOffset) continue;
    std::uint64_t length = 0;
    std::memcpy(&length, &buffer[wire::kRequestLengthOffset], sizeof length);
    if (length > wire::kRequestPayloadMax) return false;
    want = wire::kRequestPayloadOffset + length;
  }
  std::memcpy(&request.command, &buffer[wire::kRequestCommandOffset], sizeof request.command);
  request.payload.assign(&buffer[wire::kRequestPayloadOffset], want - wire::kRequestPayloadOffset);
  return true;
}

// In one write, because a client takes only what its first read brings. A client that did not wait
// for its answer is not reported.
void writeAnswer(UnixSocket& client, const Answer& answer) {
  Buffer buffer{};
  const std::uint64_t length = answer.text.size();
  std::memcpy(&buffer[wire::kAnswerResultOffset], &answer.result, sizeof answer.result);
  std::memcpy(&buffer[wire::kAnswerLengthOffset], &length, sizeof length);
  answer.text.copy(&buffer[wire::kAnswerTextOffset], wire::kAnswerTextMax);
  client.Write(buffer.data(), wire::kAnswerTextOffset + length + 1);
}

bool isPassing(int error) {
  // 0: out of memory for the connection.
  constexpr int kPassing[] = {0, EMFILE, ENFILE, ENOBUFS, ENOMEM, ECONNABORTED};
  return std::find(std::begin(kPassing), std::end(kPassing), error) != std::end(kPassing);
}

}  // namespace

std::string echoText(std::string_view payload) {
  constexpr char kDigits[] = "0123456789abcdef";
  constexpr std::size_t kTextMax = wire::kAnswerTextMax - 1;  // less the terminator
  std::string text;
  for (const char c : payload) {
    const auto byte = static_cast<unsigned char>(c);
    const char escaped[] = {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
    std::string_view piece(&c, 1);
    if (c == '\\') piece = "\\\\";
    if (byte < ' ' || byte > '~') piece = {escaped, sizeof escaped};
    if (text.size() + piece.size() > kTextMax) break;
    text += piece;
  }
  return text;
}

struct EchoServer::Conversations {
  std::mutex mutex;
  std::condition_variable ended;
  int running = 0;
  Watcher watcher;

  void hold(UnixSocket& client) {
    EchoRequest request;
    if (!readRequest(client, request)) {
      writeAnswer(client, {0, "incomplete request"});
      return;
    }
    {
      const std::lock_guard lock(mutex);
      if (watcher) watcher(request);
    }
    writeAnswer(client, {wire::kResultSuccess, echoText(request.payload)});
  }

  void begin() {
    const std::lock_guard lock(mutex);
    ++running;
  }

  void end() {
    const std::lock_guard lock(mutex);
    --running;
    ended.notify_all();
  }

  void close() {
    std::unique_lock lock(mutex);
    ended.wait_for(lock, kFarewell, [this] { return running == 0; });
    watcher = nullptr;
  }
};

EchoServer::EchoServer(const std::string& socketPath, Watcher watcher)
    : path_(socketPath), conversations_(std::make_shared<Conversations>()) {
  conversations_->watcher = std::move(watcher);
  // The class cuts longer paths, and would then serve another socket.
  if (path_.size() >= sizeof(sockaddr_un::sun_path)) {
    throw std::runtime_error(path_ + ": " + std::system_category().message(ENAMETOOLONG));
  }
  if (answersAt(path_)) throw std::runtime_error(path_ + ": a server is listening already");
  if (listener_.Open(path_) != 0 || listener_.Bind() != 0 || listener_.Listen(kBacklog) != 0) {
    fail(path_, listener_);
  }
}

EchoServer::~EchoServer() {
  listener_.Close();
  unlink(path_.c_str());
  conversations_->close();
}

void EchoServer::serve() {
  while (auto client = nextConnection()) {
    conversations_->begin();
    try {
      std::thread([conversations = conversations_, connection = std::move(client)]() mutable {
        conversations->hold(*connection);
        connection.reset();
        conversations->end();
      }).detach();
    } catch (const std::system_error&) {
      conversations_->end();  // no thread can be created: the client sees a closed connection
    }
  }
}

void EchoServer::stop() {
  stopping_ = true;
  answersAt(path_);  // wakes the thread that waits for a connection
}

// Null if the server should stop.
std::unique_ptr<UnixSocket> EchoServer::nextConnection() {
  while (!stopping_) {
    std::unique_ptr<UnixSocket> client(listener_.Accept());
    if (stopping_) return nullptr;
    if (client) return client;
    if (!isPassing(listener_.getErrno())) fail(path_, listener_);
    std::this_thread::sleep_for(kRetryPause);
  }
  return nullptr;
}

}  // namespace kolum::tool

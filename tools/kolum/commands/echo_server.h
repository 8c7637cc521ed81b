// A small media-library server for experiments: it answers every command with result 1 and the
// command's own payload as text. docs/server-protocol.md describes its answers.
//
//   EchoServer server(wire::kSocketPath, [](const EchoRequest& request) { ... });
//   server.serve();  // until another thread calls server.stop()
#ifndef KOLUM_TOOL_COMMANDS_ECHO_SERVER_H
#define KOLUM_TOOL_COMMANDS_ECHO_SERVER_H

#include <kolum/socket.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kolum::tool {

struct EchoRequest {
  std::int64_t command = 0;
  std::string payload;
};

// The answer to PAYLOAD: printable ASCII unchanged, "\" doubled, every other byte as "\x" and two
// digits; cut to what an answer holds.
std::string echoText(std::string_view payload);

class EchoServer {
 public:
  // Called with every complete request, by one thread at a time, before the answer is sent. Must
  // not throw.
  using Watcher = std::function<void(const EchoRequest&)>;

  // Listens at SOCKETPATH, replacing a stale socket file but never that of a server that still
  // answers. Throws std::runtime_error with the reason if that fails.
  explicit EchoServer(const std::string& socketPath, Watcher watcher = {});

  // Removes the socket file. Waits a moment for conversations to end; a client that stays connected
  // silently is left to its own thread.
  ~EchoServer();

  EchoServer(const EchoServer&) = delete;
  EchoServer& operator=(const EchoServer&) = delete;

  // Answers clients, each in its own thread, until stop() is called. Throws std::runtime_error if
  // no more connections can be accepted.
  void serve();

  // Ends serve(), from any thread.
  void stop();

 private:
  struct Conversations;

  std::unique_ptr<MediaLibrary::LUM::UnixSocket> nextConnection();

  std::string path_;
  MediaLibrary::LUM::UnixSocket listener_;
  std::atomic<bool> stopping_{false};
  std::shared_ptr<Conversations> conversations_;  // may outlive the server with its last thread
};

}  // namespace kolum::tool

#endif

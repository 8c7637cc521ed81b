// Runs the tool's echo server for a test.
#ifndef KOLUM_TESTS_IPC_RUNNING_ECHO_SERVER_H
#define KOLUM_TESTS_IPC_RUNNING_ECHO_SERVER_H

#include <string>
#include <thread>
#include <utility>

#include "commands/echo_server.h"

namespace kolum::test {

// Serves in its own thread while it exists.
class RunningEchoServer {
 public:
  explicit RunningEchoServer(const std::string& path, tool::EchoServer::Watcher watcher = {})
      : server_(path, std::move(watcher)), thread_([this] { server_.serve(); }) {}
  ~RunningEchoServer() {
    server_.stop();
    thread_.join();
  }
  RunningEchoServer(const RunningEchoServer&) = delete;
  RunningEchoServer& operator=(const RunningEchoServer&) = delete;

 private:
  tool::EchoServer server_;
  std::thread thread_;
};

}  // namespace kolum::test

#endif

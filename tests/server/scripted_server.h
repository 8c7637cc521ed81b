// A server that is scripted by the test.
#ifndef KOLUM_TESTS_IPC_SCRIPTED_SERVER_H
#define KOLUM_TESTS_IPC_SCRIPTED_SERVER_H

#include <kolum/socket.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace kolum::test {

// Listens at PATH and passes one connection after another to SERVE, in its own thread. A connection
// is closed when SERVE returns.
class ScriptedServer {
 public:
  using Connection = MediaLibrary::LUM::UnixSocket;

  ScriptedServer(std::string path, std::function<void(Connection&)> serve)
      : path_(std::move(path)), serve_(std::move(serve)) {
    if (listener_.Open(path_) != 0 || listener_.Bind() != 0 || listener_.Listen(8) != 0) {
      throw std::runtime_error("cannot listen at " + path_);
    }
    thread_ = std::thread([this] { run(); });
  }

  ~ScriptedServer() {
    stopping_ = true;
    Connection wake;
    wake.Open(path_);
    wake.Connect(1, 0);
    thread_.join();
  }

  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

 private:
  void run() {
    for (;;) {
      const std::unique_ptr<Connection> connection(listener_.Accept());
      if (stopping_ || connection == nullptr) return;
      serve_(*connection);
    }
  }

  std::string path_;
  std::function<void(Connection&)> serve_;
  Connection listener_;
  std::atomic<bool> stopping_{false};
  std::thread thread_;
};

}  // namespace kolum::test

#endif

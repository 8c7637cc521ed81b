// A small HTTP server for a test, reachable from this machine only.
#ifndef KOLUM_TESTS_APPLIANCE_LOOPBACK_HTTP_H
#define KOLUM_TESTS_APPLIANCE_LOOPBACK_HTTP_H

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kolum::test {

// Serves one connection at a time and keeps it open between requests.
class LoopbackHttp {
 public:
  // Returns the bytes of the reply to a request; if empty, the server stays silent and keeps the
  // connection open.
  using Handler = std::function<std::optional<std::string>(const std::string& request)>;

  explicit LoopbackHttp(Handler handler);
  ~LoopbackHttp();
  LoopbackHttp(const LoopbackHttp&) = delete;
  LoopbackHttp& operator=(const LoopbackHttp&) = delete;

  std::string url() const;
  // The request lines so far, and the number of connections that they came over.
  std::vector<std::string> requests() const;
  int connections() const;

  // A reply with this status line and body.
  static std::string reply(const std::string& status, const std::string& body);

 private:
  void serve();
  void serveConnection(int connection);
  // Waits until there is something to read; false if the server should stop.
  bool waitFor(int descriptor) const;

  Handler handler_;
  int listener_ = -1;
  int end_[2] = {-1, -1};  // a pipe: closing its writing end stops the server
  int port_ = 0;
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;  // guarded by mutex_
  int connections_ = 0;                // guarded by mutex_
  std::thread thread_;
};

}  // namespace kolum::test

#endif

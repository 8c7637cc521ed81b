// A small HTTP server of a test's own, on this machine only.
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
  // From the text of a request to the bytes of its reply; empty: the server says nothing and holds
  // the connection.
  using Handler = std::function<std::optional<std::string>(const std::string& request)>;

  explicit LoopbackHttp(Handler handler);
  ~LoopbackHttp();
  LoopbackHttp(const LoopbackHttp&) = delete;
  LoopbackHttp& operator=(const LoopbackHttp&) = delete;

  std::string url() const;
  // The request lines so far, and how many connections they came over.
  std::vector<std::string> requests() const;
  int connections() const;

  // A reply with this status line and body.
  static std::string reply(const std::string& status, const std::string& body);

 private:
  void serve();
  void serveConnection(int connection);
  // Waits until there is something to read; false when the server is to end.
  bool waitFor(int descriptor) const;

  Handler handler_;
  int listener_ = -1;
  int end_[2] = {-1, -1};  // a pipe: closing its writing end ends the server
  int port_ = 0;
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;  // guarded by mutex_
  int connections_ = 0;                // likewise
  std::thread thread_;
};

}  // namespace kolum::test

#endif

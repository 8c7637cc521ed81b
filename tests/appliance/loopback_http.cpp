#include "appliance/loopback_http.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace kolum::test {

LoopbackHttp::LoopbackHttp(Handler handler) : handler_(std::move(handler)) {
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (listener_ < 0 || bind(listener_, generic, size) != 0 || listen(listener_, 8) != 0 ||
      getsockname(listener_, generic, &size) != 0 || pipe2(end_, O_CLOEXEC) != 0) {
    throw std::runtime_error("no server on the loopback");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { serve(); });
}

LoopbackHttp::~LoopbackHttp() {
  close(end_[1]);
  thread_.join();
  close(end_[0]);
  close(listener_);
}

std::string LoopbackHttp::url() const {
  return "http://127.0.0.1:" + std::to_string(port_);
}

std::vector<std::string> LoopbackHttp::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

int LoopbackHttp::connections() const {
  const std::lock_guard lock(mutex_);
  return connections_;
}

std::string LoopbackHttp::reply(const std::string& status, const std::string& body) {
  return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
         body;
}

bool LoopbackHttp::waitFor(int descriptor) const {
  std::array<pollfd, 2> both{pollfd{descriptor, POLLIN, 0}, pollfd{end_[0], POLLIN, 0}};
  return poll(both.data(), both.size(), -1) > 0 && both[1].revents == 0;
}

void LoopbackHttp::serve() {
  while (waitFor(listener_)) {
    const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) continue;
    {
      const std::lock_guard lock(mutex_);
      ++connections_;
    }
    serveConnection(connection);
    close(connection);
  }
}

void LoopbackHttp::serveConnection(int connection) {
  std::string request;
  std::array<char, 4096> piece{};
  while (waitFor(connection)) {
    const ssize_t count = recv(connection, piece.data(), piece.size(), 0);
    if (count <= 0) return;
    request.append(piece.data(), static_cast<std::size_t>(count));
    if (!request.ends_with("\r\n\r\n")) continue;
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(request.substr(0, request.find("\r\n")));
    }
    const auto reply = handler_(request);
    request.clear();
    if (reply && send(connection, reply->data(), reply->size(), MSG_NOSIGNAL) < 0) return;
  }
}

}  // namespace kolum::test

// Fetching from an HTTP server over libcurl.
#ifndef KOLUM_OSM_INFO_HTTP_H
#define KOLUM_OSM_INFO_HTTP_H

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace kolum::osm_info {

struct HttpReply {
  long status = 0;
  std::string body;
};

// Keeps its connection open between requests. Redirects are not followed and proxies from the
// environment not used: only the configured server is asked.
class HttpClient {
 public:
  static constexpr std::size_t kLargestBody = std::size_t{64} << 10;

  HttpClient(const std::string& caFile, std::chrono::milliseconds connectTimeout);

  // Throws LookUpError on failure, including a body beyond the size above.
  HttpReply get(const std::string& url, std::chrono::milliseconds timeout);

 private:
  struct Deleter {
    void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
  };
  std::unique_ptr<CURL, Deleter> curl_;
};

}  // namespace kolum::osm_info

#endif

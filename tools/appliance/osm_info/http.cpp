#include "osm_info/http.h"

#include <array>
#include <new>

#include "osm_info/answer.h"

namespace kolum::osm_info {

namespace {

template <typename Value>
void set(CURL* curl, CURLoption option, Value value) {
  if (curl_easy_setopt(curl, option, value) != CURLE_OK) {
    throw LookUpError("libcurl lacks an option that is needed");
  }
}

// Returning less than the received size ends the transfer.
std::size_t appendBody(const char* data, std::size_t, std::size_t size, void* body) {
  auto& text = *static_cast<std::string*>(body);
  if (text.size() + size > HttpClient::kLargestBody) return 0;
  try {
    text.append(data, size);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return size;
}

}  // namespace

HttpClient::HttpClient(const std::string& caFile, std::chrono::milliseconds connectTimeout)
    : curl_(curl_easy_init()) {
  if (curl_ == nullptr) throw std::bad_alloc();
  CURL* curl = curl_.get();
  set(curl, CURLOPT_PROTOCOLS_STR, "http,https");
  set(curl, CURLOPT_FOLLOWLOCATION, 0L);
  set(curl, CURLOPT_PROXY, "");
  set(curl, CURLOPT_NOSIGNAL, 1L);
  set(curl, CURLOPT_SSL_VERIFYPEER, 1L);
  set(curl, CURLOPT_SSL_VERIFYHOST, 2L);
  if (!caFile.empty()) set(curl, CURLOPT_CAINFO, caFile.c_str());
  set(curl, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(connectTimeout.count()));
  set(curl, CURLOPT_USERAGENT, "osm_info");
  set(curl, CURLOPT_WRITEFUNCTION, appendBody);
}

HttpReply HttpClient::get(const std::string& url, std::chrono::milliseconds timeout) {
  CURL* curl = curl_.get();
  HttpReply reply;
  std::array<char, CURL_ERROR_SIZE> words{};
  set(curl, CURLOPT_URL, url.c_str());
  set(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(timeout.count()));
  set(curl, CURLOPT_WRITEDATA, &reply.body);
  set(curl, CURLOPT_ERRORBUFFER, words.data());
  const CURLcode result = curl_easy_perform(curl);
  // The buffer is local to this call.
  set(curl, CURLOPT_ERRORBUFFER, static_cast<char*>(nullptr));
  if (result != CURLE_OK) {
    const char* reason = words[0] != '\0' ? words.data() : curl_easy_strerror(result);
    throw LookUpError(std::string("cannot ask the server: ") + reason);
  }
  curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &reply.status);
  return reply;
}

}  // namespace kolum::osm_info

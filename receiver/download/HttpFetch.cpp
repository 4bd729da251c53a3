#include "receiver/download/HttpFetch.h"

#include <curl/curl.h>

#include <utility>

namespace zor::receiver {
namespace {

constexpr long kStatusOk = 200;  // RFC 9110.

/// Sets up no TLS, since only plain HTTP is used.
bool initialize() {
  static const bool kIsReady = curl_global_init(CURL_GLOBAL_NOTHING) == CURLE_OK;
  return kIsReady;
}

void limit(CURL* transfer) {
  curl_easy_setopt(transfer, CURLOPT_PROTOCOLS_STR, "http");
  curl_easy_setopt(transfer, CURLOPT_FOLLOWLOCATION, 0L);
  // The environment's proxy is the host's, not the module's.
  curl_easy_setopt(transfer, CURLOPT_PROXY, "");
  curl_easy_setopt(transfer, CURLOPT_PATH_AS_IS, 1L);
  curl_easy_setopt(transfer, CURLOPT_NOSIGNAL, 1L);
  // A cancel must not wait for a name server's answer.
  curl_easy_setopt(transfer, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(transfer, CURLOPT_CONNECTTIMEOUT, HttpFetch::kMaxConnectSeconds);
  curl_easy_setopt(transfer, CURLOPT_LOW_SPEED_LIMIT, 1L);
  curl_easy_setopt(transfer, CURLOPT_LOW_SPEED_TIME, HttpFetch::kMaxSilenceSeconds);
  curl_easy_setopt(transfer, CURLOPT_TIMEOUT, HttpFetch::kMaxSeconds);
}

}  // namespace

void HttpFetch::FreeTransfer::operator()(void* transfer) const {
  curl_easy_cleanup(transfer);
}
void HttpFetch::FreeLoop::operator()(void* loop) const {
  curl_multi_cleanup(loop);
}

HttpFetch::HttpFetch(const std::string& url, const std::string& interface) {
  if (!initialize()) return;
  loop_.reset(curl_multi_init());
  transfer_.reset(curl_easy_init());
  if (!transfer_) return;
  CURL* const transfer = transfer_.get();
  limit(transfer);
  curl_easy_setopt(transfer, CURLOPT_URL, url.c_str());
  if (!interface.empty()) curl_easy_setopt(transfer, CURLOPT_INTERFACE, ("if!" + interface).c_str());
  curl_easy_setopt(transfer, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(transfer, CURLOPT_WRITEFUNCTION, &HttpFetch::writeCallback);
}

std::string HttpFetch::run(ByteHandler onBytes, PercentHandler onPercent) {
  if (!loop_ || !transfer_) return "no memory for a transfer";
  onBytes_ = std::move(onBytes);
  onPercent_ = std::move(onPercent);
  if (curl_multi_add_handle(loop_.get(), transfer_.get()) != CURLM_OK) return "no memory for a transfer";
  std::string failure = perform();
  curl_multi_remove_handle(loop_.get(), transfer_.get());

  if (!refusal_.empty()) return refusal_;
  if (!failure.empty()) return failure;
  // The header of an empty file has not been checked yet.
  return length_ >= 0 || checkHeader() ? std::string{} : refusal_;
}

std::string HttpFetch::perform() {
  constexpr int kNoTimeout = 1000;  // libcurl wakes up earlier for its own timers.
  int running = 1;
  while (!cancelled_) {
    if (const CURLMcode code = curl_multi_perform(loop_.get(), &running); code != CURLM_OK) {
      return curl_multi_strerror(code);
    }
    if (running == 0) break;
    if (const CURLMcode code = curl_multi_poll(loop_.get(), nullptr, 0, kNoTimeout, nullptr);
        code != CURLM_OK) {
      return curl_multi_strerror(code);
    }
  }
  if (running != 0) return "cancelled";
  int queued = 0;
  const CURLMsg* const message = curl_multi_info_read(loop_.get(), &queued);
  if (message == nullptr) return "the transfer has no result";
  return message->data.result == CURLE_OK ? "" : curl_easy_strerror(message->data.result);
}

void HttpFetch::cancel() {
  cancelled_ = true;
  if (loop_) curl_multi_wakeup(loop_.get());
}

std::size_t HttpFetch::writeCallback(char* bytes, std::size_t size, std::size_t count, void* self) {
  const std::size_t length = size * count;
  // Any number other than the length ends the transfer.
  return static_cast<HttpFetch*>(self)->takeBytes(bytes, length) ? length : length + 1;
}

bool HttpFetch::takeBytes(const char* bytes, std::size_t length) {
  if (cancelled_ || (length_ < 0 && !checkHeader())) return false;
  received_ += static_cast<std::int64_t>(length);
  if (received_ > length_) {
    refusal_ = "the server sent more than it announced";
    return false;
  }
  refusal_ = onBytes_(bytes, length);
  if (!refusal_.empty()) return false;
  if (const int percent = static_cast<int>(received_ * 100 / length_); percent != percent_) {
    percent_ = percent;
    onPercent_(percent);
  }
  return true;
}

/// Redirections and error pages have bodies too. Only a file is accepted, and only one whose length is known:
/// else a broken connection would look like the end of the file.
bool HttpFetch::checkHeader() {
  long status = 0;
  curl_off_t length = -1;
  curl_easy_getinfo(transfer_.get(), CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(transfer_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  if (status != kStatusOk) {
    refusal_ = "the server answered with status " + std::to_string(status);
  } else if (length < 0) {
    refusal_ = "the server does not say how long the file is";
  } else if (length > kMaxBytes) {
    refusal_ = "the file is longer than " + std::to_string(kMaxBytes) + " bytes";
  } else {
    length_ = length;
  }
  return length_ >= 0;
}

}  // namespace zor::receiver

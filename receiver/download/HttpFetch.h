#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace zor::receiver {

/// Fetches one file from a server that is not trusted: plain HTTP only, no proxy, no redirection, status 200,
/// a length that is announced and kept, bounded in size and in time.
class HttpFetch {
 public:
  static constexpr std::int64_t kMaxBytes = std::int64_t{64} * 1024 * 1024;
  static constexpr long kMaxConnectSeconds = 10;
  static constexpr long kMaxSilenceSeconds = 15;
  static constexpr long kMaxSeconds = 600;

  /// Takes the file's next bytes. Returns empty, or one line that says why the fetch must stop.
  using ByteHandler = std::function<std::string(const char* bytes, std::size_t length)>;
  /// Takes the percentage of the file that has arrived, 0 to 100, whenever it has changed.
  using PercentHandler = std::function<void(int percent)>;

  /// The connection leaves through `interface`; empty for any.
  HttpFetch(const std::string& url, const std::string& interface);

  /// Blocks until the file is complete, something fails or cancel() is called. The handlers are called on
  /// this thread. Call it once. Returns empty when every byte was handed over, else one line that says why
  /// not, in which no text comes from the server.
  std::string run(ByteHandler onBytes, PercentHandler onPercent);

  /// Makes run() return within milliseconds, unless a handler blocks. Any thread.
  void cancel();

 private:
  struct FreeTransfer {
    void operator()(void* transfer) const;
  };
  struct FreeLoop {
    void operator()(void* loop) const;
  };

  static std::size_t writeCallback(char* bytes, std::size_t size, std::size_t count, void* self);
  bool takeBytes(const char* bytes, std::size_t length);
  bool checkHeader();
  std::string perform();

  /// libcurl's multi and easy handle. The transfer must leave the loop before it is freed.
  std::unique_ptr<void, FreeLoop> loop_;
  std::unique_ptr<void, FreeTransfer> transfer_;
  std::atomic<bool> cancelled_{false};
  ByteHandler onBytes_;
  PercentHandler onPercent_;
  std::string refusal_;       ///< Why this object, not libcurl, stopped the fetch.
  std::int64_t length_ = -1;  ///< Of the file, -1 until the header was checked.
  std::int64_t received_ = 0;
  int percent_ = 0;
};

}  // namespace zor::receiver

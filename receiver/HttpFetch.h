#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace zor::receiver {

/// Fetches one file from a server that is not trusted: HTTP alone, no proxy, no redirection, status 200, a
/// length that is announced and kept, bounded in size and in time.
class HttpFetch {
 public:
  static constexpr std::int64_t kMaxOctets = std::int64_t{64} * 1024 * 1024;
  static constexpr long kMaxConnectSeconds = 10;
  static constexpr long kMaxSilenceSeconds = 15;
  static constexpr long kMaxSeconds = 600;

  /// Takes the file's next octets. \return empty, or one line that says why the fetch is given up.
  using OctetHandler = std::function<std::string(const char* octets, std::size_t length)>;
  /// Told how much of the file is here, 0 to 100 percent, when that has changed.
  using PercentHandler = std::function<void(int percent)>;

  /// \param interface the connection leaves through this interface; empty for any.
  HttpFetch(const std::string& url, const std::string& interface);

  /// Blocks until the file is whole, something fails or cancel() is called. The handlers are called on this
  /// thread. Call it once.
  /// \return empty when every octet was handed over, else why not: one line without a word of the server.
  std::string run(OctetHandler onOctets, PercentHandler onPercent);

  /// Makes run() return within milliseconds, unless a handler blocks. Any thread.
  void cancel();

 private:
  struct FreeTransfer {
    void operator()(void* transfer) const;
  };
  struct FreeLoop {
    void operator()(void* loop) const;
  };

  static std::size_t take(char* octets, std::size_t size, std::size_t count, void* self);
  bool take(const char* octets, std::size_t length);
  bool checkHeader();
  std::string perform();

  // libcurl's easy and multi handle. The transfer must leave the loop before it is freed.
  std::unique_ptr<void, FreeLoop> loop_;
  std::unique_ptr<void, FreeTransfer> transfer_;
  std::atomic<bool> cancelled_{false};
  OctetHandler onOctets_;
  PercentHandler onPercent_;
  std::string refusal_;       ///< Why this object, not libcurl, gave the fetch up.
  std::int64_t length_ = -1;  ///< Of the file, -1 until the header was checked.
  std::int64_t received_ = 0;
  int percent_ = 0;
};

}  // namespace zor::receiver

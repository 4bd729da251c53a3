#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zor::bench {

/// Which lines a load sends.
enum class LineKind {
  fresh,    ///< Notifications, each of another module.
  repeat,   ///< The same notification over and over.
  garbage,  ///< The same text, which is no module line, over and over.
};

/// Sends lines over the loopback to a receiver in this process, many per system call. Allocates nothing.
class LineLoad {
 public:
  static constexpr std::size_t kBatch = 64;

  /// `receiver` is the descriptor of the socket that is bound to `port`; it must stay open.
  LineLoad(std::int32_t receiver, std::int32_t port);
  ~LineLoad();
  LineLoad(const LineLoad&) = delete;
  LineLoad& operator=(const LineLoad&) = delete;

  /// Sends `count` lines, at most `kBatch`.
  void send(LineKind kind, std::size_t count);

  /// Sends `count` lines as fast as the receiver takes them, so none is lost. Returns when all are taken.
  void sendAll(LineKind kind, std::size_t count);

  /// Sends `perMillisecond` lines in each of `milliseconds`, whether the receiver takes them or not.
  void sendPaced(LineKind kind, std::size_t perMillisecond, std::size_t milliseconds);

  /// Returns how many lines were lost because the receiver's buffer was full, since its socket was opened.
  std::uint32_t dropped() const;

 private:
  using Line = std::array<char, 96>;

  std::size_t write(Line& line, LineKind kind);
  bool anyWaiting() const;

  std::int32_t receiver_;
  std::int32_t sender_;
  std::uint32_t freshLines_ = 0;
  std::array<Line, kBatch> lines_{};
};

}  // namespace zor::bench

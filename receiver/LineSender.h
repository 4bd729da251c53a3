#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <random>
#include <string>

#include "receiver/ModuleSocket.h"
#include "receiver/VirtualModule.h"

namespace zor::receiver {

/// Sends a module's lines, and does to them what its misbehaviour asks for.
class LineSender {
 public:
  using Instant = std::chrono::steady_clock::time_point;
  /// Told the system's reason when a line could not be sent.
  using FailureHandler = std::function<void(const std::string& reason)>;

  /// Most answers that wait for their time; those beyond are dropped.
  static constexpr std::size_t kMaxWaiting = 64;

  /// \param socket sends the lines; outlives this object.
  LineSender(const ModuleSocket& socket, Misbehaviour misbehaviour, FailureHandler onFailure);

  /// Opens what the misbehaviour needs. \return empty or one line that says why it could not.
  std::string open(const std::string& interface);

  /// Sends a line that is nobody's answer. `line` has no line end yet, as below.
  /// \return true unless it failed.
  bool notify(const std::string& line, const sockaddr_in& to);

  /// Sends an answer, now or when it is due.
  void answer(const std::string& line, const sockaddr_in& to, Instant now);

  /// When the next waiting answer is due; nothing if none waits.
  std::optional<Instant> due() const;
  void sendDue(Instant now);

 private:
  struct Waiting {
    Instant due;
    std::string line;
    sockaddr_in to;
  };

  bool send(const ModuleSocket& from, std::string line, const sockaddr_in& to);
  std::string garbage();

  const ModuleSocket& socket_;
  ModuleSocket otherSocket_;  ///< Open only to misbehave.
  Misbehaviour misbehaviour_;
  FailureHandler onFailure_;
  std::deque<Waiting> waiting_;  ///< The next due first.
  std::minstd_rand random_;
};

}  // namespace zor::receiver

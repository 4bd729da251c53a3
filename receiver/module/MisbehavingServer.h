#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <random>
#include <string>

#include "receiver/module/ModuleServer.h"

namespace zor::receiver {

/// A server that misbehaves as its options say; with Misbehaviour::none, an ordinary one.
class MisbehavingServer : public ModuleServer {
 public:
  /// Most late answers that wait for their time; those beyond are dropped.
  static constexpr std::size_t kMaxWaiting = 64;

  MisbehavingServer(const VirtualModuleOptions& options, ModuleEventHandler onEvent);

  std::string open(const std::string& pairs) override;
  std::optional<Instant> due() const override;
  void sendDue(Instant now) override;

 protected:
  void answerCommand(std::int32_t id, int result, const sockaddr_in& to) override;
  void answerStatus(std::int32_t id, const sockaddr_in& to) override;
  void sendAnswer(const std::string& line, const sockaddr_in& to) override;
  bool send(const ModuleSocket& from, const std::string& line, const sockaddr_in& to) override;

 private:
  struct Waiting {
    Instant due;
    std::string line;
    sockaddr_in to;
  };

  std::string garbage();

  const Misbehaviour misbehaviour_;
  ModuleSocket otherSocket_;             ///< Open only for Misbehaviour::otherPort.
  std::deque<Waiting> waiting_;          ///< The next due first.
  int statusesBeforeCommandAnswer_ = 0;  ///< Above 0 while the answer to a command is held back.
  std::minstd_rand random_;
};

}  // namespace zor::receiver

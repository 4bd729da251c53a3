#include "receiver/LineSender.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace zor::receiver {
namespace {

constexpr std::chrono::seconds kSlowness{2};
constexpr std::size_t kMaxGarbage = 600;  // Longer than a phone's buffers for a value.

void capitalizeTag(std::string& line) {
  const auto end = line.begin() + static_cast<std::ptrdiff_t>(std::min(line.find(':'), line.size()));
  std::transform(line.begin(), end, line.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
}

}  // namespace

LineSender::LineSender(const ModuleSocket& socket, Misbehaviour misbehaviour, FailureHandler onFailure)
    : socket_(socket), misbehaviour_(misbehaviour), onFailure_(std::move(onFailure)) {}

std::string LineSender::open(const std::string& interface) {
  return misbehaviour_ == Misbehaviour::otherPort ? otherSocket_.open(0, interface) : std::string{};
}

bool LineSender::notify(const std::string& line, const sockaddr_in& to) {
  return send(socket_, line, to);
}

void LineSender::answer(const std::string& line, const sockaddr_in& to, Instant now) {
  if (misbehaviour_ == Misbehaviour::slowAnswers) {
    if (waiting_.size() < kMaxWaiting) waiting_.push_back({now + kSlowness, line, to});
    return;
  }
  send(misbehaviour_ == Misbehaviour::otherPort ? otherSocket_ : socket_, line, to);
}

std::optional<LineSender::Instant> LineSender::due() const {
  return waiting_.empty() ? std::nullopt : std::optional(waiting_.front().due);
}

void LineSender::sendDue(Instant now) {
  for (; !waiting_.empty() && waiting_.front().due <= now; waiting_.pop_front()) {
    send(socket_, waiting_.front().line, waiting_.front().to);
  }
}

bool LineSender::send(const ModuleSocket& from, std::string line, const sockaddr_in& to) {
  if (misbehaviour_ == Misbehaviour::silent) return true;
  if (misbehaviour_ == Misbehaviour::capitals) capitalizeTag(line);
  const bool addsGarbage = misbehaviour_ == Misbehaviour::garbageLines;
  if (addsGarbage) from.send(garbage(), to);
  const int error = from.send(line + "\r\n", to);
  if (addsGarbage) from.send(garbage(), to);
  if (error != 0) onFailure_(std::generic_category().message(error));
  return error == 0;
}

std::string LineSender::garbage() {
  std::string octets(std::uniform_int_distribution<std::size_t>(1, kMaxGarbage)(random_), '\0');
  std::uniform_int_distribution<int> octet(0, 255);
  std::generate(octets.begin(), octets.end(), [&] { return static_cast<char>(octet(random_)); });
  return octets;
}

}  // namespace zor::receiver

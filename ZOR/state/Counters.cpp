#include "ZOR/state/Counters.h"

namespace zor {
namespace {

template <class... Counts>
void resetAll(Counts&... counts) {
  (counts.reset(), ...);
}

}  // namespace

constinit SenderCounters multicastCounters;
constinit SenderCounters broadcastCounters;
constinit ListenerCounters listenerCounters;
constinit SearchCounters searchCounters;
constinit UpgradeCounters upgradeCounters;

void SenderCounters::reset(ZorWorkerState next) {
  resetAll(datagrams, bytes, failedSends, socketsOpened, cycles, blocks, error);
  state = next;
}

ZorSenderReport SenderCounters::report() const {
  return {state, datagrams, bytes, failedSends, socketsOpened, cycles, blocks, error.get()};
}

void LineCounters::reset() {
  resetAll(datagrams, lines, reported, repeats, withoutDelegate, dropped, otherContent, empty);
}

ZorLineReport LineCounters::report() const {
  return {datagrams, lines, reported, repeats, withoutDelegate, dropped, otherContent, empty};
}

void ListenerCounters::reset(ZorWorkerState next) {
  resetAll(received, socketsOpened, error);
  port = 0;
  state = next;
}

ZorListenerReport ListenerCounters::report() const {
  return {state, port, received.report(), socketsOpened, error.get()};
}

void SearchCounters::reset(ZorWorkerState next) {
  resetAll(requestsSent, requestsFailed, socketsOpened, received, error);
  state = next;
}

ZorSearchReport SearchCounters::report() const {
  return {state, requestsSent, requestsFailed, received.report(), socketsOpened, error.get()};
}

void UpgradeCounters::reset(ZorWorkerState next) {
  resetAll(requestsSent, requestsFailed, socketsOpened, datagrams, answers, otherAddress, otherPort,
           notAResponse, error);
  state = next;
}

ZorUpgradeReport UpgradeCounters::report() const {
  return {state,        requestsSent, requestsFailed, datagrams,     answers,
          otherAddress, otherPort,    notAResponse,   socketsOpened, error.get()};
}

}  // namespace zor

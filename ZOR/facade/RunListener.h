#pragma once

namespace zor {

// Which listener a run's time-out ends: the one that runs when the run starts or, if none does, the first
// that the application opens while the run's time is not up. Never another: that one belongs to what comes
// next.

/// Notes the listener that the run which starts now relies on. Application's thread, before its senders
/// start.
void noteRunStarted();

/// Notes that a listener was opened. Application's thread.
void noteListenerOpened();

/// While it lives, a listener that is opened belongs to the next run, not to one that runs without a
/// listener. Application's thread.
class ListenerOfNextRun {
 public:
  ListenerOfNextRun();
  ~ListenerOfNextRun();
  ListenerOfNextRun(const ListenerOfNextRun&) = delete;
  ListenerOfNextRun& operator=(const ListenerOfNextRun&) = delete;
};

/// Ends the listener of the run whose time-out has passed. Its multicast sender's thread.
void endListenerOfRun();

}  // namespace zor

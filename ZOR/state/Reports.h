#pragma once

#include <cstdint>

/// \file
/// What a worker has done in its latest run. All reports are copies: they cost no lock and may be asked for
/// at any time, while the worker runs and after it. Each number is exact; numbers of a running worker may be
/// a moment apart. A start sets its report back to zero.

/// How a worker stands, or how its latest run ended.
enum class ZorWorkerState : std::int32_t {
  idle,      ///< Has not run yet, or was not part of the latest start (a length base of 0).
  running,   ///< Runs, or has been asked to end and has not ended yet.
  finished,  ///< Ended by itself: a search after its last request, an upgrade with its final status.
  timedOut,  ///< Its run's time-out passed. A listener too: it ends with the run that relies on it.
  stopped,   ///< The application stopped it, or ended its thread.
  replaced,  ///< A start of its kind took its place.
  noSocket,  ///< The system gave it no socket.
  noThread,  ///< The system gave it no thread or no memory.
};

/// What the system said to the latest call on a socket that failed.
struct ZorSystemError {
  std::int32_t number;  ///< The system's error number (`errno`), 0 while nothing has failed.
  std::int64_t atMs;    ///< When, a `ZorGetUsec` reading in milliseconds.
};

/// One sender: the version 5 multicast or version 3 sender, or the version 5 broadcast sender.
struct ZorSenderReport {
  ZorWorkerState state;        ///< How it stands, or how it ended.
  std::int64_t datagrams;      ///< Sent.
  std::int64_t bytes;          ///< Payload bytes of these.
  std::int64_t failedSends;    ///< Datagrams that the system refused. The next one opened a new socket.
  std::int64_t socketsOpened;  ///< 1 while nothing failed.
  std::int64_t cycles;         ///< Passes of the packet that were completed, failed sends included.
  std::int64_t blocks;         ///< Blocks of cycles that were completed; a version 3 cycle is a block.
  ZorSystemError error;        ///< The latest failure to send or to open a socket.
};

/// The datagrams that reached a listener or a search, and what became of them.
struct ZorLineReport {
  std::int64_t datagrams;        ///< Received, of any content.
  std::int64_t lines;            ///< Those that were announcements, or answers to a search.
  std::int64_t reported;         ///< Modules posted to the delegate.
  std::int64_t repeats;          ///< Lines of a module that was reported before.
  std::int64_t withoutDelegate;  ///< New modules for which there was no delegate.
  std::int64_t dropped;          ///< Reports that found the main-thread queue full or no memory.
  std::int64_t otherContent;     ///< Datagrams refused: another tag, or no module line at all.
  std::int64_t empty;            ///< Datagrams refused: no content.
};

/// The listener for announcements.
struct ZorListenerReport {
  ZorWorkerState state;        ///< How it stands, or how it ended.
  std::int32_t port;           ///< UDP port that it was bound to, 0 while there was none.
  ZorLineReport received;      ///< What came in.
  std::int64_t socketsOpened;  ///< 1 while its socket lived.
  ZorSystemError error;        ///< The latest failure to receive or to open a socket.
};

/// The latest smart configuration run and the latest listener.
struct ZorRunReport {
  ZorSenderReport multicast;   ///< Version 5 multicast, or version 3.
  ZorSenderReport broadcast;   ///< Version 5 broadcast.
  ZorListenerReport listener;  ///< Whether it is the run's or not.
};

/// The latest search.
struct ZorSearchReport {
  ZorWorkerState state;         ///< How it stands, or how it ended.
  std::int64_t requestsSent;    ///< Handed to the system.
  std::int64_t requestsFailed;  ///< Not sent: the system refused them or gave no socket.
  ZorLineReport received;       ///< What came in.
  std::int64_t socketsOpened;   ///< 1 while nothing failed.
  ZorSystemError error;         ///< The latest failure to send, to receive or to open a socket.
};

/// The latest upgrade.
struct ZorUpgradeReport {
  ZorWorkerState state;         ///< How it stands, or how it ended.
  std::int64_t requestsSent;    ///< Handed to the system.
  std::int64_t requestsFailed;  ///< Not sent: the system refused them or gave no socket.
  std::int64_t datagrams;       ///< Received, of any content and from anywhere.
  std::int64_t answers;         ///< Accepted: responses from the module's address and port.
  std::int64_t otherAddress;    ///< Refused: from another address.
  std::int64_t otherPort;       ///< Refused: from the module's address, but another port than 25000.
  std::int64_t notAResponse;    ///< Refused: from the module, but no response line; or empty.
  std::int64_t socketsOpened;   ///< 1 while its socket lived.
  ZorSystemError error;         ///< The latest failure to send, to receive or to open a socket.
};

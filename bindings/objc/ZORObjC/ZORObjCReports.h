#pragma once

#import <Foundation/Foundation.h>
#include <stdint.h>

/// \file
/// What a worker has done in its latest run. All reports are copies; numbers of a running worker may be a
/// moment apart. A start sets its report back to zero.

/// How a worker stands, or how its latest run ended.
typedef NS_ENUM(int32_t, ZORWorkerState) {
  ZORWorkerStateIdle,      ///< Has not run yet, or was not part of the latest start.
  ZORWorkerStateRunning,   ///< Runs, or has been asked to end and has not ended yet.
  ZORWorkerStateFinished,  ///< Ended by itself: a search after its last request, an upgrade with its final
                           ///< status.
  ZORWorkerStateTimedOut,  ///< Its run's time-out passed. A listener ends with the run that relies on it.
  ZORWorkerStateStopped,   ///< The application stopped it.
  ZORWorkerStateReplaced,  ///< A start of its kind took its place.
  ZORWorkerStateNoSocket,  ///< The system gave it no socket.
  ZORWorkerStateNoThread,  ///< The system gave it no thread or no memory.
};

/// What the system said to the latest call on a socket that failed.
typedef struct {
  int32_t number;  ///< The system's error number (`errno`), 0 while nothing has failed.
  int64_t atMs;    ///< When, in milliseconds of the library's clock.
} ZORSystemError;

/// One sender: version 5 multicast or version 3, or version 5 broadcast.
typedef struct {
  ZORWorkerState state;   ///< How it stands, or how it ended.
  int64_t datagrams;      ///< Sent.
  int64_t bytes;          ///< Payload bytes of these.
  int64_t failedSends;    ///< Datagrams that the system refused.
  int64_t socketsOpened;  ///< 1 while nothing failed.
  int64_t cycles;         ///< Passes of the packet that were completed.
  int64_t blocks;         ///< Blocks of cycles that were completed.
  ZORSystemError error;   ///< The latest failure to send or to open a socket.
} ZORSenderReport;

/// The datagrams that reached a listener or a search, and what became of them.
typedef struct {
  int64_t datagrams;        ///< Received, of any content.
  int64_t lines;            ///< Those that were announcements, or answers to a search.
  int64_t reported;         ///< Modules posted to the delegate.
  int64_t repeats;          ///< Lines of a module that was reported before.
  int64_t withoutDelegate;  ///< New modules for which there was no delegate.
  int64_t dropped;          ///< Reports that found the main-thread queue full or no memory.
  int64_t otherContent;     ///< Datagrams refused: another tag, or no module line at all.
  int64_t empty;            ///< Datagrams refused: no content.
} ZORLineReport;

/// The listener for announcements.
typedef struct {
  ZORWorkerState state;    ///< How it stands, or how it ended.
  int32_t port;            ///< UDP port that it was bound to, 0 while there was none.
  ZORLineReport received;  ///< What came in.
  int64_t socketsOpened;   ///< 1 while its socket lived.
  ZORSystemError error;    ///< The latest failure to receive or to open a socket.
} ZORListenerReport;

/// The latest smart configuration run and the latest listener.
typedef struct {
  ZORSenderReport multicast;   ///< Version 5 multicast, or version 3.
  ZORSenderReport broadcast;   ///< Version 5 broadcast.
  ZORListenerReport listener;  ///< Whether it is the run's or not.
} ZORRunReport;

/// The latest search.
typedef struct {
  ZORWorkerState state;    ///< How it stands, or how it ended.
  int64_t requestsSent;    ///< Handed to the system.
  int64_t requestsFailed;  ///< Not sent: the system refused them or gave no socket.
  ZORLineReport received;  ///< What came in.
  int64_t socketsOpened;   ///< 1 while nothing failed.
  ZORSystemError error;    ///< The latest failure to send, to receive or to open a socket.
} ZORSearchReport;

/// The latest upgrade.
typedef struct {
  ZORWorkerState state;    ///< How it stands, or how it ended.
  int64_t requestsSent;    ///< Handed to the system.
  int64_t requestsFailed;  ///< Not sent: the system refused them or gave no socket.
  int64_t datagrams;       ///< Received, of any content and from anywhere.
  int64_t answers;         ///< Accepted: responses from the module's address and port.
  int64_t otherAddress;    ///< Refused: from another address.
  int64_t otherPort;       ///< Refused: from the module's address, but another port than 25000.
  int64_t notAResponse;    ///< Refused: from the module, but no response line; or empty.
  int64_t socketsOpened;   ///< 1 while its socket lived.
  ZORSystemError error;    ///< The latest failure to send, to receive or to open a socket.
} ZORUpgradeReport;

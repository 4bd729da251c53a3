#pragma once

#include <string>

namespace zor::cli {

/// Why a datagram could not be sent and what to do about it, by the system's error number, as the end of a
/// sentence: "the system has no route for it (Network is unreachable): connect ...".
std::string explainSendError(int error);

/// Likewise for a socket that could not be opened.
std::string explainSocketError(int error);

/// Likewise for a chosen port that a socket could not be bound to.
std::string explainPortError(int error);

}  // namespace zor::cli

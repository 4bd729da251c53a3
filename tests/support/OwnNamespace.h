#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace zor::test {

/// Returns true in the network namespace that `scripts/in-namespace` made for this process. A ZOR_NAMESPACE
/// that came along from another namespace does not count.
inline bool inOwnNamespace() {
  const char* const made = std::getenv("ZOR_NAMESPACE");
  char current[64];
  const ssize_t length = readlink("/proc/self/ns/net", current, sizeof current);
  return made != nullptr && length > 0 &&
         std::string_view(current, static_cast<std::size_t>(length)) == std::string_view(made);
}

/// Ends the process with exit code 2 unless `scripts/in-namespace` runs it: what it sends must not reach a
/// network.
inline void refuseOutsideNamespace() {
  if (inOwnNamespace()) return;
  std::fputs("Run this with scripts/in-namespace: it sends multicasts and broadcasts.\n", stderr);
  std::exit(2);
}

}  // namespace zor::test

#include "cli/SystemErrorText.h"

#include <cerrno>
#include <cstring>

namespace zor::cli {
namespace {

struct Advice {
  int error;
  const char* cause;
  const char* remedy;
};

constexpr char kSeeInterfaces[] =
    "connect to the modules' network or name its interface with --interface; 'zorctl interfaces' lists them";
constexpr char kAllow[] =
    "allow it in the firewall, the routes ('ip route' shows one that prohibits) and what confines zorctl";
constexpr char kFewerDescriptors[] = "close other programs or raise 'ulimit -n'";

constexpr Advice kSendAdvice[] = {
    {ENETUNREACH, "the system has no route for it", kSeeInterfaces},
    {EHOSTUNREACH, "the system cannot reach the address", kSeeInterfaces},
    {EADDRNOTAVAIL, "the interface has no address to send from", kSeeInterfaces},
    {ENETDOWN, "the network interface is down", "switch it on, then try again"},
    {ENODEV, "the network interface is gone", kSeeInterfaces},
    {ENXIO, "the network interface is gone", kSeeInterfaces},
    {EACCES, "the system does not permit it", kAllow},
    {EPERM, "the system does not permit it", kAllow},
    {EINVAL, "the system refuses the route", kSeeInterfaces},
    {ENOBUFS, "the interface's send queue is full", "use a slower --pace or wait for other traffic to end"},
    {EMSGSIZE, "the datagram is too long for the network", "use smaller length bases with --pace"},
    {EMFILE, "too many files are open", kFewerDescriptors},
    {ENFILE, "too many files are open", kFewerDescriptors},
};

constexpr Advice kSocketAdvice[] = {
    {EMFILE, "too many files are open", kFewerDescriptors},
    {ENFILE, "too many files are open", kFewerDescriptors},
    {EACCES, "the system does not permit it", "check that this user may open UDP sockets"},
    {EPERM, "the system does not permit it", "check that this user may open UDP sockets"},
    {EADDRINUSE, "no free port is left", "close other programs"},
    {ENODEV, "the network interface is gone", kSeeInterfaces},
};

constexpr Advice kPortAdvice[] = {
    {EADDRINUSE, "another program holds it", "try another port, or leave --port out"},
    {EACCES, "the system does not permit it",
     "ports below 1024 need privileges; try another port, or leave --port out"},
    {EPERM, "the system does not permit it", "try another port, or leave --port out"},
    {EMFILE, "too many files are open", kFewerDescriptors},
    {ENFILE, "too many files are open", kFewerDescriptors},
};

template <std::size_t Size>
std::string explain(int error, const Advice (&known)[Size], const char* otherRemedy) {
  const std::string system = std::string(" (") + std::strerror(error) + "): ";
  for (const Advice& advice : known) {
    if (advice.error == error) return advice.cause + system + advice.remedy;
  }
  return "the system refuses" + system + otherRemedy;
}

}  // namespace

std::string explainSendError(int error) {
  return explain(error, kSendAdvice, "check the network with 'zorctl interfaces', then try again");
}

std::string explainSocketError(int error) {
  return explain(error, kSocketAdvice, "check that this user may open UDP sockets and broadcast on them");
}

std::string explainPortError(int error) {
  return explain(error, kPortAdvice, "try another port, or leave --port out");
}

}  // namespace zor::cli

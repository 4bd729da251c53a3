#pragma once

#include <ZOR/ZorSuite.h>

#include <cstdio>
#include <cstdlib>
#include <string>

/// What the loops have in common: a delegate that says which module announced itself.
class Finder : public ZorSuiteDelegate {
 public:
  void onSearchFound(const std::string&, const std::string&, const std::string&, const std::string&,
                     const std::string&) override {}

  void onSmartFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string&,
                    const std::string&, const std::string&) override {
    std::printf("found %s at %s\n", moduleId.c_str(), MODULE_IP.c_str());
    found = true;
  }

  bool found = false;
};

/// How many seconds the run may take, from the arguments SSID PASSPHRASE [SECONDS]. Ends a wrong use.
inline int secondsOf(int argumentCount, char** arguments) {
  if (argumentCount > 2) return argumentCount > 3 ? std::atoi(arguments[3]) : 60;
  std::fprintf(stderr, "usage: %s SSID PASSPHRASE [SECONDS]\n", arguments[0]);
  std::exit(2);
}

// Provisions one module and says who it is. Usage: provision SSID PASSPHRASE [SECONDS]

#include <ZOR/ZorSuite.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

class Finder : public ZorSuiteDelegate {
 public:
  void onSearchFound(const std::string&, const std::string&, const std::string&, const std::string&,
                     const std::string&) override {}

  void onSmartFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string&,
                    const std::string&, const std::string&) override {
    // Both texts come from the network: a real program escapes them before it shows them.
    std::printf("found %s at %s\n", moduleId.c_str(), MODULE_IP.c_str());
    found = true;
  }

  bool found = false;
};

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount < 3) {
    std::fprintf(stderr, "usage: %s SSID PASSPHRASE [SECONDS]\n", arguments[0]);
    return 2;
  }
  const int seconds = argumentCount > 3 ? std::atoi(arguments[3]) : 60;
  const auto finder = std::make_shared<Finder>();
  ZorSuite suite;
  suite.setDelegate(finder);
  suite.SmartConfigOnlineListen(kZorAnnouncementPort);
  suite.SmartConfigV5_Start(arguments[1], arguments[2], seconds * 1000);
  while (!finder->found && (s_threadSmartConfigMc || s_threadSmartConfigBc)) ZorRunMainQueue(100);
  suite.SmartConfigStop();
  ZorRunMainQueue(0);
  return finder->found ? 0 : 1;
}

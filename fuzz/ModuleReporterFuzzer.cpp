#include <memory>
#include <string>

#include "ZOR/ZorSuite.h"
#include "ZOR/discovery/ModuleReporter.h"
#include "fuzz/Fuzz.h"

namespace {

class BoundedDelegate : public ZorSuiteDelegate {
 public:
  using Text = const std::string&;

  void onSearchFound(Text id, Text address, Text version, Text capabilities, Text extension) override {
    require(id.size() <= 19 && address.size() <= 15 && version.size() <= 19);
    require(capabilities.size() <= 39 && extension.size() <= 399);
    ++heard;
  }
  void onSmartFound(Text id, Text address, Text version, Text capabilities, Text extension) override {
    onSearchFound(id, address, version, capabilities, extension);
  }

  int heard = 0;
};

/// One listener or search, to which datagrams arrive.
class Session {
 public:
  explicit Session(bool listener)
      : reporter_(listener ? zor::kNotificationTag : zor::kResponseTag, slot_,
                  listener ? &ZorSuiteDelegate::onSmartFound : &ZorSuiteDelegate::onSearchFound) {
    slot_->set(delegate_);
  }

  /// Returns how often the delegate was called for the datagram.
  int arrive(const std::string& datagram, const std::string& address) {
    datagram.copy(reporter_.line(), datagram.size());
    reporter_.line()[datagram.size()] = '\0';
    address.copy(reporter_.ip(), address.size());
    reporter_.ip()[address.size()] = '\0';
    delegate_->heard = 0;
    reporter_.judge(static_cast<std::int32_t>(datagram.size()));
    require(ZorRunMainQueue(0) == delegate_->heard);
    return delegate_->heard;
  }

 private:
  std::shared_ptr<zor::DelegateSlot> slot_ = std::make_shared<zor::DelegateSlot>();
  std::shared_ptr<BoundedDelegate> delegate_ = std::make_shared<BoundedDelegate>();
  zor::ModuleReporter reporter_;
};

}  // namespace

/// First byte: listener or search. The rest: datagrams from two addresses, parted by line feeds whose
/// preceding byte chooses the address.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 1) return 0;
  Session session(bytes[0] % 2 == 0);
  const std::string all(reinterpret_cast<const char*>(bytes + 1), size - 1);
  for (std::size_t at = 0; at < all.size();) {
    const std::size_t end = std::min(all.find('\n', at), all.size() - 1) + 1;
    const std::string datagram = all.substr(at, std::min<std::size_t>(end - at, zor::kLongestLine));
    const char* const address = all[end - 1] % 2 == 0 ? "10.0.0.1" : "255.255.255.255";
    require(session.arrive(datagram, address) <= 1);
    require(session.arrive(datagram, address) == 0);
    at = end;
  }
  return 0;
}

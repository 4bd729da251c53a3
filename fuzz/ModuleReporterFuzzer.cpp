#include <algorithm>
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
                  listener ? &ZorSuiteDelegate::onSmartFound : &ZorSuiteDelegate::onSearchFound, counters_) {
    slot_->set(delegate_);
  }

  /// Returns how often the delegate was called for the datagram.
  int arrive(const std::string& datagram, const std::string& address) {
    std::string line = datagram;  // A NUL of its own after the last byte.
    delegate_->heard = 0;
    reporter_.take(line.data(), static_cast<std::int32_t>(line.size()), address.c_str());
    require(ZorRunMainQueue(0) == delegate_->heard);
    return delegate_->heard;
  }

 private:
  std::shared_ptr<zor::DelegateSlot> slot_ = std::make_shared<zor::DelegateSlot>();
  std::shared_ptr<BoundedDelegate> delegate_ = std::make_shared<BoundedDelegate>();
  zor::LineCounters counters_;
  zor::ModuleReporter reporter_;
};

}  // namespace

/// The first byte chooses listener or search. The rest is datagrams, separated by line feeds. The byte before
/// its last one chooses which of two addresses a datagram comes from.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 1) return 0;
  Session session(bytes[0] % 2 == 0);
  const std::string all(reinterpret_cast<const char*>(bytes + 1), size - 1);
  for (std::size_t at = 0; at < all.size();) {
    const std::size_t end = std::min(all.find('\n', at), all.size() - 1) + 1;
    const std::string datagram = all.substr(at, std::min<std::size_t>(end - at, zor::kMaxLineLength));
    const char* const address =
        all[std::max<std::size_t>(end, 2) - 2] % 2 == 0 ? "10.0.0.1" : "255.255.255.255";
    require(session.arrive(datagram, address) <= 1);
    require(session.arrive(datagram, address) == 0);
    at = end;
  }
  return 0;
}

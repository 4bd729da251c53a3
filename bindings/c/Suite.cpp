#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "bindings/c/Support.h"

namespace zor::c {
namespace {

/// The application's callbacks as the suite's delegate.
class Callbacks final : public ZorSuiteDelegate {
 public:
  using Text = const std::string&;

  Callbacks(const zor_callbacks& callbacks, Held user) : callbacks_(callbacks), user_(std::move(user)) {}

  void onSearchFound(Text id, Text ip, Text version, Text capabilities, Text extension) override {
    report(callbacks_.on_search_found, id, ip, version, capabilities, extension);
  }
  void onSmartFound(Text id, Text ip, Text version, Text capabilities, Text extension) override {
    report(callbacks_.on_smart_found, id, ip, version, capabilities, extension);
  }

 private:
  void report(zor_module_callback callback, Text id, Text ip, Text version, Text capabilities,
              Text extension) const {
    const zor_module module = {sizeof module,   textOf(id),           textOf(ip),
                               textOf(version), textOf(capabilities), textOf(extension)};
    if (callback != nullptr) callback(user_.get(), &module);
  }

  zor_callbacks callbacks_;
  Held user_;
};

/// The size of the struct in the first version of this interface.
constexpr std::size_t kFirstCallbacksSize =
    offsetof(zor_callbacks, on_search_found) + sizeof(zor_callbacks::on_search_found);

/// What this version knows of the application's struct; what that one lacks is zero.
zor_callbacks copyOf(const zor_callbacks& callbacks) {
  zor_callbacks copy{};
  std::memcpy(&copy, &callbacks, std::min(callbacks.size, sizeof copy));
  return copy;
}

/// False if the suite found no memory for the place of a delegate.
bool takesDelegate(ZorSuite& suite) {
  const Held none = hold(nullptr, nullptr);
  suite.setDelegate(std::make_shared<Callbacks>(zor_callbacks{}, none));
  const bool taken = suite.delegate() != nullptr;
  suite.setDelegate(nullptr);
  return taken;
}

}  // namespace
}  // namespace zor::c

std::int32_t zor_suite_create(zor_suite** suite) {
  if (suite == nullptr) return ZOR_ERROR_NULL;
  *suite = nullptr;
  return zor::c::guarded([suite]() -> std::int32_t {
    auto created = std::make_unique<zor_suite>();
    if (!zor::c::takesDelegate(created->suite)) return ZOR_ERROR_MEMORY;
    *suite = created.release();
    return ZOR_OK;
  });
}

std::int32_t zor_suite_free(zor_suite* suite) {
  if (suite == nullptr) return ZOR_ERROR_NULL;
  const std::unique_ptr<zor_suite> owned(suite);
  owned->suite.setDelegate(nullptr);  // The workers must not keep the callbacks.
  return ZOR_OK;
}

std::int32_t zor_suite_set_callbacks(zor_suite* suite, const zor_callbacks* callbacks) {
  return zor::c::guarded([=]() -> std::int32_t {
    std::shared_ptr<ZorSuiteDelegate> delegate;
    if (callbacks != nullptr) {
      if (callbacks->size < zor::c::kFirstCallbacksSize) return ZOR_ERROR_ARGUMENT;
      const zor_callbacks known = zor::c::copyOf(*callbacks);
      delegate = std::make_shared<zor::c::Callbacks>(known, zor::c::hold(known.user, known.destroy));
    }
    if (suite == nullptr) return ZOR_ERROR_NULL;
    suite->suite.setDelegate(std::move(delegate));
    return ZOR_OK;
  });
}

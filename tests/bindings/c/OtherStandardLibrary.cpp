// Provisions a module from a program with libc++, though the library was built with libstdc++: exceptions are
// thrown and caught on both sides, and libstdc++ must not be in the process. Usage: as
// examples/c/provision.c.

#include <zorsuite.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#ifndef _LIBCPP_VERSION
#error "Compile this with libc++"
#endif

namespace {

void onFound(void* user, const zor_module* module) {
  try {
    throw std::runtime_error(std::string(module->id.bytes, module->id.length));
  } catch (const std::exception& thrown) {
    *static_cast<std::string*>(user) = thrown.what();
  }
}

/// The library throws and catches an exception of its own for this.
bool refusalWorks() {
  zor_set_main_queue([](void*, zor_closure*) { return 0; }, nullptr, nullptr);
  const auto code = zor_post_to_main_queue([](void*) {}, nullptr, nullptr);
  zor_set_main_queue(nullptr, nullptr, nullptr);
  return code == ZOR_ERROR_SYSTEM;
}

bool hasLibstdcxx() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find("libstdc++") != std::string::npos) return true;
  }
  return false;
}

}  // namespace

int main(int, char** arguments) {
  const std::string ssid = arguments[1], passPhrase = arguments[2];
  std::string found;
  zor_suite* suite = nullptr;
  if (hasLibstdcxx() || !refusalWorks() || zor_suite_create(&suite) != ZOR_OK) return 3;
  const zor_callbacks callbacks = {sizeof callbacks, &found, nullptr, onFound, nullptr};
  zor_suite_set_callbacks(suite, &callbacks);
  zor_smart_config_online_listen(suite, ZOR_C_ANNOUNCEMENT_PORT);
  zor_smart_config_v5_start(suite, ssid.data(), ssid.size(), passPhrase.data(), passPhrase.size(), 20000);
  while (found.empty() && zor_worker_is_running(ZOR_WORKER_MULTICAST) == 1) zor_run_main_queue(100);
  zor_smart_config_stop(suite);
  zor_suite_free(suite);
  std::cout << "found " << found << '\n';
  return found.empty() ? 1 : 0;
}

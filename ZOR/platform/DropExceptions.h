#pragma once

#include <utility>

#if defined(__GLIBCXX__)
#include <cxxabi.h>
#endif

namespace zor {

/// Calls `function`, which belongs to the application, and drops what it throws.
///
/// `pthread_exit` and `pthread_cancel` pass, where they unwind the stack: libstdc++ ends the process when
/// such an unwinding is caught and goes no further. Other libraries do not catch it, or their systems do not
/// unwind.
template <class Function>
void callAndDropExceptions(Function&& function) {
  try {
    std::forward<Function>(function)();
#if defined(__GLIBCXX__)
  } catch (const abi::__forced_unwind&) {
    throw;
#endif
  } catch (...) {  // The application's failure stays the application's.
  }
}

}  // namespace zor

#pragma once

#include <exception>
#include <utility>

namespace zor {

/// Calls `function`, which belongs to the application, and drops what it throws.
///
/// `pthread_exit` and `pthread_cancel` pass, where they unwind the stack: libstdc++ ends the process when
/// such an unwinding is caught and goes no further. It is no C++ exception, so there is no current one.
template <class Function>
void callAndDropExceptions(Function&& function) {
  try {
    std::forward<Function>(function)();
  } catch (...) {  // The application's failure stays the application's.
    if (std::current_exception() == nullptr) throw;
  }
}

}  // namespace zor

#pragma once

namespace zor {

/// Storage of a process-wide object that has no destructor at exit: a process may end while
/// workers run, and whatever a worker touches must then still be whole.
template <class T>
union NeverDestroyed {
  constexpr NeverDestroyed() : value() {}
  ~NeverDestroyed() {}  // NOLINT(modernize-use-equals-default): = default would delete it
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;

  T value;
};

}  // namespace zor

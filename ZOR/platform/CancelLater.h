#pragma once

#include <pthread.h>

namespace zor {

/// Holds back a `pthread_cancel` of the calling thread for one scope, in which a system call would act on it
/// and leave the work half done. It acts at the thread's next cancellation point after the scope.
class CancelLater {
 public:
#if defined(__ANDROID__)  // It has no pthread_cancel.
  CancelLater() {}
#else
  CancelLater() {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previous_);
  }
  ~CancelLater() {
    pthread_setcancelstate(previous_, nullptr);
  }
#endif
  CancelLater(const CancelLater&) = delete;
  CancelLater& operator=(const CancelLater&) = delete;

#if !defined(__ANDROID__)
 private:
  int previous_ = PTHREAD_CANCEL_ENABLE;
#endif
};

}  // namespace zor

#include <sys/time.h>

#include <chrono>
#include <ctime>

// Loaded into a program ahead of the C library: a wall clock that goes forward by 20 s in its second second.
extern "C" int gettimeofday(timeval* now, void*) noexcept {
  using std::chrono::steady_clock;
  static const steady_clock::time_point start = steady_clock::now();
  timespec real{};
  clock_gettime(CLOCK_REALTIME, &real);
  *now = {real.tv_sec, real.tv_nsec / 1000};
  if (steady_clock::now() - start > std::chrono::seconds(1)) now->tv_sec += 20;
  return 0;
}

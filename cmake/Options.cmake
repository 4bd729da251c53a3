include(CMakeDependentOption)
include(GNUInstallDirs)

# A project that takes this one in with add_subdirectory wants the library alone.
option(ZOR_BUILD_TOOLS "Build zorctl" ${PROJECT_IS_TOP_LEVEL})
# It uses Linux's packet sockets and event descriptors.
cmake_dependent_option(ZOR_BUILD_RECEIVER "Build the receiver, and zorctl with decode and module" ON
                       "ZOR_BUILD_TOOLS;CMAKE_SYSTEM_NAME STREQUAL Linux" OFF)
option(ZOR_BUILD_C "Build the C interface" ${PROJECT_IS_TOP_LEVEL})
option(ZOR_BUILD_JAVA "Build the Java interface; needs a JDK, except for Android" OFF)
option(ZOR_INSTALL "Install the library, its headers and its package" ${PROJECT_IS_TOP_LEVEL})
option(ZOR_BUILD_OBJC "Build the Objective-C binding; needs Foundation, Apple's or GNUstep's" OFF)
# The tests reach inside the library, which a shared build hides.
cmake_dependent_option(ZOR_BUILD_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL}
                       "NOT BUILD_SHARED_LIBS" OFF)
option(ZOR_BUILD_FUZZERS "Build the fuzzers; needs clang" OFF)
option(ZOR_BUILD_BENCH "Build the benchmarks" OFF)
option(ZOR_WARNINGS_AS_ERRORS "Fail the build on a warning" OFF)
set(ZOR_GOOGLETEST_SOURCE "" CACHE PATH "GoogleTest's source, for builds that the installed one does not fit")
set(ZOR_SANITIZE "" CACHE STRING "Sanitizers of the whole build, such as address,undefined or thread")

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

# Such targets as 32-bit MIPS and ARMv5 leave these to a library.
include(CheckCXXSourceCompiles)
check_cxx_source_compiles([[
#include <atomic>
#include <cstdint>
std::atomic<std::int64_t> number{0};
int main() { return number.fetch_add(1) == 0 ? 0 : 1; }
]] ZOR_COMPILER_HAS_64_BIT_ATOMICS)

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Kind of build" FORCE)
endif()
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_CXX_STANDARD 20)
  set(CMAKE_CXX_STANDARD_REQUIRED ON)
  set(CMAKE_CXX_EXTENSIONS OFF)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  find_program(ZOR_CCACHE ccache)
  if(ZOR_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${ZOR_CCACHE})
  endif()
endif()

# Warnings for our own code; never handed on to those who use the library.
add_library(zor_warnings INTERFACE)
target_compile_options(zor_warnings INTERFACE
  -Wall -Wextra -Wconversion -Wshadow
  $<$<BOOL:${ZOR_WARNINGS_AS_ERRORS}>:-Werror>
  # GCC 12 takes some insertions into a std::string for overlapping copies (its bug 105651).
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
  $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wthread-safety>)

if(ZOR_SANITIZE)
  add_compile_options(-fsanitize=${ZOR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZOR_SANITIZE})
endif()

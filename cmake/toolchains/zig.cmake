# Builds for ZOR_ZIG_TARGET (aarch64-macos, x86_64-macos or aarch64-linux-musl) with the compiler of
# scripts/install-zig, whose folder ZOR_ZIG names.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZOR_ZIG ZOR_ZIG_TARGET)

string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR "${ZOR_ZIG_TARGET}")
if(ZOR_ZIG_TARGET MATCHES "-macos")
  set(CMAKE_SYSTEM_NAME Darwin)
  set(CMAKE_CXX_FLAGS_INIT "-isystem ${CMAKE_CURRENT_LIST_DIR}/macos")
else()
  set(CMAKE_SYSTEM_NAME Linux)
  set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR}-static)
endif()

foreach(language IN ITEMS C CXX)
  set(CMAKE_${language}_COMPILER_TARGET ${ZOR_ZIG_TARGET})
endforeach()
set(CMAKE_C_COMPILER ${ZOR_ZIG}/zig-cc)
set(CMAKE_CXX_COMPILER ${ZOR_ZIG}/zig-c++)
set(CMAKE_AR ${ZOR_ZIG}/zig-ar CACHE FILEPATH "")
set(CMAKE_RANLIB ${ZOR_ZIG}/zig-ranlib CACHE FILEPATH "")

# This machine's headers and libraries are not the target's.
set(CMAKE_FIND_ROOT_PATH ${ZOR_CROSS_PACKAGES})
foreach(kind IN ITEMS INCLUDE LIBRARY PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()

# Builds for Android 8.0 with the NDK that the environment variable ANDROID_NDK_HOME names.
if(NOT DEFINED ENV{ANDROID_NDK_HOME})
  message(FATAL_ERROR "Set ANDROID_NDK_HOME to the folder of the Android NDK")
endif()
set(ANDROID_ABI arm64-v8a CACHE STRING "The processor: arm64-v8a, armeabi-v7a, x86 or x86_64")
set(ANDROID_PLATFORM android-26 CACHE STRING "The oldest Android that the library runs on")
include($ENV{ANDROID_NDK_HOME}/build/cmake/android.toolchain.cmake)

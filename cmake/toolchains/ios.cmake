# Builds for iOS 14 with Xcode's compiler, on a Mac. With CMAKE_OSX_SYSROOT=iphonesimulator, for the simulator.
set(CMAKE_SYSTEM_NAME iOS)
set(CMAKE_OSX_DEPLOYMENT_TARGET 14.0 CACHE STRING "The oldest iOS that the library runs on")
set(CMAKE_OSX_SYSROOT iphoneos CACHE STRING "The SDK: iphoneos or iphonesimulator")
set(CMAKE_OSX_ARCHITECTURES arm64 CACHE STRING "The processors")

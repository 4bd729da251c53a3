#pragma once

namespace zor::java {

/// Makes Java's executor run the library's callbacks. False without memory.
bool takeOverMainQueue();

}  // namespace zor::java

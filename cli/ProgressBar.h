#pragma once

#include <string>

namespace zor::cli {

/// A bar of hash marks and the number behind it, such as "[#####---------------]  25 %". `percent` is cut to
/// 0..100.
std::string progressBar(int percent);

}  // namespace zor::cli

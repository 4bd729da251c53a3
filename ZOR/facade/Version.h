#pragma once

/// The library's version, the one place that holds it.
#define ZOR_VERSION "3.5.1"

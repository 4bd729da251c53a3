#include <gtest/gtest.h>

#include "tests/support/OwnNamespace.h"

/// Runs a test program. They all refuse outside a namespace, so that none that sends is forgotten.
int main(int argc, char** argv) {
  zor::test::refuseOutsideNamespace();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}

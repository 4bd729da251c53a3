#pragma once

namespace zor::receiver {

/// The base at which most bytes agree, and how many agree at the best of the others.
struct BestBase {
  int base = 0;
  int agreed = 0;
  int agreedElsewhere = 0;
};

/// Searches the bases from `first` to `last`. `agreement` returns how many bytes agree at a base; less than 1
/// counts as none.
template <class Agreement>
BestBase findBestBase(int first, int last, const Agreement& agreement) {
  BestBase best;
  for (int base = first; base <= last; ++base) {
    const int agreed = agreement(base);
    if (agreed > best.agreed) {
      best = {base, agreed, best.agreed};
    } else if (agreed > best.agreedElsewhere) {
      best.agreedElsewhere = agreed;
    }
  }
  return best;
}

}  // namespace zor::receiver

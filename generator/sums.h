// The order of additions in the sum of a node of complex values: neighbours are added up, then neighbours of the results; the
// last of an odd number waits. With the rule of a pair this is what a sum means, to the last bit and the sign of a zero:
// every lowering and the interpreter go by it.
//
// A pair is added as its signed values stand: a term's quarter turns are made first, each component is then one addition or
// subtraction. But two terms that are both subtracted are added, and their sum is subtracted where it goes; so 0 - (a + b) and
// -(a + b) are one value. (In the flows of real data sums go from the left: see rdft/lower.cpp.)
#pragma once

#include <utility>
#include <vector>

namespace xfm {

template <class T, class Add>
T summed(std::vector<T> terms, Add add) {
  while (terms.size() > 1) {
    std::vector<T> sums;
    for (size_t i = 0; i + 1 < terms.size(); i += 2) sums.push_back(add(terms[i], terms[i + 1]));
    if (terms.size() % 2) sums.push_back(terms.back());
    terms = std::move(sums);
  }
  return terms.front();
}

}  // namespace xfm

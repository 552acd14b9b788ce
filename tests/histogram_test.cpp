#include "qel/histogram.h"

#include <gtest/gtest.h>

#include <limits>

#include "facts.h"

namespace {

using qel::misc::histogram;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

TEST(histogram, counts_every_sample_once) {
  for (unsigned bins : {1U, 3U, 7U, 49U}) {  // where quotients round over the end of a bin
    histogram H(0.1, 0.7, bins);
    for (unsigned k = 0; k <= bins; ++k) H.process(H.bin_lower(k));
    for (unsigned k = 0; k < bins; ++k) EXPECT_EQ(H.bin(k), k + 1 == bins ? 2U : 1U) << bins << ' ' << k;
    for (const double outside : {0.0, -1.0, 0.8, infinity, not_a_number}) H.process(outside);
    histogram copy(H);
    H.clear();
    EXPECT_EQ(H.count() + H.bin(bins - 1) + H.not_a_number(), 0U);
    EXPECT_ALL(copy.below() == 2, copy.inside() == bins + 1, copy.above() == 2, copy.not_a_number() == 1);
    EXPECT_ALL(copy.min() == -1, copy.max() == infinity, copy.bin(bins - 1) == 2, H.mean() == 0);
  }
  for (const double upper : {1.0, 0.0, infinity, not_a_number}) {  // no range, no bins
    histogram none(1, upper, 4);
    none.process(1);
    EXPECT_ALL(none.bins() == 0, none.count() == 1, none.mean() == 1);
  }
  EXPECT_EQ(histogram(-1e308, 1e308, 4).bins(), 0U);  // no width
}

}  // namespace

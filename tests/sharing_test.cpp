// Every call of calls.cpp with an output that shares memory with an input, or with another output, where it grows over
// it: the result is the same as without, and what the call only reads stays as it is.
#include <gtest/gtest.h>

#include <iostream>

#include "calls.h"

namespace {

using namespace qel::gridwork;

TEST(sharing, no_output_writes_over_what_is_read) {
  unsigned pairs = 0;
  for (unsigned type = ELT_NODE; type <= ELT_HEXA27; ++type) {
    const auto in = make_inputs(element_type(type), 2 + type % 2, 50);
    for_each_call(*in, [&](const trial& clean, call_body body, unsigned turn) {
      for (const bool borrowed : {false, true}) {
        for (unsigned number = 0;; ++number, ++pairs) {
          sharing shared(*in, number, borrowed);
          trial t(turn, {}, &clean.result, &shared);
          body(t, *in);
          if (!shared.found()) break;
          ASSERT_EQ(t.broken, nullptr) << t.broken << ": " << clean.name << ", pair " << number << ", type " << type
                                       << (borrowed ? ", memory of a caller's" : "");
        }
      }
    });
  }
  std::cout << pairs << " pairs\n";
  EXPECT_GE(pairs, 5000U);
}

}  // namespace

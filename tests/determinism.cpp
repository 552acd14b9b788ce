// Prints every call of calls.cpp with a hash of its results. Builds by other compilers and at different optimisation
// levels must print the same (scripts/check.sh compares two); exports_test.sh finds functions that nobody calls.
#include <cstdio>
#include <map>

#include "calls.h"

int main() {
  std::map<std::string, digest> results;
  for (unsigned run = 0; run < 2 * qel::gridwork::ELT_HEXA27; ++run) {
    const auto type = static_cast<qel::gridwork::element_type>(1 + run / 2);
    const auto in = make_inputs(type, 2 + run % 2, 70);
    for_each_call(*in, [&](const trial& t, call_body, unsigned) {
      digest& d = results[t.name];
      d.add(t.result.code), d.add(t.result.arguments);
    });
  }
  for (const auto& [call, d] : results)
    std::printf("%016llx %s\n", static_cast<unsigned long long>(d.value), call.c_str());
}

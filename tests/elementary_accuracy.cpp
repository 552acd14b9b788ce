// How far off the elementary functions are: elementary_accuracy FUNCTION [POINTS] [SEED]. Every point is compared with the
// C library's long double, which must have 64 bits; what comes near the largest error so far, also with 113 bits.
#include <quadmath.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "core/elementary.h"

namespace {

using namespace qel::gridwork::detail;

class generator {
 public:
  explicit generator(std::uint64_t seed) : random_(seed) {}

  unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }

  /// A number of either sign and any mantissa.
  double number(int least_exponent, int largest_exponent) {
    const double mantissa = 1 + static_cast<double>(random_() >> 12) * 0x1p-52;
    const int exponent = least_exponent + static_cast<int>(random_() % unsigned(largest_exponent - least_exponent + 1));
    return std::ldexp(random_() % 2 == 0 ? mantissa : -mantissa, exponent);
  }

 private:
  std::mt19937_64 random_;
};

using extended = long double;

struct point {
  double x, y;
};

point angle(generator& g) {
  const unsigned kind = g.below(4);
  return {kind == 0 ? g.number(-12, 1023) : kind == 1 ? g.number(-12, 3) : g.number(-3, 12), 0};
}

point positive(generator& g) { return {std::abs(g.below(2) == 0 ? g.number(-2, 2) : g.number(-1022, 1023)), 0}; }

point power(generator& g) {
  const double x = g.number(-20, 9);
  return {std::abs(x) < 708 ? x : x / 2, 0};
}

point legs(generator& g) {
  const int exponent = static_cast<int>(g.below(1800)) - 900;
  return {g.number(exponent, exponent), g.number(exponent - static_cast<int>(g.below(2) == 0 ? 2 : 60), exponent)};
}

struct function {
  const char* name;
  point (*choose)(generator&);
  double (*ours)(point);
  extended (*longer)(point);
  __float128 (*longest)(point);
};

const function functions[] = {
    {"sine", angle, [](point p) { return sine_and_cosine(p.x).sine; }, [](point p) { return std::sin(extended(p.x)); },
     [](point p) { return sinq(p.x); }},
    {"cosine", angle, [](point p) { return sine_and_cosine(p.x).cosine; },
     [](point p) { return std::cos(extended(p.x)); }, [](point p) { return cosq(p.x); }},
    {"logarithm", positive, [](point p) { return logarithm(p.x); }, [](point p) { return std::log(extended(p.x)); },
     [](point p) { return logq(p.x); }},
    {"exponential", power, [](point p) { return exponential(p.x); }, [](point p) { return std::exp(extended(p.x)); },
     [](point p) { return expq(p.x); }},
    {"hypotenuse", legs, [](point p) { return hypotenuse(p.x, p.y); },
     [](point p) { return std::sqrt(extended(p.x) * p.x + extended(p.y) * p.y); },
     [](point p) { return sqrtq(__float128(p.x) * p.x + __float128(p.y) * p.y); }},
};

/// In units of the last place of the truth.
template <class Number>
double ulps_off(double x, Number truth) {
  const int exponent = std::max(std::ilogb(static_cast<double>(truth)), -1022);
  return std::abs(static_cast<double>((truth - x) * std::ldexp(extended(1), 52 - exponent)));
}

void measure(const function& f, std::uint64_t points, std::uint64_t seed) {
  generator random(seed);
  double largest = 0;
  point at = {};
  for (std::uint64_t k = 0; k < points; ++k) {
    const point p = f.choose(random);
    const double value = f.ours(p);
    if (ulps_off(value, f.longer(p)) < largest - 0.01) continue;
    const double off = ulps_off(value, f.longest(p));
    if (off > largest) largest = off, at = p;
  }
  std::printf("%s: %llu points, at most %.4f ulp off, at %a %a\n", f.name, static_cast<unsigned long long>(points),
              largest, at.x, at.y);
}

}  // namespace

int main(int argc, char** argv) {
  for (const function& f : functions) {
    if (argc > 1 && std::strcmp(argv[1], f.name) != 0) continue;
    measure(f, argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1000000,
            argc > 3 ? std::strtoull(argv[3], nullptr, 10) : 1);
  }
}

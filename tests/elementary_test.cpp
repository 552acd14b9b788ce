// Sines, cosines, logarithms, exponentials and hypotenuses against known digits and against the C library's longer numbers.
#include "core/elementary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace qel::gridwork::detail {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// How far off, in units of the last place of the truth.
double ulps_off(double x, long double truth) {
  const int exponent = std::max(std::ilogb(truth), -1022);
  return static_cast<double>(std::abs(x - truth) / std::ldexp(1.0L, exponent - 52));
}

struct known_angle {
  double angle, sine, cosine;
};

// The first four are as near to a multiple of a quarter turn as a double can be.
constexpr known_angle known_angles[] = {
    {0x1.6ac5b262ca1ffp+849, 0x1.0000000000000p+0, -0x1.14ae72e6ba22fp-61},
    {0x1.6ac5b262ca1ffp+850, -0x1.14ae72e6ba22fp-60, -0x1.0000000000000p+0},
    {0x1.6c6cbc45dc8dep+5, 0x1.0000000000000p+0, -0x1.6d61b58c99c43p-61},
    {0x1.921fb54442d18p+0, 0x1.0000000000000p+0, 0x1.1a62633145c07p-54},
    {0x1.0000000000000p-1, 0x1.eaee8744b05f0p-2, 0x1.c1528065b7d50p-1},
    {0x1.8000000000000p+1, 0x1.210386db6d55bp-3, -0x1.fae04be85e5d2p-1},
    {0x1.86a0000000000p+16, 0x1.24daa9c527e96p-5, -0x1.ffac3841b3da7p-1},
    {0x1.0f0cf064dd592p+73, -0x1.b453ab76bf397p-1, 0x1.0be2cef01c8f4p-1},
    {0x1.fffffffffffffp+1023, 0x1.452fc98b34e97p-8, -0x1.fffe62ecfab75p-1},
};

TEST(sine_and_cosine, known_digits) {
  for (const known_angle& k : known_angles) {
    for (const double sign : {1.0, -1.0}) {
      const sine_cosine result = sine_and_cosine(sign * k.angle);
      EXPECT_LE(ulps_off(result.sine, sign * k.sine), 1) << k.angle;
      EXPECT_LE(ulps_off(result.cosine, k.cosine), 1) << k.angle;
    }
  }
}

TEST(sine_and_cosine, what_has_no_rounding) {
  EXPECT_EQ(sine_and_cosine(0).cosine, 1);
  EXPECT_TRUE(std::signbit(sine_and_cosine(-0.0).sine));
  EXPECT_FALSE(std::signbit(sine_and_cosine(0.0).sine));
  for (const double tiny : {1e-300, -5e-324}) EXPECT_EQ(sine_and_cosine(tiny).sine, tiny);
  for (const double none : {infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_TRUE(std::isnan(sine_and_cosine(none).sine)) << none;
    EXPECT_TRUE(std::isnan(sine_and_cosine(none).cosine)) << none;
  }
}

TEST(logarithm, known_digits) {
  constexpr struct {
    double x, log;
  } known[] = {
      {0x1p-1022, -0x1.6232bdd7abcd2p+9},
      {0x1p-1074, -0x1.74385446d71c3p+9},
      {0x1.fffffffffffffp+1023, 0x1.62e42fefa39efp+9},
      {0x1.fffffffffffffp-1, -0x1.0000000000000p-53},
      {0x1.0000000000001p+0, 0x1.fffffffffffffp-53},
      {0x1.4p+3, 0x1.26bb1bbb55516p+1},
      {0x1.fcp-1, -0x1.010157588de71p-7},
      {0x1.fep-1, -0x1.0080559588b35p-8},
      {0x1.02p+0, 0x1.fe02a6b106789p-8},
  };
  for (const auto& k : known) EXPECT_LE(ulps_off(logarithm(k.x), k.log), 1) << k.x;
  EXPECT_EQ(logarithm(1), 0);
  EXPECT_EQ(logarithm(infinity), infinity);
  EXPECT_EQ(logarithm(0), -infinity);
  EXPECT_TRUE(std::isnan(logarithm(-1)));
  EXPECT_TRUE(std::isnan(logarithm(std::numeric_limits<double>::quiet_NaN())));
}

TEST(exponential, known_digits) {
  constexpr struct {
    double x, power;
  } known[] = {
      {1, 0x1.5bf0a8b145769p+1},
      {-1, 0x1.78b56362cef38p-2},
      {700, 0x1.d945df4f8ec8ep+1009},
      {-700, 0x1.14f2b0fb9307fp-1010},
      {1e-10, 0x1.000000006df38p+0},
      {0x1.62e42fefa39efp-2, 0x1.6a09e667f3bccp+0},
      {0x1.62e42fefa39efp+9, 0x1.fffffffffff2ap+1023},
  };
  for (const auto& k : known) EXPECT_LE(ulps_off(exponential(k.x), k.power), 1) << k.x;
  EXPECT_EQ(exponential(0), 1);
  EXPECT_EQ(exponential(710), infinity);
  EXPECT_EQ(exponential(-745.5), 0);
  EXPECT_EQ(exponential(-infinity), 0);
  EXPECT_TRUE(std::isnan(exponential(std::numeric_limits<double>::quiet_NaN())));
}

TEST(hypotenuse, extremes) {
  constexpr double huge = std::numeric_limits<double>::max();
  EXPECT_EQ(hypotenuse(3, -4), 5);
  EXPECT_EQ(hypotenuse(3e-310, 4e-310), 5e-310);
  EXPECT_EQ(hypotenuse(huge / 2, 0), huge / 2);
  EXPECT_EQ(hypotenuse(huge, huge), infinity);
  EXPECT_EQ(hypotenuse(0, -0.0), 0);
  EXPECT_EQ(hypotenuse(-infinity, std::numeric_limits<double>::quiet_NaN()), infinity);
  EXPECT_TRUE(std::isnan(hypotenuse(1, std::numeric_limits<double>::quiet_NaN())));
  EXPECT_TRUE(std::isnan(hypotenuse(std::numeric_limits<double>::quiet_NaN(), 1)));
}

TEST(elementary, as_the_c_library_with_more_digits) {
  if (std::numeric_limits<long double>::digits < 64) GTEST_SKIP() << "no long double of more than 53 bits";
#if defined(_WIN32)
  GTEST_SKIP() << "sines of long doubles are the processor's, which are wrong for large angles";
#endif
  std::mt19937_64 random(1);
  const auto number = [&](int exponents) {
    const double mantissa = 1 + static_cast<double>(random() >> 11) * 0x1p-53;
    return std::ldexp(mantissa, static_cast<int>(random() % static_cast<unsigned>(2 * exponents)) - exponents);
  };
  double sine = 0, cosine = 0, log = 0, power = 0, root = 0;
  for (int i = 0; i < 200000; ++i) {
    const double x = number(i % 2 == 0 ? 4 : 30), y = number(i % 2 == 0 ? 2 : 1000), z = number(40);
    const sine_cosine result = sine_and_cosine(x);
    sine = std::max(sine, ulps_off(result.sine, std::sin(static_cast<long double>(x))));
    cosine = std::max(cosine, ulps_off(result.cosine, std::cos(static_cast<long double>(x))));
    log = std::max(log, ulps_off(logarithm(y), std::log(static_cast<long double>(y))));
    const double exponent = i % 2 == 0 ? z : 700 * std::sin(z);
    if (std::abs(exponent) < 700) {
      power = std::max(power, ulps_off(exponential(exponent), std::exp(static_cast<long double>(exponent))));
    }
    root = std::max(root, ulps_off(hypotenuse(x, z), std::hypot(static_cast<long double>(x), z)));
  }
  EXPECT_LE(sine, 0.82);
  EXPECT_LE(cosine, 0.82);
  EXPECT_LE(log, 0.76);
  EXPECT_LE(power, 0.80);
  EXPECT_LE(root, 0.51);
}

}  // namespace
}  // namespace qel::gridwork::detail

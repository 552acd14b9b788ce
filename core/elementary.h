// Elementary functions of our own: those of C libraries differ in last bits, from library to library and from processor
// to processor. Less than 1 ulp off; how much less stands at each, as measured against quadruple precision.
#ifndef QEL_GRIDWORK_CORE_ELEMENTARY_H
#define QEL_GRIDWORK_CORE_ELEMENTARY_H

namespace qel::gridwork::detail {

struct sine_cosine {
  double sine;
  double cosine;
};

/// Both of an angle of any size, within 0.80 ulp. NaN for angles that are not finite.
sine_cosine sine_and_cosine(double angle) noexcept;

/// The natural logarithm, within 0.75 ulp. -infinity of 0, NaN below.
double logarithm(double x) noexcept;

/// e^x, within 0.80 ulp where it is no subnormal number. Infinity from about 709.8 on.
double exponential(double x) noexcept;

/// The root of a^2 + b^2, within 0.51 ulp. Infinity where either is infinite.
double hypotenuse(double a, double b) noexcept;

}  // namespace qel::gridwork::detail

#endif

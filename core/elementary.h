// Elementary functions of our own: those of C libraries differ in last bits, from library to library and from processor
// to processor. Less than 1 ulp off: the bound at each is proved in its source; the largest error that was seen at 10^8
// points (tests/elementary_accuracy.cpp) stands in brackets.
#ifndef QEL_GRIDWORK_CORE_ELEMENTARY_H
#define QEL_GRIDWORK_CORE_ELEMENTARY_H

namespace qel::gridwork::detail {

struct sine_cosine {
  double sine;
  double cosine;
};

/// Both of an angle of any size, within 0.99 ulp (0.813). NaN for angles that are not finite.
sine_cosine sine_and_cosine(double angle) noexcept;

/// The natural logarithm, within 0.76 ulp (0.749). -infinity of 0, NaN below.
double logarithm(double x) noexcept;

/// e^x, within 0.80 ulp (0.652) where it is no subnormal number. Infinity from about 709.8 on.
double exponential(double x) noexcept;

/// The root of a^2 + b^2, within 0.51 ulp (0.5001). Infinity where either is infinite.
double hypotenuse(double a, double b) noexcept;

}  // namespace qel::gridwork::detail

#endif

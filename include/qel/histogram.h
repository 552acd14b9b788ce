/// @file
/// A histogram of samples: what edge_qualities() feeds its values to.
#ifndef QEL_HISTOGRAM_H
#define QEL_HISTOGRAM_H

#include <cstdint>

#include "qel/dense.h"
#include "qel/export.h"

namespace qel {
namespace misc {

/// Counts samples in equal bins over a range, and outside of it, and keeps their extremes and their mean.
///
/// The range is closed: bin k holds the samples from bin_lower(k) up to, but without, bin_lower(k + 1); the last bin
/// holds the upper bound too. A NaN is counted apart and enters nothing else. To do something else with the samples,
/// derive and override process(). Nothing throws; every sample costs the same.
class QEL_GRIDWORK_API histogram {
 public:
  /// An empty histogram of `bins` bins over [lower, upper].
  ///
  /// There are no bins when a bound or upper - lower is not finite, when `lower` is not below `upper`, or when memory
  /// runs out; everything else is counted nevertheless. Nothing is below or above a bound that is a NaN.
  explicit histogram(double lower = 0, double upper = 2, unsigned bins = 20);

  /// A copy with counts of its own; without bins when memory runs out.
  /// @{
  histogram(const histogram& other);
  histogram& operator=(const histogram& other);
  /// @}

  /// Virtual, so that a derived histogram can be deleted through this class.
  virtual ~histogram();

  /// Adds one sample.
  virtual void process(double v);

  /// Forgets all samples; range and bins stay.
  void clear();

  /// The bounds of the range.
  /// @{
  double lower() const noexcept { return lower_; }
  double upper() const noexcept { return upper_; }
  /// @}

  /// Number of samples other than NaN: below() + inside() + above().
  std::uint64_t count() const noexcept { return below_ + inside_ + above_; }

  /// Number of samples below the range, in it and above it.
  /// @{
  std::uint64_t below() const noexcept { return below_; }
  std::uint64_t inside() const noexcept { return inside_; }
  std::uint64_t above() const noexcept { return above_; }
  /// @}

  /// Number of NaN samples.
  std::uint64_t not_a_number() const noexcept { return not_a_number_; }

  /// Smallest and largest sample, and the mean of all of them, in or out of the range; 0 without samples. The mean is
  /// not finite when a sample or the sum is not: NaN when infinities cancel.
  /// @{
  double min() const noexcept { return min_; }
  double max() const noexcept { return max_; }
  double mean() const noexcept { return count() != 0 ? sum_ / static_cast<double>(count()) : 0; }
  /// @}

  /// Number of bins.
  unsigned bins() const noexcept { return static_cast<unsigned>(counts_.size()); }

  /// Samples in bin k, k < bins().
  std::uint64_t bin(unsigned k) const noexcept { return counts_[k]; }

  /// Lower end of bin k; the upper end of the last one for k = bins().
  double bin_lower(unsigned k) const;

 private:
  unsigned bin_of(double v) const noexcept;

  double lower_;
  double upper_;
  std::uint64_t below_ = 0;
  std::uint64_t inside_ = 0;
  std::uint64_t above_ = 0;
  std::uint64_t not_a_number_ = 0;
  double min_ = 0;
  double max_ = 0;
  double sum_ = 0;
  dense1D<std::uint64_t> counts_;
};

}  // namespace misc
}  // namespace qel

#endif

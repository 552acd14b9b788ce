#include "sizes.h"

#include <algorithm>
#include <cfloat>

namespace report {

namespace {

// Nodes without a size are no fault of the call, which has done all the rest.
outcome past_unsound(gw::operation call, int result) { return {call, result == -4 ? 0 : result}; }

outcome bound(const size_options& options, sizes& h, size_report& found) {
  if (options.smallest <= 0 && options.largest <= 0) return {};
  qel::dense1D<unsigned> changed;
  const double largest = options.largest > 0 ? options.largest : DBL_MAX;
  const int result = gw::bound_metrics(h, options.smallest, largest, changed);
  found.bounded = changed.size();
  return {gw::operation::bound_metrics, result};
}

outcome grade(const mesh& m, const qel::dense2D<unsigned>& edges, double gradation, sizes& h, size_report& found) {
  if (gradation <= 0) return {};
  qel::dense1D<unsigned> lowered;
  const int result = gw::bound_metric_gradations(m.coords, edges, gw::ELT_EDGE2, h, gradation, lowered);
  found.graded = lowered.size();
  return past_unsound(gw::operation::bound_metric_gradations, result);
}

outcome find_shock(const mesh& m, const qel::dense2D<unsigned>& edges, const sizes& h, double& shock) {
  return past_unsound(gw::operation::H_shock, gw::H_shock(m.coords, edges, gw::ELT_EDGE2, h, shock));
}

void count(const sizes& h, size_report& found) {
  double sum = 0;
  for (std::uint64_t n = 0; n < h.size(); ++n) {
    if (h[n] <= 0) continue;
    found.smallest = found.nodes == 0 ? h[n] : std::min(found.smallest, h[n]);
    found.largest = std::max(found.largest, h[n]);
    sum += h[n];
    ++found.nodes;
  }
  found.mean = found.nodes == 0 ? 0 : sum / static_cast<double>(found.nodes);
}

}  // namespace

outcome find_sizes(const mesh& m, const size_options& options, sizes& h, size_report& found) {
  qel::dense2D<unsigned> edges;
  const outcome listed = find_edges(m, edges);
  if (listed.failed()) return listed;
  const int made = gw::metrics_gen_iso(m.coords, edges, gw::ELT_EDGE2, h, options.rule);
  if (made < 0) return {gw::operation::metrics_gen_iso, made};
  for (std::uint64_t n = 0; n < h.size(); ++n) h[n] *= options.factor;
  const outcome bounded = bound(options, h, found);
  if (bounded.failed()) return bounded;
  const outcome before = find_shock(m, edges, h, found.shock_before);
  const outcome graded = before.failed() ? before : grade(m, edges, options.gradation, h, found);
  if (graded.failed()) return graded;
  count(h, found);
  return find_shock(m, edges, h, found.shock);
}

outcome read_sizes(const char* path, sizes& h) {
  unsigned dim = 0;
  qel::dense2D<double> values;
  qel::dense1D<int> kinds;
  const int result = gw::medit_solution_input(path, dim, values, kinds);
  const bool has_sizes = result >= 0 && !kinds.empty() && kinds[0] == 1;
  if (!h.resize(has_sizes ? values.cols() : 0)) return outcome::of_memory(false);
  for (std::uint64_t n = 0; n < h.size(); ++n) h[n] = values(0, n);
  return {gw::operation::medit_solution_input, result};
}

outcome measure_lengths(const mesh& m, const sizes& h, length_report& found) {
  qel::dense2D<unsigned> edges;
  const outcome listed = find_edges(m, edges);
  if (listed.failed()) return listed;
  gw::histogram lengths(0, 2, length_bins);
  const int result = gw::edge_qualities(m.coords, edges, gw::ELT_EDGE2, h, lengths, {});
  found.edges = lengths.count();
  found.below = lengths.below();
  found.above = lengths.above();
  for (unsigned k = 0; k < length_bins && k < lengths.bins(); ++k) found.bins[k] = lengths.bin(k);
  found.smallest = lengths.min();
  found.mean = lengths.mean();
  found.largest = lengths.max();
  return past_unsound(gw::operation::edge_qualities, result);
}

}  // namespace report

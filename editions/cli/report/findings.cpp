#include "findings.h"

#include <algorithm>
#include <cmath>

#include "duplicates.h"
#include "shapes.h"
#include "topology.h"

namespace report {

namespace {

std::string element_words(const block& b, std::uint64_t element) {
  return std::string(type_name(b.type)) + " " + std::to_string(element);
}

std::string node_words(std::uint64_t node) { return "node " + std::to_string(node); }

finding side_fault(const char* name, const char* words, const std::vector<side>& sides) {
  finding fault{name, words, sides.size(), {}};
  if (!sides.empty()) {
    fault.first = "at nodes " + std::to_string(sides[0][0]) + " and " + std::to_string(sides[0][1]);
  }
  return fault;
}

void note(finding& fault, const std::string& where) {
  if (fault.count++ == 0) fault.first = where;
}

// Counts the elements for which `is_faulty(block, element)` holds.
template <class Test>
finding find_elements(const mesh& m, const char* name, const char* words, Test is_faulty) {
  finding fault{name, words, 0, {}};
  for (const block& b : m.blocks) {
    for (std::uint64_t e = 0; e < b.connectivity.cols(); ++e) {
      if (!is_faulty(b, e)) continue;
      if (fault.count++ == 0) fault.first = element_words(b, e);
    }
  }
  return fault;
}

finding find_bad_indices(const mesh& m) {
  return find_elements(m, "bad_indices", "elements with a node that is not there",
                       [&](const block& b, std::uint64_t e) {
                         return std::any_of(b.connectivity.begin_column(e), b.connectivity.end_column(e),
                                            [&](unsigned node) { return node >= m.coords.cols(); });
                       });
}

finding find_not_finite(const mesh& m) {
  finding fault{"not_finite", "nodes with a coordinate that is no finite number", 0, {}};
  for (std::uint64_t n = 0; n < m.coords.cols(); ++n) {
    const double* first = m.coords.begin_column(n);
    if (!std::all_of(first, first + m.coords.rows(), [](double x) { return std::isfinite(x); }))
      note(fault, node_words(n));
  }
  return fault;
}

outcome add_near_nodes(const mesh& m, double tolerance, std::vector<finding>& faults) {
  finding fault{"near_nodes", "nodes at, or within the tolerance of, another one", 0, {}};
  qel::dense2D<double> coords;
  qel::dense1D<unsigned> survivors;
  if (!coords.copy(m.coords)) return outcome::of_memory(false);
  const outcome merged{gw::operation::merge_nodes, gw::merge(coords, survivors, tolerance)};
  if (merged.failed()) return merged;
  fault.count = merged.count();
  for (unsigned n = 0; n < survivors.size() && fault.first.empty(); ++n) {
    if (survivors[n] != n) fault.first = node_words(n) + ", beside node " + std::to_string(survivors[n]);
  }
  faults.push_back(fault);
  return {};
}

finding find_unused(const mesh& m) {
  const node_use use = measure_node_use(m);
  finding fault{"unused_nodes", "nodes that no element uses", m.coords.cols() - use.used, {}};
  if (fault.count != 0) fault.first = node_words(use.first_unused);
  return fault;
}

finding find_degenerate(const mesh& m) {
  return find_elements(m, "degenerate", "elements that hold a node twice", [](const block& b, std::uint64_t e) {
    const unsigned* end = b.connectivity.end_column(e);
    for (const unsigned* node = b.connectivity.begin_column(e); node != end; ++node) {
      if (std::find(node + 1, end, *node) != end) return true;
    }
    return false;
  });
}

finding find_doubles(const mesh& m) {
  finding fault{"duplicates", "elements of the same nodes as another one", 0, {}};
  for (const block& b : m.blocks) {
    for (const duplicate& d : find_duplicates(b))
      note(fault, element_words(b, d.element) + ", as " + std::to_string(d.of));
  }
  return fault;
}

finding find_inverted(const std::vector<shapes>& all) {
  finding fault{"inverted", "elements turned over, against most of their type", 0, {}};
  for (const shapes& s : all) {
    if (s.inverted != 0 && fault.count == 0) {
      fault.first = std::string(type_name(s.type)) + " " + std::to_string(s.worst.front().element);
    }
    fault.count += s.inverted;
  }
  return fault;
}

outcome add_low_quality(const mesh& m, const std::vector<shapes>& all, double bound, std::vector<finding>& faults) {
  finding fault{"low_quality", "elements below the quality asked for", 0, {}};
  const outcome done = count_below(m, bound, fault.count);
  for (const shapes& s : all) {
    if (!(s.smallest < bound)) continue;
    fault.first = std::string(type_name(s.type)) + " " + std::to_string(s.worst.front().element);
    break;
  }
  faults.push_back(fault);
  return done;
}

outcome add_sides(const mesh& m, bool closed, std::vector<finding>& faults) {
  topology found;
  const outcome done = measure_topology(m, found, true);
  faults.push_back(side_fault("non_manifold", "sides of three or more elements", found.non_manifold));
  faults.push_back(side_fault("turned", "edges between faces that look to different sides", found.turned));
  if (closed) faults.push_back(side_fault("open", "sides of one element alone", found.open));
  return done;
}

outcome add_shapes(const mesh& m, double min_quality, std::vector<finding>& faults) {
  std::vector<shapes> all;
  const outcome done = measure_shapes(m, 1, all);
  if (done.failed()) return done;
  if (mesh_dim(m) == 3 || m.coords.rows() == 2) faults.push_back(find_inverted(all));
  return min_quality > -2 ? add_low_quality(m, all, min_quality, faults) : done;
}

outcome add_elements(const mesh& m, const check_options& options, bool valid, std::vector<finding>& faults) {
  if (valid) faults.push_back(find_unused(m));
  faults.push_back(find_degenerate(m));
  faults.push_back(find_doubles(m));
  const outcome sides = valid ? add_sides(m, options.closed, faults) : outcome{};
  if (sides.failed() || !valid || m.coords.rows() < 2) return sides;
  return add_shapes(m, options.min_quality, faults);
}

}  // namespace

outcome find_faults(const mesh& m, const check_options& options, std::vector<finding>& faults) {
  faults = {find_bad_indices(m), find_not_finite(m)};
  const bool valid = faults.front().count == 0;
  const outcome near = m.coords.rows() >= 2 ? add_near_nodes(m, options.tolerance, faults) : outcome{};
  if (near.failed()) return near;
  const outcome done = add_elements(m, options, valid, faults);
  std::erase_if(faults, [](const finding& fault) { return fault.count == 0; });
  return done;
}

}  // namespace report

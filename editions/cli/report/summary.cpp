#include "summary.h"

#include <algorithm>

namespace report {

namespace {

json elements_json(const mesh& m) {
  json counts;
  for (const block& b : m.blocks) counts.add(type_name(b.type), b.connectivity.cols());
  return counts;
}

json topology_json(const summary& found) {
  json object;
  object.add("dim", found.sides.dim).add("sides", found.sides.sides).add("open", found.sides.open.size());
  object.add("non_manifold", found.sides.non_manifold.size()).add("pieces", found.use.pieces);
  return object.add("unused_nodes", found.unused);
}

std::vector<json> quality_json(const std::vector<shapes>& all) {
  std::vector<json> list;
  for (const shapes& s : all) {
    json object;
    object.add("type", type_name(s.type)).add("min", s.smallest).add("mean", s.mean).add("max", s.largest);
    list.push_back(object.add("inverted", s.inverted).add("reversed", s.reversed));
  }
  return list;
}

json worst_json(const placed_element& e) {
  json object;
  object.add("element", e.element).add("quality", e.quality);
  return object.add("centre", std::vector<double>(e.centre, e.centre + 3));
}

}  // namespace

box bounding_box(const mesh& m) {
  box b;
  for (std::uint64_t n = 0; n < m.coords.cols(); ++n) {
    for (unsigned k = 0; k < 3; ++k) {
      const double x = k < m.coords.rows() ? m.coords(k, n) : 0;
      b.lower[k] = std::min(b.lower[k], x);
      b.upper[k] = std::max(b.upper[k], x);
    }
  }
  return b;
}

outcome summarize(const mesh& m, std::size_t nbr_worst, summary& found) {
  found.bounds = bounding_box(m);
  found.valid = has_valid_nodes(m);
  if (!found.valid) return {};
  found.use = measure_node_use(m);
  found.unused = m.coords.cols() - found.use.used;
  const outcome done = measure_topology(m, found.sides);
  if (done.failed() || m.coords.rows() < 2) return done;
  return measure_shapes(m, nbr_worst, found.shapes);
}

void add_summary(json& object, const loaded& file, const summary& found) {
  object.add("format", file.kind->name).add("encoding", file.is_text ? "text" : "binary").add("bytes", file.bytes);
  object.add("dim", file.m.coords.rows()).add("nodes", file.m.coords.cols()).add("elements", elements_json(file.m));
  object.add("elements_removed", file.m.nbr_removed).add(file.kind->left_out.name, file.left_out);
  if (file.m.coords.cols() != 0) {
    object.add("box", std::vector<std::vector<double>>{{found.bounds.lower.begin(), found.bounds.lower.end()},
                                                       {found.bounds.upper.begin(), found.bounds.upper.end()}});
  }
  object.add("valid", found.valid);
  if (found.valid) object.add("topology", topology_json(found)).add("quality", quality_json(found.shapes));
}

json shapes_json(const shapes& found) {
  json object;
  object.add("type", type_name(found.type)).add("elements", found.elements).add("reversed", found.reversed);
  object.add("min", found.smallest).add("mean", found.mean).add("max", found.largest).add("inverted", found.inverted);
  object.add("histogram", std::vector<std::uint64_t>(found.bins, found.bins + shape_bins));
  std::vector<json> worst;
  for (const placed_element& e : found.worst) worst.push_back(worst_json(e));
  return object.add("worst", worst);
}

}  // namespace report

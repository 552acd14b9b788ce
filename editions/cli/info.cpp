// gridwork info: what is in a file.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>

#include "commands.h"
#include "progress.h"
#include "report/shapes.h"
#include "report/topology.h"

namespace cli {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct box {
  qel::vector_fixed<double, 3> lower = {{infinity, infinity, infinity}};
  qel::vector_fixed<double, 3> upper = {{-infinity, -infinity, -infinity}};
};

// Missing coordinates are 0.
box bounding_box(const report::mesh& m) {
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

// What is found out about a file before it is printed.
struct summary {
  box bounds;
  bool valid = false;  ///< every element has nodes that are there; else what follows is not known
  report::node_use use;
  std::uint64_t unused = 0;
  report::topology sides;
  std::vector<report::shapes> shapes;
};

summary summarize(const report::mesh& m) {
  summary found;
  found.bounds = bounding_box(m);
  found.valid = has_valid_nodes(m);
  if (!found.valid) return found;
  found.use = measure_node_use(m);
  found.unused = m.coords.cols() - found.use.used;
  require(measure_topology(m, found.sides));
  if (m.coords.rows() >= 2) require(measure_shapes(m, 1, found.shapes));
  return found;
}

std::uint64_t removed(const loaded& file) {
  const std::uint64_t kept = count_elements(file.m);
  return file.facts.elements > kept ? file.facts.elements - kept : 0;
}

json elements_json(const report::mesh& m) {
  json counts;
  for (const report::block& b : m.blocks) counts.add(report::type_name(b.type), b.connectivity.cols());
  return counts;
}

json topology_json(const summary& found) {
  json object;
  object.add("dim", found.sides.dim).add("sides", found.sides.sides).add("open", found.sides.open);
  object.add("non_manifold", found.sides.non_manifold).add("pieces", found.use.pieces);
  return object.add("unused_nodes", found.unused);
}

std::vector<json> quality_json(const std::vector<report::shapes>& all) {
  std::vector<json> list;
  for (const report::shapes& s : all) {
    json object;
    object.add("type", report::type_name(s.type)).add("min", s.smallest).add("mean", s.mean).add("max", s.largest);
    list.push_back(object.add("inverted", s.inverted).add("reversed", s.reversed));
  }
  return list;
}

json info_json(const session& s, const std::string& name, const loaded& file, const summary& found) {
  json object = s.object("info", name);
  object.add("format", file.kind->name).add("encoding", file.facts.text ? "text" : "binary").add("bytes", file.bytes);
  object.add("dim", file.m.coords.rows()).add("nodes", file.m.coords.cols()).add("elements", elements_json(file.m));
  object.add("elements_removed", removed(file)).add(file.kind->left_out.name, file.left_out);
  if (file.m.coords.cols() != 0) {
    object.add("box", std::vector<std::vector<double>>{{found.bounds.lower.begin(), found.bounds.lower.end()},
                                                       {found.bounds.upper.begin(), found.bounds.upper.end()}});
  }
  object.add("valid", found.valid);
  if (found.valid) object.add("topology", topology_json(found)).add("quality", quality_json(found.shapes));
  return object;
}

void print_counts(const loaded& file) {
  print_count("nodes", file.m.coords.cols());
  for (const report::block& b : file.m.blocks) print_count(report::type_name(b.type), b.connectivity.cols());
  if (removed(file) != 0) print_count("degenerate, not kept", removed(file));
  if (file.left_out != 0) print_count(file.kind->left_out.words, file.left_out);
}

void print_box(const session& s, const box& b) {
  std::printf("%s\n", s.strong("Bounding box").c_str());
  for (unsigned k = 0; k < 3; ++k) {
    std::printf("  %c  %14.7g to %14.7g, size %.7g\n", "xyz"[k], b.lower[k], b.upper[k], b.upper[k] - b.lower[k]);
  }
}

void print_topology(const session& s, const summary& found) {
  const bool solid = found.sides.dim == 3;
  std::printf("%s\n", s.strong("Topology").c_str());
  print_count("connected pieces", found.use.pieces);
  if (found.sides.dim == 0) return;
  print_count(solid ? "faces" : "edges", found.sides.sides);
  print_count(solid ? "faces on the boundary" : "open edges", found.sides.open);
  print_count(solid ? "faces of 3 or more solids" : "edges of 3 or more elements", found.sides.non_manifold);
  if (solid) return;
  const auto euler = static_cast<long long>(found.use.used + found.sides.elements - found.sides.sides);
  std::printf("  %-30s %15lld\n", "nodes - edges + elements", euler);
}

void print_shapes(const session& s, const std::vector<report::shapes>& all) {
  if (all.empty()) return;
  std::printf("%s\n", s.strong("Shape quality (ideal: 1)").c_str());
  for (const report::shapes& found : all) {
    std::printf("  %-9s smallest %.4f, mean %.4f, largest %.4f%s\n", report::type_name(found.type), found.smallest,
                found.mean, found.largest, found.reversed ? ", turned the other way round" : "");
  }
}

void print_info(const session& s, const std::string& name, const loaded& file, const summary& found) {
  std::printf("%s: %s %s, %s bytes\n", s.strong(printable(name)).c_str(), file.facts.text ? "text" : "binary",
              file.kind->name, grouped(file.bytes).c_str());
  std::printf("%s\n", s.strong("Mesh").c_str());
  print_counts(file);
  if (file.m.coords.cols() != 0) print_box(s, found.bounds);
  if (!found.valid) std::printf("Elements have nodes that are not there; `gridwork check` counts them.\n");
  if (!found.valid || file.m.blocks.empty()) return;
  print_topology(s, found);
  print_shapes(s, found.shapes);
}

void describe(session& s, const std::string& name, const std::string& from) {
  const loaded file = load(s, name, from);
  const step progress(s, "looking at " + name);
  const summary found = summarize(file.m);
  if (s.as_json)
    s.print(info_json(s, name, file, found));
  else
    print_info(s, name, file, found);
}

}  // namespace

void add_info(CLI::App& app, session& s) {
  CLI::App* command = app.add_subcommand("info", "Tells what is in mesh files: counts, size, topology, quality");
  const auto options = std::make_shared<input_options>();
  add_input_options(*command, *options);
  command->callback([&s, options] {
    for (const std::string& name : options->files) guard(s, "info", name, [&] { describe(s, name, options->from); });
  });
}

}  // namespace cli

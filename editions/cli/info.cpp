// gridwork info: what is in a file.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "commands.h"
#include "progress.h"
#include "report/summary.h"

namespace cli {

namespace {

json info_json(const session& s, const std::string& name, const loaded& file, const report::summary& found) {
  json object = s.object("info", name);
  add_summary(object, file, found);
  return object;
}

void print_counts(const loaded& file) {
  print_count("nodes", file.m.coords.cols());
  for (const report::block& b : file.m.blocks) print_count(report::type_name(b.type), b.connectivity.cols());
  if (file.m.nbr_removed != 0) print_count("degenerate, not kept", file.m.nbr_removed);
  if (file.left_out != 0) print_count(file.kind->left_out.words, file.left_out);
}

void print_box(const session& s, const report::box& b) {
  std::printf("%s\n", s.strong("Bounding box").c_str());
  for (unsigned k = 0; k < 3; ++k) {
    std::printf("  %c  %14.7g to %14.7g, size %.7g\n", "xyz"[k], b.lower[k], b.upper[k], b.upper[k] - b.lower[k]);
  }
}

void print_topology(const session& s, const report::summary& found) {
  const bool solid = found.sides.dim == 3;
  std::printf("%s\n", s.strong("Topology").c_str());
  print_count("connected pieces", found.use.pieces);
  if (found.sides.dim == 0) return;
  print_count(solid ? "faces" : "edges", found.sides.sides);
  print_count(solid ? "faces on the boundary" : "open edges", found.sides.open.size());
  print_count(solid ? "faces of 3 or more solids" : "edges of 3 or more elements", found.sides.non_manifold.size());
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

void print_info(const session& s, const std::string& name, const loaded& file, const report::summary& found) {
  std::printf("%s: %s %s, %s bytes\n", s.strong(printable(name)).c_str(), file.is_text ? "text" : "binary",
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
  const step progress(s, "looking at " + name, count_elements(file.m));
  report::summary found;
  require(summarize(file.m, 1, found));
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

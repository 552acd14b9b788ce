// gridwork quality: shape qualities and lengths of edges.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "commands.h"
#include "progress.h"
#include "report/sizes.h"
#include "report/summary.h"

namespace cli {

namespace {

constexpr double widest_bar = 40;

struct quality_command {
  input_options input;
  std::size_t worst = 5;
  double fail_below = -2;
  double size = 0;
  std::string sizes;
};

// One for all nodes, or those of a file.
report::sizes sizes_of(const quality_command& options, const report::mesh& m) {
  report::sizes h;
  if (options.sizes.empty()) {
    require(report::outcome::of_memory(h.resize(m.coords.cols(), options.size)));
    return h;
  }
  try {
    const input_file file(options.sizes);
    require(report::read_sizes(file.path(), h));
    if (h.size() != m.coords.cols()) throw failure("it has not one size for each node of the mesh");
  } catch (const failure& problem) {
    throw failure(options.sizes + ": " + problem.what(), problem.result());
  }
  return h;
}

json lengths_json(const report::length_report& found) {
  json object;
  object.add("edges", found.edges).add("min", found.smallest).add("mean", found.mean).add("max", found.largest);
  object.add("below", found.below).add("above", found.above);
  return object.add("histogram", std::vector<std::uint64_t>(found.bins, found.bins + report::length_bins));
}

void print_bar(double from, std::uint64_t count, std::uint64_t most) {
  const double share = static_cast<double>(count) / static_cast<double>(std::max<std::uint64_t>(most, 1));
  std::printf("  from %4.1f %12s %s\n", from, grouped(count).c_str(),
              std::string(static_cast<std::size_t>(std::ceil(share * widest_bar)), '#').c_str());
}

void print_lengths(const session& s, const report::length_report& found) {
  std::printf("%s: %s, shortest %.4f, mean %.4f, longest %.4f of the size asked for\n", s.strong("edges").c_str(),
              grouped(found.edges).c_str(), found.smallest, found.mean, found.largest);
  const std::uint64_t most = *std::max_element(found.bins, found.bins + report::length_bins);
  for (unsigned k = 0; k < report::length_bins; ++k) print_bar(2.0 * k / report::length_bins, found.bins[k], most);
  if (found.above != 0) std::printf("  above 2.0 %12s\n", grouped(found.above).c_str());
}

void print_histogram(const report::shapes& found) {
  const std::uint64_t most = *std::max_element(found.bins, found.bins + report::shape_bins);
  if (found.inverted != 0) std::printf("  below 0.0 %12s\n", grouped(found.inverted).c_str());
  for (unsigned k = 0; k < report::shape_bins; ++k)
    print_bar(static_cast<double>(k) / report::shape_bins, found.bins[k], most);
}

void print_shapes(const session& s, const report::shapes& found) {
  std::printf("%s: %s, smallest %.4f, mean %.4f, largest %.4f%s\n", s.strong(report::type_name(found.type)).c_str(),
              grouped(found.elements).c_str(), found.smallest, found.mean, found.largest,
              found.reversed ? ", turned the other way round" : "");
  print_histogram(found);
  if (!found.worst.empty()) std::printf("  worst\n");
  for (const report::placed_element& e : found.worst) {
    std::printf("  %10s  quality %.6f near (%.6g, %.6g, %.6g)\n", grouped(e.element).c_str(), e.quality, e.centre[0],
                e.centre[1], e.centre[2]);
  }
}

struct measured {
  double length = 0;
  std::vector<report::shapes> shapes;
  bool has_lengths = false;
  report::length_report lengths;
};

measured measure(const report::mesh& m, const quality_command& options) {
  measured found;
  if (!has_valid_nodes(m)) throw failure("elements have nodes that are not there");
  if (m.coords.rows() < 2) throw failure("qualities need two or three coordinates a node");
  require(measure_shapes(m, options.worst, found.shapes));
  require(mean_edge_length(m, found.length));
  found.has_lengths = options.size > 0 || !options.sizes.empty();
  if (found.has_lengths) require(measure_lengths(m, sizes_of(options, m), found.lengths));
  return found;
}

void print_json(const session& s, const std::string& name, const measured& found) {
  std::vector<json> list;
  for (const report::shapes& shapes : found.shapes) list.push_back(shapes_json(shapes));
  json object = s.object("quality", name);
  object.add("mean_edge_length", found.length).add("shapes", list);
  if (found.has_lengths) object.add("lengths", lengths_json(found.lengths));
  s.print(object);
}

void print_text(const session& s, const std::string& name, const measured& found) {
  std::printf("%s: mean length of the edges %.6g\n", s.strong(printable(name)).c_str(), found.length);
  for (const report::shapes& shapes : found.shapes) print_shapes(s, shapes);
  if (found.has_lengths) print_lengths(s, found.lengths);
}

void report_quality(session& s, const std::string& name, const quality_command& options) {
  const loaded file = load(s, name, options.input.from);
  tell_left_out(s, name, file);
  const step progress(s, "measuring " + name, count_elements(file.m));
  const measured found = measure(file.m, options);
  for (const report::shapes& shapes : found.shapes) {
    if (shapes.smallest < options.fail_below) s.note(wanting);
  }
  if (s.as_json)
    print_json(s, name, found);
  else
    print_text(s, name, found);
}

}  // namespace

void add_quality(CLI::App& app, session& s) {
  CLI::App* command = app.add_subcommand("quality", "Measures the shapes of elements and the lengths of edges");
  const auto options = std::make_shared<quality_command>();
  add_input_options(*command, options->input);
  command->add_option("--worst", options->worst, "how many of the worst elements of a type are named, 5 by default")
      ->type_name("COUNT");
  command->add_option("--fail-below", options->fail_below, "exit with 1 when an element has a lower quality")
      ->type_name("QUALITY");
  CLI::Option* size = command->add_option("--size", options->size, "compare the lengths of edges with this size");
  size->type_name("LENGTH")->check(CLI::PositiveNumber);
  command->add_option("--sizes", options->sizes, "compare them with the sizes at nodes of a MEDIT solution")
      ->type_name("FILE")
      ->excludes(size);
  command->callback([&s, options] {
    for (const std::string& name : options->input.files)
      guard(s, "quality", name, [&] { report_quality(s, name, *options); });
  });
}

}  // namespace cli

// gridwork quality: shape qualities and lengths of edges.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "commands.h"
#include "progress.h"
#include "report/summary.h"

namespace cli {

namespace {

constexpr double widest_bar = 40;

struct quality_command {
  input_options input;
  std::size_t worst = 5;
  double fail_below = -2;
};

void print_histogram(const report::shapes& found) {
  const std::uint64_t most = std::max<std::uint64_t>(1, *std::max_element(found.bins, found.bins + report::shape_bins));
  if (found.inverted != 0) std::printf("  below 0.0 %12s\n", grouped(found.inverted).c_str());
  for (unsigned k = 0; k < report::shape_bins; ++k) {
    const double share = static_cast<double>(found.bins[k]) / static_cast<double>(most);
    const auto bar = static_cast<std::size_t>(std::ceil(share * widest_bar));
    std::printf("  from %4.1f %12s %s\n", static_cast<double>(k) / report::shape_bins, grouped(found.bins[k]).c_str(),
                std::string(bar, '#').c_str());
  }
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

void measure(session& s, const std::string& name, const quality_command& options) {
  const loaded file = load(s, name, options.input.from);
  const step progress(s, "measuring " + name);
  if (!has_valid_nodes(file.m)) throw failure("elements have nodes that are not there");
  if (file.m.coords.rows() < 2) throw failure("qualities need two or three coordinates a node");
  std::vector<report::shapes> all;
  double length = 0;
  require(measure_shapes(file.m, options.worst, all));
  require(mean_edge_length(file.m, length));
  for (const report::shapes& found : all) {
    if (found.smallest < options.fail_below) s.note(wanting);
  }
  if (s.as_json) {
    std::vector<json> list;
    for (const report::shapes& found : all) list.push_back(shapes_json(found));
    s.print(s.object("quality", name).add("mean_edge_length", length).add("shapes", list));
    return;
  }
  std::printf("%s: mean length of the edges %.6g\n", s.strong(printable(name)).c_str(), length);
  for (const report::shapes& found : all) print_shapes(s, found);
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
  command->callback([&s, options] {
    for (const std::string& name : options->input.files) guard(s, "quality", name, [&] { measure(s, name, *options); });
  });
}

}  // namespace cli

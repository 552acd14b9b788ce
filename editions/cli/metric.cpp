// gridwork metric: sizes at the nodes of a mesh.
#include <cstdio>
#include <memory>

#include "commands.h"
#include "progress.h"
#include "report/sizes.h"

namespace cli {

namespace {

struct metric_command {
  std::string in, from, rule = "mean";
  output_options output;
  report::size_options wanted;
};

qel::gridwork::size_rule rule_of(const std::string& word) {
  if (word == "shortest") return qel::gridwork::SIZE_SHORTEST;
  return word == "longest" ? qel::gridwork::SIZE_LONGEST : qel::gridwork::SIZE_MEAN;
}

report::sizes sizes_of(const session& s, const report::mesh& m, const report::size_options& wanted, json& object) {
  const step progress(s, "measuring edges", count_elements(m));
  report::sizes h;
  report::size_report found;
  if (m.coords.rows() < 2) throw failure("sizes need two or three coordinates a node");
  if (!has_valid_nodes(m)) throw failure("elements have nodes that are not there");
  require(find_sizes(m, wanted, h, found));
  object.add("nodes", found.nodes).add("min", found.smallest).add("mean", found.mean).add("max", found.largest);
  object.add("bounded", found.bounded).add("graded", found.graded);
  object.add("shock_before", found.shock_before).add("shock", found.shock);
  if (s.quiet || s.as_json) return h;
  std::fprintf(stderr, "sizes from %.6g to %.6g, mean %.6g, of %s nodes\n", found.smallest, found.largest, found.mean,
               grouped(found.nodes).c_str());
  std::fprintf(stderr, "largest ratio of adjacent edges %.6g, before %.6g; nodes lowered %s\n", found.shock,
               found.shock_before, grouped(found.graded).c_str());
  return h;
}

void make(session& s, const metric_command& options) {
  json object = s.object("metric", options.in);
  report::sizes h;
  unsigned dim = 3;
  s.leave_stdout_to(options.output.out);
  if (!guard(s, "metric", options.output.out, [&] { check_overwriting(options.output); })) return;
  const bool found = guard(s, "metric", options.in, [&] {
    const loaded file = load(s, options.in, options.from);
    tell_left_out(s, options.in, file);
    h = sizes_of(s, file.m, options.wanted, object);
    dim = static_cast<unsigned>(file.m.coords.rows());
  });
  if (!found) return;
  guard(s, "metric", options.output.out, [&] {
    save_bytes(options.output, [&](const char* path) {
      return report::outcome{qel::gridwork::operation::medit_scalar, qel::gridwork::medit_scalar(path, dim, h)};
    });
    object.add("out", options.output.out);
    if (s.as_json) s.print(object);
  });
}

CLI::Option* add_number(CLI::App& command, const char* name, double& value, const char* type, const char* words) {
  return command.add_option(name, value, words)->type_name(type)->check(CLI::PositiveNumber);
}

}  // namespace

void add_metric(CLI::App& app, session& s) {
  CLI::App* command =
      app.add_subcommand("metric", "Writes the sizes that a mesh has at its nodes, as a MEDIT solution");
  const auto options = std::make_shared<metric_command>();
  add_in_option(*command, options->in, options->from);
  command->add_option("OUT", options->output.out, "solution that is written (.sol); - is standard output")->required();
  command->add_flag("-f,--force", options->output.force, "overwrite OUT if it exists");
  command->add_option("--rule", options->rule, "which length of its edges a node takes, the mean by default")
      ->type_name("RULE")
      ->check(CLI::IsMember({"mean", "shortest", "longest"}));
  add_number(*command, "--factor", options->wanted.factor, "FACTOR", "multiply the sizes");
  add_number(*command, "--min", options->wanted.smallest, "LENGTH", "smallest size");
  add_number(*command, "--max", options->wanted.largest, "LENGTH", "largest size");
  add_number(*command, "--gradation", options->wanted.gradation, "RATIO",
             "lower sizes until lengths of adjacent edges have at most this ratio")
      ->check(CLI::Range(1.0, 1e300));
  command->callback([&s, options] {
    options->wanted.rule = rule_of(options->rule);
    make(s, *options);
  });
}

}  // namespace cli

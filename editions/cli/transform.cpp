// gridwork transform: meshes moved, turned, scaled and mirrored.
#include <map>
#include <memory>

#include "commands.h"
#include "progress.h"
#include "report/placing.h"

namespace cli {

namespace {

using report::placing;

// Of the options that make steps, those of one name have their values one behind the other.
struct transform_command {
  in_out_options files;
  std::vector<double> shifts, turns, factors, normals, centers;
};

struct step_option {
  const char* name;
  std::size_t numbers;  // that it takes
  placing::kind what;
  std::vector<double> transform_command::*values;
  const char* type;
  const char* words;
};

constexpr const char* center_option = "--center";

constexpr step_option step_options[] = {
    {"--translate", 3, placing::move, &transform_command::shifts, "X,Y,Z", "move by a vector"},
    {"--rotate", 4, placing::turn, &transform_command::turns, "X,Y,Z,DEGREES",
     "turn about an axis of this direction, right-handed"},
    {"--scale", 1, placing::scale, &transform_command::factors, "FACTOR", "scale"},
    {"--mirror", 3, placing::mirror, &transform_command::normals, "X,Y,Z",
     "mirror at the plane of this normal; elements keep their orientation"}};

report::point point_at(const std::vector<double>& values, std::size_t at) {
  return {{values[at], values[at + 1], values[at + 2]}};
}

placing step_of(const step_option& option, const std::vector<double>& values, std::size_t at) {
  placing step{option.what, {{0, 0, 0}}, values[at + option.numbers - 1], {{0, 0, 0}}};
  if (option.numbers >= 3) step.vector = point_at(values, at);
  const bool needs_direction = option.what == placing::turn || option.what == placing::mirror;
  if (needs_direction && step.vector == report::point{{0, 0, 0}})
    throw CLI::ValidationError(option.name, "a direction of length 0");
  return step;
}

// In the order of the command line.
std::vector<placing> steps_of(const CLI::App& command, const transform_command& options) {
  std::vector<placing> steps;
  std::map<std::string, std::size_t> used;
  report::point center = {{0, 0, 0}};
  for (const CLI::Option* given : command.parse_order()) {
    std::size_t& at = used[given->get_single_name()];
    if (given->check_lname("center")) center = point_at(options.centers, at), at += 3;
    for (const step_option& option : step_options) {
      if (!given->check_name(option.name)) continue;
      steps.push_back(step_of(option, options.*option.values, at));
      steps.back().center = center;
      at += option.numbers;
    }
  }
  return steps;
}

void add_steps(CLI::App& command, transform_command& options) {
  for (const step_option& option : step_options) {
    command.add_option(option.name, options.*option.values, option.words)
        ->type_name(option.type)
        ->delimiter(',')
        ->type_size(static_cast<int>(option.numbers))
        ->take_all();
  }
  command.add_option(center_option, options.centers, "point of the axis, or the plane, or that stays, of what follows")
      ->type_name("X,Y,Z")
      ->delimiter(',')
      ->type_size(3)
      ->take_all();
}

}  // namespace

void add_transform(CLI::App& app, session& s) {
  CLI::App* command =
      app.add_subcommand("transform", "Moves, turns, scales and mirrors a mesh, in the order of the options");
  const auto options = std::make_shared<transform_command>();
  add_in_out_options(*command, options->files);
  add_steps(*command, *options);
  command->callback([&s, options, command] {
    const std::vector<placing> steps = steps_of(*command, *options);
    rewrite(s, "transform", options->files, [&](report::mesh& m, json&) {
      const step progress(s, "transforming", count_elements(m));
      require(place(m, steps));
    });
  });
}

}  // namespace cli

// gridwork boundary: the surface of solids, the open edges of surfaces.
#include "report/boundary.h"

#include <cstdio>
#include <memory>

#include "commands.h"
#include "progress.h"

namespace cli {

namespace {

struct boundary_command {
  in_out_options files;
  bool closed = false;
};

void take(session& s, report::mesh& m, json& object, bool closed) {
  const step progress(s, "looking for the boundary", count_elements(m));
  if (report::mesh_dim(m) < 2) throw failure("there are neither faces nor solids");
  if (!has_valid_nodes(m)) throw failure("elements have nodes that are not there");
  require(take_boundary(m));
  const std::uint64_t sides = count_elements(m);
  object.add("boundary", sides);
  if (sides != 0 && closed) s.note(wanting);
  if (!s.quiet && !s.as_json)
    std::fprintf(stderr, "%s\n",
                 sides == 0 ? "closed: nothing to write" : (grouped(sides) + " on the boundary").c_str());
}

}  // namespace

void add_boundary(CLI::App& app, session& s) {
  CLI::App* command = app.add_subcommand("boundary", "Writes the surface of solids, or the open edges of surfaces");
  const auto options = std::make_shared<boundary_command>();
  add_in_out_options(*command, options->files);
  command->add_flag("--closed", options->closed, "exit with 1 when there is a boundary");
  command->callback([&s, options] {
    rewrite(
        s, "boundary", options->files, [&](report::mesh& m, json& object) { take(s, m, object, options->closed); },
        true);
  });
}

}  // namespace cli

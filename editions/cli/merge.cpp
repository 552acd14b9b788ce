// gridwork merge: near nodes become one.
#include <cstdio>
#include <memory>

#include "commands.h"
#include "progress.h"
#include "report/cleaning.h"
#include "report/duplicates.h"

namespace cli {

namespace {

struct merge_command {
  in_out_options files;
  double tolerance = 0;
  unsigned mode = 0;
  bool duplicates = false;
};

// Standard output may be the mesh.
void tell(const session& s, const report::cleaned& counts, std::uint64_t duplicates) {
  if (s.quiet || s.as_json) return;
  std::fprintf(stderr, "merged nodes %s, degenerate elements removed %s, nodes removed %s\n",
               grouped(counts.merged).c_str(), grouped(counts.removed_elements).c_str(),
               grouped(counts.removed_nodes).c_str());
  if (duplicates != 0) std::fprintf(stderr, "duplicate elements removed %s\n", grouped(duplicates).c_str());
}

void merge_nodes(const session& s, report::mesh& m, json& object, const merge_command& options) {
  const step progress(s, "merging", count_elements(m));
  report::cleaned counts;
  std::uint64_t duplicates = 0;
  require(clean(m, options.tolerance, options.mode, counts));
  if (options.duplicates) require(remove_duplicates(m, duplicates));
  object.add("merged", counts.merged).add("removed_elements", counts.removed_elements);
  object.add("removed_nodes", counts.removed_nodes).add("removed_duplicates", duplicates);
  tell(s, counts, duplicates);
}

}  // namespace

void add_merge(CLI::App& app, session& s) {
  CLI::App* command =
      app.add_subcommand("merge", "Merges near nodes, and removes degenerate elements and unused nodes");
  const auto options = std::make_shared<merge_command>();
  add_in_out_options(*command, options->files);
  command->add_option("-t,--tolerance", options->tolerance, "distance within which nodes are merged, 0 by default")
      ->type_name("LENGTH")
      ->check(CLI::NonNegativeNumber);
  command->add_option("--mode", options->mode, "0: all nodes; 1: nodes of one element; 2: the same until none is left")
      ->type_name("MODE")
      ->check(CLI::IsMember({0, 1, 2}));
  command->add_flag("--duplicates", options->duplicates, "also remove elements of the same nodes as another one");
  command->callback([&s, options] {
    rewrite(s, "merge", options->files, [&](report::mesh& m, json& object) { merge_nodes(s, m, object, *options); });
  });
}

}  // namespace cli

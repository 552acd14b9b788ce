// gridwork clip: what lies on one side of a plane.
#include <memory>

#include "commands.h"
#include "progress.h"
#include "report/clipping.h"

namespace cli {

namespace {

using report::crossed;

struct clip_command {
  in_out_options files;
  std::vector<double> at, normal;
  std::string elements = "cut";
  double tolerance = 0;
};

crossed mode_of(const std::string& word) {
  if (word == "cut") return crossed::cut;
  if (word == "inside") return crossed::dropped;
  return word == "touching" ? crossed::kept : crossed::alone;
}

report::clip_options plane_of(const clip_command& options) {
  return {{{options.at[0], options.at[1], options.at[2]}},
          {{options.normal[0], options.normal[1], options.normal[2]}},
          mode_of(options.elements),
          options.tolerance};
}

void clip(const session& s, report::mesh& m, const clip_command& options) {
  const step progress(s, "clipping", count_elements(m));
  for (const report::block& b : m.blocks) {
    if (options.elements != "cut" || report::can_be_cut(b.type)) continue;
    throw failure(std::string(report::type_name(b.type)) + " cannot be cut; --elements keeps whole ones");
  }
  require(report::clip(m, plane_of(options)));
  if (m.blocks.empty()) throw failure("nothing lies before the plane");
}

}  // namespace

void add_clip(CLI::App& app, session& s) {
  CLI::App* command = app.add_subcommand("clip", "Keeps what lies on the side of a plane to which its normal points");
  const auto options = std::make_shared<clip_command>();
  add_in_out_options(*command, options->files);
  command->add_option("--point", options->at, "a point of the plane")
      ->type_name("X,Y,Z")
      ->delimiter(',')
      ->expected(3)
      ->required();
  command->add_option("--normal", options->normal, "the normal of the plane")
      ->type_name("X,Y,Z")
      ->delimiter(',')
      ->expected(3)
      ->required();
  command
      ->add_option(
          "--elements", options->elements,
          "what becomes of elements across the plane: they are cut (by default), left out, kept, or kept alone")
      ->type_name("WHICH")
      ->check(CLI::IsMember({"cut", "inside", "touching", "crossed"}));
  command
      ->add_option("-t,--tolerance", options->tolerance, "distance within which nodes are on the plane, 0 by default")
      ->type_name("LENGTH")
      ->check(CLI::NonNegativeNumber);
  command->callback(
      [&s, options] { rewrite(s, "clip", options->files, [&](report::mesh& m, json&) { clip(s, m, *options); }); });
}

}  // namespace cli

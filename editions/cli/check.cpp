// gridwork check: what is wanting in a mesh.
#include <cstdio>
#include <memory>

#include "commands.h"
#include "progress.h"
#include "report/findings.h"

namespace cli {

namespace {

struct check_command {
  input_options input;
  report::check_options wanted;
};

std::vector<json> findings_json(const std::vector<report::finding>& findings) {
  std::vector<json> list;
  for (const report::finding& f : findings) {
    json object;
    list.push_back(object.add("name", f.name).add("count", f.count).add("words", f.words).add("first", f.first));
  }
  return list;
}

void print_findings(const session& s, const std::string& name, const std::vector<report::finding>& findings) {
  if (findings.empty()) std::printf("%s: nothing is wanting\n", printable(name).c_str());
  for (const report::finding& f : findings) {
    std::printf("%s: %s %s; first: %s\n", s.strong(printable(name)).c_str(), grouped(f.count).c_str(), f.words,
                f.first.c_str());
  }
}

// What a reader removed or left out on its own is a finding as well.
void add_removed(const loaded& file, std::vector<report::finding>& findings) {
  if (file.left_out != 0) findings.push_back({"left_out", file.kind->left_out.words, file.left_out, "not known"});
  if (file.m.nbr_removed == 0) return;
  findings.push_back({"removed", "elements whose nodes coincide, not kept", file.m.nbr_removed, "not known"});
}

void check(session& s, const std::string& name, const check_command& options) {
  const loaded file = load(s, name, options.input.from);
  const step progress(s, "checking " + name, count_elements(file.m));
  std::vector<report::finding> findings;
  require(find_faults(file.m, options.wanted, findings));
  add_removed(file, findings);
  if (!findings.empty()) s.note(wanting);
  if (s.as_json)
    s.print(s.object("check", name).add("findings", findings_json(findings)));
  else
    print_findings(s, name, findings);
}

}  // namespace

void add_check(CLI::App& app, session& s) {
  CLI::App* command =
      app.add_subcommand("check", "Looks for faults in meshes; the exit status is 1 when there are any");
  const auto options = std::make_shared<check_command>();
  add_input_options(*command, options->input);
  command->add_option("-t,--tolerance", options->wanted.tolerance, "nodes this near to one another are a fault")
      ->type_name("LENGTH")
      ->check(CLI::NonNegativeNumber);
  command->add_flag("--closed", options->wanted.closed, "open boundaries are a fault");
  command->add_option("--min-quality", options->wanted.min_quality, "elements of a lower shape quality are a fault")
      ->type_name("QUALITY");
  command->callback([&s, options] {
    for (const std::string& name : options->input.files) guard(s, "check", name, [&] { check(s, name, *options); });
  });
}

}  // namespace cli

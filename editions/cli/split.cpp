// gridwork split: the connected parts of a mesh, in files of their own or coloured.
#include <cstdio>
#include <filesystem>
#include <memory>

#include "commands.h"
#include "progress.h"
#include "report/subdomains.h"

namespace cli {

namespace {

constexpr std::uint64_t most_files = 10000;

struct split_command {
  in_out_options files;
  bool colors = false;
  report::subdomain_options parts;
};

std::string file_of_part(const std::string& out, std::size_t part) {
  std::filesystem::path path(out);
  const std::string extension = path.extension().string();
  return path.replace_extension().string() + "-" + std::to_string(part) + extension;
}

std::uint64_t color(const session& s, report::mesh& m, const report::subdomain_options& options) {
  const step progress(s, "looking for parts", count_elements(m));
  if (report::mesh_dim(m) < 1) throw failure("there are no elements that could be connected");
  if (!has_valid_nodes(m)) throw failure("elements have nodes that are not there");
  return require(color_subdomains(m, options));
}

void check_outputs(const split_command& options) {
  check_output(options.files.output);
  const report::format* kind = report::find_format(options.files.output.out, options.files.output.to);
  if (options.colors && !kind->has_references)
    throw failure(std::string(kind->name) + " has no references or properties; MEDIT, NASTRAN and FEMAP have");
  if (!options.colors && is_stream(options.files.output.out)) throw failure("one stream cannot be several files");
}

void write_parts(const session& s, const report::mesh& m, const output_options& output, json& object) {
  std::vector<report::mesh> parts;
  require(split_by_reference(m, parts));
  output_files files(output.force);
  std::vector<std::string> names;
  for (std::size_t k = 0; k < parts.size(); ++k) {
    output_options one = output;
    one.out = file_of_part(output.out, k + 1);
    names.push_back(one.out);
    files.add(s, std::move(parts[k]), one);
  }
  files.appear();
  object.add("files", names);
}

void write(const session& s, report::mesh m, const split_command& options, json& object) {
  const output_options& output = options.files.output;
  object.add("out", output.out).add("nodes", m.coords.cols()).add("elements", count_elements(m));
  if (options.colors)
    save(s, std::move(m), output);
  else
    write_parts(s, m, output, object);
  if (s.as_json) s.print(object);
}

void tell(const session& s, std::uint64_t parts, std::uint64_t left_out) {
  if (s.quiet || s.as_json) return;
  std::fprintf(stderr, "parts %s\n", grouped(parts).c_str());
  if (left_out != 0) std::fprintf(stderr, "elements of a lower dimension left out %s\n", grouped(left_out).c_str());
}

void split(session& s, const split_command& options) {
  json object = s.object("split", options.files.in);
  loaded file;
  const std::string& out = options.files.output.out;
  s.leave_stdout_to(out);
  if (!guard(s, "split", out, [&] { check_outputs(options); })) return;
  const bool found = guard(s, "split", options.files.in, [&] {
    file = load(s, options.files.in, options.files.from);
    const std::uint64_t all = count_elements(file.m);
    const std::uint64_t parts = color(s, file.m, options.parts);
    if (parts > most_files && !options.colors)
      throw failure(grouped(parts) + " parts would be as many files; --colors writes one");
    object.add("parts", parts);
    tell(s, parts, all - count_elements(file.m));
  });
  if (!found) return;
  tell_left_out(s, options.files.in, file);
  guard(s, "split", out, [&] { write(s, std::move(file.m), options, object); });
}

}  // namespace

void add_split(CLI::App& app, session& s) {
  CLI::App* command = app.add_subcommand(
      "split", "Writes the parts of a mesh that are connected by faces (surfaces: by edges): OUT-1, OUT-2 and so on");
  const auto options = std::make_shared<split_command>();
  add_in_out_options(*command, options->files);
  command->add_flag("--colors", options->colors,
                    "write one file, with the number of its part as reference or property of an element");
  command->add_flag("--walls", options->parts.walls,
                    "parts end at the faces (edges) that the mesh has between elements");
  command->add_flag("--sheets", options->parts.sheets, "parts end at sides of three or more elements");
  command->callback([&s, options] { split(s, *options); });
}

}  // namespace cli

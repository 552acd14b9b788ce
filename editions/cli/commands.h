// The commands, each with its options in a file of its own.
#ifndef QEL_GRIDWORK_CLI_COMMANDS_H
#define QEL_GRIDWORK_CLI_COMMANDS_H

#include <CLI/CLI.hpp>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "failure.h"
#include "input.h"
#include "output.h"
#include "session.h"

namespace cli {

void add_info(CLI::App& app, session& s);
void add_check(CLI::App& app, session& s);
void add_convert(CLI::App& app, session& s);
void add_merge(CLI::App& app, session& s);
void add_quality(CLI::App& app, session& s);
void add_boundary(CLI::App& app, session& s);
void add_transform(CLI::App& app, session& s);
void add_clip(CLI::App& app, session& s);
void add_split(CLI::App& app, session& s);
void add_metric(CLI::App& app, session& s);
void add_formats(CLI::App& app, session& s);

/// What the commands that read files take.
struct input_options {
  std::vector<std::string> files;
  std::string from;
};

void add_input_options(CLI::App& command, input_options& options);

/// IN and OUT, and what is said about them.
struct in_out_options {
  std::string in;
  std::string from;
  output_options output;
};

/// IN and --from.
void add_in_option(CLI::App& command, std::string& in, std::string& from);
void add_in_out_options(CLI::App& command, in_out_options& options);

/// Does `work` for a file; where it fails, says so, and returns false.
template <class Work>
bool guard(session& s, const std::string& command, const std::string& file, Work work) {
  try {
    work();
    return true;
  } catch (const failure& f) {
    s.report_error(command, file, f.what(), f.result());
  } catch (const std::bad_alloc&) {
    s.report_error(command, file, "memory ran out", -199);
  }
  return false;
}

/// Says on the stream of errors what a reader left out, for commands that do not report on it.
void tell_left_out(const session& s, const std::string& name, const loaded& file);

/// Reads IN, lets `change` work on the mesh and add to the report, and writes OUT; nothing without elements, if that may be.
template <class Change>
void rewrite(session& s, const std::string& command, const in_out_options& options, Change change,
             bool may_be_empty = false) {
  loaded file;
  json object = s.object(command, options.in);
  s.leave_stdout_to(options.output.out);
  if (!guard(s, command, options.output.out, [&] { check_output(options.output); })) return;
  const bool changed = guard(s, command, options.in, [&] {
    file = load(s, options.in, options.from);
    change(file.m, object);
    if (!has_valid_nodes(file.m)) throw failure("elements have nodes that are not there; `gridwork check` tells which");
  });
  if (!changed) return;
  tell_left_out(s, options.in, file);
  guard(s, command, options.output.out, [&] {
    object.add("out", options.output.out);
    object.add("nodes", file.m.coords.cols()).add("elements", count_elements(file.m));
    if (!may_be_empty || !file.m.blocks.empty()) save(s, std::move(file.m), options.output);
    if (s.as_json) s.print(object);
  });
}

/// Prints one line of a report.
void print_count(const char* label, unsigned long long value);

}  // namespace cli

#endif

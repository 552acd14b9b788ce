#include "commands.h"

#include <cstdio>

namespace cli {

namespace {

std::vector<std::string> format_options(bool read) {
  std::vector<std::string> words;
  for (const report::format& kind : report::formats()) {
    if (!read || kind.read != nullptr) words.emplace_back(kind.option);
  }
  return words;
}

}  // namespace

void add_input_options(CLI::App& command, input_options& options) {
  command.add_option("FILE", options.files, "mesh files; - is standard input")->required();
  command.add_option("--from", options.from, "format of the files, in place of their extensions")
      ->type_name("FORMAT")
      ->check(CLI::IsMember(format_options(true)));
}

void add_in_option(CLI::App& command, std::string& in, std::string& from) {
  command.add_option("IN", in, "mesh file that is read; - is standard input")->required();
  command.add_option("--from", from, "format of IN, in place of its extension")
      ->type_name("FORMAT")
      ->check(CLI::IsMember(format_options(true)));
}

void add_in_out_options(CLI::App& command, in_out_options& options) {
  add_in_option(command, options.in, options.from);
  command.add_option("OUT", options.output.out, "mesh file that is written; - is standard output")->required();
  command.add_option("--to", options.output.to, "format of OUT, in place of its extension")
      ->type_name("FORMAT")
      ->check(CLI::IsMember(format_options(false)));
  command.add_flag("--ascii", options.output.text, "write text where the format has both (STL)");
  command.add_flag("--drop", options.output.drop, "leave out elements that the format of OUT does not hold");
  command.add_flag("-f,--force", options.output.force, "overwrite OUT if it exists; it may be IN");
}

void tell_left_out(const session& s, const std::string& name, const loaded& file) {
  if (file.left_out == 0 || s.quiet) return;
  std::fprintf(stderr, "gridwork: %s: %s left out: %s\n", printable(name).c_str(), grouped(file.left_out).c_str(),
               file.kind->left_out.words);
}

void print_count(const char* label, unsigned long long value) {
  std::printf("  %-30s %15s\n", label, grouped(value).c_str());
}

}  // namespace cli

// gridwork formats: what is read and written.
#include <cstdio>

#include "commands.h"

namespace cli {

namespace {

std::vector<std::string> extensions_of(const report::format& kind) {
  std::vector<std::string> list;
  for (const char* extension : kind.extensions) {
    if (extension != nullptr) list.emplace_back(extension);
  }
  return list;
}

json format_json(const report::format& kind) {
  json object;
  object.add("name", kind.name).add("option", kind.option).add("extensions", extensions_of(kind));
  return object.add("read", kind.read != nullptr).add("written", true);
}

void print_format(const report::format& kind) {
  std::string extensions;
  for (const std::string& extension : extensions_of(kind)) extensions += (extensions.empty() ? "" : " ") + extension;
  std::printf("%-8s  %-8s  %-16s  %-14s  %s\n", kind.name, kind.option, extensions.c_str(),
              kind.read != nullptr ? "read, written" : "written", kind.written_types);
}

void list_formats(const session& s) {
  std::vector<json> list;
  for (const report::format& kind : report::formats()) list.push_back(format_json(kind));
  json object;
  if (s.as_json) s.print(object.add("schema", 1).add("command", "formats").add("formats", list));
  if (s.as_json) return;
  for (const report::format& kind : report::formats()) print_format(kind);
}

}  // namespace

void add_formats(CLI::App& app, session& s) {
  app.add_subcommand("formats", "Lists the formats that are read and written")->callback([&s] { list_formats(s); });
}

}  // namespace cli

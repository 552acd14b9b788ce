// gridwork convert: a mesh from one format to another.
#include <memory>

#include "commands.h"

namespace cli {

void add_convert(CLI::App& app, session& s) {
  CLI::App* command = app.add_subcommand("convert", "Writes a mesh in another format, by the extension of the file");
  const auto options = std::make_shared<in_out_options>();
  add_in_out_options(*command, *options);
  command->callback([&s, options] { rewrite(s, "convert", *options, [](report::mesh&, json&) {}); });
}

}  // namespace cli

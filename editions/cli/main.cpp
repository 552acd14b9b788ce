// gridwork: the library's functions on mesh files, from a shell.
#include <algorithm>
#include <cstdio>
#include <numeric>

#include "commands.h"
#include "generate.h"

namespace cli {

namespace {

std::size_t edit_distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

// The command that is likely to be meant, in words; empty where none is.
std::string suggestion(CLI::App& app, const std::string& word) {
  std::string nearest;
  std::size_t least = word.size() / 2 + 1;  // as many changes make another word
  for (const CLI::App* command : app.get_subcommands(nullptr)) {
    const std::size_t distance = edit_distance(word, command->get_name());
    if (distance < least) least = distance, nearest = command->get_name();
  }
  return nearest.empty() ? nearest : "; did you mean \"" + nearest + "\"?";
}

bool is_command(CLI::App& app, const std::string& word) {
  const std::vector<CLI::App*> commands = app.get_subcommands(nullptr);
  return std::any_of(commands.begin(), commands.end(), [&](const CLI::App* c) { return c->get_name() == word; });
}

bool takes_value(CLI::App& app, const std::string& word) {
  const CLI::Option* option = app.get_option_no_throw(word);
  return option != nullptr && option->get_expected_max() != 0;
}

// The first argument that is no option, if no command has that name; null when all is well.
const char* unknown_command(CLI::App& app, int argc, char** argv) {
  for (int k = 1; k < argc; ++k) {
    if (argv[k][0] != '-') return is_command(app, argv[k]) ? nullptr : argv[k];
    if (takes_value(app, argv[k])) ++k;
  }
  return nullptr;
}

[[noreturn]] void print_generated(const CLI::App& app, const std::string& what) {
  std::fputs(generate(app, what).c_str(), stdout);
  throw CLI::Success();
}

void add_all(CLI::App& app, session& s) {
  app.set_help_flag("-h,--help", "print what there is to say about the program or a command");
  app.add_flag("--json", s.as_json, "print one JSON object a line and file");
  app.add_flag("-q,--quiet", s.quiet, "say nothing but results and errors");
  app.add_option("--color", s.color, "colours: auto (on a terminal), always, never")
      ->type_name("WHEN")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  app.add_option_function<std::string>(
         "--generate", [&app](const std::string& what) { print_generated(app, what); },
         "print the man page or the completion of a shell")
      ->type_name("TEXT")
      ->check(CLI::IsMember(generated_texts))
      ->trigger_on_parse();
  app.set_version_flag("--version", std::string("gridwork ") + qel::gridwork::version(), "print the version");
  app.require_subcommand(1);
  app.fallthrough();
  for (const auto add : {add_info, add_check, add_convert, add_merge, add_quality, add_boundary, add_transform,
                         add_clip, add_split, add_metric, add_formats})
    add(app, s);
}

// In their order.
std::string words_of_extras(const CLI::App& app) {
  std::string words;
  for (const std::string& extra : app.remaining(true)) words += " " + printable(extra);
  return "not expected:" + words;
}

std::string words_of(const CLI::App& app, const CLI::ParseError& problem) {
  if (problem.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) return words_of_extras(app);
  return app.get_subcommands().empty() ? "a command is required" : printable(problem.what());
}

// Help and versions are results; all else that parsing throws is an error.
int end_of_parsing(const CLI::App& app, const CLI::ParseError& problem) {
  if (problem.get_exit_code() == 0) return app.exit(problem);
  std::fprintf(stderr, "gridwork: %s\nRun `gridwork --help` for more.\n", words_of(app, problem).c_str());
  return error;
}

int run(int argc, char** argv) {
  session s;
  CLI::App app("Finite-element meshes: looked at, checked, cleaned and converted.", "gridwork");
  add_all(app, s);
  if (const char* word = unknown_command(app, argc, argv)) {
    std::fprintf(stderr, "gridwork: there is no command \"%s\"%s\nRun `gridwork --help` for more.\n",
                 printable(word).c_str(), suggestion(app, word).c_str());
    return error;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& problem) {
    const int status = end_of_parsing(app, problem);
    return std::max(status, s.finish());
  }
  return s.finish();
}

}  // namespace

}  // namespace cli

int main(int argc, char** argv) {
  cli::replacement::remove_all_on_signals();
  try {
    return cli::run(argc, argv);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "gridwork: %s\n", problem.what());
    return cli::error;
  }
}

// The man page and the completions of shells, made from the options that the program takes.
#ifndef QEL_GRIDWORK_CLI_GENERATE_H
#define QEL_GRIDWORK_CLI_GENERATE_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace cli {

/// What is told of an option or, without names, of an argument.
struct option_text {
  std::vector<std::string> names;    ///< with their dashes, the short one first
  std::string value;                 ///< what stands behind it; empty for a flag
  std::vector<std::string> choices;  ///< all values that it takes, where these are few
  std::string words;
  bool is_many = false;  ///< may be given several times
};

std::vector<option_text> options_of(const CLI::App& command);
std::vector<option_text> arguments_of(const CLI::App& command);

/// The commands, in their order.
std::vector<const CLI::App*> commands_of(const CLI::App& app);

/// The text of the man page, or of a completion: `what` is one of generated_texts.
std::string generate(const CLI::App& app, const std::string& what);

inline const std::vector<std::string> generated_texts = {"man", "bash", "zsh", "fish"};

std::string man_page(const CLI::App& app);
std::string bash_completion(const CLI::App& app);
std::string zsh_completion(const CLI::App& app);
std::string fish_completion(const CLI::App& app);

/// Every command has this option.
bool is_help(const option_text& option);

std::vector<std::string> split(const std::string& text, char separator);
std::string joined(const std::vector<std::string>& words, const char* separator);

}  // namespace cli

#endif

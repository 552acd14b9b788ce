#include "generate.h"

namespace cli {

namespace {

option_text text_of(const CLI::Option& option) {
  option_text text;
  for (const std::string& name : option.get_snames()) text.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) text.names.push_back("--" + name);
  text.words = option.get_description();
  const std::string type = option.get_type_name();
  const std::size_t open = type.find('{'), close = type.rfind('}');
  if (open != std::string::npos && close != std::string::npos)
    text.choices = split(type.substr(open + 1, close - open - 1), ',');
  if (option.get_expected_max() != 0) text.value = type.substr(0, type.find(':'));
  text.is_many = option.get_expected_max() >= CLI::detail::expected_max_vector_size;
  return text;
}

std::vector<option_text> texts_of(const CLI::App& command, bool positional) {
  std::vector<option_text> all;
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_positional() != positional || option->get_group().empty()) continue;
    all.push_back(text_of(*option));
    if (positional) all.back().value = option->get_name(true);
  }
  return all;
}

}  // namespace

std::vector<option_text> options_of(const CLI::App& command) { return texts_of(command, false); }

std::vector<option_text> arguments_of(const CLI::App& command) { return texts_of(command, true); }

std::vector<const CLI::App*> commands_of(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

bool is_help(const option_text& option) { return option.names.back() == "--help"; }

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> words(1);
  for (const char c : text) {
    if (c == separator)
      words.emplace_back();
    else
      words.back() += c;
  }
  return words;
}

std::string joined(const std::vector<std::string>& words, const char* separator) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
  return text;
}

std::string generate(const CLI::App& app, const std::string& what) {
  if (what == "bash") return bash_completion(app);
  if (what == "zsh") return zsh_completion(app);
  return what == "fish" ? fish_completion(app) : man_page(app);
}

}  // namespace cli

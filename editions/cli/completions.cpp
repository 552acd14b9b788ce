// Completions of bash, zsh and fish.
#include "generate.h"

namespace cli {

namespace {

std::vector<std::string> names_of(const std::vector<option_text>& options) {
  std::vector<std::string> all;
  for (const option_text& option : options) all.insert(all.end(), option.names.begin(), option.names.end());
  return all;
}

std::vector<std::string> names_of(const std::vector<const CLI::App*>& commands) {
  std::vector<std::string> all;
  all.reserve(commands.size());
  for (const CLI::App* command : commands) all.push_back(command->get_name());
  return all;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// Within single quotes of a shell.
std::string quoted(const std::string& text) { return "'" + replaced(text, "'", "'\\''") + "'"; }

// --- bash -----------------------------------------------------------------------------------------------------------

// What may stand behind the options of a command that take a value; nothing where that is free.
std::string bash_values(const std::vector<option_text>& options, const std::string& command) {
  std::string cases;
  for (const option_text& option : options) {
    if (option.value.empty()) continue;
    const std::string words = joined(option.choices, " ");
    cases += "    " + command + "/" + joined(option.names, ("|" + command + "/").c_str()) + ") COMPREPLY=(";
    cases += (words.empty() ? "" : "$(compgen -W '" + words + "' -- \"$word\")") + "); return ;;\n";
  }
  return cases;
}

constexpr const char* bash_start = R"(  for ((k = 1; k < COMP_CWORD; ++k)); do
    [[ " $commands " == *" ${COMP_WORDS[k]} "* ]] && command=${COMP_WORDS[k]} && break
  done
  case $command/$before in
)";

constexpr const char* bash_end = R"(    *) words+=" $commands" ;;
  esac
  if [[ $word == -?* || -z $command ]]; then
    COMPREPLY=($(compgen -W "$words" -- "$word"))
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}
complete -F _gridwork gridwork
)";

// --- zsh ------------------------------------------------------------------------------------------------------------

std::string zsh_words(const std::string& text) {
  return replaced(replaced(replaced(text, "[", "\\["), "]", "\\]"), ":", "\\:");
}

std::string zsh_option(const option_text& option) {
  std::string value;
  if (!option.value.empty())
    value = ":" + option.value + ":" + (option.choices.empty() ? " " : "(" + joined(option.choices, " ") + ")");
  const std::string rest = "[" + zsh_words(option.words) + "]" + value;
  if (option.names.size() == 1) return " \\\n    " + quoted(option.names[0] + rest);
  const std::string exclusive = "(" + joined(option.names, " ") + ")";
  return " \\\n    " + quoted(exclusive) + "{" + joined(option.names, ",") + "}" + quoted(rest);
}

std::string zsh_arguments(const CLI::App& app, const CLI::App& command) {
  std::string text = "  _arguments";
  for (const option_text& option : options_of(app)) text += zsh_option(option);
  for (const option_text& option : options_of(command)) {
    if (!is_help(option)) text += zsh_option(option);
  }
  return text + (arguments_of(command).empty() ? "" : " \\\n    '*:file:_files'") + " ;;\n";
}

// --- fish -----------------------------------------------------------------------------------------------------------

std::string fish_option(const option_text& option, const std::string& condition) {
  std::string line = "complete -c gridwork" + condition;
  for (const std::string& name : option.names)
    line += name.compare(0, 2, "--") == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1);
  if (!option.value.empty()) line += " -x";
  if (!option.choices.empty()) line += " -a " + quoted(joined(option.choices, " "));
  return line + " -d " + quoted(option.words) + "\n";
}

std::string fish_command(const CLI::App& command) {
  const std::string& name = command.get_name();
  const std::string behind = " -n '__fish_seen_subcommand_from " + name + "'";
  std::string text =
      "complete -c gridwork -n __fish_use_subcommand -f -a " + name + " -d " + quoted(command.get_description()) + "\n";
  for (const option_text& option : options_of(command)) text += fish_option(option, behind);
  return arguments_of(command).empty() ? text + "complete -c gridwork" + behind + " -f\n" : text;
}

}  // namespace

std::string bash_completion(const CLI::App& app) {
  std::string values = bash_values(options_of(app), "*"), words;
  for (const CLI::App* command : commands_of(app)) {
    const std::vector<option_text> options = options_of(*command);
    values += bash_values(options, command->get_name());
    words += "    " + command->get_name() + ") words+=' " + joined(names_of(options), " ") + "' ;;\n";
  }
  return "# bash completion of gridwork, made by `gridwork --generate bash`\n_gridwork() {\n"
         "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command='' k\n"
         "  local words='" +
         joined(names_of(options_of(app)), " ") + "' commands='" + joined(names_of(commands_of(app)), " ") + "'\n" +
         bash_start + values + "  esac\n  case $command in\n" + words + bash_end;
}

std::string zsh_completion(const CLI::App& app) {
  std::string names, cases, options;
  for (const CLI::App* command : commands_of(app)) {
    names += "  " + quoted(zsh_words(command->get_name()) + ":" + command->get_description()) + "\n";
    cases += command->get_name() + ")\n" + zsh_arguments(app, *command);
  }
  for (const option_text& option : options_of(app)) options += zsh_option(option);
  return "#compdef gridwork\n# zsh completion of gridwork, made by `gridwork --generate zsh`\n"
         "local curcontext=$curcontext state line\nlocal -a commands=(\n" +
         names + ")\ncase ${words[2,CURRENT-1][(r)(" + joined(names_of(commands_of(app)), "|") + ")]} in\n" + cases +
         "*)\n  _arguments -C" + options +
         " \\\n    '1: :->command'\n  [[ $state == command ]] && _describe command commands ;;\nesac\n";
}

std::string fish_completion(const CLI::App& app) {
  std::string text = "# fish completion of gridwork, made by `gridwork --generate fish`\n";
  for (const option_text& option : options_of(app)) text += fish_option(option, "");
  for (const CLI::App* command : commands_of(app)) text += fish_command(*command);
  return text;
}

}  // namespace cli

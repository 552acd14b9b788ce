// The man page, in the macros of man(7).
#include <qel/gridwork.h>

#include "generate.h"
#include "report/formats.h"

namespace cli {

namespace {

constexpr const char* description = R"(.SH DESCRIPTION
.B gridwork
works on files of finite-element meshes and of triangulated surfaces:
it tells what is in them, looks for faults, merges nodes, converts, cuts and
measures.
The format of a file is that of its extension, or of
.B \-\-from
and
.BR \-\-to .
The name
.B \-
stands for standard input or output.
Results go to standard output, all else to standard error.
.PP
An output that exists is refused without
.BR \-\-force ;
it appears whole or not at all.
Nodes and elements are counted from 0.
)";

constexpr const char* ending = R"(.SH EXIT STATUS
.TP
.B 0
Done.
.TP
.B 1
The mesh is wanting: there are faults, or a bound that was given does not hold.
.TP
.B 2
An error: a wrong call, or a file that cannot be read or written.
.SH ENVIRONMENT
.TP
.B NO_COLOR
If set and not empty, nothing is coloured, unless
.B \-\-color
asks for it.
.SH EXAMPLES
.TP
.B gridwork info part.stl
Tell what is in a file.
.TP
.B gridwork merge \-t 0.01 \-\-duplicates part.stl clean.stl
Merge nodes that are less than 0.01 apart, and remove what degenerates or is
there twice.
.TP
.B gridwork boundary part.stl holes.vtk
Write the edges of the holes of a surface.
.TP
.B gridwork check \-\-closed clean.stl && gridwork convert clean.stl clean.vtk
Convert a surface that is sound and closed.
.TP
.B zcat part.stl.gz | gridwork info \-\-from stl \-
Read from a pipe.
)";

// Text in which nothing is a macro or an escape; dashes stay as they are typed.
std::string plain(const std::string& text) {
  std::string safe;
  for (const char c : text) {
    if (c == '\\')
      safe += "\\e";
    else
      safe += c == '-' ? "\\-" : std::string(1, c);
  }
  return safe.empty() || (safe[0] != '.' && safe[0] != '\'') ? safe : "\\&" + safe;
}

// A sentence, in lines of less than 80 characters.
std::string sentence(const std::string& text) {
  std::string lines, line;
  for (const std::string& word : split(text, ' ')) {
    if (line.size() + word.size() > 70) lines += plain(line) + "\n", line.clear();
    line += (line.empty() ? "" : " ") + word;
  }
  return lines + plain(line) + ".\n";
}

std::string bold(const std::string& text) { return "\\fB" + plain(text) + "\\fR"; }

std::string italic(const std::string& text) { return "\\fI" + plain(text) + "\\fR"; }

std::string option_entry(const option_text& option) {
  std::string names;
  for (const std::string& name : option.names) names += (names.empty() ? "" : ", ") + bold(name);
  std::string value = option.value.empty() ? "" : " " + italic(option.value);
  if (!option.choices.empty()) value = " " + plain(joined(option.choices, "|"));
  return ".TP\n" + names + value + "\n" + sentence(option.words);
}

std::string argument_entry(const option_text& argument) {
  return ".TP\n" + italic(argument.value) + (argument.is_many ? " ..." : "") + "\n" + sentence(argument.words);
}

std::string command_section(const CLI::App& command) {
  std::string head = bold("gridwork " + command.get_name()) + " [" + italic("options") + "]";
  std::string entries;
  for (const option_text& argument : arguments_of(command)) {
    head += " " + italic(argument.value) + (argument.is_many ? " ..." : "");
    entries += argument_entry(argument);
  }
  for (const option_text& option : options_of(command)) {
    if (!is_help(option)) entries += option_entry(option);
  }
  return ".SS " + head + "\n" + sentence(command.get_description()) + entries;
}

std::string format_entry(const report::format& kind) {
  std::string extensions;
  for (const char* extension : kind.extensions) extensions += extension == nullptr ? "" : std::string(" ") + extension;
  const std::string use = kind.read != nullptr ? "read and written" : "written";
  return ".TP\n" + bold(kind.option) + " (" + plain(extensions.substr(1)) + ")\n" +
         sentence(std::string(kind.name) + ", " + use + ": " + kind.written_types);
}

}  // namespace

std::string man_page(const CLI::App& app) {
  const std::string version = qel::gridwork::version();
  std::string page = ".TH GRIDWORK 1 \"\" \"gridwork " + version + "\" \"User Commands\"\n.SH NAME\n";
  page += "gridwork \\- look at, check, clean and convert finite\\-element meshes\n.SH SYNOPSIS\n";
  page += bold("gridwork") + " [" + italic("options") + "] " + italic("command") + " [" + italic("options") + "] " +
          italic("file") + " ...\n" + description + ".SH OPTIONS\nThey may stand before or behind the command.\n";
  for (const option_text& option : options_of(app)) page += option_entry(option);
  page += ".SH COMMANDS\n";
  for (const CLI::App* command : commands_of(app)) page += command_section(*command);
  page += ".SH FORMATS\n";
  for (const report::format& kind : report::formats()) page += format_entry(kind);
  return page + ending;
}

}  // namespace cli

#include "session.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "report/utf8.h"

namespace cli {

json session::object(std::string_view command, std::string_view file) const {
  json object;
  object.add("schema", 1).add("command", command).add("file", file);
  return object;
}

void session::print(const json& object) const { std::printf("%s\n", object.text().c_str()); }

void session::report_error(std::string_view command, std::string_view file, std::string_view words, int result) {
  note(error);
  const std::string where = file.empty() ? "" : printable(file) + ": ";
  std::fflush(stdout);
  std::fprintf(stderr, "%s: %s%s\n", strong("gridwork", true).c_str(), where.c_str(), printable(words).c_str());
  if (!as_json) return;
  json cause;
  cause.add("code", result).add("message", words);
  print(object(command, file).add("error", cause));
}

int session::finish() {
  errno = 0;
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status_;
  if (errno != EPIPE) std::fprintf(stderr, "gridwork: standard output: %s\n", std::strerror(errno));
  return error;
}

bool session::has_color(int descriptor) const {
  if (color != "auto") return color == "always";
  const char* forbidden = std::getenv("NO_COLOR");
  return (forbidden == nullptr || *forbidden == '\0') && isatty(descriptor) == 1;
}

std::string session::strong(std::string_view word, bool on_errors) const {
  if (!has_color(on_errors ? STDERR_FILENO : STDOUT_FILENO)) return std::string(word);
  return (on_errors ? "\033[1;31m" : "\033[1m") + std::string(word) + "\033[0m";
}

std::string grouped(unsigned long long value) {
  std::string digits = std::to_string(value);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, " ");
  return digits;
}

// Control characters lie below the blank, at DEL, and in UTF-8 between C2 80 and C2 9F.
std::string printable(std::string_view text) {
  std::string safe;
  while (!text.empty()) {
    const std::size_t length = report::utf8_length(text);
    const auto first = static_cast<unsigned char>(text[0]);
    const bool steers =
        length == 0 || first < 0x20 || first == 0x7F || (first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0);
    safe += steers ? "?" : std::string(text.substr(0, length));
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return safe;
}

}  // namespace cli

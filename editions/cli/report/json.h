// Objects in JSON, in the order in which their members are added.
#ifndef QEL_GRIDWORK_CLI_REPORT_JSON_H
#define QEL_GRIDWORK_CLI_REPORT_JSON_H

#include <cmath>
#include <concepts>
#include <string>
#include <string_view>
#include <vector>

namespace report {

/// The fewest digits that read back as the same number, which is finite.
std::string shortest_number(double value);

class json {
 public:
  template <class Value>
  json& add(std::string_view name, const Value& value) {
    text_ += text_.empty() ? "{" : ",";
    text_ += quoted(name) + ":" + written(value);
    return *this;
  }

  std::string text() const { return text_.empty() ? "{}" : text_ + "}"; }

 private:
  static std::string written(const json& object) { return object.text(); }
  static std::string written(std::string_view value) { return quoted(value); }
  static std::string written(const std::string& value) { return quoted(value); }
  static std::string written(const char* value) { return quoted(value); }
  static std::string written(bool value) { return value ? "true" : "false"; }

  static std::string written(std::integral auto value) { return std::to_string(value); }

  // JSON has no word for what is not finite.
  static std::string written(double value) { return std::isfinite(value) ? shortest_number(value) : "null"; }

  template <class Value>
  static std::string written(const std::vector<Value>& values) {
    std::string list;
    for (const Value& value : values) list += (list.empty() ? "" : ",") + written(value);
    return "[" + list + "]";
  }

  static std::string quoted(std::string_view text);

  std::string text_;
};

}  // namespace report

#endif

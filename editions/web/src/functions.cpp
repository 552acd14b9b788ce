// What JavaScript calls to learn of the functions and to call them.
#include "functions.h"

#include <algorithm>
#include <string>
#include <vector>

#include "exports.h"

namespace web {

namespace {

std::vector<function> collect() {
  std::vector<function> all;
  for (const auto& rows : {index_functions(), transform_functions(), search_functions(), topology_functions(),
                           metric_functions(), file_functions()}) {
    all.insert(all.end(), rows.begin(), rows.end());
  }
  return all;
}

const std::vector<function>& functions() {
  static const std::vector<function> all = collect();
  return all;
}

std::string described() {
  std::string text;
  for (const function& f : functions()) text += std::string(f.name) + "|" + f.kinds + "|" + f.words + "\n";
  return text;
}

}  // namespace

QEL_GRIDWORK_WEB_EXPORT("functions") const char* list_functions() {
  static const std::string text = described();
  return text.c_str();
}

QEL_GRIDWORK_WEB_EXPORT("call") double call(unsigned row, slot* slots) {
  const function& f = functions()[row];
  const double result = f.call(slots);
  const std::string_view kinds = f.kinds;
  const auto parameters = std::count(kinds.begin(), kinds.end(), ',');
  for (slot* s = slots; s != slots + parameters; ++s) {
    if (s->owner != nullptr) s->owner->show_in(*s);
  }
  return result;
}

QEL_GRIDWORK_WEB_EXPORT("call_message") const char* call_message(unsigned row, int result) {
  const function& f = functions()[row];
  if (f.message == by_name) return gw::message(f.name, result);
  return gw::message(static_cast<gw::operation>(f.message), result);
}

}  // namespace web

// Prints the tables of all result codes, in Markdown, from the data of qel/gridwork/messages.h.
#include <qel/gridwork/messages.h>

#include <cstdio>

namespace gw = qel::gridwork;

int main() {
  const gw::result_code* previous = nullptr;
  for (const gw::result_code& row : gw::result_codes) {
    if (previous == nullptr || previous->call != row.call) {
      const gw::operation_name& name = gw::operation_names[static_cast<unsigned>(row.call)];
      std::printf("\n## %s%s\n\n| code | meaning |\n|---|---|\n", name.function, name.arguments);
    }
    std::printf("| %d | %s |\n", row.code, row.sentence);
    previous = &row;
  }
  return 0;
}

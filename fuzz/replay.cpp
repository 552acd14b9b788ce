// Runs a target without libFuzzer: on its seeds, and on inputs that are the same everywhere: bytes of a generator and,
// where there are seeds, edited seeds. An input that fails stays in the working folder as TARGET-failed.
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;
using std::string;

std::mt19937 bits(1);
string bytes;

std::size_t below(std::size_t n) { return n == 0 ? 0 : bits() % n; }

string content(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return string(std::istreambuf_iterator<char>(file), {});
}

/// The entries of a dictionary of libFuzzer, and what numbers and lines are cut at.
std::vector<string> words(const fs::path& dictionary) {
  std::vector<string> all = {"\n", "\r\n", " ", "-", ".", "e", "0", "1e308", "inf", string(1, '\0'), string(255, ' ')};
  std::ifstream file(dictionary);
  for (string line; std::getline(file, line);) {
    all.push_back(line.substr(1, line.find_last_of('"') - 1));
    for (std::size_t at; (at = all.back().find("\\x0a")) != string::npos;) all.back().replace(at, 4, "\n");
  }
  return all;
}

void edit(string& text, const std::vector<string>& dictionary) {
  const std::size_t at = below(text.size() + 1), n = below(12);
  const string& word = dictionary[below(dictionary.size())];
  switch (below(7)) {
    case 0:
      return void(text.resize(at));
    case 1:
      return void(text.erase(at, n));
    case 2:
      return void(text.insert(at, word));
    case 3:
      return void(text.replace(at, n, word));
    case 4:
      return void(text.insert(below(text.size() + 1), text.substr(at, 8 * n)));
    case 5:  // lines are longer than the pieces in which they are read, or just not
      return void(text.insert(at, 230 + below(40), " 0"[below(2)]));
    default:
      if (at < text.size()) text[at] = static_cast<char>(bits());
  }
}

void run() { LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()); }

}  // namespace

int main() {
  const fs::path folder = QEL_FUZZ_FOLDER, seed_folder = folder / "seeds" / QEL_FUZZ_TARGET;
  std::signal(SIGABRT, [](int) { std::ofstream(QEL_FUZZ_TARGET "-failed", std::ios::binary) << bytes; });
  std::vector<string> seeds;
  if (fs::is_directory(seed_folder)) {
    for (const auto& entry : fs::directory_iterator(seed_folder)) seeds.push_back(content(entry.path()));
  }
  std::sort(seeds.begin(), seeds.end());
  for (const string& seed : seeds) bytes = seed, run();
  const std::vector<string> dictionary = words(folder / QEL_FUZZ_TARGET ".dict");
  for (unsigned k = 0; k < QEL_FUZZ_INPUTS; ++k) {
    const bool edited = !seeds.empty() && k % 4 != 0;
    bytes = edited ? seeds[below(seeds.size())] : string(below(2000), '\0');
    for (char& c : bytes) c = edited ? c : static_cast<char>(bits());
    for (std::size_t edits = edited ? 1 + below(3) : 0; edits > 0; --edits) edit(bytes, dictionary);
    run();
  }
  return 0;
}

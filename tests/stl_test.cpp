// STL files: grammar, numbers, damage, merging and writing, held against the plain reader and writer of
// stl_reference.h.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <clocale>
#include <csignal>
#include <cstring>
#include <fstream>
#include <thread>

#include "core/growth.h"
#include "core/limits.h"
#include "facts.h"
#include "io/stl_geometry.h"
#include "io/text/line_reader.h"
#include "random_meshes.h"
#include "stl_reference.h"
#include "written_file.h"

namespace {

namespace fs = std::filesystem;
namespace gw = qel::gridwork;
using namespace std::string_literals;
using qel::dense2D;
using random_meshes::same_bits;
using std::string;
using corners = std::array<float, 9>;

struct mesh {
  dense2D<double> coords;
  dense2D<unsigned> triangles;
  int code = 1;
  std::uint64_t in_file = 9;  // triangles
};

struct file_case {
  string bytes;
  int code;
  unsigned nodes, triangles;
};

string shown(const string& bytes) { return testing::PrintToString(bytes.substr(0, 1500)); }

string replaced(string text, const string& from, const string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

/// One facet as text, with three vertex lines.
string facet(const string& a, const string& b, const string& c) {
  return " facet normal 0 0 1\n  outer loop\n   vertex " + a + "\n   vertex " + b + "\n   vertex " + c +
         "\n  endloop\n endfacet\n";
}

string solid(const string& facets) { return "solid part\n" + facets + "endsolid part\n"; }

string binary(std::uint32_t count, const std::vector<corners>& triangles, const string& header = "") {
  string bytes = header;
  bytes.resize(80);
  bytes.append(reinterpret_cast<const char*>(&count), 4);
  for (const corners& t : triangles) {
    bytes.append(12, '\x7f').append(reinterpret_cast<const char*>(t.data()), 36).append("\x20\x21");
  }
  return bytes;
}

string binary(const std::vector<corners>& triangles) { return binary(unsigned(triangles.size()), triangles); }

class stl : public ::testing::Test, protected written_file {
 protected:
  /// Reads into outputs that hold something already.
  static mesh read(const string& name) {
    mesh m{dense2D<double>(2, 5, 7.0), dense2D<unsigned>(4, 9, 3)};
    m.code = gw::STL_input(name.c_str(), m.coords, m.triangles, m.in_file);
    return m;
  }

  /// Reads a file with the library and with the reference and compares everything.
  static mesh read_twice(const string& name, const string& label) {
    mesh m = read(name), expected;
    expected.code = stl_reference::STL_input(name.c_str(), expected.coords, expected.triangles, expected.in_file);
    EXPECT_ALL(m.code == expected.code, m.in_file == expected.in_file) << label;
    EXPECT_ALL(same_bits(m.coords, expected.coords), m.triangles == expected.triangles) << label;
    EXPECT_TRUE(m.code == 0 || (m.coords == dense2D<double>() && m.triangles == dense2D<unsigned>())) << label;
    return m;
  }

  mesh read_bytes(const string& bytes) const { return read_twice(hold(bytes), shown(bytes)); }

  template <std::size_t N>
  void expect_all(const file_case (&cases)[N]) const {
    for (const file_case& c : cases) {
      const mesh m = read_bytes(c.bytes);
      EXPECT_ALL(m.code == c.code, m.coords.cols() == c.nodes, m.triangles.cols() == c.triangles)
          << shown(c.bytes) << ": " << m.code << ' ' << m.coords.cols() << ' ' << m.triangles.cols();
      EXPECT_TRUE(c.nodes == 0 || (m.coords.rows() == 3 && m.triangles.rows() == 3)) << shown(c.bytes);
    }
  }
};

TEST_F(stl, text_grammar) {
  const string one = facet("0 0 0", "1 0 0", "0 1 0"), good = solid(one);
  const string next = facet("1 0 0", "0 1 0", "1 1 0");
  string upper = good;
  for (char& c : upper) c = static_cast<char>(std::toupper(c));
  const auto with = [&](const string& from, const string& to) { return replaced(good, from, to); };
  const file_case cases[] = {
      {good, 0, 3, 1},
      {upper, 0, 3, 1},
      {with("\n", "\r\n"), 0, 3, 1},
      {with(" ", "\t"), -3, 0, 0},  // "outer\tloop" is not "outer loop"
      {replaced(with(" ", "\t"), "outer\t", "outer "), 0, 3, 1},
      {good.substr(0, good.size() - 1), 0, 3, 1},
      {"", -2, 0, 0},
      {"solid", -2, 0, 0},  // as text -3, but the code of the binary reader counts
      {"solid\nendsolid", 0, 0, 0},
      {"endsolid\nENDSOLID\n", 0, 0, 0},
      {"xxSoLiDxx color\nendsolid\n", 0, 0, 0},
      {"\n" + good, -3, 0, 0},
      {good + "\n" + one + "endsolid\n", -3, 0, 0},
      {good + " solid\n", -3, 0, 0},
      {good + "solid\nendsolid", 0, 3, 1},
      {good + solid(next), 0, 4, 2},
      {good + one + "endsolid\n", 0, 3, 2},  // a facet directly behind "endsolid"
      {solid(one + "\n" + next), -3, 0, 0},
      {solid("my COLOR 1 2 3\n" + one + "color\ncolor\n" + next + "endfacet color\n"), 0, 4, 2},
      {with("endsolid part", "endsolid color"), -3, 0, 0},
      {with("endsolid part", "endsolid color\nendsolid"), 0, 3, 1},
      {with("  outer loop", "color\n  outer loop"), -3, 0, 0},
      {with("facet normal", "facetnormal"), 0, 3, 1},
      {with("facet normal ", "facet \t\v\f normal"), 0, 3, 1},
      {with("facet normal", "a facet normal"), -3, 0, 0},
      {with("normal 0 0 1", "normal nan -inf 0x1p3 and more"), 0, 3, 1},
      {with("outer loop", "an outer loop;"), 0, 3, 1},
      {with("vertex ", "vertex"), 0, 3, 1},
      {with("vertex 1 0 0", "vertex 1 0 0 5 comment"), 0, 3, 1},
      {with("vertex 1 0 0", "vertex 1+0-0"), 0, 3, 1},
      {with("endloop", "endloop endfacet"), 0, 3, 1},
      {with("0 1 0\n", "0 1 0\0junk\n"s), 0, 3, 1},
      {with("   vertex 0 1", "\0vertex 0 1"s), -3, 0, 0},
      {with("0 0 0\n", "0 0 0 \0\0\0"s), -3, 0, 0},
      {solid(facet("0 0 0", "0 0 0", "1 0 0") + facet("0 0 0", "1 1 1", "2 2 2")), 0, 6, 2},  // unmerged
      {solid(one + facet("0 0 0", "0 0 0", "1 0 0")), 0, 3, 1},
      {solid(one + facet("1.03474 0 0", "0 1 0", "1 1 0")), 0, 4, 2},  // 5 % of the smallest height: 0.0347465
      {solid(one + facet("1.03475 0 0", "0 1 0", "1 1 0")), 0, 5, 2},
      {solid(one + facet("9 0 0", "9.9998 0 0", "9 .9998 0") + facet("-.035352 0 0", "-5 0 0", "0 -5 0")), 0, 9, 3},
      {solid(one + facet("9 0 0", "9.9998 0 0", "9 .9998 0") + facet("-.035345 0 0", "-5 0 0", "0 -5 0")), 0, 8, 3},
      {solid(one + facet("inf 0 0", "0 1 0", "nan 1 0")), 0, 5, 2},
  };
  expect_all(cases);
}

const std::vector<corners> two_triangles = {{0, 0, 0, 1, 0, 0, 0, 1, 0}, {1, 0, 0, 0, 1, 0, 1, 1, .5F}};

TEST_F(stl, binary_counts_and_lengths) {
  const string two = binary(two_triangles);
  const file_case cases[] = {
      {two, 0, 4, 2},
      {binary(2, two_triangles, "solid\nendsolid\nsolid"), 0, 4, 2},
      {binary(2, two_triangles, "solid\nendsolid\n"), 0, 4, 2},
      {binary(0, two_triangles, "solid\nendsolid\n"), 0, 0, 0},
      {binary(1, two_triangles), 0, 3, 1},
      {binary(~0U, two_triangles), 0, 0, 0},
      {binary(1U << 31, {}), 0, 0, 0},
      {binary(3, two_triangles), -3, 0, 0},
      {binary(0x7fffffffU, two_triangles) + string(16, '\0'), -3, 0, 0},
      {string(80, '\n'), -3, 0, 0},
      {string(79, 'x'), -2, 0, 0},
      {binary(1, {{1, 1, 1, 1, 1, 1, 2, 2, 2}}), 0, 3, 1},
  };
  expect_all(cases);
}

TEST_F(stl, the_exact_pass_ends_at_100000_triangles) {
  constexpr unsigned border = 100000;
  std::vector<corners> triangles(border + 1000, {-100, 0, 0, -99, 0, 0, -100, 1, 0});
  // A chain of near nodes a, b, c, met in the order a, c, c again, b. Two copies of c in one block become one node,
  // which follows b to a. A copy in the next block comes before b, and c survives.
  const float a = 0, b = .03F, c = .06F;
  for (const unsigned chain : {0U, 1U}) {
    const std::pair<unsigned, float> members[] = {
        {4 * chain, a}, {4 * chain + 1, c}, {border - 1 + chain, c}, {border + 4 + chain, b}};
    for (const auto& [at, x] : members) {
      const auto y = static_cast<float>(10 * chain), z = static_cast<float>(3 + at % 97);
      triangles[at] = {x, y, 0, x + 1, y, z, x, y + 1, z};
    }
  }
  const mesh m = read_twice(hold(binary(triangles)), "border");
  const auto has = [&](double x, double y) {
    bool found = false;
    for (unsigned j = 0; j < m.coords.cols(); ++j)
      found |= m.coords(0, j) == x && m.coords(1, j) == y && m.coords(2, j) == 0;
    return found;
  };
  EXPECT_ALL(has(a, 0), !has(b, 0), !has(c, 0)) << "copies of c in one block";
  EXPECT_ALL(has(a, 10), !has(b, 10), has(c, 10)) << "copies of c in two blocks";
}

TEST_F(stl, blocks_of_degenerate_triangles_come_first) {
  std::vector<corners> triangles;
  for (unsigned k = 0; k < 100300; ++k) {  // needles along a line, with common nodes
    const float x = static_cast<float>(k * 7 % 1000), y = static_cast<float>(k * 11 % 1000);
    triangles.push_back({x, 0, 0, y, 0, 0, x, 0, 0});
  }
  mesh m = read_twice(hold(binary(triangles)), "degenerate");
  EXPECT_ALL(m.coords.cols() == 3 * triangles.size(), m.triangles.cols() == triangles.size()) << "unmerged";
  for (unsigned k = 0; k < 500; ++k) {
    const float x = static_cast<float>(k);
    triangles.push_back({x, 0, 0, x + 1, 0, 0, x, 1, 0});
  }
  m = read_twice(hold(binary(triangles)), "degenerate, then others");
  EXPECT_ALL(m.coords.cols() == 1001, m.triangles.cols() == 500);
}

TEST_F(stl, heights_are_those_of_the_reference_and_the_short_cut_is_safe) {
  std::mt19937_64 random(17);
  unsigned skipped = 0;
  for (unsigned run = 0; run < 200000 && !HasFailure(); ++run) {
    gw::detail::io::triangle t;
    stl_reference::vec3 p[3];
    const int exponent = run % 4 == 0 ? static_cast<int>(random() % 1100) - 550 : 0,
              flat = static_cast<int>(random() % 30);
    for (int k = 0; k < 3; ++k) {
      double x[3];  // small integers, so that equal distances are frequent, or nearly flat
      for (double& value : x) value = static_cast<double>(random() % 7);
      if (run % 2 == 0) x[2] = std::ldexp(x[2] / 7, -flat);
      if (run % 8 == 7 && k != 0) x[0] += 1e-9 * static_cast<double>(random() % 100), x[1] = 3, x[2] = 5;
      p[k] = {std::ldexp(x[0], exponent), std::ldexp(x[1], exponent),
              std::ldexp(x[2], run % 3 == 0 ? -exponent : exponent)};
      t.corners[k] = {p[k].x, p[k].y, p[k].z};
    }
    const double height = stl_reference::smallest_square_height(p), ours = gw::detail::io::smallest_squared_height(t);
    EXPECT_TRUE(ours == height || (ours != ours && height != height)) << run << ": " << ours << ' ' << height;
    for (const double bound : {height, height * (1 + 1e-15), height * (1 - 1e-9), height * .99, 1e-320, height * 1.1}) {
      const bool higher = bound > 0 && gw::detail::io::is_surely_higher(t, bound);
      skipped += higher;
      EXPECT_TRUE(!higher || height >= bound) << run << ": " << height << " for " << bound;
    }
  }
  EXPECT_GT(skipped, 100000U);
}

TEST_F(stl, output_codes) {
  const dense2D<unsigned> one(3, 1, {0, 1, 2}), beyond(3, 1, {0, 1, 3});
  struct {
    unsigned rows;
    dense2D<unsigned> triangles;
    int code;
  } const cases[] = {{0, one, -2},
                     {1, beyond, -2},
                     {4, one, -2},
                     {3, beyond, -3},
                     {3, dense2D<unsigned>(3, 1, {0, 1, ~0U}), -3},
                     {3, dense2D<unsigned>(4, 1, 0), -3},
                     {2, one, 0},
                     {3, dense2D<unsigned>(0, 9), 0}};
  for (const bool ascii : {true, false}) {
    for (const auto& c : cases) {
      hold("old contents");
      EXPECT_EQ(gw::STL_output(path(), dense2D<double>(c.rows, 3, 1.0), c.triangles, ascii), c.code);
      EXPECT_EQ(content().empty(), c.code != 0);
    }
  }
}

TEST_F(stl, normals_of_extreme_triangles) {
  const struct {
    double size;
    const char* z;
  } cases[] = {{1e-70, "1.000000e+00"}, {1e-100, "1.000000e-200"}, {1e-170, "0.000000e+00"},
               {1e70, "1.000000e+00"},  {1e100, "0.000000e+00"},   {1e170, "nan"}};
  for (const auto& c : cases) {
    const dense2D<double> coords(2, 3, {0, 0, c.size, 0, 0, c.size});
    ASSERT_EQ(gw::STL_output(path(), coords, dense2D<unsigned>(3, 1, {0, 1, 2}), true), 0);
    const string text = content(), line = text.substr(0, text.find('\n', text.find("facet")));
    EXPECT_TRUE(line.ends_with(c.z)) << c.size << ": " << line;
  }
}

TEST_F(stl, streams_that_are_no_plain_files) {
  if (fs::exists("/dev/zero")) {
    EXPECT_EQ(read_twice("/dev/zero", "endless").code, 0);
  }
  string facets;
  for (unsigned k = 0; k < 4000; ++k) facets += facet("0 0 0", "1 0 0", "0 1 " + std::to_string(k));
  const std::vector<corners> many(10000, two_triangles[1]);
  const file_case cases[] = {
      {solid(facets), 0, 4002, 4000},
      {binary(two_triangles), 0, 4, 2},
      {binary(10000, many, "solid, as some programs say"), 0, 3, 10000},
      {binary(10000, many, "solid\nendsolid\n"), 0, 3, 10000},
      {binary(10001, many), -3, 0, 0},
      {"no solid", -2, 0, 0},
      {facets, -3, 0, 0},                    // no text; as binary, its count is too large
      {solid(facets + "oops\n"), -3, 0, 0},  // the start is gone when the text turns out to be none
  };
  for (const file_case& c : cases) {
    if (gw::detail::limits::are_small && c.bytes.starts_with("solid") && c.code == 0 && c.nodes == 3) continue;
    fs::remove(path());
    ASSERT_EQ(::mkfifo(path(), 0600), 0);
    std::signal(SIGPIPE, SIG_IGN);  // a file that is refused is not read to its end
    std::thread writer([&] { std::ofstream(path()) << c.bytes; });
    const mesh m = read(path());
    writer.join();
    EXPECT_ALL(m.code == c.code, m.coords.cols() == c.nodes, m.triangles.cols() == c.triangles)
        << "case " << &c - cases << ": " << m.code << ' ' << m.coords.cols() << ' ' << m.triangles.cols();
  }
}

TEST_F(stl, sample_files_read_and_round_trip) {
#ifdef QEL_TEST_MESHES
  if (!fs::is_directory(QEL_TEST_MESHES)) GTEST_SKIP() << "no sample meshes in " QEL_TEST_MESHES;
  for (const auto& entry : fs::directory_iterator(QEL_TEST_MESHES)) {
    if (entry.path().extension() != ".stl") continue;
    const string name = entry.path().filename().string();
    const mesh m = read_twice(entry.path().string(), name);
    const bool bad = name.find("-bad-") != string::npos && name != "stl-bin-cube-bad-utf8-header.stl";
    EXPECT_EQ(m.code == 0, !bad) << name;
    if (m.code != 0) continue;
    for (const bool text : {false, true}) {
      ASSERT_EQ(gw::STL_output(path(), m.coords, m.triangles, text), 0);
      read_twice(path(), name + " rewritten");
    }
  }
  const struct {
    string name;
    unsigned nodes, triangles;
  } counted[] = {{"txt-cube-pro2stl-crlf", 8, 12},
                 {"txt-moon-utf8-name", 60, 116},
                 {"txt-star", 36, 68},
                 {"bin-star-zero-header", 36, 68},
                 {"bin-empty", 0, 0},
                 {"txt-multibody-crlf", 20, 32},
                 {"txt-faceless", 0, 0},
                 {"txt-sphere-two-solids", 12, 20},
                 {"txt-nan-normal", 4, 4},
                 {"bin-soup", 300, 100},
                 {"bin-confusing-header", 4, 4},
                 {"bin-rear-case-solid-header", 9404, 18808}};
  for (const auto& [name, nodes, triangles] : counted) {
    const mesh m = read(QEL_TEST_MESHES "/stl-" + name + ".stl");
    EXPECT_ALL(m.coords.cols() == nodes, m.triangles.cols() == triangles)
        << name << ": " << m.coords.cols() << ' ' << m.triangles.cols();
  }
#else
  GTEST_SKIP() << "built without a folder of sample meshes";
#endif
}

TEST_F(stl, files_do_not_depend_on_the_locale) {
  const string text = solid(facet("0 0 0", "1.5 0.25 0", "0 1e-1 .5") + facet("1,5 0 0 0", "1 0 0", "0 1 0"));
  const string good = solid(facet("0 0 0", "1.5 0.25 0", "0 1e-1 .5"));
  const mesh plain = read_bytes(good);
  ASSERT_EQ(plain.code, 0);
  const char* found = nullptr;
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE", "tr_TR.UTF-8", "ru_RU.UTF-8"}) {
    if (found == nullptr && std::setlocale(LC_ALL, name) != nullptr && *std::localeconv()->decimal_point == ',')
      found = name;
  }
  if (found == nullptr) GTEST_SKIP() << "no locale with a decimal comma on this machine";
  const mesh m = read(hold(good)), comma = read(hold(text));
  EXPECT_EQ(gw::STL_output(path(), plain.coords, plain.triangles, true), 0);
  std::setlocale(LC_ALL, "C");
  const string ours = content();
  EXPECT_ALL(m.code == 0, same_bits(m.coords, plain.coords), comma.code == -3);
  expect(ours, 0, [&] { return stl_reference::STL_output(path(), plain.coords, plain.triangles, true); });
}

/// Lines of all lengths against the blocks in which a file is read, and against the 255 characters of a piece.
TEST_F(stl, lines_across_the_borders_of_blocks) {
  std::mt19937 random(3);
  string facets, colour;
  while (facets.size() < 1500000) {
    const string x = std::to_string(random() % 1000);
    facets += facet("0 0 " + x + string(random() % 230, ' '), x + " 0 0", "0 1 0 " + string(random() % 200, 'x'));
    // Every piece has the word.
    for (colour = "color "; colour.size() < random() % 1200 || colour.size() % 255 < 12;) colour += "color ";
    facets += colour + string(random() % 2, '\0') + "\n";
  }
  const string text = solid(facets);
  for (const std::size_t cut : {0U, 1U, 700U, 1000000U}) {
    EXPECT_EQ(read_bytes(text.substr(0, text.size() - cut)).code, cut < 2 ? 0 : -3);
  }
}

/// Neither reading nor giving back what is not used touches it.
TEST_F(stl, memory_of_a_caller) {
  double memory[900];
  std::fill(std::begin(memory), std::end(memory), 7.0);
  dense2D<double> coords(3, 300, memory), view = coords;
  dense2D<unsigned> triangles;
  ASSERT_EQ(gw::STL_input(hold(solid(facet("0 0 0", "1 0 0", "0 1 0"))), coords, triangles), 0);
  EXPECT_FALSE(coords.is_borrowed());
  ASSERT_TRUE(view.resize(3, 2));
  gw::detail::trim(view, 0);
  EXPECT_TRUE(view.is_borrowed());
  EXPECT_TRUE(std::all_of(std::begin(memory), std::end(memory), [](double x) { return x == 7; }));
}

TEST_F(stl, tails_of_lines_can_be_dropped) {
  const string text =
      string(255, 'a') + "\n" + string(600, 'b') + "\nc\n" + string(254, 'd') + "\n\n" + string(256, 'e');
  const gw::detail::io::file file(hold(text), gw::detail::io::access::read);
  gw::detail::io::block_reader blocks(file.stream());
  ASSERT_TRUE(blocks.prepare());
  gw::detail::io::line_reader lines(blocks);
  std::vector<string> found;
  while (const char* line = lines.next_without_tail()) found.emplace_back(line, std::strcspn(line, "\n"));
  EXPECT_EQ(found,
            (std::vector<string>{string(255, 'a'), string(255, 'b'), "c", string(254, 'd'), "", string(255, 'e')}));
}

}  // namespace

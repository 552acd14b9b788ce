// OBJ files: what a reader line by line and number by number makes of them, and what a plain writer prints.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <fstream>
#include <string>

#include "core/limits.h"
#include "qel/gridwork.h"
#include "written_file.h"

namespace {

using namespace qel::gridwork;
using qel::dense2D;
using std::string;
using namespace std::string_literals;
namespace limits = qel::gridwork::detail::limits;
using matrix = dense2D<unsigned>;

template <class T>
string describe(const char* name, const dense2D<T>& m) {
  string text = m.cols() == 0 ? "" : name;
  for (std::uint64_t j = 0; j < m.cols(); ++j) {
    text += " (";
    for (unsigned i = 0; i < m.rows(); ++i) {
      text += (i == 0 ? "" : " ") + (sizeof(T) == 4 ? std::to_string(m(i, j)) : print("%.17g", double(m(i, j))));
    }
    text += ")";
  }
  return m.cols() == 0 ? "" : text + "\n";
}

struct obj {
  dense2D<double> coords{2, 2, 7.0}, normals{2, 2, 7.0}, uvs{2, 2, 7.0};
  matrix triangles{2, 2, 7U}, quads{2, 2, 7U};
  int code = 1;

  string text() const {
    return std::to_string(code) + "\n" + describe("v", coords) + describe("n", normals) + describe("t", uvs) +
           describe("3", triangles) + describe("4", quads);
  }
};

obj read(const string& path) {
  obj o;
  o.code = WavefrontOBJ_input(path.c_str(), o.coords, o.normals, o.uvs, o.triangles, o.quads);
  return o;
}

class obj_files : public ::testing::Test, protected written_file {
 protected:
  obj read_text(const string& text) const { return read(hold(text)); }
};

// A matrix that is passed for several outputs ends as one of them.
TEST_F(obj_files, one_matrix_passed_twice) {
  const string path = hold("v 0 0 0\nv 1 0 0\nvn 1 2 3\nvt 4 5\nf 1 2 1\nf 1 2 1 2\n");
  const obj usual = read(path);
  for (const bool shares : {false, true}) {  // also one with a block that others see
    dense2D<double> x;
    matrix faces;
    if (shares) x = usual.coords, faces = usual.quads;
    EXPECT_EQ(WavefrontOBJ_input(path.c_str(), x, x, x, faces, faces), 0);
    EXPECT_TRUE(x == usual.coords || x == usual.normals || x == usual.uvs);
    EXPECT_TRUE(faces == usual.triangles || faces == usual.quads);
    EXPECT_EQ(read(path).text(), usual.text());
  }
}

TEST_F(obj_files, lines_of_every_kind) {
  const string three = "v 0 0 0\nv 1 0 0\nv 0 1 0\n", nodes = "v (0 0 0) (1 0 0) (0 1 0)\n";
  const struct {
    string text, expected;
  } cases[] = {
      {"\r\n \t\n#v 1 2 3\nV 1 2 3\nvp 1\nvn1 2\nF 1\nusemtl f\ng v\ns off", "0\n"},
      {"v 1 2 3 4\r\n\tv\t.5 -2e-1 0x10 .1 .2 .3 x\nv 1 2 3", "0\nv (1 2 3) (0.5 -0.20000000000000001 16) (1 2 3)\n"},
      {three + "f 1 2 3\nf 1 2 3 1\nf 1 2 3 1 2\nf 1\nf\nf 3 2 1", "0\n" + nodes + "3 (0 1 2) (2 1 0)\n4 (0 1 2 0)\n"},
      {three + "vt 0 1\nvn 0 0 1\nf 1/1/1 2//1 3/1\nf 1// 2/ 3",
       "0\n" + nodes + "n (0 0 1)\nt (0 1)\n3 (0 1 2) (0 1 2)\n"},
      {"f 9 0 -1\n" + three + "f 0 4294967295 +1", "0\n" + nodes + "3 (8 0 4294967294) (3 4294967294 0)\n"},
      {three + "f 1 2 3\nf 1 2 4294967296\nf 1 1 1", "-2\n" + nodes + "3 (0 1 2)\n"},
      {"f -2147483648 1 1\nf -2147483649 1 1", "-2\n3 (2147483647 0 0)\n"},
      {"vt 1 2\nvt 1\nvt 1 2 3\nvt 3 4\nvt", "0\nt (1 2) (3 4)\n"},
      {"v 1 2 3x", "-2\n"},
      {"\xef\xbb\xbfv 9 9 9\n" + three + "f 1 2 3", "0\n" + nodes + "3 (0 1 2)\n"},  // a byte order mark
      {"v 1 2 3 \\\n4 5 6\nv 1 2 \\\n3", "-2\nv (1 2 3)\n"},
      {three + "f 1 2 3 \\\n1", "-2\n" + nodes},
      {three + "f 1 2 3 # why", "-2\n" + nodes},
      {"v 1 2 3\rv 4 5 6\rf 1 1 1\r", "0\nv (1 2 3)\n"},
      {"# all of it\rv 1 2 3\r", "0\n"},
      {"vn 1 2 3 4", "-2\n"},
      {"vn 1 2 3 x", "0\nn (1 2 3)\n"},
      {"vt 1 2 3 4", "-2\n"},
      {"f 1/1/1 2/1/1 3/1/1\nvt 0 0", "-2\n"},
      {"f 1 2 3 4 5//1", "-2\n"},
      {"f 1 2 3.0", "-2\n"},
      {"vt 0\nvn 0 0 0\nf 1/1/1/1 2 3", "-2\nn (0 0 0)\nt (0)\n"},
      {"v " + string(limits::obj_token - 2, '0') + "1 2 3", "0\nv (1 2 3)\n"},
      {"v " + string(limits::obj_token - 1, '0') + "1 2 3", "-2\n"},
      {"v 1 2 3\nv " + string(limits::obj_token - 2, '0') + "1 2 3\nv 4 5 6", "0\nv (1 2 3) (1 2 3) (4 5 6)\n"},
      {"v 1 2 3\nv " + string(limits::obj_token - 1, '0') + "1 2 3\nv 4 5 6", "-2\nv (1 2 3)\n"},
      {"f 1 2 " + string(5000, '0') + "3", "-2\n"},
      {string("v 1 2 3\0\nv 4 5 6", 16), "-2\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(read_text(c.text).text(), c.expected) << c.text.substr(0, 200);
  for (int c = 0; c < 256; ++c) EXPECT_EQ(read_text(string(1, static_cast<char>(c))).code, c == 'v' ? -2 : 0) << c;
  EXPECT_EQ(read("/nonexistent/file").text(), "-1\n");
  EXPECT_EQ(read_text("").coords.rows(), 3U);
}

/// A comment in front of a text shifts it against the blocks in which a file is read, and changes nothing.
TEST_F(obj_files, every_place_for_the_border_of_a_block) {
  const string lines =
      "v 1.25 -2e3 +3 4\r\n vt .5 .25\nvn 0 0 1\n\tf 1/1/1 2//1 3/1 \nf 12 0 7 9\n\n# v 1\nf 1 2 3 4 5\nv nan 0x1p4 "
      "2\nf 1 1 1";
  for (const string& text : {lines, lines + "\nf 1 2 x", lines + "\nv 1 2\nf 1 2 3"}) {
    const string expected = read_text(text).text();
    EXPECT_EQ(expected.substr(0, 2), text == lines ? "0\n" : "-2");
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
      for (const auto border : {limits::read_block - limits::obj_token, limits::read_block, 2 * limits::read_block}) {
        const string shifted = "#" + string(border - cut - 2, ' ') + "\n" + text;
        EXPECT_EQ(read_text(shifted).text(), expected) << border << ' ' << cut;
      }
    }
  }
}

TEST_F(obj_files, long_lines_take_no_memory) {
  const auto peak = [] {
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;  // in KiB
  };
  for (const string& part : {"# comment"s, "f "s, "v 1 2 3"s}) {
    std::ofstream file(path(), std::ios::binary);
    file << "v 1 1 1\n" << part;
    for (unsigned k = 0; k < 100000; ++k) file << string(96, ' ') << " 1  ";  // 10 MB
    for (unsigned k = 0; k < 9; ++k) file << string(10000000, ' ');
    file << "\nf 1 1 1\n";
    file.close();
    const auto before = peak();
    EXPECT_EQ(read(path()).triangles.cols(), 1U);
    EXPECT_LT(peak() - before, 4000);
  }
}

string lines(const char* keyword, const dense2D<double>& values, unsigned count) {
  string text;
  for (unsigned j = 0; j < values.cols(); ++j) {
    text += keyword;
    for (unsigned k = 0; k < count; ++k) text += print("%.8e ", k < values.rows() ? values(k, j) : 0.0);
    text += "\n";
  }
  return text;
}

TEST_F(obj_files, written_files) {
  const dense2D<double> coords(2, 4, {0, -0.5, 1e300, 5e-324, 1.0 / 3, 2, 123456789.5, -1}), normals(3, 4, 0.5),
      uvs(2, 4, 0.25), none;
  const matrix whole(5, 2, {9, 0, 1, 2, 3, 9, 3, 2, 1, 0}), t = whole.sub_matrix(1, 0, 3, 2),
                                                            q = whole.sub_matrix(1, 0, 4, 2);
  const string v = lines(" v ", coords, 3);
  const auto faces = [](const matrix& m, bool with_uv, bool with_normal) {
    string text;
    for (unsigned j = 0; j < m.cols(); ++j) {
      text += " f ";
      for (const unsigned* node = m.begin_column(j); node != m.end_column(j); ++node) {
        const string number = print("%d", *node + 1);
        text += number + "/" + (with_uv ? number : "") + "/" + (with_normal ? number : "") + " ";
      }
      text += "\n";
    }
    return text;
  };
  const string three = faces(t, false, false), four = faces(q, false, false);
  expect(v + three, 0, [&] { return WavefrontOBJ_output(path(), coords, t, ELT_FACE_MIX); });
  expect(v, 0, [&] { return WavefrontOBJ_output(path(), coords, q, ELT_FACE_MIX); });
  expect(v + four, 0, [&] { return WavefrontOBJ_output(path(), coords, q, ELT_QUAD4); });
  expect(v + three + four, 0, [&] { return WavefrontOBJ_output(path(), coords, q, t, ELT_QUAD4, ELT_TRIA3); });
  expect(v + three + three, 0, [&] { return WavefrontOBJ_output(path(), coords, t, t, ELT_TRIA3, ELT_TRIA3); });
  for (const auto* n : {&none, &normals}) {
    for (const auto* u : {&none, &uvs}) {
      const bool has_uv = !u->empty(), has_normal = !n->empty();
      expect(
          v + lines(" vt ", *u, 2) + lines(" vn ", *n, 3) + faces(t, has_uv, has_normal) + faces(q, has_uv, has_normal),
          0, [&] { return WavefrontOBJ_output(path(), coords, *n, *u, t, q); });
    }
  }
}

TEST_F(obj_files, refusals_leave_an_empty_file) {
  const dense2D<double> nodes(3, 4), two(2, 4), line(1, 4), few(3, 2), none;
  const matrix triangles(3, 1), quads(4, 1), huge(3, 1, {~0U, 0, 1});
  const auto write = [&](const auto& coords, const auto& normals, const auto& uvs, const auto& t, const auto& q) {
    return [&] { return WavefrontOBJ_output(path(), coords, normals, uvs, t, q); };
  };
  expect("", -2, write(line, few, few, quads, triangles));
  expect("", -3, write(nodes, few, few, quads, triangles));
  expect("", -3, write(nodes, two, few, quads, triangles));
  expect("", -4, write(nodes, nodes, nodes, quads, triangles));
  expect("", -5, write(nodes, nodes, two, quads, triangles));
  expect("", -6, write(nodes, none, none, triangles, triangles));
  expect("", -5, [&] { return WavefrontOBJ_output(path(), nodes, quads, ELT_TRIA3); });
  expect("", -6, [&] { return WavefrontOBJ_output(path(), nodes, quads, triangles, ELT_QUAD4, ELT_QUAD4); });
  expect(" f 0// 1// 2// \n", 0, write(dense2D<double>(3, 0), none, none, huge, matrix()));
  EXPECT_EQ(WavefrontOBJ_output("/nonexistent/file", line, triangles, ELT_TRIA3), -1);
}

}  // namespace

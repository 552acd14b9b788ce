// Files as systems differ about them: names, ends of lines, sizes.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "memory_file.h"
#include "qel/gridwork.h"

namespace {

using qel::dense2D;
using std::string;

const dense2D<double> corners(3, 3, {0, 0, 0, 1, 0, 0, 0, 1, 0});
const dense2D<unsigned> triangle(3, 1, {0, 1, 2});

string content_of(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return string(std::istreambuf_iterator<char>(file), {});
}

TEST(file, names_are_utf_8_and_lines_end_with_a_newline) {
  const std::u8string name =
      u8"gridwork-\u00e9\u20ac\U00010348-" + std::filesystem::path(std::to_string(getpid())).u8string();
  const std::filesystem::path path = std::filesystem::temp_directory_path() / name;
  const std::u8string bytes = path.u8string();
  const char* const in_utf_8 = reinterpret_cast<const char*>(bytes.c_str());
  ASSERT_EQ(qel::gridwork::STL_output(in_utf_8, corners, triangle, true), 0);
  EXPECT_TRUE(std::filesystem::exists(path));
  const string text = content_of(path);
  EXPECT_NE(text.find("vertex"), string::npos);
  EXPECT_EQ(text.find('\r'), string::npos);
  dense2D<double> coords;
  dense2D<unsigned> read;
  EXPECT_EQ(qel::gridwork::STL_input(in_utf_8, coords, read), 0);
  EXPECT_EQ(read.cols(), 1U);
  std::filesystem::remove(path);
}

TEST(file, lines_may_end_with_carriage_returns) {
  const memory_file file("v 0 0 0\r\nv 1 0 0\r\nv 0 1 0\r\nf 1 2 3\r\n");
  dense2D<double> coords, normals, uvs;
  dense2D<unsigned> triangles, quads;
  EXPECT_EQ(qel::gridwork::WavefrontOBJ_input(file.path(), coords, normals, uvs, triangles, quads), 0);
  EXPECT_EQ(triangles.cols(), 1U);
}

#if defined(__linux__)
constexpr std::uint64_t beyond_32_bits = std::uint64_t{5} << 30;

TEST(file, more_bytes_than_32_bits_count) {
  const memory_file file(
      "BEGIN BULK\nGRID,1,,0.,0.,0.\nGRID,2,,1.,0.,0.\nGRID,3,,0.,1.,0.\nCTRIA3,1,,1,2,3\nENDDATA\n");
  file.resize(beyond_32_bits);
  dense2D<double> coords;
  dense2D<unsigned> triangles;
  EXPECT_EQ(qel::gridwork::NASTRAN_input(file.path(), coords, triangles, qel::gridwork::ELT_TRIA3), 0);
  EXPECT_EQ(triangles.cols(), 1U);
}

TEST(file, more_elements_than_an_address_space_holds) {
  if (sizeof(void*) > 4) GTEST_SKIP() << "here they would be read";
  const auto count = static_cast<std::uint32_t>((beyond_32_bits - 84) / 50);
  string head(80, ' ');
  for (unsigned k = 0; k < 4; ++k) head += static_cast<char>(count >> (8 * k) & 255);
  const memory_file file(head);
  file.resize(beyond_32_bits);
  dense2D<double> coords;
  dense2D<unsigned> triangles;
  EXPECT_EQ(qel::gridwork::STL_input(file.path(), coords, triangles), -199);
}
#endif

TEST(arrays, more_entries_than_an_address_space_holds) {
  qel::dense1D<double> values(3, 1.5);
  EXPECT_FALSE(values.resize(std::uint64_t{1} << 61));
  EXPECT_FALSE(sizeof(void*) == 4 && values.resize((std::uint64_t{1} << 32) / sizeof(double) + 1));
  EXPECT_EQ(values.size(), 3U);
  dense2D<unsigned> matrix(2, 2, 7U);
  EXPECT_FALSE(matrix.resize(~0U, ~0U));
  EXPECT_EQ(matrix(1, 1), 7U);
}

TEST(arrays, more_copies_than_an_address_space_holds) {
  if (sizeof(void*) > 4) GTEST_SKIP() << "here they would be made";
  using space = qel::vector_fixed<double, 3>;
  dense2D<double> coords;
  ASSERT_TRUE(coords.copy(corners));
  dense2D<unsigned> copies;
  EXPECT_EQ(qel::gridwork::copy_mesh(coords, copies, space{1, 0, 0}, space{}, space{}, 1U << 28, triangle), -199);
  EXPECT_EQ(coords, corners);
}

}  // namespace

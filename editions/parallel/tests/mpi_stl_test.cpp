// STL files, read and written by all ranks.
#include <cmath>
#include <cstdio>
#include <limits>

#include "core/limits.h"
#include "mpi_events.h"
#include "shared_path.h"

using namespace parts;

namespace {

using floats = std::vector<float>;  // nine of a triangle
using doubles = std::vector<double>;

std::string binary(const floats& corners, const char* header = "") {
  std::string bytes = header;
  bytes.resize(80);
  const auto count = static_cast<std::uint32_t>(corners.size() / 9);
  bytes.append(reinterpret_cast<const char*>(&count), 4);
  for (std::size_t i = 0; i < corners.size(); i += 9) {
    bytes.append(12, '\0');
    bytes.append(reinterpret_cast<const char*>(&corners[i]), 36);
    bytes.append(2, '\0');
  }
  return bytes;
}

std::string text(const doubles& corners) {
  std::string lines = "solid test\n";
  char line[200];
  for (std::size_t i = 0; i < corners.size(); i += 3) {
    if (i % 9 == 0) lines += "facet normal 0 0 1\n outer loop\n";
    std::snprintf(line, sizeof line, "  vertex %.9g %.9g %.9g\n", corners[i], corners[i + 1], corners[i + 2]);
    lines += line;
    if (i % 9 == 6) lines += " endloop\nendfacet\n";
  }
  return lines + "endsolid test\n";
}

std::string text(const floats& corners) { return text(doubles(corners.begin(), corners.end())); }

/// What all ranks read is what the serial reader reads, and what they write is what the serial writer writes.
void expect_as_serial(const std::string& bytes, const std::string& name, bool write = true) {
  SCOPED_TRACE(name);
  const shared_path file(".stl"), written(".out.stl"), serial(".serial.stl");
  file.write(bytes);
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  mesh_part part;
  const int expected = STL_input(file.path(), coords, connectivity);
  ASSERT_EQ(mpi::STL_input(world, file.path(), part), expected);
  ASSERT_NO_FATAL_FAILURE(expect_part_of(part, coords, connectivity));
  if (expected != 0 || !write) return;
  ASSERT_EQ(mpi::STL_output(world, written.path(), part), 0);
  serial.write_STL(coords, connectivity, false);
  ASSERT_EQ(written.content() == serial.content(), true);
}

/// Triangles of a wavy surface of so many cells a side, each cell two.
floats surface(unsigned side, float jitter, unsigned seed = 1) {
  std::mt19937 random(seed);
  floats corners;
  const auto add = [&](unsigned i, unsigned j) {
    const float x = static_cast<float>(i), y = static_cast<float>(j);
    for (const float c : {x, y, std::sin(0.3F * x) * std::cos(0.2F * y)}) {
      corners.push_back(c + jitter * static_cast<float>(random() % 100) / 100);
    }
  };
  for (unsigned j = 0; j < side; ++j) {
    for (unsigned i = 0; i < side; ++i) {
      add(i, j), add(i + 1, j), add(i + 1, j + 1);
      add(i, j), add(i + 1, j + 1), add(i, j + 1);
    }
  }
  return corners;
}

floats shuffle_triangles(const floats& corners) {
  std::vector<std::size_t> order(corners.size() / 9);
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), std::mt19937(2));
  floats result;
  for (const std::size_t t : order) result.insert(result.end(), &corners[9 * t], &corners[9 * t] + 9);
  return result;
}

/// Triangles of which most hold positions of a few, one in ten a little off: chains of near nodes, also across cells.
floats tangle_of_floats(unsigned triangles, unsigned positions, float step, unsigned seed) {
  std::mt19937 random(seed);
  floats corners;
  for (unsigned i = 0; i < 3 * triangles; ++i) {
    const float x = static_cast<float>(random() % positions);
    corners.push_back(x + (random() % 10 == 0 ? step * static_cast<float>(random() % 30) : 0));
    corners.push_back(static_cast<float>(random() % 3));
    corners.push_back(static_cast<float>(random() % 2));
  }
  return corners;
}

/// One sound triangle, then ones whose corners follow one another at less than the tolerance; so many at each place.
floats chain(unsigned triangles, float step, unsigned repeats = 1) {
  floats corners = {0, 0, 5, 1, 0, 5, 0, 1, 5};
  for (unsigned i = 0; i < triangles; ++i) {
    const float x = step * static_cast<float>(i * 7919 % (triangles / repeats));
    for (const float c : {x, 0.F, 0.F, x + 20, 30.F, 0.F, x + 20, 0.F, 40.F}) corners.push_back(c);
  }
  return corners;
}

TEST(STL_input, binary_files) {
  constexpr float infinite = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  expect_as_serial(binary({}), "empty");
  expect_as_serial(binary({0, 0, 0, 1, 0, 0, 0, 1, 0}), "one triangle");
  expect_as_serial(binary(surface(1, 0)), "two triangles");
  expect_as_serial(binary(surface(30, 0)), "surface");
  expect_as_serial(binary(surface(20, 0.03F)), "corners beside one another");
  expect_as_serial(binary(shuffle_triangles(surface(30, 0.02F))), "shuffled");
  expect_as_serial(binary(chain(400, 0.03F)), "chain");
  expect_as_serial(binary(chain(300, 0.0001F)), "crowd");
  for (const unsigned repeats : {2U, 3U, 7U}) {
    for (unsigned n = 20; n < 400; n = n * 3 / 2)
      expect_as_serial(binary(shuffle_triangles(chain(n, 0.03F, repeats))), "chain, repeated");
  }
  for (unsigned seed = 0; seed < 12; ++seed) {
    expect_as_serial(binary(tangle_of_floats(5 + 17 * seed, 2 + seed, 0.004F, seed)), "tangle");
  }
  expect_as_serial(binary(floats(9 * 50, 3.F)), "one position");
  expect_as_serial(binary({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 1, 0, 0, -0.F, 0, 0}), "no heights");
  floats flat_first(9 * 20, 1.F), special = surface(8, 0);
  flat_first.insert(flat_first.end(), {0, 0, 0, 1, 0, 0, 0, 1, 0});
  expect_as_serial(binary(flat_first), "one height, in the last triangle");
  for (std::size_t i = 0; i < special.size(); i += 37) special[i] = i % 3 == 0 ? nan : i % 3 == 1 ? infinite : -0.F;
  expect_as_serial(binary(special), "special numbers", false);
  floats zeros = surface(4, 0);
  for (std::size_t i = 0; i < zeros.size(); i += 2) zeros[i] = zeros[i] == 0 ? -0.F : zeros[i];
  expect_as_serial(binary(zeros), "signed zeros");
}

TEST(STL_input, blocks_end_within_ranks) {
  if (qel::gridwork::detail::limits::are_small) GTEST_SKIP() << "blocks of files have one size, and rounds are short";
  floats many;
  while (many.size() < 9 * 230000) {
    const floats more = surface(40, 0);
    many.insert(many.end(), more.begin(), more.end());
  }
  expect_as_serial(binary(many), "surface many times");
  expect_as_serial(binary(tangle_of_floats(101000, 40, 0.004F, 3)), "tangle of two blocks", false);
  expect_as_serial(binary(shuffle_triangles(chain(150000, 0.03F, 2))), "chain of two blocks", false);
}

TEST(STL_input, refused_files) {
  const std::string whole = binary(surface(6, 0));
  expect_as_serial("", "empty file");
  expect_as_serial(whole.substr(0, 79), "no header");
  expect_as_serial(whole.substr(0, 80), "header only");
  expect_as_serial(whole.substr(0, 82), "no count");
  expect_as_serial(whole.substr(0, whole.size() - 1), "cut short");
  expect_as_serial(whole + "more", "bytes behind the triangles");
  std::string negative = whole;
  negative[83] = '\x80';
  expect_as_serial(negative, "negative count");
  mesh_part part;
  EXPECT_EQ(mpi::STL_input(world, "/nowhere/at/all", part), -1);
  EXPECT_EQ(mpi::STL_input(world, nullptr, part), -1);
  EXPECT_EQ(mpi::STL_output(world, "/nowhere/at/all", part), -1);
}

TEST(STL_input, texts) {
  const std::string usual = text(surface(9, 0.02F));
  expect_as_serial(usual, "usual");
  expect_as_serial(text(doubles()), "empty solid");
  expect_as_serial(text(doubles{0, 0, 0, 1, 0, 0, 0, 1, 0}), "one facet");
  expect_as_serial(usual + usual, "two solids");
  expect_as_serial("other" + usual.substr(5), "no header");
  expect_as_serial(binary(surface(5, 0), "solid but binary"), "binary that begins like a text");
  std::string lines = usual;
  for (std::size_t at = 0; (at = lines.find("\n", at)) != std::string::npos; at += 2) lines.insert(at, "\r");
  expect_as_serial(lines, "carriage returns");
  const auto with = [&](const std::string& inserted, const char* before, std::size_t from) {
    std::string changed = usual;
    return changed.insert(changed.find(before, from), inserted);
  };
  expect_as_serial(with("color 1 2 3\n", "facet normal", 3000), "colour");
  expect_as_serial(with(std::string(700, ' ') + "color\n", "facet normal", 3000), "long line");
  expect_as_serial(with("facet normal 1 2 3\n", "vertex", 3000), "facet within a facet");
  expect_as_serial(with("endsolid\nsolid\n", "facet normal", 3000), "solid between");
  expect_as_serial(with("endsolid\nfacet normal 0 0 0 color\n", "facet normal", 3000), "facet behind a solid");
  // Before each facet a line that reads as one but is none, as the parser does not stand before a facet there.
  std::string perverse = usual;
  for (std::size_t at = 0; (at = perverse.find(" outer", at)) != std::string::npos; at += 60) {
    perverse.replace(at, 11, "facet normal 0 0 0 outer loop");
  }
  expect_as_serial(perverse, "lines that mislead");
  // A facet right behind a solid is none where the parser may stop: who began there has read in vain.
  std::string ends = usual;
  for (std::size_t at = 20; (at = ends.find("\nfacet normal", at)) != std::string::npos; at += 20) {
    ends.insert(at, "\nendsolid");
  }
  expect_as_serial(ends, "facets behind solids");
  for (std::size_t length = 5; length < usual.size(); length += usual.size() / 13) {
    expect_as_serial(usual.substr(0, length), "cut text");
  }
}

TEST(STL_input, damaged_texts) {
  const std::string usual = text(surface(4, 0));
  for (unsigned seed = 0; seed < 60; ++seed) {
    std::mt19937 random(seed);
    std::string damaged = usual;
    const char bytes[] = "\n\n \0cfe0-x";
    for (unsigned k = 0; k < 1 + seed % 3; ++k) damaged[random() % damaged.size()] = bytes[random() % 10];
    const std::size_t line = damaged.find('\n', random() % damaged.size());
    if (seed % 2 == 0 && line != std::string::npos)
      damaged.insert(line + 1, seed % 4 == 0 ? "color\n" : "endsolid\nsolid\n");
    expect_as_serial(damaged, "seed " + std::to_string(seed), false);
    if (HasFatalFailure()) return;
  }
}

/// Squares of areas overflow, so that the tolerance is infinite, whatever the coordinates; those that are not finite may be
/// what others are merged to.
TEST(STL_input, infinite_heights) {
  constexpr double infinite = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  expect_as_serial(text(doubles{0, 0, 0, 1e100, 0, 0, 0, 1e100, 0, 0, 0, 0, 2e100, 0, 0, 0, 3e100, 0}), "finite");
  expect_as_serial(text(doubles{0, 0, 0, 1e100, 0, 0, 0, infinite, 0, 0, 0, 0, 1e100, 0, 0, 0, 1e100, 0}),
                   "second not");
  for (unsigned seed = 0; seed < 40; ++seed) {
    std::mt19937 random(seed);
    doubles corners(9 * (2 + seed));
    for (double& x : corners) {
      const unsigned any = random() % 100;
      x = any < seed / 4 ? infinite : any < seed / 2 ? nan : 1e100 * static_cast<double>(random() % 4);
    }
    expect_as_serial(text(corners), "seed " + std::to_string(seed), false);
  }
}

/// Only what lies near to other ranks' nodes travels: a few rows of a surface for each border of two ranks.
TEST(STL_input, few_bytes_travel) {
  if (qel::gridwork::detail::limits::are_small) GTEST_SKIP() << "cells are of another size";
  constexpr unsigned side = 150;
  const shared_path file(".large.stl");
  file.write(binary(surface(side, 0)));
  mesh_part part;
  mpi::node_sharing sharing;
  dense2D<id_type> neighbors;
  const id_type before = mpi_events::bytes_sent();
  ASSERT_EQ(mpi::STL_input(world, file.path(), part), 0);
  const id_type read = mpi_events::bytes_sent();
  ASSERT_EQ(mpi::share_nodes(world, part, sharing), 0);
  ASSERT_EQ(mpi::get_neighbors(world, part, ELT_TRIA3, sharing, false, neighbors), 0);
  const auto rows = side * static_cast<double>(size() - 1);
  EXPECT_LE(static_cast<double>(sum(read - before)), 450 * rows);
  EXPECT_LE(static_cast<double>(sum(mpi_events::bytes_sent() - read)), 100 * rows);
}

TEST(STL_output, parts_in_any_layout) {
  for (const layout l : layouts) {
    mesh m = box(ELT_TRIA3, 5, 4, 3);
    const shared_path written(".parts.stl"), serial(".whole.stl");
    written.write(std::string(100000, 'x'));  // nothing of a longer file stays
    ASSERT_EQ(mpi::STL_output(world, written.path(), part_of(m, l, 12345)), 0);
    serial.write_STL(m.coords, m.connectivity, false);
    ASSERT_EQ(written.content() == serial.content(), true);
  }
  const shared_path file(".refused.stl");
  mesh spacetime = box(ELT_TRIA3, 1, 1, 1);
  spacetime.coords = dense2D<double>(4, spacetime.coords.cols(), 0.0);
  EXPECT_EQ(mpi::STL_output(world, file.path(), part_of(spacetime, layout::random)), -2);
  EXPECT_EQ(file.content(), "");
  EXPECT_EQ(mpi::STL_output(world, file.path(), part_of(box(ELT_TETRA4, 1, 1, 1), layout::random)), -3);
  EXPECT_EQ(file.content(), "");
}

}  // namespace

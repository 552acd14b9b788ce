// Files that are made to take memory or time: both stay in proportion to the file.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <string>

#include "faults.h"
#include "identified_mesh.h"
#include "input_meshes.h"

namespace {

using namespace qel::gridwork;
using std::string;

#ifdef QEL_SANITIZED
constexpr unsigned scale = 20;  // files are so many times smaller
#else
constexpr unsigned scale = 1;
#endif

int read_nastran(const char* path) {
  identified::mesh m;
  return NASTRAN_input(path, m.coords, m.connectivity, m.offsets, m.types, m.property_IDs, m.element_IDs, m.node_IDs);
}

int read_femap(const char* path) {
  identified::mesh m;
  return FEMAP_input(path, m.coords, m.connectivity, m.offsets, m.types, m.property_IDs, m.element_IDs, m.node_IDs);
}

int read_medit(const char* path) {
  identified::mesh m;
  return medit_input(path, m.coords, m.connectivity, m.offsets, m.types, m.element_IDs, m.node_IDs);
}

int read_solution(const char* path) {
  unsigned dim = 0;
  identified::mesh m;
  return medit_solution_input(path, dim, m.coords, m.types);
}

int read_vtk(const char* path) {
  identified::mesh m;
  return vtk_input(path, m.coords, m.connectivity, m.offsets, m.types, m.element_IDs);
}

struct cost {
  int code = 0;
  double seconds = 0;
  std::uint64_t bytes = 0;  ///< the most memory that was in use at a time
};

/// Reads a file in a process of its own.
cost measure(int (*read)(const char*), const memory_file& file) {
  int ends[2];
  if (::pipe(ends) != 0) std::abort();
  const pid_t child = ::fork();
  if (child == 0) {
    rusage before, after;
    ::getrusage(RUSAGE_SELF, &before);
    const int code = read(file.path());
    ::getrusage(RUSAGE_SELF, &after);
    const cost found = {code, double(after.ru_utime.tv_sec) + 1e-6 * double(after.ru_utime.tv_usec),
                        1024 * std::uint64_t(after.ru_maxrss - before.ru_maxrss)};
    ::_exit(::write(ends[1], &found, sizeof found) == sizeof found ? 0 : 1);
  }
  cost found;
  const bool has_result = ::read(ends[0], &found, sizeof found) == sizeof found;
  ::waitpid(child, nullptr, 0);
  ::close(ends[0]), ::close(ends[1]);
  EXPECT_TRUE(has_result) << "the reader did not return";
  return found;
}

string times(std::uint64_t count, const string& text) {
  string all;
  for (; count > 0; --count) all += text;
  return all;
}

const string vtk_head = "# vtk DataFile Version 3.0\n\nASCII\nDATASET ";

/// A node, an element of many nodes, then the shortest ones, of which each takes a column as tall as that.
TEST(hostile_files, memory_follows_the_file) {
  const unsigned n = 2000000 / scale;
  const auto number = [](std::uint64_t k) { return std::to_string(k); };
  string nodes, records = "-1\n403\n";
  for (unsigned k = 1; k <= n; ++k) nodes += "GRID," + number(4 * k) + "\n";
  for (unsigned k = 1; k <= n; ++k) records += number(4 * k) + " 0 0 0 0 0 0 0 0 0 0 0 0 0\n";
  const struct {
    const char* name;
    int (*read)(const char*);
    string text;
  } cases[] = {
      {"short edges", read_nastran,
       "GRID,1\nCHEXA,1,1" + times(6, ",1") + "\n" + times(2, "," + times(8, ",1").substr(1) + "\n") +
           times(n, "CBAR,1,,1,1\n")},
      {"nodes alone", read_nastran, nodes},
      {"systems", read_nastran, times(n, "CORD2R,1\n")},
      {"systems by nodes", read_nastran, times(n, "CORD1R,1,1,1,1,1,1,1,1\n")},
      {"nodes alone", read_femap, records},
      {"short edges", read_medit,
       "MeshVersionFormatted 1 Dimension 3 Vertices 1 0 0 0 0 TetrahedraP2 1 " + times(10, "1 ") + "0 Edges " +
           number(n) + times(n, " 1 1 0")},
      {"nodes alone", read_medit, "MeshVersionFormatted 1 Dimension 3 Vertices " + number(n) + times(n, " 0 0 0 0")},
      {"scalars", read_solution, "3 " + number(n) + " 1 2" + times(n, " 0")},
      {"short edges", read_vtk,
       vtk_head + "UNSTRUCTURED_GRID POINTS 1 int 0 0 0 CELLS " + number(n + 1) + " " + number(3 * n + 28) + " 27" +
           times(27, " 0") + times(n, " 2 0 0") + " CELL_TYPES " + number(n + 1) + " 29" + times(n, " 3")},
      {"a strip", read_vtk,
       vtk_head + "POLYDATA POINTS 1 int 0 0 0 POLYGONS 1 5 4 0 0 0 0 TRIANGLE_STRIPS 1 " + number(n + 1) + " " +
           number(n) + times(n, " 0")},
      {"numbers of one byte", read_vtk,
       "# vtk DataFile Version 3.0\n\nBINARY\nDATASET POLYDATA\nPOINTS " + number(n) + " char\n" + times(n, "abc")},
  };
  for (const auto& c : cases) {
    const memory_file file(c.text);
    const cost found = measure(c.read, file);
    EXPECT_GE(found.code, 0) << c.name;
    EXPECT_LT(found.seconds, 10) << c.name;
#ifndef QEL_SANITIZED
    EXPECT_LE(found.bytes, 30 * file.size() + 4000000) << c.name << ": " << found.bytes / file.size();
#endif
    if (std::getenv("QEL_SHOW_COSTS") != nullptr) {
      std::printf("%-20s %5.2f s, %5.1f bytes a byte\n", c.name, found.seconds,
                  double(found.bytes) / double(file.size()));
    }
  }
}

/// Lines of up to 100 MB take no memory: what a record can use of them is read, or they are refused.
TEST(hostile_files, long_lines) {
  const struct {
    const char* name;
    int (*read)(const char*);
    string head;
    string behind;
    int codes[4];  // for lines of blanks, digits, letters, commas
  } cases[] = {
      {"fixed", read_nastran, "GRID           1" + string(56, ' '), "\nGRID,2\n", {0, 0, 0, 0}},
      {"free", read_nastran, "GRID,1,", "\nGRID,2\n", {-2, -2, -2, -2}},
      {"other card", read_nastran, "MAT1", "\nGRID,2\n", {0, 0, 0, 0}},
      {"comment", read_nastran, "GRID,1\n$", "\nGRID,2\n", {0, 0, 0, 0}},
      {"title", read_femap, "-1\n100\n", "\n7.,\n-1\n", {0, 0, 0, 0}},
      {"node", read_femap, "-1\n403\n1,0,0,0,0,0,0,0,0,0,0,0,0,0,", "\n-1\n", {-2, -2, -2, -2}},
      {"words", read_medit, "MeshVersionFormatted 1 Dimension 3 Vertices 1 ", " 0 0 0 0\n", {0, -2, -2, -2}},
      {"comment", read_medit, "MeshVersionFormatted 1 #", "\nDimension 3", {0, 0, 0, 0}},
      {"words", read_solution, "3 1 1 2 ", " 0\n", {0, -2, -2, -2}},
      {"words", read_vtk, vtk_head + "POLYDATA POINTS 1 int ", " 0 0 0\n", {0, -2, -2, -2}},
      {"title", read_vtk, "# vtk DataFile Version 1.0\n", "\nASCII DATASET POLYDATA", {0, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    for (unsigned k = 0; k < 4; ++k) {
      const string tail((k == 1 ? 100000000 : 5000000) / scale, " 7x,"[k]);
      const memory_file file(c.head + tail + c.behind);
      const cost found = measure(c.read, file);
      EXPECT_EQ(found.code, c.codes[k]) << c.name << ", " << k;
      EXPECT_LT(found.seconds, 5) << c.name << ", " << k;
#ifndef QEL_SANITIZED
      EXPECT_LT(found.bytes, 4000000U) << c.name << ", " << k;
#endif
    }
  }
}

TEST(hostile_files, continuations_and_rings) {
  constexpr unsigned n = 10000;
  const auto expect = [](const char* name, const string& text, int code) {
    const cost found = measure(read_nastran, memory_file(text));
    EXPECT_EQ(found.code, code) << name;
    EXPECT_LT(found.seconds, 5) << name;
  };
  const string grid = "GRID,1\n";
  expect("a card that goes on", grid + "CQUAD,1,1,1,1,1,1\n" + times(n, "+,1\n"), 0);
  expect("another card", grid + "MAT1,1\n" + times(n, "+,=,x\n*\n        \n\t,\n"), 0);
  expect("nothing to go on with", times(n, "+,1\n"), 0);
  expect("quotes", times(n, "INCLUDE 'a\n"), n / 2);
  string ring, by_nodes;
  for (unsigned k = 1; k <= n; ++k) {
    const string ID = std::to_string(k), next = std::to_string(k % n + 1);
    ring += "CORD2R," + ID + "," + next + ",,,,,,1.\n,1.\n";
    by_nodes += "GRID," + ID + "," + next + "\nCORD1R," + ID + "," + ID + ",1,2\n";
  }
  expect("a ring of systems", ring + "GRID,1,1\n", -6);
  expect("a ring of systems and nodes", by_nodes, -6);
  expect("rings that nobody needs", ring + grid, 0);
}

}  // namespace

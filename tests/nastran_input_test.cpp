#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "facts.h"
#include "identified_reading.h"

namespace {

using namespace qel::gridwork;
using identified::mesh;
using qel::dense1D;
using qel::dense2D;
using std::string;

int read(const string& text, mesh& m) { return identified::read(NASTRAN_input, text, m); }

int code_of(const string& text) { return identified::code_of(NASTRAN_input, text); }

/// What stands round cards of which most are read where they lie in the file: a first one, and one behind them.
string among_others(const string& cards) { return "GRID,1000000000\n" + cards + "\nMAT1,1\n"; }

/// The place of a deck's last node.
string place(const string& text) {
  mesh m;
  const int code = read(text, m);
  if (code != 0 || m.coords.cols() == 0) return "code " + std::to_string(code);
  char out[100];
  const auto last = m.coords.cols() - 1;
  std::snprintf(out, sizeof out, "%.12g %.12g %.12g", m.coords(0, last), m.coords(1, last), m.coords(2, last));
  return out;
}

/// Nodes 1 to 30 at (k, 0, 0).
string nodes() {
  string text;
  for (int k = 1; k <= 30; ++k) text += "GRID," + std::to_string(k) + ",," + std::to_string(k) + ".,0.,0.\n";
  return text;
}

/// The nodes of the first element, as the file names them, behind its type.
string element(const string& card) {
  mesh m;
  const string amidst = identified::first_element(NASTRAN_input, nodes() + card + "\nMAT1,1\n", m);
  const string found = identified::first_element(NASTRAN_input, nodes() + card, m);
  EXPECT_EQ(amidst, found);
  if (m.types.empty()) return found;
  return found + " p" + std::to_string(int(m.property_IDs[0])) + " e" + std::to_string(m.element_IDs[0]);
}

TEST(nastran_input, what_is_written_comes_back) {
  random_meshes::generator random(5);
  for (int turn = 0; turn < 20; ++turn) {
    const mesh m = identified::all_types(random);
    const mesh back = identified::expect_round_trip(NASTRAN_input, NASTRAN_output, m);
    for (unsigned j = 0; j < m.coords.cols(); ++j) {
      for (unsigned i = 0; i < 3; ++i) {
        char text[40];
        std::snprintf(text, sizeof text, "%.6E", m.coords(i, j));
        EXPECT_EQ(back.coords(i, j), std::strtod(text, nullptr));
        EXPECT_EQ(std::signbit(back.coords(i, j)), std::signbit(m.coords(i, j)));
      }
    }
  }
}

TEST(nastran_input, forms_of_fields_and_lines) {
  const string expected = "1 -2 0.0035";
  for (const char* text : {
           "GRID           7              1.     -2.  3.5-3",
           "grid           7              1.     -2.  3.5-3       0  123     more\r\n",
           "GRID*                  7                              1.             -2.*G\n*G               3.5D-3",
           "GRID*                  7                              1.             -2.\n\n$ between\n*         "
           "0.35e-02\n",
           "GRID,7,,1.,-2.,3.5-3",
           " grid , 7 ,, 1 , -2, 3.5d-03 ,,,,+mark\n",
           "GRID*,7,,1.,-2.,*\n*,3.5E-3\n",
           "GRID,7,,1.,-2.,.35-2 $ a comment, with a comma",
           "GRID\t7\t\t1.\t-2.\t35.-4",
           "GRID           7              1.     -2.  3.5-3\n+ more,and\n        still more\n\t7\nMAT1,=,whatever\n",
           "GRID,7,,1.,-2.,3.5-3,0,123,0,+\n",
       }) {
    EXPECT_EQ(place(text), expected) << text;
    EXPECT_EQ(place(among_others(text)), expected) << text;
  }
  EXPECT_EQ(place("GRID,7"), "0 0 0");
  EXPECT_EQ(place("GRID,7,,1.,2.,3.,99"), "1 2 3") << "the system of displacements";
  for (const char* text : {"GRID,0", "GRID,-1", "GRID,2147483648", "GRID,1.", "GRID,x", "GRID,", "GRID,1,-1",
                           "GRID,1,,1.e", "GRID,1,,.", "GRID,1,,1..", "GRID,1,,1 2", "GRID,1,,nan", "GRID,1,,inf",
                           "GRID,1,,1e999", "GRID,1,,0x10", "GRID,1,,1+", "=,*(1),=", "GRID,1\n=,2", "=(3)"}) {
    EXPECT_EQ(code_of(text), -2) << text;
    EXPECT_EQ(code_of(among_others(text)), -2) << text;
  }
  EXPECT_EQ(element("CHEXA,1,2,1,2,3,4,5,6,+\n+,7,8\n"), "20: 1 2 3 4 5 6 7 8 p2 e1");
  EXPECT_EQ(element("CHEXA,1,2,1,2,3,4,5,6,7,8\n"), "20: 1 2 3 4 5 6 7 8 p2 e1");
  EXPECT_EQ(element("CHEXA,1,2,1,2,3,4,5,6,7,8,+x\n"), "20: 1 2 3 4 5 6 7 8 p2 e1");
  EXPECT_EQ(element("CHEXA,1,2,1,2,3,4,5,6\n +,7,8\n"), "20: 1 2 3 4 5 6 7 8 p2 e1") << "blanks before a mark";
  EXPECT_EQ(code_of("GRID,1\n =,2"), -2) << "blanks before a mark";
  const string hexahedron = "CHEXA          1       2       1       2       3       4       5       6";
  EXPECT_EQ(element(hexahedron + "\n+              7       8"), "20: 1 2 3 4 5 6 7 8 p2 e1");
  EXPECT_EQ(element(hexahedron + "+more\n              7       8\n"), "20: 1 2 3 4 5 6 7 8 p2 e1");
  EXPECT_EQ(element(hexahedron + "\n        \n+              7       8"), "20: 1 2 3 4 5 6 7 8 p2 e1")
      << "a blank line";
  EXPECT_EQ(element(hexahedron + "\n+       \n+              7       8"), "code -2") << "a line of blank fields";
  EXPECT_EQ(element("CTRIA3,1,,1,2,3\n$" + string(1 << 20, ',') + "\nCTRIA3,2"), "code -2");
  EXPECT_EQ(element("CTRIA3,1,2,1,2,3" + string(100000, ' ') + "\n"), "code -2") << "cut in free fields";
  EXPECT_EQ(element("CTRIA3         1       2       1       2       3" + string(100000, ' ') + "CBAR,2\n"),
            "6: 1 2 3 p2 e1");
  EXPECT_EQ(element(string("CTRIA3,1,2,1,2,3\0CBAR", 21)), "6: 1 2 3 p2 e1");
}

TEST(nastran_input, elements_and_their_kinds) {
  EXPECT_EQ(element("CTRIA6,9,-3,1,2,3,4,5,6"), "8: 1 2 3 5 6 4 p-3 e9");
  EXPECT_EQ(element("CTRIA6,9,,1,2,3,4,,6"), "6: 1 2 3 p9 e9");
  EXPECT_EQ(element("CTRIA6,9,4294967295,1,2,3,4,0,6"), "6: 1 2 3 p-1 e9");
  EXPECT_EQ(element("CONROD,9,1,2,5,1."), "3: 1 2 p0 e9");
  EXPECT_EQ(element("CBEAM3,9,1,2,5,7"), "4: 2 5 7 p1 e9");
  EXPECT_EQ(element("CQUAD,9,1,1,2,3,4,5,6\n,7,8,9"), "10: 1 2 3 4 5 6 7 8 9 p1 e9");
  EXPECT_EQ(element("CPYRA,9,1,1,2,3,4,5"), "14: 1 2 3 4 5 p1 e9");
  EXPECT_EQ(element("CTETRA,9,1,1,2,3,4,5,6,\n,7,8,9,10"), "13: 1 3 2 4 6 5 7 8 10 9 p1 e9");
  for (const char* const name : {"CBAR", "CBEAM", "CROD", "CTUBE", "CBEND"}) {
    EXPECT_EQ(element(name + string(",9,1,1,2")), "3: 1 2 p1 e9") << name;
  }
  for (const char* const name : {"CTRIA3", "CTRIAR", "CTRIA6"}) {
    EXPECT_EQ(element(name + string(",9,1,1,2,3")), "6: 1 2 3 p1 e9") << name;
  }
  for (const char* const name : {"CQUAD4", "CQUADR", "CSHEAR", "CQUAD8", "CQUAD"}) {
    EXPECT_EQ(element(name + string(",9,1,1,2,3,4")), "7: 1 2 3 4 p1 e9") << name;
  }
  EXPECT_EQ(element("CPYRAM,9,1,1,2,3,4,5"), "14: 1 2 3 4 5 p1 e9");
  EXPECT_EQ(element("CPENTA,9,1,1,2,3,4,5,6"), "17: 1 2 3 4 5 6 p1 e9");
  EXPECT_EQ(element("CTRIA3,2147483647,1,1,2,3"), "6: 1 2 3 p1 e2147483647");
  for (const char* const ID : {"0", "-1", "2147483648", "", "1."}) {
    EXPECT_EQ(element("CTRIA3," + string(ID) + ",1,1,2,3"), "code -2") << ID;
  }
  EXPECT_EQ(element("CPENTA,9,1,1,2,3,4,5"), "code -2") << "a vertex is missing";
  EXPECT_EQ(element("CPENTA,9,1,1,2,3,4,5,0"), "code -2");
  EXPECT_EQ(element("CTRIA3,9,1,1,2,31"), "code -3");
  for (const char* const hole : {"0", "3", "5", "6"}) {
    EXPECT_LT(code_of("GRID,1\nGRID,2\nGRID,4\nCROD,9,1,1," + string(hole) + "\n"), 0) << hole;
  }
  EXPECT_EQ(element("CTRIA3,9,5000000000,1,2,3"), "code -2");
  EXPECT_EQ(element("RBE2,x,=,y\nPLOTEL,?\nCTRIAX6,1\nCBUSH,\n"), "code 0");
  mesh m;
  ASSERT_EQ(read("CTRIA3,5,1,10,20,30\nCBAR,5,1,20,1\nCTRIA3,4,1,1,20,30\nGRID,10\nGRID,1\nGRID,30\nGRID,20\n", m), 0);
  EXPECT_EQ(m.types, (dense1D<int>{ELT_EDGE2, ELT_TRIA3}));
  EXPECT_EQ(m.connectivity, dense2D<unsigned>(3, 3, {3, 1, ~0U, 0, 3, 2, 1, 3, 2}));
  EXPECT_EQ(m.element_IDs, (dense1D<unsigned>{5, 5, 4}));
  EXPECT_EQ(m.node_IDs, (dense1D<unsigned>{10, 1, 30, 20}));
}

TEST(nastran_input, one_type) {
  const memory_file file(nodes() + "CTRIA3,1,,1,2,3\nCQUAD4,2,,4,3,2,1\nCTETRA,3,,99,98,97,96\nCTRIA3,4,,3,4,5\n");
  dense2D<double> coords;
  dense2D<unsigned> c;
  ASSERT_EQ(NASTRAN_input(file.path(), coords, c, ELT_FACE_MIX), 0);
  EXPECT_EQ(c, dense2D<unsigned>(4, 3, {0, 1, 2, ~0U, 3, 2, 1, 0, 2, 3, 4, ~0U}));
  ASSERT_EQ(NASTRAN_input(file.path(), coords, c, ELT_TRIA3), 0);
  EXPECT_EQ(c, dense2D<unsigned>(3, 2, {0, 1, 2, 2, 3, 4}));
  ASSERT_EQ(NASTRAN_input(file.path(), coords, c, ELT_HEXA20), 0);
  EXPECT_ALL(c.empty(), coords.cols() == 30);
  EXPECT_EQ(NASTRAN_input(file.path(), coords, c, ELT_SOLID_MIX), -3);
  EXPECT_ALL(c.empty(), coords.empty());
  for (const int type : {ELT_UNKNOWN + 0, ELT_NODE + 0, ELT_EDGE_MIX + 0, 23, -1}) {
    EXPECT_EQ(NASTRAN_input("/nonexistent/file", coords, c, element_type(type)), -4);
  }
  EXPECT_EQ(NASTRAN_input("/nonexistent/file", coords, c, ELT_TRIA3), -1);
}

TEST(nastran_input, sections_and_other_files) {
  EXPECT_EQ(place("GRID,1,,5.\nTITLE = 1, 2\n=\nBEGIN BULK\nGRID,2,,6.\nENDDATA\nGRID,3\n"), "6 0 0");
  EXPECT_EQ(place("GRID,1,,5.\n  begin bulk $\nGRID,2,,6.\nbegin super=1\n=\nGRID,2\nBEGIN BULK\nGRID,2,,6\n"),
            "6 0 0");
  EXPECT_EQ(place("BEGIN BULK AUXMODEL = 3\nGRID,1,,7.\n"), "code 0");
  EXPECT_EQ(code_of("GRID,x\n"), -2);
  EXPECT_EQ(code_of("GRID,x\nBEGIN BULK\n"), 0);
  EXPECT_EQ(code_of("BEGIN BULK\nGRID,x\nBEGIN BULK\n"), -2);
  EXPECT_EQ(code_of(""), 0);
  EXPECT_EQ(code_of("INCLUDE 'a'\nBEGIN BULK\nINCLUDE 'x$y.bdf'\ninclude \"some\nwhere, GRID,1,x\n$else\"\nGRID,1\n"),
            2);
  EXPECT_EQ(code_of("INCLUDE a.bdf $ somebody's\nGRID,x\n"), -2);
}

TEST(nastran_input, coordinate_systems) {
  const string along_x = "CORD2C,1,,1.,0.,0.,2.,0.,0.\n,1.,1.,0.\n", sphere = "CORD2S,2,0,,,,,,1.\n,1.\n";
  EXPECT_EQ(place(along_x + "GRID,1,1,2.,90.,5.\n"), "6 0 2");
  EXPECT_EQ(place(sphere + "GRID,1,2,2.,90.,90.\n"), "0 2 0");
  EXPECT_EQ(place(sphere + "GRID,1,2,2.,180.,45.\n"), "0 0 -2");
  EXPECT_EQ(place(along_x + "GRDSET,,1\nGRID,1,,2.,0.,5.\n"), "6 2 0");
  EXPECT_EQ(place(along_x + "GRDSET,,1\nGRID,1,0,2.,0.,5.\n"), "2 0 5");
  EXPECT_EQ(place("CORD2R,2,1,1.,0.,0.,1.,0.,1.\n,2.,0.,0.\n" + along_x + "GRID,1,2,3.\n"), "1 4 0") << "in a chain";
  const string points = "GRID,1,,1.\nGRID,2,,1.,0.,1.\nGRID,3,,1.,1.\n";
  EXPECT_EQ(place("CORD1R,7,1,2,3,8,2,1,3\n" + points + "GRID,4,7,1.,2.,3.\n"), "-1 1 3");
  EXPECT_EQ(place("CORD1R,7,1,2,3,8,2,1,3\n" + points + "GRID,4,8,1.,2.,3.\n"), "3 1 -2");
  EXPECT_EQ(place("CORD1R,7,1,2,3\n" + points + "CORD1C,9,1,4,3\nGRID,4,7,1.,2.,3.\nGRID,5,9,0.\n"), "1 0 0");
  EXPECT_EQ(code_of("CORD1R,7,1,2,9\n" + points + "GRID,4,7\n"), -3);
  EXPECT_EQ(code_of("CORD1R,7,1,2,4\n" + points + "GRID,4,7\n"), -6) << "a system by a node in it";
  EXPECT_EQ(code_of("CORD1R,7,1,2,9\nCORD2R,8,9\n" + points), 0) << "in no use";
  EXPECT_EQ(code_of("GRID,1,5\n"), -6);
  EXPECT_EQ(code_of("CORD2R,1,2,,,,,,1.\n,1.\nCORD2R,2,1,,,,,,1.\n,1.\nGRID,1,2\n"), -6);
  EXPECT_EQ(code_of("CORD2R,1,0,,,,,,1.\n,0.,0.,5.\nGRID,1,1\n"), -6);
  EXPECT_EQ(code_of("CORD2R,1,0,.1,.2,.3,.2,.4,.6\n,.3,.6,.9\nGRID,1,1\n"), -6);
  EXPECT_EQ(code_of("CORD2R,1,0,,,,,,1.\n,x\n"), -2);
  string chain = "GRID,1,30000\n";
  for (int k = 1; k <= 30000; ++k) {
    chain += "CORD2R," + std::to_string(k) + "," + std::to_string(k - 1) + ",1.,,,1.,,1.\n,2.\n";
  }
  EXPECT_EQ(place(chain), "30000 0 0");
}

TEST(nastran_input, nodes_by_any_numbers) {
  EXPECT_EQ(code_of("GRID,1,,1.\nGRID,1,,1.\n"), 0);
  EXPECT_EQ(code_of("GRID,1,,1.\nGRID,1,,2.\n"), -5);
  EXPECT_EQ(code_of("GRID,1,0,1.\nGRID,1,1,1.\nCORD2R,1,0,,,,,,1.\n,1.\n"), -5);
  mesh m;
  ASSERT_EQ(read("GRID,9\nGRID,2147483647\nGRID,9\nGRID,5,,1.\nCTRIA3,1,,5,9,2147483647\n", m), 0);
  EXPECT_EQ(m.node_IDs, (dense1D<unsigned>{9, 2147483647, 5}));
  EXPECT_EQ(m.connectivity, dense2D<unsigned>(3, 1, {2, 0, 1}));
  for (const unsigned step : {1U, 3U, 4U, 1000000U}) {
    string text = "CTRIA3,1,,7,7," + std::to_string(7 + 999 * step) + "\n";
    for (unsigned k = 1000; k-- > 0;) text += "GRID," + std::to_string(7 + k * step) + "\n";
    ASSERT_EQ(read(text, m), 0);
    EXPECT_EQ(m.connectivity, dense2D<unsigned>(3, 1, {999, 999, 0}));
    EXPECT_EQ(code_of(text + "CTRIA3,1,,7,7,8\n"), step == 1 ? 0 : -3);
  }
}

}  // namespace

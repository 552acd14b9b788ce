// Streams that fail at any call, places that are no files, and files that are broken at any byte.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "core/limits.h"
#include "digest.h"
#include "facts.h"
#include "faults.h"
#include "identified_mesh.h"
#include "input_meshes.h"
#include "mesh_files.h"
#include "qel/gridwork.h"

namespace {

using namespace mesh_files;
using faults::operation;
using std::string;

/// Elements whose file takes several blocks.
constexpr unsigned several_blocks = qel::gridwork::detail::limits::are_small ? 90 : 9000;

/// Calls action(plan) for the first, second, ... call of an operation, failing once and from then on, while it is true.
template <class Action>
void for_each_plan(operation what, Action action) {
  for (const bool onwards : {false, true}) {
    for (std::uint64_t k = 1; action(faults::plan{what, k, onwards}); ++k)
      ASSERT_LT(k, qel::gridwork::detail::limits::are_small ? 30000U : 1000U);
  }
}

TEST(io_faults, every_call_of_every_writer_may_fail) {
  unsigned points = 0;
  for (const unsigned n : {3U, several_blocks}) {
    const mesh m(n);
    for (const writer& w : writers) {
      const memory_file file;
      ASSERT_EQ(w.write(file.path(), m), 0) << w.name;
      const string whole = file.content();
      for (const operation what : {operation::open, operation::write, operation::close}) {
        for_each_plan(what, [&](const faults::plan& plan) {
          const bool refused = what == operation::open || w.reports;
          faults::arm(plan);
          const int code = w.write(file.path(), m);
          const bool failed = faults::disarm();
          EXPECT_EQ(code, failed && refused ? -1 : 0) << w.name << ", call " << plan.at;
          EXPECT_EQ(faults::live_streams(), 0U) << w.name;
          EXPECT_ALL(w.write(file.path(), m) == 0, file.content() == whole) << w.name << " after a failure";
          points += failed ? 1 : 0;
          return failed && !::testing::Test::HasFailure();
        });
      }
    }
  }
  EXPECT_GT(points, 300U);
}

TEST(io_faults, places_that_take_no_file) {
  const mesh m(3);
  const string folder = std::filesystem::temp_directory_path(),
               sealed = folder + "/gridwork_sealed_" + std::to_string(::getpid());
  std::fclose(std::fopen(sealed.c_str(), "w"));
  ::chmod(sealed.c_str(), 0);
  const char* const closed = ::geteuid() != 0 ? sealed.c_str() : nullptr;  // root may write anywhere
  dense2D<double> a, b, c;
  matrix t(2, 2), q;
  for (const writer& w : writers) {
    EXPECT_EQ(w.write("/dev/full", m), w.reports ? -1 : 0) << w.name;
    for (const char* path : {folder.c_str(), "/nonexistent/file", closed}) EXPECT_EQ(w.write(path, m), -1) << w.name;
  }
  for (const char* path : {"/nonexistent/file", closed}) {
    EXPECT_EQ(STL_input(path, a, t) + WavefrontOBJ_input(path, a, b, c, t, q), -2);
  }
  EXPECT_EQ(STL_input(folder.c_str(), a, t), -2) << "opened, but without a byte";
  EXPECT_EQ(WavefrontOBJ_input(folder.c_str(), a, b, c, t, q), 0);
  EXPECT_EQ(medit_input(folder.c_str(), a, t, ELT_TRIA3) + vtk_input(folder.c_str(), a, t, ELT_TRIA3), -4);
  EXPECT_ALL(a.empty(), t.empty(), q.empty());
  std::filesystem::remove(sealed);
}

TEST(result_codes, overloads_that_other_tests_do_not_refuse) {
  const mesh m(3);
  const dense2D<double>&c = m.coords, four(4, 5);
  const matrix &t = m.triangles, &q = m.quads;
  const memory_file file;
  const char *p = file.path(), *nowhere = "/nonexistent/file";
  const dense1D<int> one{ELT_TRIA3};
  histogram H;
  const struct {
    int expected, code;
  } cases[] = {{-1, edge_qualities(four, t, ELT_TRIA3, m.sizes, H, {})},
               {-1, edge_qualities(four, t, ELT_TRIA3, four, H, {})},
               {-4, edge_qualities(c, m.both, m.both + 2, one, four, H, {})},
               {-2, medit_output(p, four, t, ELT_TRIA3, m.references)},
               {-1, medit_output(nowhere, c, t, ELT_TRIA3, m.references)},
               {-1, NASTRAN_output(nowhere, c, t, m.offsets, one, m.references)},
               {-2, NASTRAN_output(p, four, t, m.offsets, one, m.references)},
               {-2, vtk_output(p, four, t, q, ELT_TRIA3, ELT_QUAD4)},
               {-3, vtk_output(p, c, t, q, ELT_TRIA3, ELT_TRIA6)},
               {-2, medit_output(p, four, t, q, ELT_TRIA3, ELT_QUAD4)},
               {-3, medit_output(p, c, t, q, ELT_TRIA3, ELT_TRIA6)},
               {-2, ensight_output(p, four, t, q, ELT_TRIA3, ELT_QUAD4)},
               {-3, ensight_output(p, c, t, q, ELT_TRIA3, ELT_TRIA6)},
               {-2, NASTRAN_output(p, four, t, q, ELT_TRIA3, ELT_QUAD4)},
               {-3, NASTRAN_output(p, c, t, q, ELT_TRIA3, ELT_TRIA6)}};
  for (const auto& refused : cases) EXPECT_EQ(refused.code, refused.expected) << "case " << &refused - cases;
}

// --- Readers -------------------------------------------------------------------------------------------------------

/// What a reader made of a file.
struct reading {
  int code = 1;
  bool sound = false;  ///< a documented code, and outputs as documented
  std::uint64_t triangles = 0, digest = 0;

  bool operator==(const reading&) const = default;
};

reading read_stl(const char* path) {
  dense2D<double> coords(3, 2);
  matrix triangles(3, 2);
  const int code = STL_input(path, coords, triangles);
  const bool is_mesh = coords.rows() == 3 && check_IDs(triangles, ELT_TRIA3, unsigned(coords.cols()));
  const bool refused = code >= -3 && code < 0 && coords.empty() && triangles.empty();
  return {code, code == 0 ? is_mesh : refused, triangles.cols(), digest_of(coords, triangles)};
}

reading read_obj(const char* path) {
  dense2D<double> coords, normals, uvs;
  matrix triangles, quads;
  const int code = WavefrontOBJ_input(path, coords, normals, uvs, triangles, quads);
  const auto has = [](const auto& m, unsigned least, unsigned most) {
    return m.empty() || (m.rows() >= least && m.rows() <= most);
  };
  const bool shaped =
      has(coords, 3, 3) && has(normals, 3, 3) && has(uvs, 1, 3) && has(triangles, 3, 3) && has(quads, 4, 4);
  return {code, shaped && (code == 0 || code == -1 || code == -2), triangles.cols(),
          digest_of(coords, normals, uvs, triangles, quads)};
}

/// A reader of blocks with lists beside them, which has these codes for a file that can be opened.
template <class Lists, class Read>
reading read_blocks(Lists& lists, Read read) {
  input_meshes::reading m;
  m.code = read(m, lists);
  const bool without_lists = std::all_of(std::begin(lists), std::end(lists), [](const auto& l) { return l.empty(); });
  const bool refused = m.is_blank() && without_lists && (m.code >= -3 || m.code == -7);
  return {m.code, m.code < 0 ? refused : m.is_sound(), m.connectivity.cols(),
          digest_of(m.coords, m.connectivity, m.offsets, m.types, lists[0])};
}

reading read_medit(const char* path) {
  dense1D<unsigned> references[2];
  return read_blocks(references, [=](auto& m, auto& lists) {
    return medit_input(path, m.coords, m.connectivity, m.offsets, m.types, lists[0], lists[1]);
  });
}

reading read_vtk(const char* path) {
  dense1D<unsigned> cell_IDs[1];
  return read_blocks(cell_IDs, [=](auto& m, auto& lists) {
    return vtk_input(path, m.coords, m.connectivity, m.offsets, m.types, lists[0]);
  });
}

reading read_solution(const char* path) {
  unsigned dim = 7;
  dense2D<double> values;
  dense1D<int> kinds;
  const int code = medit_solution_input(path, dim, values, kinds);
  const bool refused = (code == -1 || code == -2 || code == -7) && dim == 0 && values.empty() && kinds.empty();
  return {code, code == 0 || refused, values.cols(), digest_of(values, kinds)};
}

/// The triangles of a mesh as a binary VTK file.
string binary_vtk(const mesh& m) {
  const auto big = [](auto bits) {
    string bytes;
    for (unsigned k = sizeof bits; k-- > 0;) bytes += static_cast<char>(bits >> 8 * k);
    return bytes;
  };
  const unsigned n = unsigned(m.triangles.cols());
  string text = "# vtk DataFile Version 4.2\n\nBINARY\nDATASET UNSTRUCTURED_GRID\nPOINTS " +
                std::to_string(m.coords.cols()) + " double\n";
  for (const double x : m.coords.as_vector()) text += big(std::bit_cast<std::uint64_t>(x));
  text += "\nCELLS " + std::to_string(n) + " " + std::to_string(4 * n) + "\n";
  for (unsigned k = 0; k < 3 * n; ++k) text += (k % 3 == 0 ? big(3U) : "") + big(m.triangles(k % 3, k / 3));
  text += "\nCELL_TYPES " + std::to_string(n) + "\n";
  for (unsigned k = 0; k < n; ++k) text += big(5U);
  return text;
}

template <identified::reader Input>
reading read_identified(const char* path) {
  identified::mesh m;
  const int code = Input(path, m.coords, m.connectivity, m.offsets, m.types, m.property_IDs, m.element_IDs, m.node_IDs);
  const bool refused = code >= -6 && code != -4 && m.is_empty();
  return {code, code < 0 ? refused : m.is_complete(), m.connectivity.cols(), m.digest()};
}

struct reader {
  const char* name;
  reading (*read)(const char* path);
  string content;
  bool may_end_anywhere = false;  ///< a file that is cut short may still be one
};

std::vector<reader> readers(unsigned n) {
  const mesh m(n);
  return {{"STL text", read_stl, written(writers[0], m)},
          {"STL binary", read_stl, written(writers[1], m)},
          {"OBJ", read_obj, "vt 1 2\n" + written(writers[2], m), true},
          {"VTK text", read_vtk, written(writers[8], m)},
          {"VTK binary", read_vtk, binary_vtk(m)},
          {"MEDIT", read_medit, written(writers[11], m)},
          {"MEDIT solution", read_solution, written(writers[15], m)},
          {"NASTRAN", read_identified<NASTRAN_input>, written(writers[17], m), true},
          {"FEMAP", read_identified<FEMAP_input>, written(writers[20], m), true}};
}

TEST(io_faults, every_call_of_every_reader_may_fail) {
  for (const unsigned n : {3U, several_blocks}) {
    for (const reader& r : readers(n)) {
      memory_file file(r.content);
      const reading whole = r.read(file.path());
      ASSERT_ALL(whole.code == 0, whole.triangles >= n - 1) << r.name;
      for (const operation what : {operation::open, operation::read, operation::close, operation::seek}) {
        for_each_plan(what, [&](const faults::plan& plan) {
          faults::arm(plan);
          const reading got = r.read(file.path());
          const bool failed = faults::disarm();
          EXPECT_TRUE(got.sound) << r.name << ", call " << plan.at << ", code " << got.code;
          const bool matters = failed && (what == operation::open || what == operation::read);
          EXPECT_TRUE(matters || got == whole) << r.name << ", call " << plan.at;
          EXPECT_TRUE(what != operation::open || got.code < 0 || got == whole) << r.name;  // one mode may do
          EXPECT_EQ(faults::live_streams(), 0U) << r.name;
          EXPECT_TRUE(r.read(file.path()) == whole) << r.name << " after a failure";
          return failed && !::testing::Test::HasFailure();
        });
      }
    }
  }
}

memory_file* shrinking = nullptr;

TEST(io_faults, files_that_shrink_while_they_are_read) {
  faults::instead_of_failing = [] { shrinking->resize(shrinking->size() / 2); };
  const bool are_small = qel::gridwork::detail::limits::are_small;  // then blocks end between sections, too
  for (const reader& r : readers(several_blocks)) {
    memory_file file(r.content);
    shrinking = &file;
    const reading whole = r.read(file.path());
    for_each_plan(operation::read, [&](const faults::plan& plan) {
      file.write(r.content);
      faults::arm(plan);
      const reading got = r.read(file.path());
      const bool failed = faults::disarm();
      EXPECT_ALL(got.sound, (got == whole || got.code < 0 || r.may_end_anywhere || are_small))
          << r.name << ", read " << plan.at;
      return failed;
    });
  }
  faults::instead_of_failing = nullptr;
}

// --- Signals -------------------------------------------------------------------------------------------------------

/// Breaks off this thread's calls, again and again: the handler does not restart them.
class interruptions {
 public:
  interruptions() {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &action, &old_);
    const itimerval often = {{0, 300}, {0, 300}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
  }
  interruptions(const interruptions&) = delete;
  interruptions& operator=(const interruptions&) = delete;
  ~interruptions() {
    const itimerval never = {};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &old_, nullptr);
  }

 private:
  struct sigaction old_ = {};
};

/// Runs serve(path of a pipe) in a thread without interruptions, and use(path) here, with them.
template <class Serve, class Use>
void with_slow_pipe(Serve serve, Use use) {
  const string path = std::filesystem::temp_directory_path() / ("gridwork_pipe_" + std::to_string(::getpid()));
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  ::signal(SIGPIPE, SIG_IGN);  // of a pipe whose other end was closed too soon
  sigset_t alarm;
  ::sigemptyset(&alarm);
  ::sigaddset(&alarm, SIGALRM);
  ::pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
  std::thread other([&] { serve(path); });
  ::pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
  {
    const interruptions signals;
    use(path.c_str());
  }
  other.join();
  std::filesystem::remove(path);
}

void doze() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

TEST(signals, do_not_cut_what_is_read) {
  for (const reader& r : readers(9000)) {
    const reading whole = r.read(memory_file(r.content).path());
    const auto serve = [&](const string& path) {
      doze();
      std::ofstream pipe(path, std::ios::binary);
      for (std::size_t at = 0; at < r.content.size(); at += 40000, doze())
        pipe << r.content.substr(at, 40000) << std::flush;
    };
    with_slow_pipe(serve, [&](const char* path) { EXPECT_TRUE(r.read(path) == whole) << r.name; });
  }
}

/// A stream of the caller's has a buffer, which the C library drops when a signal breaks off its writing.
TEST(signals, do_not_cut_what_is_written) {
  const mesh m(9000);
  for (const writer& w : writers) {
    if (string(w.name).find("stream") != string::npos) continue;
    string got;
    const auto serve = [&](const string& path) {
      doze();
      std::ifstream pipe(path, std::ios::binary);
      for (char bytes[40000]; pipe.read(bytes, sizeof bytes) || pipe.gcount() != 0; doze()) {
        got.append(bytes, std::size_t(pipe.gcount()));
      }
    };
    with_slow_pipe(serve, [&](const char* path) { EXPECT_EQ(w.write(path, m), 0) << w.name; });
    EXPECT_TRUE(got == written(w, m)) << w.name << ": " << got.size();
  }
}

// --- Broken files --------------------------------------------------------------------------------------------------

/// Reads bytes, twice with different rubbish behind them, which must make no difference.
void expect_sound(const reader& r, memory_file& file, const string& bytes, const string& what) {
  file.write(bytes);
  faults::junk = '7';
  const reading first = r.read(file.path());
  faults::junk = '\n';
  EXPECT_TRUE(first.sound) << r.name << ", " << what << ": " << first.code;
  EXPECT_TRUE(r.read(file.path()) == first) << r.name << " looked behind the end, " << what;
}

TEST(broken_files, every_truncation_and_every_byte_replaced) {
  memory_file file;
  unsigned points = 0;
  std::vector<reader> all = readers(3);
  all.push_back({"NASTRAN systems", read_identified<NASTRAN_input>,
                 "INCLUDE 'a'\nGRDSET         1       1\nGRID*,1,0,1.,\n*,2.5-3\nGRID\t2\t0\t1.D1\nGRID,3,0,,1\n"
                 "CORD1S,1,1,2,3\nGRID,9,,1.,45.,90.\nCBEAM3,4,-1,1,2,9,+\n+,5\nCONROD,4,9,9\nENDDATA\n"});
  for (const reader& r : all) {
    for (std::size_t size = 0; size < r.content.size() && !HasFailure(); ++size, ++points) {
      expect_sound(r, file, r.content.substr(0, size), "bytes " + std::to_string(size));
    }
    string bytes = r.content;
    for (std::size_t at = 0; at < bytes.size() && !HasFailure(); ++at) {
      const char old = bytes[at];
      for (const char c :
           {'\0', '\n', ' ', '0', '9', '-', '/', '.', 'e', '\x7f', '\xff', char(old ^ 1), char(old ^ 32)}) {
        bytes[at] = c;
        expect_sound(r, file, bytes, "byte " + std::to_string(at) + " is " + std::to_string(int(c)));
        ++points;
      }
      bytes[at] = old;
    }
  }
  EXPECT_GT(points, 20000U);
}

TEST(broken_files, a_count_of_triangles_that_no_mesh_has) {
  const string head(80, ' '), most = "\xff\xff\xff\x7f";
  memory_file file(head + most);
  EXPECT_EQ(read_stl(file.path()).code, -3);
  file.resize(84 + 50 * std::uint64_t{0x7fffffff});  // of the length that it claims, but holding nothing
  rusage before, after;
  ::getrusage(RUSAGE_SELF, &before);
  EXPECT_EQ(read_stl(file.path()).code, -199);
  ::getrusage(RUSAGE_SELF, &after);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 200000) << "KiB";
  EXPECT_LT(after.ru_utime.tv_sec - before.ru_utime.tv_sec, 20);
}

}  // namespace

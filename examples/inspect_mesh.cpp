// Reads a triangle mesh, tells what is in it, and writes it with its coincident nodes merged.
//
// usage: inspect_mesh FILE [-o OUT]
//
// FILE ends with .stl or .obj, OUT with the extension of any format that the library writes.
//
// To add to the report, write one more section and name it in print_report().
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "mesh_format.h"

namespace {

namespace fs = std::filesystem;
using qel::gridwork::operation;

constexpr std::uintmax_t large_file = 100'000'000;  // bytes; a step on more than this takes a while

const format* const formats[] = {&stl_format,     &obj_format,     &vtk_format,         &medit_format,
                                 &nastran_format, &ensight_format, &ensight_case_format};

using step_times = std::vector<std::pair<std::string, double>>;

[[noreturn]] void fail(const std::string& message) { throw std::runtime_error(message); }

void require_readable(const std::string& path) {
  std::error_code error;
  if (!fs::exists(path, error)) fail(path + ": " + (error ? error.message() : "there is no such file"));
  if (fs::is_directory(path, error)) fail(path + ": this is a directory, not a mesh file");
  errno = 0;
  if (!std::ifstream(path, std::ios::binary)) fail(path + ": cannot be opened: " + std::strerror(errno));
  if (fs::is_regular_file(path, error) && fs::file_size(path, error) == 0) fail(path + ": the file is empty");
}

// --- The report ----------------------------------------------------------------------------------------------------

void print_count(const char* label, std::uint64_t value) {
  std::printf("  %-30s %15s\n", label, number(value).c_str());
}

void print_counts(const survey& file, const mesh& m) {
  const std::uint64_t triangles = m.connectivity.cols();
  const std::uint64_t nodes = m.coords.cols();
  std::printf("Mesh\n");
  print_count("triangles in the file", file.triangles);
  print_count("degenerate, removed", file.triangles - std::min(file.triangles, triangles));
  print_count("triangles kept", triangles);
  print_count("nodes in the file", file.nodes);
  print_count("merged or unused, removed", file.nodes - std::min(file.nodes, nodes));
  print_count("nodes kept", nodes);
}

void print_bounding_box(const mesh& m) {
  if (m.coords.cols() == 0) return;
  std::printf("Bounding box\n");
  for (unsigned axis = 0; axis < 3; ++axis) {
    double low = m.coords(axis, 0), high = low;
    for (std::uint64_t node = 1; node < m.coords.cols(); ++node) {
      low = std::min(low, m.coords(axis, node));
      high = std::max(high, m.coords(axis, node));
    }
    std::printf("  %c  %14.7g to %14.7g, size %.7g\n", "xyz"[axis], low, high, high - low);
  }
}

// Edges on which no triangle has a neighbour, each counted once.
std::uint64_t count_edges_without_neighbor(const mesh& m, bool pair_non_manifold) {
  qel::dense2D<unsigned> neighbors, free, distinct;
  require(operation::get_neighbors,
          qel::gridwork::get_neighbors(m.connectivity, qel::gridwork::ELT_TRIA3, pair_non_manifold, neighbors),
          "finding neighbours");
  require(operation::get_mesh_boundaries,
          qel::gridwork::get_mesh_boundaries(m.connectivity, neighbors, qel::gridwork::ELT_TRIA3, free),
          "finding free edges");
  require(operation::copy_edges, qel::gridwork::copy_edges(free, qel::gridwork::ELT_EDGE2, distinct),
          "counting free edges");
  return distinct.cols();
}

// Nodes joined by edges make one piece.
std::uint64_t count_pieces(std::uint64_t nodes_in_use, const qel::dense2D<unsigned>& edges) {
  std::vector<unsigned> parent(std::size_t{qel::gridwork::max_ID(edges)} + 1);
  for (unsigned node = 0; node < parent.size(); ++node) parent[node] = node;
  const auto root = [&](unsigned node) {
    for (; parent[node] != node; node = parent[node]) parent[node] = parent[parent[node]];
    return node;
  };
  std::uint64_t pieces = nodes_in_use;
  for (std::uint64_t e = 0; e < edges.cols(); ++e) {
    const unsigned a = root(edges(0, e)), b = root(edges(1, e));
    if (a == b) continue;
    parent[std::max(a, b)] = std::min(a, b);
    --pieces;
  }
  return pieces;
}

void print_topology(const mesh& m) {
  if (m.connectivity.empty()) return;
  qel::dense2D<unsigned> edges;
  require(operation::copy_edges, qel::gridwork::copy_edges(m.connectivity, qel::gridwork::ELT_TRIA3, edges),
          "finding edges");
  const int nodes = qel::gridwork::count_unique_indices(m.connectivity);
  require(operation::count_unique_indices, nodes, "counting nodes");
  // Pairing leaves only edges of one triangle alone; without it, edges of three or more join them.
  const std::uint64_t free = count_edges_without_neighbor(m, true);
  const std::uint64_t unpaired = count_edges_without_neighbor(m, false);
  const auto used = static_cast<std::uint64_t>(nodes);
  const auto euler = static_cast<long long>(used + m.connectivity.cols()) - static_cast<long long>(edges.cols());
  std::printf("Topology\n");
  print_count("edges", edges.cols());
  print_count("free edges", free);
  print_count("edges of 3 or more triangles", unpaired - free);
  print_count("connected pieces", count_pieces(used, edges));
  std::printf("  %-30s %15lld\n", "nodes - edges + triangles", euler);
}

void print_times(const step_times& times) {
  std::printf("Time\n");
  for (const auto& [step, seconds] : times) std::printf("  %-30s %13.3f s\n", step.c_str(), seconds);
}

void print_report(const survey& file, const mesh& m) {
  print_counts(file, m);
  print_bounding_box(m);
  print_topology(m);
  print_quality(m);
}

// --- The program ---------------------------------------------------------------------------------------------------

template <class Action>
auto timed(const char* step, bool announce, step_times& times, Action action) {
  if (announce) std::fprintf(stderr, "%s ...\n", step);
  const auto start = std::chrono::steady_clock::now();
  auto result = action();
  times.emplace_back(step, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  return result;
}

// The format of a path's extension; with `to_read`, only one that can be read.
const format& format_of(const std::string& path, bool to_read) {
  const std::string extension = lower_case(fs::path(path).extension().string());
  std::string known;
  for (const format* candidate : formats) {
    if (to_read && candidate->read == nullptr) continue;
    for (const std::string& its : candidate->extensions) {
      if (its == extension) return *candidate;
      known += " " + its;
    }
  }
  fail(path + ": the extension is none of" + known);
}

void write_mesh(const std::string& path, const mesh& m, const survey& input, step_times& times) {
  const format& kind = format_of(path, false);
  const bool announce = input.bytes > large_file;
  errno = 0;
  const int code = timed("writing", announce, times, [&] { return kind.write(path, m, input.text); });
  const std::string reason = errno != 0 ? std::strerror(errno) : message(kind.writer, code);
  if (code != 0) fail(path + ": cannot be written: " + reason);
  const survey output = timed("checking what was written", announce, times, [&] { return kind.look(path); });
  if (!kind.complete(output, m)) fail(path + ": was written, but is not complete; is the disk full?");
  std::printf("Written: %s (%s %s, %s bytes)\n", path.c_str(), output.text ? "text" : "binary", kind.name,
              number(output.bytes).c_str());
}

void inspect(const std::string& input, const std::string& output) {
  require_readable(input);
  std::error_code error;
  if (!output.empty() && fs::equivalent(input, output, error)) fail(output + ": this is the input file");

  const format& kind = format_of(input, true);
  if (!output.empty()) format_of(output, false);
  const bool announce = fs::is_regular_file(input, error) && fs::file_size(input, error) > large_file;
  step_times times;
  const survey file = timed("counting triangles", announce, times, [&] { return kind.look(input); });
  mesh m;
  const int code = timed("reading and merging", announce, times, [&] { return kind.read(input, m); });
  // Damaged text whose bytes 80 to 83 read as a negative count comes back as a sound binary file without triangles.
  if (code != 0 || (file.triangles > 0 && m.connectivity.cols() == 0)) {
    fail(input + ": " + kind.explain(code, input, file));
  }

  std::printf("%s: %s %s, %s bytes\n", input.c_str(), file.text ? "text" : "binary", kind.name,
              number(file.bytes).c_str());
  print_report(file, m);
  if (!output.empty()) write_mesh(output, m, file, times);
  print_times(times);
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const bool with_output = arguments.size() == 3 && arguments[1] == "-o";
  if (arguments.size() != 1 && !with_output) {
    std::fprintf(stderr, "usage: inspect_mesh FILE [-o OUT]\n");
    return 2;
  }
  try {
    inspect(arguments[0], with_output ? arguments[2] : std::string());
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "inspect_mesh: %s\n", problem.what());
    return 1;
  }
  return 0;
}

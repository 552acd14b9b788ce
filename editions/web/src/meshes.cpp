// A mesh that JavaScript holds: read, cleaned, measured, shown and written. The report is the command-line tool's.
#include <report/cleaning.h>
#include <report/summary.h>

#include <algorithm>

#include "exports.h"
#include "slots.h"
#include "surface.h"

namespace web {

namespace {

using report::outcome;

constexpr int refused = -1;

// The page merges nodes wherever they are, and what merges them element by element is not in its module.
#ifdef QEL_GRIDWORK_WEB_PAGE
constexpr bool has_modes = false;
#else
constexpr bool has_modes = true;
#endif

struct held_mesh : kept {
  report::loaded file;
  report::summary found;
  surface drawn;
  std::vector<unsigned> open, non_manifold;  // two nodes of each edge
  bool is_measured = false;
  std::string text;  // for JavaScript to read: words or JSON
};

int refuse(held_mesh& m, const std::string& words, int result = refused) {
  m.text = words;
  return result < 0 ? result : refused;
}

int finish(held_mesh& m, const outcome& done) {
  return done.failed() ? refuse(m, done.words(), done.result) : done.result;
}

int finish_change(held_mesh& m, const outcome& done) {
  m.is_measured = false;
  return finish(m, done);
}

// Two nodes of each edge; of a face every two of its nodes, as their order round it is not known.
std::vector<unsigned> edges_of(const std::vector<report::side>& sides) {
  std::vector<unsigned> ends;
  for (const report::side& s : sides) {
    const auto last = std::find(s.begin(), s.end(), ~0U);
    for (auto a = s.begin(); a != last; ++a) {
      for (auto b = a + 1; b != last; ++b) ends.insert(ends.end(), {*a, *b});
    }
  }
  return ends;
}

constexpr std::size_t nbr_worst = 10;

outcome measure(held_mesh& m) {
  if (m.is_measured) return {};
  m.found = {};
  const outcome done = summarize(m.file.m, nbr_worst, m.found);
  // That faces of solids lie on the boundary is no fault.
  m.open = m.found.sides.dim == 2 ? edges_of(m.found.sides.open) : std::vector<unsigned>{};
  m.non_manifold = edges_of(m.found.sides.non_manifold);
  m.is_measured = !done.failed();
  return done;
}

std::string described(const held_mesh& m) {
  report::json object;
  add_summary(object, m.file, m.found);
  object.add("used_nodes", m.found.use.used).add("measured_elements", m.found.sides.elements);
  std::vector<report::json> shapes;
  shapes.reserve(m.found.shapes.size());
  for (const report::shapes& s : m.found.shapes) shapes.push_back(shapes_json(s));
  return object.add("shapes", shapes).text();
}

template <class T>
void show(const std::vector<T>& all, unsigned rows, slot& s) {
  s.data = const_cast<T*>(all.data());
  s.rows = s.stride = rows;
  s.cols = static_cast<std::uint32_t>(all.size() / rows);
}

}  // namespace

QEL_GRIDWORK_WEB_EXPORT("mesh") held_mesh* new_mesh() { return new held_mesh; }

QEL_GRIDWORK_WEB_EXPORT("mesh_text") const char* mesh_text(held_mesh* m) { return m->text.c_str(); }

QEL_GRIDWORK_WEB_EXPORT("mesh_read") int mesh_read(held_mesh* m, const char* path, const char* format) {
  m->file = {};
  m->is_measured = false;
  m->file.kind = report::find_format({}, format);
  if (m->file.kind == nullptr || m->file.kind->read == nullptr) return refuse(*m, "the format is not known");
  const report::refusal why = read_file(path, m->file);
  if (why.words.empty()) return 0;
  m->file.m = {};
  return refuse(*m, why.words, why.result);
}

QEL_GRIDWORK_WEB_EXPORT("mesh_merge") int mesh_merge(held_mesh* m, double tolerance, unsigned mode) {
  return finish_change(*m, merge_nodes(m->file.m, tolerance, has_modes ? mode : 0));
}

QEL_GRIDWORK_WEB_EXPORT("mesh_remove_degenerated") int mesh_remove_degenerated(held_mesh* m) {
  std::uint64_t removed = 0;
  const int result = finish_change(*m, remove_degenerate(m->file.m, removed));
  return result < 0 ? result : static_cast<int>(removed);
}

QEL_GRIDWORK_WEB_EXPORT("mesh_simplify") int mesh_simplify(held_mesh* m) {
  return finish_change(*m, remove_unused_nodes(m->file.m));
}

/// The text is what is known of the mesh then, as JSON.
QEL_GRIDWORK_WEB_EXPORT("mesh_measure") int mesh_measure(held_mesh* m) {
  const int result = finish(*m, measure(*m));
  if (result >= 0) m->text = described(*m);
  return result;
}

QEL_GRIDWORK_WEB_EXPORT("mesh_draw") int mesh_draw(held_mesh* m) {
  m->drawn = {};
  const int result = finish(*m, measure(*m));
  return result < 0 ? result : finish(*m, make_surface(m->file.m, m->found, m->drawn));
}

QEL_GRIDWORK_WEB_EXPORT("mesh_write") int mesh_write(held_mesh* m, const char* path, const char* format, bool text) {
  const report::format* kind = report::find_format({}, format);
  if (kind == nullptr) return refuse(*m, "the format is not known");
  if (m->file.m.blocks.empty()) return refuse(*m, "there is no element to write");
  if (!has_valid_nodes(m->file.m)) return refuse(*m, "elements have nodes that are not there");
  for (const report::block& b : m->file.m.blocks) {
    if (!kind->holds(b.type))
      return refuse(*m, std::string(kind->name) + " does not hold " + report::type_name(b.type));
  }
  return finish(*m, {kind->writer, kind->write(path, m->file.m, text)});
}

/// Arrays by number, as js/mesh.mjs names them; from 16 on the blocks. False where there is none.
QEL_GRIDWORK_WEB_EXPORT("mesh_array") bool mesh_array(held_mesh* m, unsigned which, slot* s) {
  constexpr unsigned first_block = 16;
  const surface& drawn = m->drawn;
  switch (which) {
    case 0:
      show(m->file.m.coords, *s);
      return true;
    case 1:
      show(m->open, 2, *s);
      return true;
    case 2:
      show(m->non_manifold, 2, *s);
      return true;
    case 3:
      show(drawn.positions, 3, *s);
      return true;
    case 4:
      show(drawn.triangles, 3, *s);
      return true;
    case 5:
      show(drawn.qualities, 1, *s);
      return true;
    case 6:
      show(drawn.pieces, 1, *s);
      return true;
    case 7:
      show(drawn.outlines, 1, *s);
      return true;
    default:
      break;
  }
  if (which < first_block || which - first_block >= m->file.m.blocks.size()) return false;
  const report::block& b = m->file.m.blocks[which - first_block];
  show(b.connectivity, *s);
  s->number = b.type;
  return true;
}

}  // namespace web

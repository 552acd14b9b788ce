#include "clipping.h"

#include <algorithm>
#include <map>
#include <utility>

#include "cleaning.h"

namespace report {

namespace {

// The new node on each edge, over all blocks.
using edge_nodes = std::map<std::pair<unsigned, unsigned>, unsigned>;

struct pieces {
  qel::dense2D<unsigned> connectivity, edges;
  qel::dense1D<unsigned> sources;
  qel::dense1D<double> weights;
};

template <std::size_t Dim>
struct plane {
  qel::vector_fixed<double, Dim> at, normal;

  explicit plane(const clip_options& options) {
    std::copy_n(options.at.begin(), Dim, at.begin());
    std::copy_n(options.normal.begin(), Dim, normal.begin());
  }
};

// Nodes that an earlier block has put on the same edge take the place of new ones.
void share_nodes(unsigned first, pieces& cut, edge_nodes& known) {
  std::vector<unsigned> shared(cut.edges.cols());
  for (unsigned k = 0; k < shared.size(); ++k) {
    shared[k] = known.emplace(std::pair(cut.edges(0, k), cut.edges(1, k)), first + k).first->second;
  }
  for (std::uint64_t e = 0; e < cut.connectivity.cols(); ++e) {
    for (std::uint64_t k = 0; k < cut.connectivity.rows(); ++k) {
      unsigned& node = cut.connectivity(k, e);
      if (node != ~0U && node >= first) node = shared[node - first];
    }
  }
}

bool add_piece(const pieces& cut, std::uint64_t e, const block& from, block& to) {
  if (!append_element(cut.connectivity.column(e), to)) return false;
  return from.references.empty() || to.references.push_back(from.references[cut.sources[e]]);
}

// Quadrangles leave triangles, too.
bool add_pieces(const pieces& cut, const block& from, std::vector<block>& blocks) {
  block same{from.type, {}}, triangles{gw::ELT_TRIA3, {}};
  for (std::uint64_t e = 0; e < cut.connectivity.cols(); ++e) {
    const bool is_triangle = from.type == gw::ELT_QUAD4 && cut.connectivity(3, e) == ~0U;
    if (!add_piece(cut, e, from, is_triangle ? triangles : same)) return false;
  }
  for (const block& b : {triangles, same}) {
    if (!b.connectivity.empty()) blocks.push_back(b);
  }
  return true;
}

template <std::size_t Dim>
outcome cut_block(mesh& m, const block& b, const clip_options& options, edge_nodes& known, std::vector<block>& blocks) {
  const plane<Dim> p(options);
  const auto first = static_cast<unsigned>(m.coords.cols());
  pieces cut;
  const int result = gw::clip(m.coords, cut.connectivity, p.at, p.normal, b.connectivity, b.type, options.tolerance,
                              cut.sources, cut.edges, cut.weights);
  if (result < 0) return {gw::operation::clip_exact, result};
  share_nodes(first, cut, known);
  return outcome::of_memory(add_pieces(cut, b, blocks));
}

template <std::size_t Dim>
outcome choose_block(mesh& m, const block& b, const clip_options& options, std::vector<block>& blocks) {
  const plane<Dim> p(options);
  const unsigned mode = options.elements == crossed::dropped ? 0 : options.elements == crossed::kept ? 1 : 2;
  pieces chosen;
  const int result =
      gw::clip(m.coords, chosen.connectivity, p.at, p.normal, b.connectivity, mode, options.tolerance, chosen.sources);
  if (result < 0) return {gw::operation::clip_whole, result};
  block kept{b.type, chosen.connectivity};
  for (std::uint64_t e = 0; e < chosen.sources.size() && !b.references.empty(); ++e) {
    if (!kept.references.push_back(b.references[chosen.sources[e]])) return outcome::of_memory(false);
  }
  if (!kept.connectivity.empty()) blocks.push_back(kept);
  return {};
}

template <std::size_t Dim>
outcome clip_all(mesh& m, const clip_options& options, std::vector<block>& blocks) {
  edge_nodes known;
  for (const block& b : m.blocks) {
    const outcome done = options.elements == crossed::cut ? cut_block<Dim>(m, b, options, known, blocks)
                                                          : choose_block<Dim>(m, b, options, blocks);
    if (done.failed()) return done;
  }
  return {};
}

}  // namespace

bool can_be_cut(gw::element_type type) {
  return type == gw::ELT_EDGE2 || type == gw::ELT_TRIA3 || type == gw::ELT_QUAD4 || type == gw::ELT_TETRA4;
}

outcome clip(mesh& m, const clip_options& options) {
  std::vector<block> blocks;
  const outcome done = m.coords.rows() == 2 ? clip_all<2>(m, options, blocks) : clip_all<3>(m, options, blocks);
  if (done.failed()) return done;
  m.blocks = std::move(blocks);
  return m.blocks.empty() ? done : remove_unused_nodes(m);
}

}  // namespace report

/// @file
/// Result codes in words, for programs that tell their users what went wrong. The library itself never prints anything.
///
/// Everything here is a constant expression over tables: nothing is allocated, formatted or translated, and a program
/// that does not call message() holds none of the sentences. They begin in lower case and end without a full stop, so
/// that they can be put behind a colon:
///
///     const int result = qel::gridwork::merge(coords, tolerance);
///     if (result < 0) std::fprintf(stderr, "merge: %s\n", message(operation::merge_nodes, result));
#ifndef QEL_GRIDWORK_MESSAGES_H
#define QEL_GRIDWORK_MESSAGES_H

#include <string_view>

namespace qel {
namespace gridwork {

/// The functions that have negative result codes.
///
/// An enumerator has the name of its function and stands for all overloads, but for those that give one code another
/// meaning:
///
/// | enumerators | overloads |
/// |---|---|
/// | merge_nodes, merge_lists, merge_elements | of merge(): all nodes; lists of nodes; the nodes of connectivities |
/// | clip_whole, clip_exact | of clip(): whole elements; cut ones |
/// | get_subdomains, get_subdomains_walls | neighbours alone; with walls |
/// | copy_edges, copy_edges_range | one connectivity; a range |
/// | edge_qualities, edge_qualities_range | one connectivity; a range |
/// | H_shock_edge, H_shock | one edge; the edges of a mesh |
/// | vtk_output, vtk_output_cells | a named file; an open stream |
/// | medit_output, medit_output_references | without and with a reference for every element |
enum class operation : unsigned char {
  /// @cond one for each function
  permutation,
  get_IDs,
  unique_indices,
  count_unique_indices,
  get_sorted_order,
  inc_bounding_box,
  copy_mesh,
  copy_sym_mesh,
  clip_whole,
  clip_exact,
  reinit,
  merge_nodes,
  merge_lists,
  merge_elements,
  remove_degenerated,
  simplify,
  get_neighbors,
  get_element_boundaries,
  get_mesh_boundaries,
  get_mesh_bounding_elements,
  get_elements_on_boundaries,
  get_subdomains,
  get_subdomains_walls,
  get_colors_boundaries,
  sort_elfes,
  get_ancestors,
  get_connected_elements,
  get_node_graph,
  copy_edges,
  copy_edges_range,
  shape_qualities,
  min_quality,
  jacobians,
  edge_quality,
  edge_qualities,
  edge_qualities_range,
  bound_metric,
  bound_metrics,
  metrics_iso_to_aniso2d,
  metrics_iso_to_aniso3d,
  metrics_aniso3d_to_aniso2d,
  overwrite_invalid_metrics,
  metrics_gen_iso,
  H_shock_edge,
  H_shock,
  bound_metric_variations,
  bound_metric_gradations,
  STL_input,
  STL_output,
  WavefrontOBJ_input,
  WavefrontOBJ_output,
  vtk_input,
  vtk_convert,
  vtk_output,
  vtk_output_cells,
  medit_input,
  medit_solution_input,
  medit_output,
  medit_output_references,
  medit_scalar,
  medit_vector,
  medit_tensor,
  NASTRAN_output,
  NASTRAN_input,
  FEMAP_input,
  FEMAP_output,
  ensight_output
  /// @endcond
};

/// Name and arguments of an operation, as `{operation::merge_nodes, "merge", "(coords, new_IDs, tol)"}`.
struct operation_name {
  operation call;         ///< the operation
  const char* function;   ///< the name alone
  const char* arguments;  ///< those of one overload, where the overloads are told apart; else empty
};

/// Names of the operations, by enumerator.
inline constexpr operation_name operation_names[] = {
    {operation::permutation, "permutation", ""},
    {operation::get_IDs, "get_IDs", ""},
    {operation::unique_indices, "unique_indices", ""},
    {operation::count_unique_indices, "count_unique_indices", ""},
    {operation::get_sorted_order, "get_sorted_order", ""},
    {operation::inc_bounding_box, "inc_bounding_box", ""},
    {operation::copy_mesh, "copy_mesh", ""},
    {operation::copy_sym_mesh, "copy_sym_mesh", ""},
    {operation::clip_whole, "clip", "(coords, out, point, normal, connectivity, mode, tol, elements)"},
    {operation::clip_exact, "clip", "(coords, out, point, normal, connectivity, type, tol, elements, edges, weights)"},
    {operation::reinit, "reinit", ""},
    {operation::merge_nodes, "merge", "(coords, new_IDs, tol)"},
    {operation::merge_lists, "merge", "(coords, IDs1, IDs2, new_IDs, tol)"},
    {operation::merge_elements, "merge", "(coords, connectivity, new_IDs, tol, mode)"},
    {operation::remove_degenerated, "remove_degenerated", ""},
    {operation::simplify, "simplify", ""},
    {operation::get_neighbors, "get_neighbors", ""},
    {operation::get_element_boundaries, "get_element_boundaries", ""},
    {operation::get_mesh_boundaries, "get_mesh_boundaries", ""},
    {operation::get_mesh_bounding_elements, "get_mesh_bounding_elements", ""},
    {operation::get_elements_on_boundaries, "get_elements_on_boundaries", ""},
    {operation::get_subdomains, "get_subdomains", "(neighbors, colors)"},
    {operation::get_subdomains_walls, "get_subdomains", "(connectivity, neighbors, type, walls, colors)"},
    {operation::get_colors_boundaries, "get_colors_boundaries", ""},
    {operation::sort_elfes, "sort_elfes", ""},
    {operation::get_ancestors, "get_ancestors", ""},
    {operation::get_connected_elements, "get_connected_elements", ""},
    {operation::get_node_graph, "get_node_graph", ""},
    {operation::copy_edges, "copy_edges", "(connectivity, type, edges)"},
    {operation::copy_edges_range, "copy_edges", "(first, last, types, edges)"},
    {operation::shape_qualities, "shape_qualities", ""},
    {operation::min_quality, "min_quality", ""},
    {operation::jacobians, "jacobians", ""},
    {operation::edge_quality, "edge_quality", ""},
    {operation::edge_qualities, "edge_qualities", "(coords, connectivity, type, sizes, H, excluded_edges)"},
    {operation::edge_qualities_range, "edge_qualities", "(coords, first, last, types, sizes, H, excluded_edges)"},
    {operation::bound_metric, "bound_metric", ""},
    {operation::bound_metrics, "bound_metrics", ""},
    {operation::metrics_iso_to_aniso2d, "metrics_iso_to_aniso2d", ""},
    {operation::metrics_iso_to_aniso3d, "metrics_iso_to_aniso3d", ""},
    {operation::metrics_aniso3d_to_aniso2d, "metrics_aniso3d_to_aniso2d", ""},
    {operation::overwrite_invalid_metrics, "overwrite_invalid_metrics", ""},
    {operation::metrics_gen_iso, "metrics_gen_iso", ""},
    {operation::H_shock_edge, "H_shock", "(L, h1, h2, shock)"},
    {operation::H_shock, "H_shock", "(coords, connectivity, type, sizes, largest)"},
    {operation::bound_metric_variations, "bound_metric_variations", ""},
    {operation::bound_metric_gradations, "bound_metric_gradations", ""},
    {operation::STL_input, "STL_input", ""},
    {operation::STL_output, "STL_output", ""},
    {operation::WavefrontOBJ_input, "WavefrontOBJ_input", ""},
    {operation::WavefrontOBJ_output, "WavefrontOBJ_output", ""},
    {operation::vtk_input, "vtk_input", ""},
    {operation::vtk_convert, "vtk_convert", ""},
    {operation::vtk_output, "vtk_output", "(filename, coords, connectivity, type)"},
    {operation::vtk_output_cells, "vtk_output", "(stream, coords, nbr_cells, cells, cell_types)"},
    {operation::medit_input, "medit_input", ""},
    {operation::medit_solution_input, "medit_solution_input", ""},
    {operation::medit_output, "medit_output", "(filename, coords, connectivity, type)"},
    {operation::medit_output_references, "medit_output", "(filename, coords, connectivity, type, references)"},
    {operation::medit_scalar, "medit_scalar", ""},
    {operation::medit_vector, "medit_vector", ""},
    {operation::medit_tensor, "medit_tensor", ""},
    {operation::NASTRAN_output, "NASTRAN_output", ""},
    {operation::NASTRAN_input, "NASTRAN_input", ""},
    {operation::FEMAP_input, "FEMAP_input", ""},
    {operation::FEMAP_output, "FEMAP_output", ""},
    {operation::ensight_output, "ensight_output", ""},
};

namespace detail {

/// True when each operation has its name, and the names have the order of the operations.
constexpr bool are_in_order(const operation_name* names, unsigned count) noexcept {
  for (unsigned k = 0; k < count; ++k) {
    if (names[k].call != static_cast<operation>(k)) return false;
  }
  return count == unsigned(operation::ensight_output) + 1;
}

static_assert(are_in_order(operation_names, sizeof(operation_names) / sizeof(operation_names[0])),
              "every operation has its name");

}  // namespace detail

/// A negative result code of an operation, in words.
struct result_code {
  operation call;        ///< the function or overload that returns it
  int code;              ///< negative
  const char* sentence;  ///< what it means
};

/// Sentences that many functions share.
namespace sentences {
inline constexpr const char* success = "success";              ///< for 0 and counts
inline constexpr const char* unknown = "unknown result code";  ///< for any other result
/// For a code that the overloads of a function disagree on.
inline constexpr const char* ambiguous = "an argument is invalid; which one depends on the overload that was called";
/// @cond internal
inline constexpr const char* memory = "memory ran out";
inline constexpr const char* memory_or_codes = "memory ran out, or a slot code does not fit 32 bits";
inline constexpr const char* memory_or_entries = "memory ran out, or there are 2^32 entries or more";
inline constexpr const char* memory_or_nodes = "memory, or the 32-bit indices for the new nodes, ran out";
inline constexpr const char* plane_or_space = "coords has neither 2 nor 3 rows";
inline constexpr const char* one_to_three_rows = "coords has no row or more than 3";
inline constexpr const char* node = "a node index is neither ~0U nor a column of coords";
inline constexpr const char* range = "last lies before first";
inline constexpr const char* rows = "the connectivity has not the row count of its type";
inline constexpr const char* matrix = "a connectivity has not the row count of its type";
inline constexpr const char* mesh = "a connectivity has not the row count of its type, or an index that is no node";
inline constexpr const char* neighbors = "neighbors has another size, or an entry that is no element";
inline constexpr const char* boundary_rows = "boundaries is not empty and has another row count";
inline constexpr const char* colors = "colors has not one entry per element";
inline constexpr const char* linear_type = "the function does not handle this element type";
inline constexpr const char* not_opened = "the file cannot be opened";
inline constexpr const char* unknown_node = "an element of the file has a node that the file does not define";
inline constexpr const char* no_type_to_read = "elements of this type cannot be read alone";
inline constexpr const char* rows_of_blocks =
    "a connectivity has too few rows for its type, or a mixed one an invalid row count";
inline constexpr const char* offsets_of_blocks =
    "the block offsets do not fit the block types, decrease, or leave the connectivity";
inline constexpr const char* properties_of_blocks = "the list of property IDs has not one entry per element";
inline constexpr const char* binary = "the file is binary";
inline constexpr const char* tolerance = "the tolerance is negative or NaN";
inline constexpr const char* mode = "the mode is neither 0 nor 1 nor 2";
inline constexpr const char* too_few_rows = "coords has fewer rows than the space has dimensions";
inline constexpr const char* point = "the point is not finite";
inline constexpr const char* normal = "the normal is zero or not finite";
inline constexpr const char* memory_or_count = "memory ran out, or a count does not fit 32 bits";
inline constexpr const char* hmin = "hmin is not finite";
inline constexpr const char* hmax = "hmax is not finite";
inline constexpr const char* tensor_rows = "the matrix of tensors has neither 3 nor 6 rows";
inline constexpr const char* types = "the list of element types has not one entry per connectivity";
inline constexpr const char* edge_rows = "edges is not empty and has not 2 rows";
inline constexpr const char* skipped_edge =
    "an edge was skipped: an end is no node, or has no size greater than 0 or no positive definite metric";
inline constexpr const char* unsound_edge =
    "an edge was skipped: an end has no valid size or tensor, or its length is not finite; all else is done";
inline constexpr const char* excluded = "excluded_edges is not a matrix of 2 rows that holds nodes of the mesh";
inline constexpr const char* target_shape =
    "the matrix of tensors or of frames has too few columns, or another row count";
/// @endcond
}  // namespace sentences

/// All negative result codes, in the order of the operations.
inline constexpr result_code result_codes[] = {
    {operation::permutation, -199, sentences::memory},
    {operation::get_IDs, -2, "A and B have different row counts"},
    {operation::get_IDs, -199, sentences::memory},
    {operation::unique_indices, -3, sentences::range},
    {operation::unique_indices, -199, sentences::memory},
    {operation::count_unique_indices, -2, sentences::range},
    {operation::count_unique_indices, -199, sentences::memory},
    {operation::get_sorted_order, -199, "memory ran out, or an index is so large that the offsets cannot be counted"},
    {operation::inc_bounding_box, -1, "coords has not as many rows as the box has dimensions"},
    {operation::inc_bounding_box, -2, sentences::node},
    {operation::inc_bounding_box, -199, sentences::memory},
    {operation::copy_mesh, -199, sentences::memory_or_nodes},
    {operation::copy_sym_mesh, -4, "the squared length of the normal is 0"},
    {operation::copy_sym_mesh, -199, sentences::memory_or_nodes},
    {operation::clip_whole, -1, sentences::too_few_rows},
    {operation::clip_whole, -3, sentences::point},
    {operation::clip_whole, -4, sentences::normal},
    {operation::clip_whole, -5, sentences::node},
    {operation::clip_whole, -6, sentences::mode},
    {operation::clip_whole, -7, sentences::tolerance},
    {operation::clip_whole, -199, sentences::memory_or_count},
    {operation::clip_exact, -1, sentences::too_few_rows},
    {operation::clip_exact, -3, sentences::point},
    {operation::clip_exact, -4, sentences::normal},
    {operation::clip_exact, -5, sentences::mesh},
    {operation::clip_exact, -6, sentences::linear_type},
    {operation::clip_exact, -7, sentences::tolerance},
    {operation::clip_exact, -199, sentences::memory_or_nodes},
    {operation::reinit, -1, sentences::plane_or_space},
    {operation::reinit, -2, sentences::node},
    {operation::reinit, -3, sentences::range},
    {operation::reinit, -199, sentences::memory},
    {operation::merge_nodes, -1, sentences::plane_or_space},
    {operation::merge_nodes, -3, sentences::tolerance},
    {operation::merge_nodes, -199, sentences::memory},
    {operation::merge_lists, -1, sentences::plane_or_space},
    {operation::merge_lists, -2, "an entry of the first list is neither ~0U nor a column of coords"},
    {operation::merge_lists, -3, "an entry of the second list is neither ~0U nor a column of coords"},
    {operation::merge_lists, -4, sentences::tolerance},
    {operation::merge_lists, -199, sentences::memory},
    {operation::merge_elements, -1, sentences::plane_or_space},
    {operation::merge_elements, -2, sentences::node},
    {operation::merge_elements, -3, sentences::range},
    {operation::merge_elements, -5, sentences::tolerance},
    {operation::merge_elements, -6, sentences::mode},
    {operation::merge_elements, -199, sentences::memory},
    {operation::remove_degenerated, -199, sentences::memory},
    {operation::simplify, -2, sentences::node},
    {operation::simplify, -3, sentences::range},
    {operation::simplify, -199, sentences::memory},
    {operation::get_neighbors, -1, sentences::rows},
    {operation::get_neighbors, -2, sentences::linear_type},
    {operation::get_neighbors, -199, sentences::memory_or_codes},
    {operation::get_element_boundaries, -1, sentences::rows},
    {operation::get_element_boundaries, -2,
     "the function does not handle this element type, or boundaries is not empty and has another row count"},
    {operation::get_element_boundaries, -199, sentences::memory},
    {operation::get_mesh_boundaries, -1, sentences::rows},
    {operation::get_mesh_boundaries, -2, sentences::neighbors},
    {operation::get_mesh_boundaries, -3, sentences::linear_type},
    {operation::get_mesh_boundaries, -4, sentences::boundary_rows},
    {operation::get_mesh_boundaries, -199, sentences::memory},
    {operation::get_mesh_bounding_elements, -1, sentences::rows},
    {operation::get_mesh_bounding_elements, -2,
     "the function does not handle this element type, or neighbors has another size"},
    {operation::get_mesh_bounding_elements, -199, sentences::memory_or_codes},
    {operation::get_elements_on_boundaries, -1, "boundaries has not the row count for this element type"},
    {operation::get_elements_on_boundaries, -2, sentences::rows},
    {operation::get_elements_on_boundaries, -3, sentences::neighbors},
    {operation::get_elements_on_boundaries, -4, "an ancestor is neither ~0U nor an element"},
    {operation::get_elements_on_boundaries, -5, sentences::linear_type},
    {operation::get_elements_on_boundaries, -199, sentences::memory_or_codes},
    {operation::get_subdomains, -1, "neighbors has an entry that is no element"},
    {operation::get_subdomains, -199, "memory ran out, or there are more parts than the result can tell"},
    {operation::get_subdomains_walls, -1, sentences::rows},
    {operation::get_subdomains_walls, -2, sentences::neighbors},
    {operation::get_subdomains_walls, -3, sentences::linear_type},
    {operation::get_subdomains_walls, -4, "a wall is neither ~0U nor a slot, or walls has another row count"},
    {operation::get_subdomains_walls, -199,
     "memory ran out, a slot code does not fit 32 bits, or there are more parts than the result can tell"},
    {operation::get_colors_boundaries, -1, sentences::rows},
    {operation::get_colors_boundaries, -2, sentences::neighbors},
    {operation::get_colors_boundaries, -3, sentences::linear_type},
    {operation::get_colors_boundaries, -4, sentences::colors},
    {operation::get_colors_boundaries, -5, "the mode is neither 0 nor 1 nor 2"},
    {operation::get_colors_boundaries, -6, sentences::boundary_rows},
    {operation::get_colors_boundaries, -7, "pairs is not empty and has not 2 rows"},
    {operation::get_colors_boundaries, -199, sentences::memory_or_codes},
    {operation::sort_elfes, -1, "across a slot, neighbors has an entry that is no element"},
    {operation::sort_elfes, -2, sentences::colors},
    {operation::sort_elfes, -3, "an entry of slots is neither ~0U nor a slot"},
    {operation::sort_elfes, -199, sentences::memory},
    {operation::get_ancestors, -199, sentences::memory},
    {operation::get_connected_elements, -199, sentences::memory_or_entries},
    {operation::get_node_graph, -199, sentences::memory_or_entries},
    {operation::copy_edges, -1, sentences::rows},
    {operation::copy_edges, -3, sentences::edge_rows},
    {operation::copy_edges, -199, sentences::memory},
    {operation::copy_edges_range, -1, sentences::matrix},
    {operation::copy_edges_range, -2, sentences::range},
    {operation::copy_edges_range, -3, sentences::types},
    {operation::copy_edges_range, -4, sentences::edge_rows},
    {operation::copy_edges_range, -199, sentences::memory},
    {operation::shape_qualities, -1, sentences::plane_or_space},
    {operation::shape_qualities, -2, sentences::mesh},
    {operation::shape_qualities, -3, sentences::linear_type},
    {operation::shape_qualities, -199, sentences::memory},
    {operation::min_quality, -1, sentences::plane_or_space},
    {operation::min_quality, -2, sentences::mesh},
    {operation::min_quality, -3, sentences::linear_type},
    {operation::jacobians, -1, sentences::plane_or_space},
    {operation::jacobians, -2, sentences::mesh},
    {operation::jacobians, -3, sentences::linear_type},
    {operation::jacobians, -199, sentences::memory},
    {operation::edge_quality, -2, "the size h1 is not greater than 0"},
    {operation::edge_quality, -3, "the size h2 is not greater than 0"},
    {operation::edge_qualities, -1, sentences::plane_or_space},
    {operation::edge_qualities, -2, sentences::mesh},
    {operation::edge_qualities, -4, sentences::skipped_edge},
    {operation::edge_qualities, -6, sentences::excluded},
    {operation::edge_qualities, -199, sentences::memory},
    {operation::edge_qualities_range, -1, sentences::plane_or_space},
    {operation::edge_qualities_range, -2, sentences::mesh},
    {operation::edge_qualities_range, -4, sentences::types},
    {operation::edge_qualities_range, -5, sentences::skipped_edge},
    {operation::edge_qualities_range, -7, sentences::excluded},
    {operation::edge_qualities_range, -199, sentences::memory},
    {operation::bound_metric, -2, sentences::hmin},
    {operation::bound_metric, -3, sentences::hmax},
    {operation::bound_metrics, -1, sentences::tensor_rows},
    {operation::bound_metrics, -2, sentences::hmin},
    {operation::bound_metrics, -3, sentences::hmax},
    {operation::bound_metrics, -199, sentences::memory},
    {operation::metrics_iso_to_aniso2d, -2, sentences::target_shape},
    {operation::metrics_iso_to_aniso2d, -199, sentences::memory},
    {operation::metrics_iso_to_aniso3d, -2, sentences::target_shape},
    {operation::metrics_iso_to_aniso3d, -199, sentences::memory},
    {operation::metrics_aniso3d_to_aniso2d, -1, "tensors3d has not 6 rows"},
    {operation::metrics_aniso3d_to_aniso2d, -2, sentences::target_shape},
    {operation::metrics_aniso3d_to_aniso2d, -199, sentences::memory},
    {operation::overwrite_invalid_metrics, -1, sentences::tensor_rows},
    {operation::overwrite_invalid_metrics, -2, "the defaults have another row count than the tensors"},
    {operation::overwrite_invalid_metrics, -199, sentences::memory},
    {operation::metrics_gen_iso, -1, sentences::plane_or_space},
    {operation::metrics_gen_iso, -2, sentences::mesh},
    {operation::metrics_gen_iso, -5, "rule is no size_rule"},
    {operation::metrics_gen_iso, -199, sentences::memory},
    {operation::H_shock_edge, -1, "L is not 0 or more"},
    {operation::H_shock_edge, -2, "h1 is no valid size"},
    {operation::H_shock_edge, -3, "h2 is no valid size"},
    {operation::H_shock, -1, sentences::plane_or_space},
    {operation::H_shock, -2, sentences::mesh},
    {operation::H_shock, -4, sentences::unsound_edge},
    {operation::H_shock, -199, sentences::memory},
    {operation::bound_metric_variations, -1, sentences::plane_or_space},
    {operation::bound_metric_variations, -2, sentences::mesh},
    {operation::bound_metric_variations, -4, sentences::unsound_edge},
    {operation::bound_metric_variations, -5, "max_variation is negative or not finite"},
    {operation::bound_metric_variations, -199, sentences::memory},
    {operation::bound_metric_gradations, -1, sentences::plane_or_space},
    {operation::bound_metric_gradations, -2, sentences::mesh},
    {operation::bound_metric_gradations, -4, sentences::unsound_edge},
    {operation::bound_metric_gradations, -5, "max_gradation is below 1 or not finite"},
    {operation::bound_metric_gradations, -199, sentences::memory},
    {operation::STL_input, -1, sentences::not_opened},
    {operation::STL_input, -2, "the file is no STL file: it has neither a line with \"solid\" nor a binary header"},
    {operation::STL_input, -3, "the file is cut short or damaged inside its triangles"},
    {operation::STL_input, -199, sentences::memory},
    {operation::STL_output, -1, "the file cannot be opened, or not be written in full"},
    {operation::STL_output, -2, sentences::plane_or_space},
    {operation::STL_output, -3, "the connectivity is not one of triangles on these nodes"},
    {operation::STL_output, -199, sentences::memory},
    {operation::WavefrontOBJ_input, -1, sentences::not_opened},
    {operation::WavefrontOBJ_input, -2,
     "a line of the file cannot be read: numbers are missing, or an index is invalid"},
    {operation::WavefrontOBJ_input, -199, sentences::memory},
    {operation::WavefrontOBJ_output, -1, sentences::not_opened},
    {operation::WavefrontOBJ_output, -2, sentences::plane_or_space},
    {operation::WavefrontOBJ_output, -3, "the normals have another shape than 3 x nodes"},
    {operation::WavefrontOBJ_output, -4, "the texture coordinates have another shape than 2 x nodes"},
    {operation::WavefrontOBJ_output, -5, "the matrix of triangles has not 3 rows"},
    {operation::WavefrontOBJ_output, -6, "the matrix of quadrangles has not 4 rows"},
    {operation::WavefrontOBJ_output, -199, sentences::memory},
    {operation::vtk_input, -1, sentences::not_opened},
    {operation::vtk_input, -2, "the file is no VTK file, or a number in it cannot be read, is missing or does not fit"},
    {operation::vtk_input, -3, sentences::unknown_node},
    {operation::vtk_input, -4, sentences::no_type_to_read},
    {operation::vtk_input, -7, "the file holds another data set, or strings as bytes"},
    {operation::vtk_input, -199, sentences::memory_or_count},
    {operation::vtk_convert, -1, sentences::rows},
    {operation::vtk_convert, -2, sentences::linear_type},
    {operation::vtk_convert, -199, "memory ran out, or there are more than 2^32 - 1 cells"},
    {operation::vtk_output, -1, sentences::not_opened},
    {operation::vtk_output, -2, "coords has neither 2 nor 3 rows, or the format does not have an element type"},
    {operation::vtk_output, -3, sentences::mesh},
    {operation::vtk_output, -4, sentences::range},
    {operation::vtk_output, -5, sentences::types},
    {operation::vtk_output, -199, sentences::memory},
    {operation::vtk_output_cells, -1, "the stream is null"},
    {operation::vtk_output_cells, -2, sentences::plane_or_space},
    {operation::vtk_output_cells, -199, sentences::memory},
    {operation::medit_input, -1, sentences::not_opened},
    {operation::medit_input, -2, "the file is no MEDIT mesh, or a number in it cannot be read or is missing"},
    {operation::medit_input, -3, sentences::unknown_node},
    {operation::medit_input, -4, sentences::no_type_to_read},
    {operation::medit_input, -7, sentences::binary},
    {operation::medit_input, -199, sentences::memory_or_count},
    {operation::medit_solution_input, -1, sentences::not_opened},
    {operation::medit_solution_input, -2,
     "the file is no MEDIT solution, or a number in it cannot be read or is missing"},
    {operation::medit_solution_input, -7, sentences::binary},
    {operation::medit_solution_input, -199, sentences::memory_or_count},
    {operation::medit_output, -1, sentences::not_opened},
    {operation::medit_output, -2, sentences::one_to_three_rows},
    {operation::medit_output, -3, sentences::mesh},
    {operation::medit_output, -4, sentences::range},
    {operation::medit_output, -5, sentences::types},
    {operation::medit_output, -199, sentences::memory},
    {operation::medit_output_references, -1, sentences::not_opened},
    {operation::medit_output_references, -2, sentences::one_to_three_rows},
    {operation::medit_output_references, -3, sentences::mesh},
    {operation::medit_output_references, -5, "the list of references has not one entry per element"},
    {operation::medit_output_references, -6, "memory for the order of the references ran out"},
    {operation::medit_output_references, -199, sentences::memory},
    {operation::medit_scalar, -1, sentences::not_opened},
    {operation::medit_scalar, -199, sentences::memory},
    {operation::medit_vector, -1, sentences::not_opened},
    {operation::medit_vector, -199, sentences::memory},
    {operation::medit_tensor, -1, sentences::not_opened},
    {operation::medit_tensor, -2, sentences::tensor_rows},
    {operation::medit_tensor, -199, sentences::memory},
    {operation::NASTRAN_output, -1, sentences::not_opened},
    {operation::NASTRAN_output, -2, sentences::plane_or_space},
    {operation::NASTRAN_output, -3, sentences::rows_of_blocks},
    {operation::NASTRAN_output, -5, sentences::offsets_of_blocks},
    {operation::NASTRAN_output, -6, sentences::properties_of_blocks},
    {operation::NASTRAN_output, -199, sentences::memory},
    {operation::NASTRAN_input, -1, sentences::not_opened},
    {operation::NASTRAN_input, -2, "a card has a field that is no number, lacks a vertex, or is a replication"},
    {operation::NASTRAN_input, -3, "an element or a coordinate system names a node that is not there"},
    {operation::NASTRAN_input, -4, sentences::no_type_to_read},
    {operation::NASTRAN_input, -5, "a node is defined twice, with different places or systems"},
    {operation::NASTRAN_input, -6,
     "a coordinate system is missing, leads back to itself, or has its three points in line"},
    {operation::NASTRAN_input, -199, sentences::memory_or_count},
    {operation::FEMAP_input, -1, sentences::not_opened},
    {operation::FEMAP_input, -2,
     "the file is no FEMAP neutral file, or a number or node in it cannot be read or is missing"},
    {operation::FEMAP_input, -3, sentences::unknown_node},
    {operation::FEMAP_input, -4, sentences::no_type_to_read},
    {operation::FEMAP_input, -5, "a node is defined twice, at different places"},
    {operation::FEMAP_input, -199, sentences::memory_or_count},
    {operation::FEMAP_output, -1, sentences::not_opened},
    {operation::FEMAP_output, -2, sentences::plane_or_space},
    {operation::FEMAP_output, -3, sentences::rows_of_blocks},
    {operation::FEMAP_output, -5, sentences::offsets_of_blocks},
    {operation::FEMAP_output, -6, sentences::properties_of_blocks},
    {operation::FEMAP_output, -199, sentences::memory},
    {operation::ensight_output, -1, sentences::not_opened},
    {operation::ensight_output, -2, sentences::one_to_three_rows},
    {operation::ensight_output, -3, sentences::matrix},
    {operation::ensight_output, -4, sentences::range},
    {operation::ensight_output, -5, sentences::types},
    {operation::ensight_output, -199, sentences::memory},
};

/// What a result of an operation means.
///
/// @param call    the function, or the overload
/// @param result  what it returned
/// @return a sentence: "success" for 0 and counts, "unknown result code" for a code that the operation does not have
///
/// Cost: a pass over the table.
constexpr const char* message(operation call, int result) noexcept {
  if (result >= 0) return sentences::success;
  for (const result_code& known : result_codes) {
    if (known.call == call && known.code == result) return known.sentence;
  }
  return sentences::unknown;
}

namespace detail {

/// True when `name` is the name of the operation, with its arguments or without.
constexpr bool names(std::string_view name, const operation_name& operation) noexcept {
  const std::string_view function = operation.function;
  if (name.substr(0, function.size()) != function) return false;
  const std::string_view rest = name.substr(function.size());
  return rest.empty() || rest == operation.arguments;
}

}  // namespace detail

/// What a result of a function means, by the name of the function.
///
/// @param function  the name, as "STL_input"; with the arguments of an overload as in operation_names, as
///                  "merge(coords, new_IDs, tol)", that overload alone; may be null
/// @param result    what it returned
/// @return as for an operation; for a function whose overloads disagree on the code, a sentence that says so; for a
///         name that no operation has, "success" or "unknown result code"
///
/// Cost: a pass over the table.
constexpr const char* message(const char* function, int result) noexcept {
  if (result >= 0) return sentences::success;
  if (function == nullptr) return sentences::unknown;
  const char* sentence = sentences::unknown;
  for (const result_code& known : result_codes) {
    if (known.code != result || !detail::names(function, operation_names[unsigned(known.call)])) continue;
    if (sentence == sentences::unknown) sentence = known.sentence;
    if (std::string_view(sentence) != known.sentence) return sentences::ambiguous;
  }
  return sentence;
}

}  // namespace gridwork
}  // namespace qel

#endif

// Every number at which one way hands over to another, a block ends, a sample is taken or a table stops to grow.
//
// None of them may show in a result: that is what they are here for, together, each with the reason for its size. A
// build with QEL_GRIDWORK_SMALL_LIMITS makes them so small that inputs of a dozen elements cross every one; all tests
// run in it as well.
#ifndef QEL_GRIDWORK_CORE_LIMITS_H
#define QEL_GRIDWORK_CORE_LIMITS_H

#include <bit>
#include <cstddef>
#include <cstdint>

namespace qel::gridwork::detail::limits {

#ifdef QEL_GRIDWORK_SMALL_LIMITS
constexpr bool are_small = true;
#else
constexpr bool are_small = false;
#endif

/// `usual`, or `small` in the build that crosses every limit.
template <class T>
constexpr T limit(T usual, T small) noexcept {
  return are_small ? small : usual;
}

// --- core ----------------------------------------------------------------------------------------------------------

/// Blocks of so many bytes and more ask for huge pages, and are aligned to one: a fault on a fresh 4 KiB page costs more
/// than filling it. The size of a huge page of x86-64.
constexpr std::size_t huge_page = limit<std::size_t>(1 << 21, 1 << 16);

/// Maxima that are taken side by side, so that they do not wait for each other: two registers of four.
constexpr int bound_lanes = limit(8, 2);

/// Slots of the smallest table of positions; a power of two, as all tables.
constexpr std::uint64_t fewest_slots = limit<std::uint64_t>(16, 4);
static_assert(std::has_single_bit(fewest_slots) && fewest_slots >= 4);

/// Sums of the squares of an edge between these are good as they come; beyond, the edge is scaled first, which takes twice
/// as long.
constexpr double least_square = limit(0x1p-900, 0.5);
constexpr double most_square = limit(0x1p900, 2.0);

// --- ids -----------------------------------------------------------------------------------------------------------

/// A set of indices keeps flags for those below a bound, which grows with the number of insertions: so many for each,
/// and at least the fewest. Indices beyond go into a hash table, which takes 8 to 16 bytes for
/// each.
constexpr std::uint64_t flags_per_insertion = limit<std::uint64_t>(16, 1);
constexpr std::uint64_t fewest_flags = limit<std::uint64_t>(4096, 4);
static_assert(std::has_single_bit(fewest_flags));

/// Keys of the smallest hash table of indices; a power of two.
constexpr std::uint64_t fewest_keys = limit<std::uint64_t>(16, 4);
static_assert(std::has_single_bit(fewest_keys) && fewest_keys >= 2);

/// Entries for which unique_indices() makes room at once in its output: a portion stays in the first cache.
constexpr std::uint64_t unique_portion = limit<std::uint64_t>(4096, 3);

// --- search --------------------------------------------------------------------------------------------------------

/// Subtrees of node_detector of up to this size are searched by a plain loop over their places.
constexpr unsigned longest_scan = limit(16U, 2U);
static_assert(longest_scan >= 2);

/// Points in a leaf of the balanced tree: two cache lines for each axis.
constexpr unsigned tree_leaf = limit(16U, 2U);

/// Subtrees that a query has waiting without an allocation; only trees of long chains have more.
constexpr unsigned query_stack = limit(64U, 2U);

/// The balanced tree is built once there were so many queries, and one in so many nodes more: its construction costs
/// about as much as plain walks for these.
constexpr std::uint64_t queries_before_query_tree = limit<std::uint64_t>(16, 2);
constexpr std::uint64_t nodes_per_query_before_query_tree = limit<std::uint64_t>(64, 8);

/// Nodes in a box up to which the balanced tree answers; they have to be sorted. More are cheaper to walk in order.
constexpr unsigned most_in_sorted_box = limit(64U, 4U);

/// Nodes that are found in a box before they are appended to the caller's list.
constexpr unsigned box_portion = limit(128U, 3U);

/// Nodes that are inserted are appended below the tree until there are so many, and one in so many nodes of the tree
/// more; then it is built anew, at a cost in proportion to all nodes.
constexpr std::uint64_t nodes_before_rebuild = limit<std::uint64_t>(16, 2);
constexpr std::uint64_t nodes_per_node_before_rebuild = limit<std::uint64_t>(4, 4);

/// Steps that appended nodes take down the tree, for each node and besides, before it is built anew: where it is one
/// long chain, descending would be quadratic.
constexpr std::uint64_t steps_per_node_before_rebuild = limit<std::uint64_t>(16, 1);
constexpr std::uint64_t steps_before_rebuild = limit<std::uint64_t>(1024, 4);

/// Turns ahead of which positions are prefetched, here and in the next: long enough to hide the way to memory.
constexpr std::uint64_t nodes_ahead = limit<std::uint64_t>(16, 2);
constexpr std::uint64_t slots_ahead = limit<std::uint64_t>(32, 3);

/// Nodes of a cell up to which merging compares all its pairs; beyond, the cell is parted again, or gets a tree.
constexpr std::uint64_t pairwise_nodes = limit<std::uint64_t>(24, 2);

/// Cells that a set of nodes is parted into at most, as many lists as are written to at a time; and nodes for each of
/// them, on the average of all cells, of which many are empty.
constexpr std::uint64_t most_cells = limit<std::uint64_t>(4096, 8);
constexpr std::uint64_t nodes_per_cell = 1;

/// Partings within one another after which a cell gets a tree. Even sets need three; where clusters lie within clusters,
/// more of them would cost a pass each.
constexpr unsigned most_subdivisions = limit(6U, 2U);

/// The edge of the smallest cell, in tolerances: smaller ones would be entered by more nodes from beside them than from
/// within. More than 2, so that a node enters two cells of an axis at most.
constexpr double smallest_cell_in_tols = limit(8.0, 4.0);

/// Nodes in a leaf of the tree of boxes, which serves dense cells and tall elements.
constexpr unsigned box_leaf = limit(8U, 2U);

/// Rows up to which repeated or near nodes of an element are found by comparing pairs; taller columns are sorted, or get
/// a tree. No element type has more.
constexpr std::uint64_t most_rows_for_pairs = limit<std::uint64_t>(27, 4);

// --- topology ------------------------------------------------------------------------------------------------------

/// Slots of a range of boundaries, which are matched in the first cache, and ranges at most, as many lists as
/// are written to at a time.
constexpr std::uint64_t slots_per_range = limit<std::uint64_t>(1024, 4);
constexpr std::uint64_t most_ranges = limit<std::uint64_t>(4096, 8);

/// Elements of which the bounds of the ranges are taken. One in so many of their boundaries may lie outside at either end,
/// if it lies beyond the others by more than one in so many of the width between: a node far from all others would
/// leave one range for everything else, and get_neighbors() eight times slower.
constexpr std::uint64_t range_sample = limit<std::uint64_t>(4096, 4);
constexpr std::uint64_t places_per_outlier = limit<std::uint64_t>(64, 4);
constexpr std::uint64_t range_margin = 16;

/// Ranges are parted otherwise when one of them holds more than so many times its share of the sample: a fan, where one
/// node is the smallest of very many boundaries, or clusters of nodes.
constexpr unsigned lopsided = limit(32U, 2U);

/// Slots in a block of a range's list.
constexpr std::uint64_t slot_block = limit<std::uint64_t>(128, 2);

/// Groups of equal boundaries that have room at once: one for so many slots of the mesh, and at least the fewest. So
/// they do not take more memory than the slots themselves; a longer list is matched in several rounds.
constexpr std::uint64_t slots_per_group = 16;
constexpr std::uint64_t fewest_groups = limit<std::uint64_t>(4096, 3);

/// Slots whose keys are read at once; nodes are prefetched so far ahead.
constexpr std::ptrdiff_t slot_chunk = limit<std::ptrdiff_t>(64, 2);

/// Elements whose nodes are prefetched ahead of their turn, in topology and quality.
constexpr std::uint64_t elements_ahead = limit<std::uint64_t>(16, 2);

/// Elements round a node that are looked through for each boundary that begins with it. Round a node with more of them,
/// the hub of a fan, a table is made: looking through is quadratic there, and cheaper up to here.
constexpr std::uint64_t scanned_ring = limit<std::uint64_t>(64, 2);

/// Marks for each boundary of a set, so that few nodes share one by chance.
constexpr std::uint64_t marks_per_boundary = limit<std::uint64_t>(8, 1);

/// Edges are collected by their lower node where indices are at most so many times the edges, which they are in every
/// whole mesh; beyond, tables by node would cost more than sorting the pairs.
constexpr unsigned nodes_per_edge = 2;

// --- metrics -------------------------------------------------------------------------------------------------------

/// Children of an entry of the heap of waiting nodes: half as deep as with two, and they lie in one cache line.
/// Three are the fewest among which places given up before can lie beside the last entry's.
constexpr unsigned heap_children = limit(4U, 3U);

/// The square of a length in a metric is good as it comes between the inverse of this and this: far from where its terms
/// leave the range of numbers. Beyond, the tensor and the edge are scaled first, which takes three times as long.
constexpr double safe_square = limit(0x1p900, 4.0);

// --- io ------------------------------------------------------------------------------------------------------------

/// Bytes that are read and written at once: they fit the second cache.
constexpr std::uint64_t read_block = limit<std::uint64_t>(1 << 18, 256);
constexpr std::uint64_t write_block = limit<std::uint64_t>(1 << 18, 1024);

/// Bytes of an OBJ token that are certain to be at hand; a longer one is no number.
constexpr std::uint64_t obj_token = limit<std::uint64_t>(4096, 64);
static_assert(obj_token <= read_block);

/// Bytes of a word of MEDIT and VTK files that are certain to be at hand; longer ones are refused.
constexpr std::uint64_t longest_word = limit<std::uint64_t>(4096, 256);
static_assert(longest_word <= read_block);

/// Bytes of a line that are looked at where all fields of a record stand on it; no such line is longer.
constexpr std::uint64_t longest_record = limit<std::uint64_t>(4096, 250);
static_assert(longest_record < read_block);

/// Characters of a number, of the rest of a line that means nothing, and of fields that are passed over, up to which the
/// usual records of NASTRAN and FEMAP files are read in place.
constexpr std::ptrdiff_t plain_number = limit<std::ptrdiff_t>(40, 7);
constexpr std::ptrdiff_t plain_rest = limit<std::ptrdiff_t>(60, 5);
constexpr std::ptrdiff_t plain_fields = limit<std::ptrdiff_t>(48, 12);

/// Characters of what a FEMAP record may have in common with the one before; where there are more, they are read anew.
constexpr std::size_t known_text = limit<std::size_t>(256, 16);

/// Numbers of a VTK file that are read before they are looked at: they fit the first cache. Whole points.
constexpr std::uint64_t numbers_at_once = limit<std::uint64_t>(768, 12);

/// Cells of a VTK file that are checked before they are copied: they stay in the second cache.
constexpr std::uint64_t cells_at_once = limit<std::uint64_t>(4096, 3);

/// Columns for which there is room before a file has told how long its lines are.
constexpr std::uint64_t first_columns = limit<std::uint64_t>(1024, 2);

/// Places of a table of columns by identifier, for each column; where identifiers are larger, they are sorted instead.
constexpr unsigned places_per_ID = limit(4U, 1U);

/// Bits of a reference by which elements are distributed at once: 2^11 places to write to stay in the first caches.
constexpr unsigned reference_digit_bits = limit(11U, 2U);

/// Triangles of an STL file between the prefetch of the table's slots of their corners and its search, as many as hide the
/// way to memory, and those for which there is room at least.
constexpr unsigned triangle_queue = limit(16U, 2U);
constexpr std::uint64_t fewest_triangles = limit<std::uint64_t>(256, 6);
static_assert(fewest_triangles >= 3 * triangle_queue);

/// Facets of an STL text after which the file's length tells how many there are.
constexpr std::uint64_t facets_to_measure = limit<std::uint64_t>(1000, 2);

// --- editions/parallel ---------------------------------------------------------------------------------------------

/// Bytes that a rank sends, or receives, at once: counts of MPI are ints, and its buffers lie beside the items.
constexpr std::uint64_t exchange_round = limit<std::uint64_t>(1 << 26, 64);

/// Triangles of a file that a rank reads at once.
constexpr std::uint64_t triangles_per_read = limit<std::uint64_t>(1 << 15, 3);

/// One node of another rank for so many of its own is what a rank that reads triangles has room for from the start: more of
/// them lie along a piece of a file only where this is scattered, and then the list is copied once.
constexpr std::uint64_t nodes_per_guest = limit<std::uint64_t>(64, 1 << 20);

/// Nodes in a row that have a box in common: where it lies apart from all other ranks', they need not be looked at.
constexpr std::uint64_t nodes_per_box = limit<std::uint64_t>(256, 2);

/// A rank leaves out nodes that lie among those of others, or with such at one position, when it searches its own, where one in
/// so many does: the others are copied then.
constexpr std::uint64_t nodes_per_enclosed = limit<std::uint64_t>(4, 64);

/// Positions in a cell by which ranks find what they have in common: a cell costs 12 bytes to ask about, a position that
/// is sent in vain 40. How many cells hold positions is told by a sample, in two coarse grids.
constexpr std::uint64_t positions_per_cell = limit<std::uint64_t>(8, 2);
constexpr std::uint64_t counted_cells = limit<std::uint64_t>(4096, 8);
constexpr std::uint64_t counted_positions = limit<std::uint64_t>(16384, 16);

}  // namespace qel::gridwork::detail::limits

#endif

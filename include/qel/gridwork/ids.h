/// @file
/// Whole-array tools on node indices (IDs): largest, bound check, shift, renumber, permute, match, unique, sort.
///
/// `~0U` is the absence of a node. Costs are in n, the number of entries of the input.
#ifndef QEL_GRIDWORK_IDS_H
#define QEL_GRIDWORK_IDS_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {

/// Largest entry other than `~0U`; `~0U` for an empty array, but 0 when there is nothing but `~0U`. Linear.
/// @{
QEL_GRIDWORK_API unsigned max_ID(const dense1D<unsigned>& ids);
QEL_GRIDWORK_API unsigned max_ID(const dense2D<unsigned>& connectivity);
/// @}

/// True when every entry is `~0U` or below `n`; always true for n = `~0U` and for an empty array. Linear.
///
/// Unlike the check against an element type, `~0U` is accepted in every position.
/// @{
QEL_GRIDWORK_API bool check_IDs(const dense1D<unsigned>& ids, unsigned n);
QEL_GRIDWORK_API bool check_IDs(const dense2D<unsigned>& connectivity, unsigned n);
/// @}

/// Adds `shift` to every entry other than `~0U`, modulo 2^32, in place. Linear.
/// @return 0
QEL_GRIDWORK_API int shift_indices(dense1D<unsigned>& ids, int shift);

/// Adds `shift` to the entries of a connectivity, modulo 2^32, in place. Linear.
///
/// Entries `~0U` are left alone in the mixed types ELT_FACE_MIX and ELT_SOLID_MIX only: a matrix of any other type is
/// taken to hold none, and every entry is shifted. The row count is not checked.
/// @return 0
QEL_GRIDWORK_API int shift_indices(dense2D<unsigned>& connectivity, int shift, element_type type);

/// Replaces every entry e by `new_ids[e]`, in place; entries beyond the table, `~0U` among them, stay. Linear.
///
/// A table that shares memory with the entries is copied before the first of them changes; when memory for that runs
/// out, nothing is changed.
/// @{
QEL_GRIDWORK_API void change_indices(dense1D<unsigned>& ids, const dense1D<unsigned>& new_ids);
QEL_GRIDWORK_API void change_indices(dense2D<unsigned>& connectivity, const dense1D<unsigned>& new_ids);
/// @}

/// Moves entry i to position `perm[i]`: `new_values[perm[i]] == old_values[i]`. Linear.
///
/// Entries of `perm` that are not below the size of `values` are skipped, and a position that nothing moves to keeps
/// its value. Of several entries that move to one position the last one arrives; an entry with `perm[i] == i` does not
/// move and displaces none. Neither other views of the block of `values` nor a caller's memory are disturbed.
/// @return 0, or -199 with `values` unchanged
/// @{
QEL_GRIDWORK_API int permutation(dense1D<unsigned>& values, const dense1D<unsigned>& perm);
QEL_GRIDWORK_API int permutation(dense1D<double>& values, const dense1D<unsigned>& perm);
/// @}

/// Finds equal values in two lists. Expected linear.
///
/// @param A,B     lists; entries `~0U` match nothing
/// @param B_in_A  overwritten, one entry per entry of B: its first position in A, or `~0U`
/// @param A_in_B  overwritten, one entry per entry of A: if it is the first of its value in A, the first position of
///                the value in B; else `~0U`
/// @return 0, or -199 (both outputs empty)
QEL_GRIDWORK_API int get_IDs(const dense1D<unsigned>& A, const dense1D<unsigned>& B, dense1D<unsigned>& B_in_A,
                             dense1D<unsigned>& A_in_B);

/// Finds equal columns, such as faces or edges given by their nodes, in two matrices. Expected linear.
///
/// @param A,B     matrices of one row count r
/// @param B_in_A  overwritten, one entry per column of B: the first column of A that matches it, or `~0U`
/// @param A_in_B  overwritten, one entry per column of A: the first column of B for which it is the first match, or
///                `~0U`
/// @param exact   true: columns match when they are identical. false: when they are the same cycle of nodes, whatever
///                the first node and the direction. To compare, each column is rotated so that its largest entry (the
///                first of equal ones) comes first; a column that holds its largest entry twice may therefore miss a
///                match with the same cycle written from the other one.
/// @return 0; -2 when the row counts differ; -199. Both outputs are empty on a negative result
QEL_GRIDWORK_API int get_IDs(const dense2D<unsigned>& A, const dense2D<unsigned>& B, dense1D<unsigned>& B_in_A,
                             dense1D<unsigned>& A_in_B, bool exact);

/// Appends the distinct entries of the input to `ids`, in order of first appearance. Linear.
///
/// @param ids       appended to; what it holds already is not looked at
/// @param values    the input; `~0U` is never appended
/// @param excluded  values that are not appended
/// @return 0; -199 when the working set cannot be had (`ids` unchanged). When `ids` itself cannot grow, the entries
///         that do not fit are dropped and the result is 0.
QEL_GRIDWORK_API int unique_indices(dense1D<unsigned>& ids, const dense1D<unsigned>& values,
                                    dense1D<unsigned> excluded = dense1D<unsigned>());

/// As above, for the entries of a matrix, column by column.
QEL_GRIDWORK_API int unique_indices(dense1D<unsigned>& ids, const dense2D<unsigned>& connectivity,
                                    dense1D<unsigned> excluded = dense1D<unsigned>());

/// As above, for an array of matrices [first, last), one after the other.
/// @return as above; -3 when `last` lies before `first` (`ids` unchanged)
QEL_GRIDWORK_API int unique_indices(dense1D<unsigned>& ids, const dense2D<unsigned>* first,
                                    const dense2D<unsigned>* last, dense1D<unsigned> excluded = dense1D<unsigned>());

/// Number of distinct entries of one matrix or of an array of matrices [first, last), `~0U` not counted. Linear.
/// @return the count; -2 when `last` lies before `first`; -199
/// @{
QEL_GRIDWORK_API int count_unique_indices(const dense2D<unsigned>& connectivity);
QEL_GRIDWORK_API int count_unique_indices(const dense2D<unsigned>* first, const dense2D<unsigned>* last);
/// @}

/// Sorts positions by value: the way to turn an index map round, such as "node of each corner" into "corners of each
/// node".
///
/// @param values   n indices; entries `~0U` are left out
/// @param order    overwritten: the positions i of the entries, by value, and in increasing i within one value
/// @param offsets  overwritten, max + 2 entries, where max is the largest value (0 when nothing but `~0U` is there):
///                 the positions of value v are `order[offsets[v]]` to `order[offsets[v + 1] - 1]`. An empty input
///                 gives (0).
/// @return 0, or -199 (also for an index so large that the offsets cannot be counted) with both outputs empty
///
/// Cost: n + max, no comparisons.
QEL_GRIDWORK_API int get_sorted_order(const dense1D<unsigned>& values, dense1D<unsigned>& order,
                                      dense1D<unsigned>& offsets);

}  // namespace gridwork
}  // namespace qel

#endif

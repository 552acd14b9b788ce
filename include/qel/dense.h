/// @file
/// The numeric arrays that every signature uses: dense1D, dense2D and the storage blocks behind them.
///
/// An array is a *view*: a position and a size inside a reference-counted block. Copy construction, copy assignment
/// and shallow_copy() make a second view of the same block, copy() makes an independent one. The last view frees the
/// block. Members that may have to allocate return `bool`; on `false` the array is as it was. Nothing throws.
///
/// Two rules for views that share a block:
/// - an array that must move its entries (a new capacity, another row count) does so in place only while it is the
///   block's one owner, otherwise it leaves for a block of its own, so that no other view is disturbed;
/// - an array that grows inside the capacity it has writes behind its end, even where another view of the block lies.
///
/// Functions that take arrays keep apart what they read from what they write: an output that shares memory with an
/// input, or with another output, leaves it before it is written, and ends with a block of its own. Only where a
/// function says that it works in place do other views of the block see the result.
///
/// Growth is geometric once an array holds entries, so that appending one by one is amortised constant, also by
/// resize(); an empty array takes what it is asked for. Where memory for the geometric step is lacking, the size that
/// was asked for is tried.
#ifndef QEL_DENSE_H
#define QEL_DENSE_H

#include "qel/dense/block_view.h"
#include "qel/dense/dense1D.h"
#include "qel/dense/dense2D.h"
#include "qel/dense/storage.h"

#endif

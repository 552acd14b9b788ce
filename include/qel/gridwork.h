/// @file
/// The one header to include: everything that QEL Gridwork offers.
#ifndef QEL_GRIDWORK_H
#define QEL_GRIDWORK_H

#include "qel/dense.h"
#include "qel/fixed.h"
#include "qel/gridwork/elements.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/io.h"
#include "qel/gridwork/messages.h"
#include "qel/gridwork/metrics.h"
#include "qel/gridwork/quality.h"
#include "qel/gridwork/search.h"
#include "qel/gridwork/topology.h"
#include "qel/gridwork/transforms.h"
#include "qel/histogram.h"
#include "qel/lapack.h"

#endif

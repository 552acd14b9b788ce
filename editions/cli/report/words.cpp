#include "mesh.h"

namespace report {

const char* words_of(gw::operation call, int result) { return gw::message(call, result); }

}  // namespace report

# Half of a compiler's time goes into headers: here they are compiled once for the library and once for its tests, and
# nothing is compiled for debuggers. Builds for this machine do without: a missing include shows there.
function(precompile_headers)
  target_precompile_headers(qel_gridwork_objects PRIVATE
    <algorithm> <cmath> <cstdint> <limits> <string_view> <utility> ${PROJECT_SOURCE_DIR}/include/qel/gridwork.h)
  target_compile_options(qel_gridwork_objects PRIVATE -g0)
  get_property(tests DIRECTORY tests PROPERTY BUILDSYSTEM_TARGETS)
  list(FILTER tests INCLUDE REGEX "_test$")
  list(REMOVE_ITEM tests elementary_test)
  target_precompile_headers(elementary_test PRIVATE
    <gtest/gtest.h> <algorithm> <random> <string> <vector> ${PROJECT_SOURCE_DIR}/include/qel/gridwork.h)
  foreach(test IN LISTS tests)
    target_precompile_headers(${test} REUSE_FROM elementary_test)
  endforeach()
endfunction()
cmake_language(DEFER CALL precompile_headers)

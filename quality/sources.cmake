target_sources(qel_gridwork_objects PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/edge_qualities.cpp
  ${CMAKE_CURRENT_LIST_DIR}/jacobians.cpp
  ${CMAKE_CURRENT_LIST_DIR}/shape_qualities.cpp
  ${CMAKE_CURRENT_LIST_DIR}/tetrahedron.cpp)

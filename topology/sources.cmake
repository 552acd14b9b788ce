target_sources(qel_gridwork_objects PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/boundaries.cpp
  ${CMAKE_CURRENT_LIST_DIR}/color_boundaries.cpp
  ${CMAKE_CURRENT_LIST_DIR}/edges.cpp
  ${CMAKE_CURRENT_LIST_DIR}/elements_on_boundaries.cpp
  ${CMAKE_CURRENT_LIST_DIR}/neighbors.cpp
  ${CMAKE_CURRENT_LIST_DIR}/node_graph.cpp
  ${CMAKE_CURRENT_LIST_DIR}/sort_elfes.cpp
  ${CMAKE_CURRENT_LIST_DIR}/subdomains.cpp)

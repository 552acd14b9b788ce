target_sources(qel_gridwork_objects PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/merge.cpp
  ${CMAKE_CURRENT_LIST_DIR}/merging/element_merge.cpp
  ${CMAKE_CURRENT_LIST_DIR}/merging/near_nodes.cpp
  ${CMAKE_CURRENT_LIST_DIR}/merging/proximity_merge.cpp
  ${CMAKE_CURRENT_LIST_DIR}/node_detector.cpp
  ${CMAKE_CURRENT_LIST_DIR}/simplify.cpp
  ${CMAKE_CURRENT_LIST_DIR}/tree/query_tree.cpp
  ${CMAKE_CURRENT_LIST_DIR}/tree/node_tree.cpp
  ${CMAKE_CURRENT_LIST_DIR}/tree/node_tree_box.cpp
  ${CMAKE_CURRENT_LIST_DIR}/tree/node_tree_closest.cpp)

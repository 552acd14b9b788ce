target_sources(qel_gridwork_objects PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/indices.cpp
  ${CMAKE_CURRENT_LIST_DIR}/matching.cpp
  ${CMAKE_CURRENT_LIST_DIR}/sorted_order.cpp
  ${CMAKE_CURRENT_LIST_DIR}/unique_indices.cpp)

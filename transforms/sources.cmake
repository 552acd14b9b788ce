target_sources(qel_gridwork_objects PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/affine.cpp
  ${CMAKE_CURRENT_LIST_DIR}/bounding_box.cpp
  ${CMAKE_CURRENT_LIST_DIR}/clip.cpp
  ${CMAKE_CURRENT_LIST_DIR}/clip_whole.cpp
  ${CMAKE_CURRENT_LIST_DIR}/copy_mesh.cpp)

target_sources(qel_gridwork_objects PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/bounding.cpp
  ${CMAKE_CURRENT_LIST_DIR}/conversion.cpp
  ${CMAKE_CURRENT_LIST_DIR}/eigen_pairs.cpp
  ${CMAKE_CURRENT_LIST_DIR}/generation.cpp
  ${CMAKE_CURRENT_LIST_DIR}/gradation.cpp
  ${CMAKE_CURRENT_LIST_DIR}/intersection.cpp
  ${CMAKE_CURRENT_LIST_DIR}/repair.cpp
  ${CMAKE_CURRENT_LIST_DIR}/shock.cpp
  ${CMAKE_CURRENT_LIST_DIR}/spectrum.cpp
  ${CMAKE_CURRENT_LIST_DIR}/tensor_gradation.cpp
  ${CMAKE_CURRENT_LIST_DIR}/validity.cpp)

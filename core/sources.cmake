target_sources(qel_gridwork_objects PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/dspev.cpp
  ${CMAKE_CURRENT_LIST_DIR}/elements.cpp
  ${CMAKE_CURRENT_LIST_DIR}/exponential.cpp
  ${CMAKE_CURRENT_LIST_DIR}/histogram.cpp
  ${CMAKE_CURRENT_LIST_DIR}/hypotenuse.cpp
  ${CMAKE_CURRENT_LIST_DIR}/logarithm.cpp
  ${CMAKE_CURRENT_LIST_DIR}/memory.cpp
  ${CMAKE_CURRENT_LIST_DIR}/sine_cosine.cpp
  ${CMAKE_CURRENT_LIST_DIR}/symmetric3.cpp)

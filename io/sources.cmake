target_sources(qel_gridwork_objects PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/ensight_output.cpp
  ${CMAKE_CURRENT_LIST_DIR}/medit_input.cpp
  ${CMAKE_CURRENT_LIST_DIR}/medit_output.cpp
  ${CMAKE_CURRENT_LIST_DIR}/medit_solution_input.cpp
  ${CMAKE_CURRENT_LIST_DIR}/nastran_output.cpp
  ${CMAKE_CURRENT_LIST_DIR}/obj_input.cpp
  ${CMAKE_CURRENT_LIST_DIR}/obj_output.cpp
  ${CMAKE_CURRENT_LIST_DIR}/stl_binary_input.cpp
  ${CMAKE_CURRENT_LIST_DIR}/stl_geometry.cpp
  ${CMAKE_CURRENT_LIST_DIR}/stl_input.cpp
  ${CMAKE_CURRENT_LIST_DIR}/stl_output.cpp
  ${CMAKE_CURRENT_LIST_DIR}/stl_text_input.cpp
  ${CMAKE_CURRENT_LIST_DIR}/text/number_format.cpp
  ${CMAKE_CURRENT_LIST_DIR}/text/number_scan.cpp
  ${CMAKE_CURRENT_LIST_DIR}/triangle_soup.cpp
  ${CMAKE_CURRENT_LIST_DIR}/vtk_output.cpp)

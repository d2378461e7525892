# Writes the files of this folder as C++ source: cmake -DOUTPUT=FILE -P assets.cmake
file(READ ${CMAKE_CURRENT_LIST_DIR}/page.html PAGE_HTML)
file(READ ${CMAKE_CURRENT_LIST_DIR}/page.css PAGE_CSS)
foreach(script shapes runs state plan charts lists page)
  file(READ ${CMAKE_CURRENT_LIST_DIR}/${script}.js text)
  string(APPEND PAGE_JS "${text}")
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/assets.cpp.in ${OUTPUT} @ONLY)
file(TOUCH ${OUTPUT})

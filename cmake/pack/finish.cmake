# Signs finished installers.
include(${CMAKE_CURRENT_LIST_DIR}/sign.cmake)
foreach(file IN LISTS CPACK_PACKAGE_FILES)
  if(file MATCHES "\\.exe$")
    vorel_sign(${file})
  endif()
endforeach()

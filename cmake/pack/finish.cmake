# Signs finished installers.
include(${CMAKE_CURRENT_LIST_DIR}/sign.cmake)
vorel_sign(${CPACK_PACKAGE_FILES})
